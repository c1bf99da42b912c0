// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/palette/palettepanel.h"

#include "atlas/jsonspritesheet.h"
#include "atlas/spritesheetcollection.h"
#include "canvas/editorsession.h"
#include "model/commands/filecommands.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "ui/animations/namecleaning.h"
#include "ui/palette/palettetree.h"
#include "ui/palette/pivotpreview.h"
#include "ui/palette/thumbnailloader.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHeaderView>
#include <QImageReader>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QStyle>
#include <QToolBar>
#include <QTreeWidgetItemIterator>
#include <QUndoCommand>
#include <QUndoStack>
#include <QVBoxLayout>

namespace Morvane {

namespace {

constexpr int MaxScanDepth = 8;
constexpr int MaxScanEntries = 20000;
constexpr int MaxWatchedFolders = 256;
// Larger images not yet in the project are previewed scaled down.
constexpr qint64 PreviewPixels = 1024 * 1024;

// Image files under `root` (project-relative, "/"-separated) and the folders
// seen, breadth first within bounds; hidden entries and links to folders are
// skipped, so a loop or a huge tree cannot stall the editor.
void scanImages(const QString &root, QStringList *images, QStringList *folders)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    const QDir rootDir(root);
    QList<QPair<QString, int>> queue{{root, 0}};
    int seen = 0;
    while (!queue.isEmpty() && seen < MaxScanEntries) {
        const auto [path, depth] = queue.takeFirst();
        folders->append(path);
        const QFileInfoList entries =
            QDir(path).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo &entry : entries) {
            if (++seen > MaxScanEntries)
                break;
            if (entry.isDir()) {
                if (!entry.isSymLink() && depth + 1 < MaxScanDepth)
                    queue.append({entry.filePath(), depth + 1});
            } else if (entry.isFile() && formats.contains(entry.suffix().toLower().toLatin1())
                       && !entry.fileName().startsWith(QLatin1Char('.'))) {
                images->append(rootDir.relativeFilePath(entry.filePath()));
            }
        }
    }
}

QIcon blankIcon()
{
    QPixmap pixmap(ThumbnailLoader::Side, ThumbnailLoader::Side);
    pixmap.fill(Qt::transparent);
    return QIcon(pixmap);
}

