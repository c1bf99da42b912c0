// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// The export dialog driven through its widgets: the couplings between its
// fields, an export from the Export button, and what it remembers.

#include "exporttesthelpers.h"

#include "canvas/editorsession.h"
#include "export/exporttopngdialog.h"
#include "io/projectsaveoptions.h"
#include "io/xmlprojectwriter.h"
#include "model/animation.h"
#include "model/commands/animationcommands.h"
#include "model/entity.h"

#include <QAbstractSpinBox>
#include <QBuffer>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// Types `text` into a spin box as a user does: select all, type. (Enter would
// also press the dialog's default button.)
void typeInto(QAbstractSpinBox *box, const QString &text)
{
    QLineEdit *edit = box->findChild<QLineEdit *>();
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

// Clicks a check box on its indicator, as a user does (its middle may lie
// beyond its text, where a click does nothing).
void tick(QCheckBox *box)
{
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
}

template<typename T>
T *child(QWidget *dialog, const char *name)
{
    T *w = dialog->findChild<T *>(QLatin1String(name));
    if (!w)
        qWarning("no widget %s", name);
    return w;
}

// The document as it would be saved.
QByteArray savedBytes(RigxData *document)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return XmlProjectWriter::write(*document, &buffer, ProjectSaveOptions()) ? buffer.data()
                                                                               : QByteArray("<not saved>");
}

// The options as one text per field, to compare whole sets at once.
QStringList describe(const ExportOptions &o)
{
    auto rect = [](const QRectF &r) {
        return QStringLiteral("%1 %2 %3 %4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    };
    const WatermarkOptions &w = o.watermark;
    const GifOptions &g = o.gif;
    return {exportKindKey(o.kind), QString::number(o.scaleWidth), QString::number(o.scaleHeight),
            QString::number(o.constrainProportions), trimTypeKey(o.trim), rect(o.customRect),
            QString::number(o.framesPerRow), QString::number(o.interval),
            QString::number(o.keyframesOnly), QString::number(o.fillBackground),
            QString::number(o.premultiplied), QString::number(w.enabled), w.fileName,
            QString::number(w.opacity), watermarkSizeKey(w.size), QString::number(w.position),
            QString::number(w.keepAspectRatio), QString::number(g.loopCount),
            QString::number(int(g.dither)), QString::number(g.alphaThreshold), g.matte.name(),
            QString::number(g.sharedPalette), QString::number(o.batch),
            QString::number(o.batchVertical), QString::number(o.batchSetIntervals)};
}

} // namespace

class TestExportDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void framesFollowIntervalAndFps_data();
    void framesFollowIntervalAndFps();
    void constrainedScale();
    void sheetTiles_data();
    void sheetTiles();
    void exportButtonWritesAndRemembers();
    void batchExport_data();
    void batchExport();
    void optionsRoundTripThroughSettings();
};

void TestExportDialog::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Tallowcraft"));
    QCoreApplication::setApplicationName(QStringLiteral("MorvaneExportTest"));
}

void TestExportDialog::init()
{
    QSettings().clear();
}

void TestExportDialog::framesFollowIntervalAndFps_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("interval");
    QTest::addColumn<double>("fps");
    QTest::addColumn<QString>("trimming");
    QTest::addColumn<QString>("frames");
    // The animation is 800 ms long.
    QTest::newRow("interval divides") << "interval" << "100" << 100 << 10.0 << "" << "8 frame(s)";
    QTest::newRow("interval 300") << "interval" << "300" << 300 << 3.33 << "trimming 200 ms"
                                  << "3 frame(s)";
    QTest::newRow("30 fps") << "fps" << "30" << 33 << 30.0 << "trimming 8 ms" << "24 frame(s)";
    QTest::newRow("4 fps") << "fps" << "4" << 250 << 4.0 << "trimming 50 ms" << "3 frame(s)";
}

void TestExportDialog::framesFollowIntervalAndFps()
{
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(int, interval);
    QFETCH(double, fps);
    QFETCH(QString, trimming);
    QFETCH(QString, frames);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    EditorSession session(&project.scene);
    ExportToPngDialog dialog(&session);
    dialog.show();
    typeInto(child<QAbstractSpinBox>(&dialog, field.toLatin1().constData()), typed);
    QCOMPARE(child<QSpinBox>(&dialog, "interval")->value(), interval);
    QCOMPARE(child<QDoubleSpinBox>(&dialog, "fps")->value(), fps);
    QLabel *label = child<QLabel>(&dialog, "trimming");
    QCOMPARE(label->isVisible() ? label->text() : QString(), trimming);
    QCOMPARE(child<QLabel>(&dialog, "frameCount")->text(), frames);
    QCOMPARE(dialog.options().interval, interval);
}

