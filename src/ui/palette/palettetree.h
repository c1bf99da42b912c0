// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>
#include <QTreeWidget>

#include <functional>

namespace Morvane {

/// The palette's folder tree. Dragging images out of it carries them as file
/// URLs under the project folder, the form the canvas accepts; images not yet
/// in the project are added to it first (`prepareDrag`).
class PaletteTree : public QTreeWidget
{
    Q_OBJECT

public:
    /// Item roles: the project-relative name, and the kind (`Kind`).
    static constexpr int NameRole = Qt::UserRole;
    static constexpr int KindRole = Qt::UserRole + 1;
    enum Kind { FolderItem, ImageItem, MissingItem, DiskOnlyItem, FrameItem };

    explicit PaletteTree(QWidget *parent = nullptr);

    /// Called with the names about to be dragged; returns the full paths the
    /// drag carries (empty: no drag).
    std::function<QStringList(const QStringList &names)> prepareDrag;

    /// The drag data for the images `items` name (what a drag carries).
    QMimeData *mimeDataFor(const QList<QTreeWidgetItem *> &items) const;

protected:
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QList<QTreeWidgetItem *> &items) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction; }
};

} // namespace Morvane