QIcon iconFor(const QImage &image)
{
    if (image.isNull())
        return blankIcon();
    // Centred on a square, so every row has the same height and the names line up.
    QPixmap pixmap(ThumbnailLoader::Side, ThumbnailLoader::Side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const QImage fitted =
        image.width() > ThumbnailLoader::Side || image.height() > ThumbnailLoader::Side
            ? image.scaled(ThumbnailLoader::Side, ThumbnailLoader::Side, Qt::KeepAspectRatio,
                           Qt::SmoothTransformation)
            : image;
    painter.drawImage((ThumbnailLoader::Side - fitted.width()) / 2,
                      (ThumbnailLoader::Side - fitted.height()) / 2, fitted);
    return QIcon(pixmap);
}

// A standard icon at its usual size, centred in a thumbnail's square so the
// names of folders, images and missing images line up.
QIcon smallIcon(const QStyle *style, QStyle::StandardPixmap which)
{
    QPixmap pixmap(ThumbnailLoader::Side, ThumbnailLoader::Side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const int side = 20;
    const QPixmap icon = style->standardIcon(which).pixmap(side, side);
    painter.drawPixmap((ThumbnailLoader::Side - side) / 2, (ThumbnailLoader::Side - side) / 2, icon);
    return QIcon(pixmap);
}

QString atlasPrefix(const QString &sheet)
{
    return QLatin1Char('<') + sheet + QLatin1String(">/");
}

} // namespace

PalettePanel::PalettePanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
    , mToolBar(new QToolBar(this))
    , mFilter(new QLineEdit(this))
    , mTree(new PaletteTree(this))
    , mPreview(new PivotPreview(this))
    , mInfo(new QLabel(this))
    , mMessage(new QLabel(this))
    , mThumbnails(new ThumbnailLoader(this))
    , mWatcher(new QFileSystemWatcher(this))
{
    mFilter->setObjectName(QStringLiteral("paletteFilter"));
    mFilter->setPlaceholderText(tr("Filter images"));
    mFilter->setClearButtonEnabled(true);
    connect(mFilter, &QLineEdit::textChanged, this, &PalettePanel::applyFilter);

    mToolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    const auto add = [this](const char *name, const QString &text, const QString &tip,
                            void (PalettePanel::*slot)()) {
        auto *a = new QAction(text, this);
        a->setObjectName(QLatin1String(name));
        a->setToolTip(tip);
        connect(a, &QAction::triggered, this, slot);
        mToolBar->addAction(a);
        return a;
    };
    add("actionRenameImage", tr("Rename..."),
        tr("Rename the picked image on disk and in the project; every sprite follows"),
        &PalettePanel::renamePicked);
    add("actionReplaceImage", tr("Replace..."),
        tr("Make every sprite that shows the picked image show another one"),
        &PalettePanel::replacePicked);
    add("actionFindMissing", tr("Find Missing"),
        tr("Look for missing images by name elsewhere under the project folder"),
        &PalettePanel::attemptMissingImageResolution);

    mTree->setObjectName(QStringLiteral("paletteTree"));
    mTree->setMinimumHeight(120);
    mTree->setHeaderHidden(true);
    mTree->setIconSize(QSize(ThumbnailLoader::Side, ThumbnailLoader::Side));
    mTree->setUniformRowHeights(true);
    mTree->setContextMenuPolicy(Qt::ActionsContextMenu);
    mTree->addActions(mToolBar->actions());
    mTree->prepareDrag = [this](const QStringList &names) { return prepareDrag(names); };
    connect(mTree, &QTreeWidget::currentItemChanged, this, [this] {
        updatePreview();
        updateActions();
    });

    mPreview->setObjectName(QStringLiteral("pivotPreview"));
    mPreview->setHint(tr("Pick an image to see it here"));
    connect(mPreview, &PivotPreview::pivotClicked, this, &PalettePanel::pivotClicked);
    mInfo->setObjectName(QStringLiteral("paletteInfo"));
    mInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mMessage->setObjectName(QStringLiteral("paletteMessage"));
    mMessage->setWordWrap(true);
    mMessage->hide();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(3);
    layout->addWidget(mFilter);
    layout->addWidget(mToolBar);
    layout->addWidget(mTree, 3);
    layout->addWidget(mPreview, 1);
    layout->addWidget(mInfo);
    layout->addWidget(mMessage);

    connect(mThumbnails, &ThumbnailLoader::ready, this, &PalettePanel::thumbnailReady);
    mRescan.setSingleShot(true);
    mRescan.setInterval(250);
    connect(&mRescan, &QTimer::timeout, this, &PalettePanel::rebuild);
    connect(mWatcher, &QFileSystemWatcher::directoryChanged, &mRescan,
            qOverload<>(&QTimer::start));
    // The document's signals can arrive from inside the tree's own handling (a
    // drag adds its images first): the tree is rebuilt once control is back.
    mRebuildSoon.setSingleShot(true);
    mRebuildSoon.setInterval(0);
    connect(&mRebuildSoon, &QTimer::timeout, this, &PalettePanel::refill);
    if (session) {
        connect(session, &EditorSession::documentChanged, this, [this] {
            mScanNeeded = true;
            mRebuildSoon.start();
        });
        connect(session, &EditorSession::documentEdited, &mRebuildSoon,
                qOverload<>(&QTimer::start));
    }
    rebuild();
}

PalettePanel::~PalettePanel() = default;

RigxData *PalettePanel::document() const
{
    return mSession ? mSession->document() : nullptr;
}

QAction *PalettePanel::action(const QString &objectName) const
{
    for (QAction *a : mToolBar->actions()) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

QString PalettePanel::message() const
{
    return mMessage->isVisibleTo(this) ? mMessage->text() : QString();
}

void PalettePanel::setMessage(const QString &text)
{
    mMessage->setText(text);
    mMessage->setVisible(!text.isEmpty());
}

QTreeWidgetItem *PalettePanel::itemFor(const QString &name) const
{
    for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
        if ((*it)->data(0, PaletteTree::KindRole).toInt() != PaletteTree::FolderItem
            && (*it)->data(0, PaletteTree::NameRole).toString() == name)
            return *it;
    }
    return nullptr;
}

QString PalettePanel::pickedName() const
{
    const QTreeWidgetItem *item = mTree->currentItem();
    if (!item || item->data(0, PaletteTree::KindRole).toInt() == PaletteTree::FolderItem)
        return QString();
    return item->data(0, PaletteTree::NameRole).toString();
}

File *PalettePanel::pickedFile() const
{
    RigxData *doc = document();
    const QString name = pickedName();
    return doc && !name.isEmpty() ? doc->file(name, false) : nullptr;
}

void PalettePanel::rebuild()
{
    mScanNeeded = true;
    refill();
}

QString PalettePanel::signature() const
{
    // What the tree shows of the document: names, whether each image is there,
    // and the images on disk. Pivots and keys do not change the tree.
    QString text = mDiskImages.join(QLatin1Char('\n'));
    RigxData *doc = document();
    for (int f = 0; doc && f < doc->folderCount(); ++f) {
        const Folder *folder = doc->folder(f);
        text += QLatin1Char('\t') + folder->name();
        for (int i = 0; i < folder->fileCount(); ++i)
            text += QLatin1Char('\n') + folder->file(i)->name()
                    + (folder->file(i)->imageLoaded() ? QLatin1Char('+') : QLatin1Char('-'));
    }
    return text;
}

void PalettePanel::refill()
{
    mRebuildSoon.stop();
    mRescan.stop();
    RigxData *doc = document();
    const QString root = doc ? doc->projectDirectory() : QString();
    if (mScanNeeded || root != mScannedRoot) {
        mDiskImages.clear();
        QStringList folders;
        if (!root.isEmpty())
            scanImages(root, &mDiskImages, &folders);
        watchFolders(folders);
        mScannedRoot = root;
        mScanNeeded = false;
    }
    const QString shown = signature();
    if (doc && shown == mSignature && mTree->topLevelItemCount() > 0) {
        updatePreview();
        updateActions();
        return;
    }
    mSignature = shown;
    const QString picked = pickedName();
    QSet<QString> collapsed;
    for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
        if ((*it)->childCount() > 0 && !(*it)->isExpanded())
            collapsed.insert((*it)->data(0, PaletteTree::NameRole).toString());
    }
    mTree->clear();
    if (!doc) {
        mPreview->setHint(tr("No project is open"));
        updatePreview();
        updateActions();
        return;
    }

    QHash<QString, QTreeWidgetItem *> folderItems;
    const std::function<QTreeWidgetItem *(const QString &)> folderItem =
        [&](const QString &path) -> QTreeWidgetItem * {
        if (path.isEmpty() || path == QLatin1String("."))
            return nullptr;
        if (QTreeWidgetItem *found = folderItems.value(path))
            return found;
        const int slash = path.lastIndexOf(QLatin1Char('/'));
        QTreeWidgetItem *parent = slash > 0 ? folderItem(path.left(slash)) : nullptr;
        const QString label = slash > 0 ? path.mid(slash + 1) : path;
        auto *item = parent ? new QTreeWidgetItem(parent, {label})
                            : new QTreeWidgetItem(mTree, {label});
        item->setData(0, PaletteTree::NameRole, path);
        item->setData(0, PaletteTree::KindRole, PaletteTree::FolderItem);
        item->setIcon(0, smallIcon(style(), QStyle::SP_DirIcon));
        item->setFlags(Qt::ItemIsEnabled);
        folderItems.insert(path, item);
        return item;
    };
    const auto addImage = [&](QTreeWidgetItem *parent, const QString &name, const QString &label,
                              int kind) {
        auto *item = parent ? new QTreeWidgetItem(parent, {label}) : new QTreeWidgetItem(mTree, {label});
        item->setData(0, PaletteTree::NameRole, name);
        item->setData(0, PaletteTree::KindRole, kind);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
        return item;
    };

    QSet<QString> inProject;
    QSet<QString> sheetsShown;
    for (int f = 0; f < doc->folderCount(); ++f) {
        const Folder *folder = doc->folder(f);
        if (folder->spriteSheet()) {
            const QString sheet = folder->spriteSheetName();
            if (sheetsShown.contains(sheet))
                continue;
            sheetsShown.insert(sheet);
            // The sheet's own list of frames, whether the project uses them yet or not.
            const QString prefix = atlasPrefix(sheet);
            QTreeWidgetItem *sheetItem = new QTreeWidgetItem(mTree, {tr("%1 (sprite sheet)").arg(sheet)});
            sheetItem->setData(0, PaletteTree::NameRole, prefix);
            sheetItem->setData(0, PaletteTree::KindRole, PaletteTree::FolderItem);
            sheetItem->setIcon(0, smallIcon(style(), QStyle::SP_DirLinkIcon));
            sheetItem->setFlags(Qt::ItemIsEnabled);
            doc->imageCache().atlasFrame(root, sheet, QString());
            const JsonSpriteSheet *loaded = doc->imageCache().spriteSheets().spriteSheet(sheet, false);
            QStringList frames = loaded ? loaded->frameNames() : QStringList();
            for (int g = 0; g < doc->folderCount(); ++g) {
                const Folder *other = doc->folder(g);
                if (other->spriteSheetName() != sheet)
                    continue;
                for (int i = 0; i < other->fileCount(); ++i) {
                    const QString frame = RigxData::removeBeginningBracketDirectory(other->file(i)->name());
                    if (!frames.contains(frame))
                        frames.append(frame);
                }
            }
            frames.sort(Qt::CaseInsensitive);
            for (const QString &frame : frames) {
                const QString name = prefix + frame;
                const File *file = doc->file(name, false);
                const bool present = loaded && loaded->frameNames().contains(frame);
                QTreeWidgetItem *item = addImage(sheetItem, name, frame,
                                                 present ? PaletteTree::FrameItem
                                                         : PaletteTree::MissingItem);
                const QImage image = present ? doc->imageCache().atlasFrame(root, sheet, frame)
                                             : QImage();
                item->setIcon(0, present ? iconFor(image)
                                         : smallIcon(style(), QStyle::SP_MessageBoxWarning));
                item->setToolTip(0, present ? (file ? tr("Frame of %1").arg(sheet)
                                                    : tr("Frame of %1, not yet in the project")
                                                          .arg(sheet))
                                            : tr("Missing from the sprite sheet %1").arg(sheet));
                inProject.insert(name);
            }
            continue;
        }
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            if (!file->isImage())
                continue;
            const QString name = file->name();
            inProject.insert(name);
            const QFileInfo info(name);
            QTreeWidgetItem *item = addImage(folderItem(info.path()), name, info.fileName(),
                                             file->imageLoaded() ? PaletteTree::ImageItem
                                                                 : PaletteTree::MissingItem);
            if (file->imageLoaded()) {
                item->setIcon(0, iconFor(mThumbnails->thumbnail(file->fullPath())));
                item->setToolTip(0, tr("%1\n%2 x %3 pixels").arg(name).arg(file->width()).arg(file->height()));
            } else {
                item->setIcon(0, smallIcon(style(), QStyle::SP_MessageBoxWarning));
                item->setForeground(0, QColor(0xc0, 0x20, 0x20));
                item->setToolTip(0, tr("Missing: %1\nUse Find Missing to look for it under the "
                                       "project folder")
                                        .arg(file->fullPath()));
            }
        }
    }
    for (const QString &name : std::as_const(mDiskImages)) {
        if (inProject.contains(name))
            continue;
        const QFileInfo info(name);
        QTreeWidgetItem *item = addImage(folderItem(info.path()), name, info.fileName(),
                                         PaletteTree::DiskOnlyItem);
        item->setIcon(0, iconFor(mThumbnails->thumbnail(root + QLatin1Char('/') + name)));
        item->setForeground(0, palette().color(QPalette::Disabled, QPalette::Text));
        item->setToolTip(0, tr("%1\nNot in the project yet: drag it onto the canvas to use it")
                                .arg(name));
    }
    mTree->sortItems(0, Qt::AscendingOrder);
    for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
        if ((*it)->childCount() > 0)
            (*it)->setExpanded(!collapsed.contains((*it)->data(0, PaletteTree::NameRole).toString()));
    }
    if (QTreeWidgetItem *item = itemFor(picked))
        mTree->setCurrentItem(item);
    applyFilter();
    updatePreview();
    updateActions();
}

