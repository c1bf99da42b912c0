// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Draws the images of the bundled example character: body parts of a small
// figure, an alternate head and torso for its character map, and a lantern
// prop for its sub-entity. Run through scripts/make_example_images.sh.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>
#include <functional>

namespace {

const QColor outline(0x2b, 0x22, 0x1c);
const QColor skin(0xf1, 0xc2, 0x93);
const QColor shirt(0x3a, 0x7c, 0xc4);
const QColor trousers(0x4a, 0x4f, 0x5e);
const QColor boot(0x5a, 0x3a, 0x22);
const QColor hair(0x6b, 0x3e, 0x1f);
const QColor steel(0xa9, 0xb3, 0xbd);
const QColor steelDark(0x6e, 0x78, 0x84);

bool draw(const QString &path, int width, int height, const std::function<void(QPainter &)> &paint)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    paint(painter);
    painter.end();
    if (!image.save(path, "PNG")) {
        std::fprintf(stderr, "Error: Cannot write file %s\n", qPrintable(path));
        return false;
    }
    return true;
}

void limb(QPainter &p, int width, int height, const QColor &fill)
{
    p.setBrush(fill);
    p.drawRoundedRect(QRectF(2, 2, width - 4, height - 4), (width - 4) / 2.0, (width - 4) / 2.0);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[argc - 1]) : QStringLiteral(".");
    const QString hero = root + QStringLiteral("/hero");
    QDir().mkpath(hero + QStringLiteral("/body"));
    QDir().mkpath(hero + QStringLiteral("/costume"));
    QDir().mkpath(hero + QStringLiteral("/props"));

    bool ok = true;
    ok &= draw(hero + "/body/head.png", 64, 68, [](QPainter &p) {
        p.setBrush(skin);
        p.drawEllipse(QRectF(6, 10, 52, 54));
        QPainterPath fringe;
        fringe.moveTo(6, 36);
        fringe.cubicTo(4, 4, 60, 0, 58, 34);
        fringe.cubicTo(46, 22, 24, 18, 6, 36);
        p.setBrush(hair);
        p.drawPath(fringe);
        p.setBrush(outline);
        p.drawEllipse(QPointF(22, 40), 3, 4);
        p.drawEllipse(QPointF(42, 40), 3, 4);
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(24, 44, 16, 10), 200 * 16, 140 * 16);
    });
    ok &= draw(hero + "/costume/head_knight.png", 64, 68, [](QPainter &p) {
        p.setBrush(skin);
        p.drawEllipse(QRectF(6, 10, 52, 54));
        QPainterPath helmet;
        helmet.moveTo(4, 40);
        helmet.cubicTo(2, -2, 62, -2, 60, 40);
        helmet.lineTo(50, 40);
        helmet.lineTo(50, 30);
        helmet.lineTo(14, 30);
        helmet.lineTo(14, 40);
        helmet.closeSubpath();
        p.setBrush(steel);
        p.drawPath(helmet);
        p.setBrush(QColor(0xc0, 0x30, 0x30));
        p.drawRect(QRectF(29, 0, 6, 12));
        p.setBrush(outline);
        p.drawEllipse(QPointF(22, 42), 3, 3);
        p.drawEllipse(QPointF(42, 42), 3, 3);
        p.drawLine(QPointF(26, 54), QPointF(38, 54));
    });
    ok &= draw(hero + "/body/torso.png", 56, 84, [](QPainter &p) {
        p.setBrush(shirt);
        p.drawRoundedRect(QRectF(3, 3, 50, 70), 14, 14);
        p.setBrush(QColor(0x2a, 0x2a, 0x2a));
        p.drawRect(QRectF(3, 62, 50, 8));
        p.setBrush(QColor(0xe0, 0xc0, 0x40));
        p.drawRect(QRectF(23, 61, 10, 10));
        p.setBrush(trousers);
        p.drawRoundedRect(QRectF(5, 70, 46, 12), 4, 4);
    });
    ok &= draw(hero + "/costume/torso_knight.png", 56, 84, [](QPainter &p) {
        p.setBrush(steel);
        p.drawRoundedRect(QRectF(3, 3, 50, 70), 14, 14);
        p.setBrush(steelDark);
        p.drawRect(QRectF(10, 20, 36, 6));
        p.drawRect(QRectF(10, 36, 36, 6));
        p.setBrush(QColor(0xc0, 0x30, 0x30));
        p.drawRect(QRectF(3, 62, 50, 8));
        p.setBrush(trousers);
        p.drawRoundedRect(QRectF(5, 70, 46, 12), 4, 4);
    });
    ok &= draw(hero + "/body/upper_arm.png", 20, 44, [](QPainter &p) { limb(p, 20, 44, shirt); });
    ok &= draw(hero + "/body/lower_arm.png", 18, 42, [](QPainter &p) {
        limb(p, 18, 34, skin);
        p.setBrush(skin);
        p.drawEllipse(QRectF(1, 26, 16, 15));
    });
    ok &= draw(hero + "/body/upper_leg.png", 24, 46, [](QPainter &p) { limb(p, 24, 46, trousers); });
    ok &= draw(hero + "/body/lower_leg.png", 34, 48, [](QPainter &p) {
        p.setBrush(trousers);
        p.drawRoundedRect(QRectF(3, 2, 20, 32), 8, 8);
        p.setBrush(boot);
        p.drawRoundedRect(QRectF(2, 28, 30, 18), 7, 7);
    });
    ok &= draw(hero + "/props/lantern.png", 32, 48, [](QPainter &p) {
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(8, 0, 16, 14), 0, 180 * 16);
        p.setBrush(QColor(0x3c, 0x3c, 0x3c));
        p.drawRect(QRectF(6, 8, 20, 6));
        p.setBrush(QColor(255, 236, 170, 150));
        p.drawRect(QRectF(6, 14, 20, 24));
        p.setBrush(QColor(0x3c, 0x3c, 0x3c));
        p.drawRect(QRectF(4, 38, 24, 8));
    });
    ok &= draw(hero + "/props/flame.png", 14, 20, [](QPainter &p) {
        QPainterPath flame;
        flame.moveTo(7, 1);
        flame.cubicTo(16, 10, 14, 19, 7, 19);
        flame.cubicTo(0, 19, -2, 10, 7, 1);
        p.setPen(QPen(QColor(0xd0, 0x60, 0x10), 1.5));
        p.setBrush(QColor(0xff, 0xb0, 0x20));
        p.drawPath(flame);
    });
    return ok ? 0 : 1;
}
