// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "../app/apptesthelpers.h"
#include "io/projectfile.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "ui/packing/packdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

namespace {

const char project[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<morvane_data rigx_version="1.0">
    <folder id="0" name="body">
        <file id="0" name="body/torso.png" width="20" height="30"/>
        <file id="1" name="body/head.png" width="16" height="16"/>
    </folder>
    <folder id="1" name="legs">
        <file id="0" name="legs/leg.png" width="8" height="24"/>
        <file id="1" name="legs/foot.png" width="12" height="6"/>
    </folder>
    <entity id="0" name="hero">
        <obj_info name="torso" type="sprite"/>
        <obj_info name="head" type="sprite"/>
        <obj_info name="leg" type="sprite"/>
        <obj_info name="foot" type="sprite"/>
        <animation id="0" name="idle" length="1000">
            <mainline><key id="0">
                <object_ref id="0" timeline="0" key="0" z_index="0"/>
                <object_ref id="1" timeline="1" key="0" z_index="1"/>
                <object_ref id="2" timeline="2" key="0" z_index="2"/>
                <object_ref id="3" timeline="3" key="0" z_index="3"/>
            </key></mainline>
            <timeline id="0" obj="0" name="torso"><key id="0"><object folder="0" file="0"/></key></timeline>
            <timeline id="1" obj="1" name="head"><key id="0"><object folder="0" file="1" x="5"/></key></timeline>
            <timeline id="2" obj="2" name="leg"><key id="0"><object folder="1" file="0" y="-20"/></key></timeline>
            <timeline id="3" obj="3" name="foot"><key id="0"><object folder="1" file="1" y="-40"/></key></timeline>
        </animation>
    </entity>
</morvane_data>
)";

// An image whose every pixel differs from its neighbours, inside a transparent border of
// `border` pixels, so a frame put back wrongly (shifted, turned, clipped) cannot match.
QImage pattern(int width, int height, int border, int seed)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    for (int y = border; y < height - border; ++y) {
        for (int x = border; x < width - border; ++x)
            image.setPixel(x, y, qRgba((x * 37 + seed) % 256, (y * 53 + seed) % 256,
                                       (x * y + seed) % 256, 255));
    }
    return image;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

} // namespace

class TestPackDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void packAndBind_data();
    void packAndBind();

private:
    QString path(const QString &name) const { return mFixture.path(name); }
    QByteArray savedBytes();

    Test::AppFixture mFixture;
    QUndoStack mStack;
    std::unique_ptr<RigxData> mDocument;
    QMap<QString, QImage> mImages;
};

void TestPackDialog::init()
{
    mFixture.init();
    mStack.clear();
    mDocument = std::make_unique<RigxData>(&mStack, QStringLiteral("r4.1"));
    QVERIFY(QDir(mFixture.folder()).mkpath("hero/body"));
    QVERIFY(QDir(mFixture.folder()).mkpath("hero/legs"));
    mImages = {
        {"body/torso.png", pattern(20, 30, 3, 1)},
        {"body/head.png", pattern(16, 16, 0, 2)},
        {"legs/leg.png", pattern(8, 24, 1, 3)},
        {"legs/foot.png", pattern(12, 6, 0, 4)},
    };
    for (auto it = mImages.cbegin(); it != mImages.cend(); ++it)
        QVERIFY(it.value().save(path("hero/" + it.key())));
    QVERIFY(Test::writeFile(path("hero/hero.rigx"), project));
    QVERIFY(ProjectFile::open(mDocument.get(), path("hero/hero.rigx")));
}

void TestPackDialog::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mDocument.reset();
    mStack.clear();
    mFixture.cleanup();
}

// The document as saved now (to a file beside the project, so image names stay relative).
QByteArray TestPackDialog::savedBytes()
{
    const QString projectPath = mDocument->filePath();
    const QString copy = path("hero/saved.rigx");
    if (!ProjectFile::save(mDocument.get(), copy))
        return QByteArray("<not saved>");
    mDocument->setFilePath(projectPath);
    return readAll(copy);
}

void TestPackDialog::packAndBind_data()
{
    QTest::addColumn<bool>("bodyOnly");
    QTest::addColumn<QString>("maxSize");
    QTest::addColumn<bool>("trimAndRotate");
    QTest::addColumn<bool>("bind");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QStringList>("bound");

    const QStringList all = {"body/torso.png", "body/head.png", "legs/leg.png", "legs/foot.png"};
    QTest::newRow("all, bound") << false << QString() << false << true << QString() << "Packed 4 images into 1 sheet" << all;
    QTest::newRow("one folder, trimmed and rotated, bound")
        << true << QString("64") << true << true << QString() << "Packed 2 images into "
        << QStringList({"body/torso.png", "body/head.png"});
    QTest::newRow("not bound") << false << QString() << false << false << QString()
                               << "Packed 4 images into 1 sheet" << QStringList();
    QTest::newRow("bound, output outside the project")
        << false << QString() << false << true << QString("elsewhere")
        << "must lie inside the project folder" << QStringList();
    QTest::newRow("sheet smaller than an image")
        << false << QString("16") << false << true << QString() << "Packing failed: "
        << QStringList();
}