void PalettePanel::watchFolders(const QStringList &folders)
{
    const QStringList old = mWatcher->directories();
    QStringList wanted = folders.mid(0, MaxWatchedFolders);
    if (old == wanted)
        return;
    if (!old.isEmpty())
        mWatcher->removePaths(old);
    if (!wanted.isEmpty())
        mWatcher->addPaths(wanted);
}

void PalettePanel::applyFilter()
{
    const QString text = mFilter->text().trimmed();
    // Leaves first: a folder stays when anything inside it does.
    const std::function<bool(QTreeWidgetItem *)> visit = [&](QTreeWidgetItem *item) {
        bool shown;
        if (item->data(0, PaletteTree::KindRole).toInt() == PaletteTree::FolderItem) {
            shown = false;
            for (int i = 0; i < item->childCount(); ++i)
                shown = visit(item->child(i)) || shown;
        } else {
            shown = text.isEmpty() || item->text(0).contains(text, Qt::CaseInsensitive)
                    || item->data(0, PaletteTree::NameRole).toString().contains(text, Qt::CaseInsensitive);
        }
        item->setHidden(!shown);
        return shown;
    };
    for (int i = 0; i < mTree->topLevelItemCount(); ++i)
        visit(mTree->topLevelItem(i));
}

void PalettePanel::thumbnailReady(const QString &path)
{
    RigxData *doc = document();
    if (!doc)
        return;
    const QString root = doc->projectDirectory() + QLatin1Char('/');
    const QImage image = mThumbnails->thumbnail(path);
    for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
        const int kind = (*it)->data(0, PaletteTree::KindRole).toInt();
        if ((kind == PaletteTree::ImageItem || kind == PaletteTree::DiskOnlyItem)
            && root + (*it)->data(0, PaletteTree::NameRole).toString() == path)
            (*it)->setIcon(0, iconFor(image));
    }
}