void TestExportDialog::constrainedScale()
{
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    EditorSession session(&project.scene);
    ExportToPngDialog dialog(&session);
    dialog.show();
    auto *width = child<QDoubleSpinBox>(&dialog, "scaleWidth");
    auto *height = child<QDoubleSpinBox>(&dialog, "scaleHeight");
    auto *constrain = child<QCheckBox>(&dialog, "constrainProportions");
    QVERIFY(constrain->isChecked());
    typeInto(width, QStringLiteral("200"));
    QCOMPARE(height->value(), 200.0);
    constrain->click();
    typeInto(height, QStringLiteral("50"));
    QCOMPARE(width->value(), 200.0);
    constrain->click();
    typeInto(width, QStringLiteral("100"));
    QCOMPARE(height->value(), 25.0);
    QCOMPARE(dialog.options().scaleWidth, 100.0);
    QCOMPARE(dialog.options().scaleHeight, 25.0);
}

void TestExportDialog::sheetTiles_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("horizontal");
    QTest::addColumn<int>("vertical");
    // Eight frames.
    QTest::newRow("three across") << "horizontalFrames" << "3" << 3 << 3;
    QTest::newRow("four across") << "horizontalFrames" << "4" << 4 << 2;
    QTest::newRow("one row") << "verticalFrames" << "1" << 8 << 1;
    QTest::newRow("three rows") << "verticalFrames" << "3" << 3 << 3;
}

void TestExportDialog::sheetTiles()
{
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(int, horizontal);
    QFETCH(int, vertical);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    EditorSession session(&project.scene);
    ExportToPngDialog dialog(&session);
    dialog.show();
    child<QRadioButton>(&dialog, "spriteSheet")->click();
    typeInto(child<QAbstractSpinBox>(&dialog, field.toLatin1().constData()), typed);
    QCOMPARE(child<QSpinBox>(&dialog, "horizontalFrames")->value(), horizontal);
    QCOMPARE(child<QSpinBox>(&dialog, "verticalFrames")->value(), vertical);
    QCOMPARE(dialog.options().framesPerRow, horizontal);
}

void TestExportDialog::exportButtonWritesAndRemembers()
{
    TinyProject project({{0, QPointF(0, 0)}, {400, QPointF(10, 0)}});
    QVERIFY(project.ok);
    EditorSession session(&project.scene);
    session.setCurrentTime(150);
    ExportToPngDialog dialog(&session);
    QStringList captions;
    dialog.setFileChooser([&](const QString &caption, const QString &filter) {
        captions << caption << filter;
        return project.out(QStringLiteral("walk")); // typed without the suffix
    });
    dialog.show();
    child<QRadioButton>(&dialog, "gif")->click();
    typeInto(child<QSpinBox>(&dialog, "interval"), QStringLiteral("200"));
    QTest::mouseClick(child<QPushButton>(&dialog, "export"), Qt::LeftButton);
    QCOMPARE(captions, (QStringList{QStringLiteral("Choose a file name for the exported gif"),
                                    QStringLiteral("(*.gif)")}));
    QVERIFY2(dialog.lastError().isEmpty(), qPrintable(dialog.lastError()));
    QCOMPARE(dialog.writtenFiles(), QStringList{project.out(QStringLiteral("walk.gif"))});
    QVERIFY(QFileInfo(project.out(QStringLiteral("walk.gif"))).size() > 0);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    // The scene is where the user left it.
    QCOMPARE(session.currentTime(), 150);
    QSettings settings;
    QCOMPARE(settings.value(QStringLiteral("png export file type")).toString(), QStringLiteral("gif"));
    QCOMPARE(settings.value(QStringLiteral("png export source frame interval")).toInt(), 200);
    QCOMPARE(settings.value(QStringLiteral("export trim type")).toString(),
             QStringLiteral("trim rect to animation"));

    // A new dialog starts from what was remembered.
    ExportToPngDialog again(&session);
    QVERIFY(child<QRadioButton>(&again, "gif")->isChecked());
    QCOMPARE(child<QSpinBox>(&again, "interval")->value(), 200);
}