void TestPackDialog::packAndBind()
{
    QFETCH(bool, bodyOnly);
    QFETCH(QString, maxSize);
    QFETCH(bool, trimAndRotate);
    QFETCH(bool, bind);
    QFETCH(QString, output);
    QFETCH(QString, message);
    QFETCH(QStringList, bound);
    const QByteArray before = savedBytes();
    const bool succeeds = message.startsWith("Packed");

    QPointer<PackDialog> dialog = new PackDialog(mDocument.get());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    auto *folders = dialog->findChild<QListWidget *>("folders");
    QCOMPARE(folders->count(), 2);
    QVERIFY(!folders->isEnabled());
    if (bodyOnly) {
        auto *chosen = dialog->findChildren<QRadioButton *>().at(1);
        QTest::mouseClick(chosen, Qt::LeftButton, {}, QPoint(6, chosen->height() / 2));
        QVERIFY(folders->isEnabled());
        QCOMPARE(folders->item(1)->text(), QString("legs"));
        folders->setFocus();
        folders->setCurrentRow(1);
        QTest::keyClick(folders, Qt::Key_Space);
        QCOMPARE(folders->item(1)->checkState(), Qt::Unchecked);
    }
    if (!maxSize.isEmpty()) {
        auto *spin = dialog->findChild<QSpinBox *>("maxSize");
        QTest::keyClick(spin, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(spin, maxSize);
        QCOMPARE(spin->value(), maxSize.toInt());
    }
    for (QCheckBox *box : dialog->findChildren<QCheckBox *>()) {
        const bool wanted = box->text().startsWith("Let the packed folders") ? bind
                                                                              : trimAndRotate;
        if (box->isChecked() != wanted)
            QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
        QCOMPARE(box->isChecked(), wanted);
    }
    if (!output.isEmpty()) {
        auto *edit = dialog->findChild<QLineEdit *>("outputFolder");
        QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(edit, path(output));
    }

    QString shown;
    {
        Test::ModalAnswerer answer([&](QWidget *modal) { shown = Test::clickInMessageBox(modal); });
        auto *buttons = dialog->findChild<QDialogButtonBox *>();
        QCOMPARE(buttons->button(QDialogButtonBox::Ok)->text(), QString("Pack"));
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
        QTRY_VERIFY(answer.answered());
    }
    QVERIFY2(shown.contains(message), qPrintable(shown));
    // Closed after a success, kept open after a failure to fix the options.
    QCOMPARE(dialog && dialog->isVisible(), !succeeds);
    const QString sheet = path((output.isEmpty() ? QString("hero/atlas") : output) + "/atlas.json");
    QCOMPARE(QFileInfo::exists(sheet), succeeds);
    QCOMPARE(mStack.count(), bound.isEmpty() ? 0 : 1);
    if (!succeeds || bound.isEmpty()) {
        QCOMPARE(savedBytes(), before);
        return;
    }

    // The sheet describes each packed image under its file's name.
    QFile description(sheet);
    QVERIFY(description.open(QIODevice::ReadOnly));
    const QJsonObject frames =
        QJsonDocument::fromJson(description.readAll()).object().value("frames").toObject();
    QCOMPARE(frames.size(), bound.size());

    // Bound, every file shows its frame: the very pixels it showed before.
    QStringList boundNow;
    for (int f = 0; f < mDocument->folderCount(); ++f) {
        const Folder *folder = mDocument->folder(f);
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            QString name = file->name();
            if (file->isAtlasFrame()) {
                name = name.mid(name.indexOf(QLatin1String(">/")) + 2);
                boundNow << name;
            }
            QCOMPARE(file->width(), mImages.value(name).width());
            QCOMPARE(file->image().convertToFormat(QImage::Format_ARGB32),
                     mImages.value(name));
        }
    }
    boundNow.sort();
    QStringList expected = bound;
    expected.sort();
    QCOMPARE(boundNow, expected);

    // One undo step: undo gives the saved bytes back, redo the bound project again.
    const QByteArray after = savedBytes();
    QVERIFY(after != before);
    mStack.undo();
    QCOMPARE(savedBytes(), before);
    mStack.redo();
    QCOMPARE(savedBytes(), after);
}

QTEST_MAIN(TestPackDialog)
#include "tst_packdialog.moc"