void PalettePanel::updatePreview()
{
    const QTreeWidgetItem *item = mTree->currentItem();
    const int kind = item ? item->data(0, PaletteTree::KindRole).toInt() : PaletteTree::FolderItem;
    File *file = pickedFile();
    if (file && file->imageLoaded()) {
        const QPointF pivot = file->pivot(false);
        mPreview->setImage(file->image(), pivot, true);
        mInfo->setText(tr("%1 x %2 px, pivot %3, %4")
                           .arg(file->width())
                           .arg(file->height())
                           .arg(pivot.x(), 0, 'g', 3)
                           .arg(pivot.y(), 0, 'g', 3));
        return;
    }
    RigxData *doc = document();
    if (kind == PaletteTree::DiskOnlyItem && doc) {
        // Its pivot can be chosen before the first drag: the click adds the
        // image to the project with that pivot.
        QImageReader reader(doc->projectDirectory() + QLatin1Char('/') + pickedName());
        const QSize size = reader.size();
        if (size.isValid() && size.width() * qint64(size.height()) > PreviewPixels)
            reader.setScaledSize(size.scaled(1024, 1024, Qt::KeepAspectRatio));
        const QImage image = reader.read();
        if (!image.isNull()) {
            mPreview->setImage(image, QPointF(0.5, 0.5), true);
            mInfo->setText(tr("%1 x %2 px, not in the project yet").arg(size.width()).arg(size.height()));
            return;
        }
    }
    mPreview->setImage(QImage(), QPointF(), false);
    mInfo->clear();
    if (kind == PaletteTree::MissingItem)
        mPreview->setHint(tr("This image is missing. Find Missing looks for it under the "
                             "project folder."));
    else if (kind == PaletteTree::DiskOnlyItem || kind == PaletteTree::FrameItem)
        mPreview->setHint(tr("Not in the project yet. Drag it onto the canvas to use it."));
    else
        mPreview->setHint(document() ? tr("Pick an image to see it here")
                                     : tr("No project is open"));
}