void TestExportDialog::batchExport_data()
{
    QTest::addColumn<bool>("setIntervals");
    QTest::addColumn<bool>("keyframesOnly");
    QTest::addColumn<QList<int>>("intervals"); // of the two animations afterwards
    QTest::addColumn<int>("framesEach");
    // The second animation already snaps to 50 ms; only the first changes.
    QTest::newRow("intervals set") << true << false << QList<int>{50, 50} << 4;
    QTest::newRow("intervals kept") << false << false << QList<int>{100, 50} << 4;
    // Keyframes only has no interval to hand on: the box cannot be ticked.
    QTest::newRow("keyframes only") << true << true << QList<int>{100, 50} << 1;
}

void TestExportDialog::batchExport()
{
    QFETCH(bool, setIntervals);
    QFETCH(bool, keyframesOnly);
    QFETCH(QList<int>, intervals);
    QFETCH(int, framesEach);
    TinyProject project({{0, QPointF(0, 0)}}, 200);
    QVERIFY(project.ok);
    Entity *entity = project.document.entity(0);
    RigxData::pushUndo(&project.document, new CloneAnimationCommand(entity->animation(0)));
    QCOMPARE(entity->animationCount(), 2);
    entity->animation(1)->setSnappingInterval(50);
    QUndoStack stack;
    project.document.setUndoStack(&stack);
    const QByteArray before = savedBytes(&project.document);
    EditorSession session(&project.scene);
    ExportToPngDialog dialog(&session);
    dialog.setFileChooser([&](const QString &, const QString &) {
        return project.out(QStringLiteral("hero.png"));
    });
    dialog.show();
    tick(child<QCheckBox>(&dialog, "batch"));
    if (keyframesOnly)
        tick(child<QCheckBox>(&dialog, "keyframesOnly"));
    else
        typeInto(child<QSpinBox>(&dialog, "interval"), QStringLiteral("50"));
    auto *box = child<QCheckBox>(&dialog, "batchIntervals");
    if (setIntervals)
        tick(box);
    QCOMPARE(box->isChecked(), setIntervals && !keyframesOnly);
    QVERIFY(dialog.performExport());

    QStringList files;
    for (int a = 0; a < 2; ++a) {
        for (int k = 0; k < framesEach; ++k)
            files << project.out(QStringLiteral("hero_%1_%2.png")
                                     .arg(entity->animation(a)->name())
                                     .arg(k, 3, 10, QLatin1Char('0')));
    }
    QCOMPARE(dialog.writtenFiles(), files);
    QCOMPARE((QList<int>{entity->animation(0)->snappingInterval(),
                         entity->animation(1)->snappingInterval()}),
             intervals);
    const bool changed = intervals.first() != 100;
    QCOMPARE(stack.count(), changed ? 1 : 0);
    if (changed) {
        const QByteArray after = savedBytes(&project.document);
        stack.undo();
        QCOMPARE(savedBytes(&project.document), before);
        stack.redo();
        QCOMPARE(savedBytes(&project.document), after);
    }
    project.document.setUndoStack(nullptr);
}

void TestExportDialog::optionsRoundTripThroughSettings()
{
    ExportOptions o;
    o.kind = ExportKind::SpriteSheet;
    o.scaleWidth = 150;
    o.scaleHeight = 75.5;
    o.constrainProportions = false;
    o.trim = TrimType::Custom;
    o.customRect = QRectF(-10.5, -20, 30, 40.25);
    o.framesPerRow = 4;
    o.interval = 42;
    o.keyframesOnly = true;
    o.fillBackground = true;
    o.premultiplied = true;
    o.watermark = {true, QStringLiteral("/m.png"), 40, WatermarkSize::ShrinkOrExpand, 3, false};
    o.gif.loopCount = 5;
    o.gif.dither = GifDither::Ordered;
    o.gif.alphaThreshold = 10;
    o.gif.matte = QColor(1, 2, 3);
    o.gif.sharedPalette = false;
    o.batch = true;
    o.batchVertical = true;
    o.batchSetIntervals = true;
    {
        QSettings settings;
        o.save(settings);
    }
    QSettings settings;
    ExportOptions back;
    back.load(settings);
    // Every option differs from its default above, so none comes back by chance.
    QCOMPARE(describe(back), describe(o));
    QCOMPARE(settings.value(QStringLiteral("png export watermark size")).toString(),
             QStringLiteral("shrink or expand"));
    QCOMPARE(settings.value(QStringLiteral("png export file type")).toString(),
             QStringLiteral("png spritesheet"));
}

QTEST_MAIN(TestExportDialog)
#include "tst_exportdialog.moc"
