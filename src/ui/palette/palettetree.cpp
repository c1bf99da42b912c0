// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/palette/palettetree.h"

#include <QMimeData>
#include <QUrl>

namespace Morvane {

PaletteTree::PaletteTree(QWidget *parent)
    : QTreeWidget(parent)
{
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
}

QStringList PaletteTree::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

QMimeData *PaletteTree::mimeData(const QList<QTreeWidgetItem *> &items) const
{
    return mimeDataFor(items);
}

QMimeData *PaletteTree::mimeDataFor(const QList<QTreeWidgetItem *> &items) const
{
    QStringList names;
    for (const QTreeWidgetItem *item : items) {
        if (item->data(0, KindRole).toInt() != FolderItem)
            names.append(item->data(0, NameRole).toString());
    }
    const QStringList paths = prepareDrag && !names.isEmpty() ? prepareDrag(names) : QStringList();
    if (paths.isEmpty())
        return nullptr;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    auto *data = new QMimeData;
    data->setUrls(urls);
    return data;
}

} // namespace Morvane