void PalettePanel::updateActions()
{
    const File *file = pickedFile();
    RigxData *doc = document();
    action(QStringLiteral("actionRenameImage"))->setEnabled(file && !file->isAtlasFrame());
    action(QStringLiteral("actionReplaceImage"))->setEnabled(file != nullptr);
    bool anyMissing = false;
    for (int f = 0; doc && f < doc->folderCount() && !anyMissing; ++f) {
        for (int i = 0; i < doc->folder(f)->fileCount() && !anyMissing; ++i) {
            const File *candidate = doc->folder(f)->file(i);
            anyMissing = candidate->isImage() && !candidate->imageLoaded() && !candidate->isAtlasFrame();
        }
    }
    action(QStringLiteral("actionFindMissing"))->setEnabled(anyMissing);
}

QStringList PalettePanel::prepareDrag(const QStringList &names)
{
    RigxData *doc = document();
    if (!doc || doc->projectDirectory().isEmpty())
        return {};
    QStringList toAdd;
    for (const QString &name : names) {
        if (!doc->file(name, false))
            toAdd.append(name);
    }
    if (!toAdd.isEmpty()) {
        // The canvas only takes images the project holds.
        auto *macro = new QUndoCommand(toAdd.size() == 1 ? tr("image added") : tr("images added"));
        for (const QString &name : std::as_const(toAdd))
            new AddFileCommand(doc, name, QPointF(0.5, 0.5), macro);
        doc->pushUndo(macro);
    }
    QStringList paths;
    for (const QString &name : names) {
        if (doc->file(name, false))
            paths.append(doc->projectDirectory() + QLatin1Char('/') + name);
    }
    return paths;
}

