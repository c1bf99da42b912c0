// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/palette/pivotpreview.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace Morvane {

PivotPreview::PivotPreview(QWidget *parent)
    : QWidget(parent)
{
    setMinimumHeight(120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setCursor(Qt::CrossCursor);
}

void PivotPreview::setImage(const QImage &image, const QPointF &pivot, bool editable)
{
    mImage = image;
    mPivot = pivot;
    mEditable = editable;
    setToolTip(editable ? tr("Click on the image to set its default pivot; sprites that use it "
                             "stay where they are")
                        : QString());
    update();
}

void PivotPreview::setHint(const QString &hint)
{
    mHint = hint;
    update();
}

QRectF PivotPreview::imageRect() const
{
    if (mImage.isNull() || mImage.width() <= 0 || mImage.height() <= 0)
        return QRectF();
    const QRectF area = QRectF(rect()).adjusted(10, 10, -10, -10);
    if (area.width() <= 0 || area.height() <= 0)
        return QRectF();
    const double zoom = std::min({MaxZoom, area.width() / mImage.width(),
                                  area.height() / mImage.height()});
    const QSizeF size(mImage.width() * zoom, mImage.height() * zoom);
    return QRectF(area.center() - QPointF(size.width() / 2, size.height() / 2), size);
}

void PivotPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    const QRectF target = imageRect();
    if (target.isEmpty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect().adjusted(6, 6, -6, -6), Qt::AlignCenter | Qt::TextWordWrap, mHint);
        return;
    }
    // A checkerboard behind, so transparent parts read as such.
    const int cell = 8;
    painter.save();
    painter.setClipRect(target);
    for (int y = 0; y * cell < target.height(); ++y) {
        for (int x = 0; x * cell < target.width(); ++x)
            painter.fillRect(QRectF(target.left() + x * cell, target.top() + y * cell, cell, cell),
                             (x + y) % 2 ? QColor(0xcc, 0xcc, 0xcc) : QColor(0xf4, 0xf4, 0xf4));
    }
    painter.restore();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, target.width() < mImage.width());
    painter.drawImage(target, mImage);
    const QPointF at(target.left() + mPivot.x() * target.width(),
                     target.top() + mPivot.y() * target.height());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 3));
    painter.drawEllipse(at, 5, 5);
    painter.setPen(QPen(QColor(0xff, 0xa0, 0x2f), 1.5));
    painter.drawEllipse(at, 5, 5);
    painter.drawLine(at - QPointF(9, 0), at + QPointF(9, 0));
    painter.drawLine(at - QPointF(0, 9), at + QPointF(0, 9));
}

void PivotPreview::mousePressEvent(QMouseEvent *event)
{
    const QRectF target = imageRect();
    if (!mEditable || event->button() != Qt::LeftButton || target.isEmpty()
        || !target.contains(event->position())) {
        QWidget::mousePressEvent(event);
        return;
    }
    // Kept to a thousandth: finer than a click can aim, and short in the file.
    const auto fraction = [](double v) { return std::round(v * 1000.0) / 1000.0; };
    const QPointF pivot(fraction((event->position().x() - target.left()) / target.width()),
                        fraction((event->position().y() - target.top()) / target.height()));
    Q_EMIT pivotClicked(pivot);
}

} // namespace Morvane
