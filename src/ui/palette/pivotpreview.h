// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QImage>
#include <QPointF>
#include <QWidget>

namespace Morvane {

/// An enlarged picture of one image with its default pivot marked. A click on
/// the picture asks for the pivot there (`pivotClicked`, fractions of the
/// image, y from the top edge); clicks beside it are ignored.
class PivotPreview : public QWidget
{
    Q_OBJECT

public:
    /// The picture is enlarged at most this many times.
    static constexpr double MaxZoom = 8.0;

    explicit PivotPreview(QWidget *parent = nullptr);

    /// Shows `image` with the pivot at `pivot`; `editable` says whether clicks
    /// set it (a null image shows the hint text).
    void setImage(const QImage &image, const QPointF &pivot, bool editable);
    void setHint(const QString &hint);
    /// Where the picture is drawn, in widget coordinates (empty without one).
    QRectF imageRect() const;
    QPointF pivot() const { return mPivot; }

    QSize sizeHint() const override { return QSize(200, 180); }

Q_SIGNALS:
    void pivotClicked(const QPointF &pivot);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QImage mImage;
    QPointF mPivot;
    QString mHint;
    bool mEditable = false;
};

} // namespace Morvane