void PalettePanel::renamePicked()
{
    RigxData *doc = document();
    File *file = pickedFile();
    if (!doc || !file)
        return;
    const QString oldName = file->name();
    const QFileInfo oldInfo(oldName);
    bool ok = false;
    const QString typed = QInputDialog::getText(this, tr("Rename Image"), tr("New file name:"),
                                                QLineEdit::Normal, oldInfo.fileName(), &ok);
    if (!ok)
        return;
    QString base = cleanedFileName(typed);
    if (base.isEmpty()) {
        setMessage(tr("\"%1\" cannot be a file name: it may not be empty or hold \"/\" or \"\\\".")
                       .arg(typed.left(80)));
        return;
    }
    if (QFileInfo(base).suffix().isEmpty() && !oldInfo.suffix().isEmpty())
        base += QLatin1Char('.') + oldInfo.suffix();
    const QString newName = oldInfo.path() == QLatin1String(".")
                                ? base
                                : oldInfo.path() + QLatin1Char('/') + base;
    if (newName == oldName)
        return;
    // The dialog ran an event loop: find the file again.
    file = doc->file(oldName, false);
    if (!file)
        return;
    if (doc->file(newName, false)
        || QFileInfo::exists(doc->projectDirectory() + QLatin1Char('/') + newName)) {
        setMessage(tr("An image named \"%1\" is already there.").arg(newName));
        return;
    }
    doc->pushUndo(new RenameFileCommand(file, newName, true));
    rebuild();
    // Without a stack the command is gone already; the name tells the outcome.
    File *renamed = doc->file(newName, false);
    setMessage(renamed && !renamed->imageLoaded() && file == renamed
                   ? tr("The image could not be renamed on disk; the project now names \"%1\".")
                         .arg(newName)
                   : QString());
    if (QTreeWidgetItem *item = itemFor(newName))
        mTree->setCurrentItem(item);
}

void PalettePanel::replacePicked()
{
    RigxData *doc = document();
    File *file = pickedFile();
    if (!doc || !file)
        return;
    const QString oldName = file->name();
    QStringList choices;
    for (const File *candidate : doc->flattenedFiles()) {
        if (candidate->isImage() && candidate->name() != oldName)
            choices.append(candidate->name());
    }
    for (const QString &name : std::as_const(mDiskImages)) {
        if (!choices.contains(name) && name != oldName)
            choices.append(name);
    }
    if (choices.isEmpty()) {
        setMessage(tr("There is no other image to use instead."));
        return;
    }
    bool ok = false;
    const QString chosen = QInputDialog::getItem(
        this, tr("Replace Image"), tr("Show instead of \"%1\":").arg(oldName), choices, 0, false, &ok);
    if (!ok || !choices.contains(chosen))
        return;
    // One step, also when the chosen image has to join the project first.
    QUndoStack *stack = doc->undoStack();
    if (stack)
        stack->beginMacro(tr("image replaced"));
    if (!doc->file(chosen, false))
        doc->pushUndo(new AddFileCommand(doc, chosen, QPointF(0.5, 0.5)));
    const File *source = doc->file(oldName, false);
    const File *target = doc->file(chosen, false);
    if (source && target)
        doc->replaceFileReferences(source->address(), target->address());
    if (stack)
        stack->endMacro();
}

void PalettePanel::pivotClicked(const QPointF &pivot)
{
    RigxData *doc = document();
    File *file = pickedFile();
    const QTreeWidgetItem *item = mTree->currentItem();
    if (doc && file)
        doc->createUndosForDefaultPivotPoints(file, pivot);
    else if (doc && item && item->data(0, PaletteTree::KindRole).toInt() == PaletteTree::DiskOnlyItem)
        doc->pushUndo(new AddFileCommand(doc, pickedName(), pivot));
    updatePreview();
}

void PalettePanel::attemptMissingImageResolution()
{
    RigxData *doc = document();
    if (!doc)
        return;
    QList<QPair<QString, QString>> found; // old name, new name
    int missing = 0;
    for (int f = 0; f < doc->folderCount(); ++f) {
        const Folder *folder = doc->folder(f);
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            if (!file->isImage() || file->imageLoaded() || file->isAtlasFrame())
                continue;
            ++missing;
            const QStringList candidates = doc->missingImageCandidates(file);
            for (const QString &candidate : candidates) {
                if (!doc->file(candidate, false)) {
                    found.append({file->name(), candidate});
                    break;
                }
            }
        }
    }
    if (missing == 0) {
        setMessage(tr("No image of the project is missing."));
        return;
    }
    if (found.isEmpty()) {
        setMessage(tr("None of the %n missing image(s) was found under the project folder.", "",
                      missing));
        return;
    }
    QStringList lines;
    for (const auto &[from, to] : std::as_const(found))
        lines.append(QStringLiteral("%1  \u2192  %2").arg(from, to));
    const QString text = tr("Found %1 of %2 missing images under the project folder:\n\n%3\n\n"
                            "Use these files?")
                             .arg(found.size())
                             .arg(missing)
                             .arg(lines.mid(0, 20).join(QLatin1Char('\n')));
    if (QMessageBox::question(this, tr("Missing Images"), text, QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::Yes)
        != QMessageBox::Yes)
        return;
    auto *macro = new QUndoCommand(tr("missing images found"));
    for (const auto &[from, to] : std::as_const(found)) {
        if (File *file = doc->file(from, false))
            new RenameFileCommand(file, to, false, macro);
    }
    doc->pushUndo(macro);
    setMessage(tr("%n missing image(s) found.", "", int(found.size())));
    refill();
}

} // namespace Morvane
