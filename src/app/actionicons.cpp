// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "actionicons.h"

#include "ui_morvanewindow.h"

#include <QApplication>
#include <QConicalGradient>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>

#include <functional>

namespace Morvane {

namespace {

const QColor ink(0x3a, 0x3f, 0x46);
const QColor boneColour(0xff, 0xa0, 0x2f);

QIcon drawn(const std::function<void(QPainter &)> &paint)
{
    QIcon icon;
    for (int size : {16, 24, 32, 48}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 24.0, size / 24.0);
        painter.setPen(QPen(ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        paint(painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

void padlock(QPainter &p)
{
    p.setBrush(QColor(0xf0, 0xd0, 0x60));
    p.drawRoundedRect(QRectF(13, 14, 9, 8), 1.5, 1.5);
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(14.5, 9.5, 6, 8), 0, 180 * 16);
}

void bone(QPainter &p)
{
    p.setBrush(boneColour);
    const QPointF shape[] = {{3, 19}, {8, 12}, {20, 4}, {10, 15}};
    p.drawPolygon(shape, 4);
}

void picture(QPainter &p)
{
    p.setBrush(QColor(0xd8, 0xe8, 0xf8));
    p.drawRoundedRect(QRectF(2.5, 5.5, 17, 14), 2, 2);
    p.setBrush(QColor(0x5a, 0x9a, 0x50));
    const QPointF hill[] = {{4, 18}, {9, 11}, {13, 15}, {15, 13}, {18, 18}};
    p.drawPolygon(hill, 5);
    p.setBrush(QColor(0xf0, 0xc0, 0x30));
    p.drawEllipse(QPointF(15, 9), 1.8, 1.8);
}

} // namespace

QIcon ActionIcons::swatch(const QColor &color)
{
    return drawn([color](QPainter &p) {
        p.setBrush(color);
        p.drawRoundedRect(QRectF(3.5, 3.5, 17, 17), 3, 3);
    });
}

QIcon ActionIcons::applicationIcon()
{
    return drawn([](QPainter &p) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x2c, 0x34, 0x40));
        p.drawRoundedRect(QRectF(1, 1, 22, 22), 4, 4);
        p.setPen(QPen(boneColour, 1.4, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(12, 8.5), QPointF(12, 14.5));
        p.drawLine(QPointF(12, 10), QPointF(7.5, 12.5));
        p.drawLine(QPointF(12, 10), QPointF(16.5, 7.5));
        p.drawLine(QPointF(12, 14.5), QPointF(9, 19.5));
        p.drawLine(QPointF(12, 14.5), QPointF(15, 19.5));
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0xd5, 0x9e, 0x5d));
        p.drawEllipse(QPointF(12, 5.5), 2.6, 2.6);
    });
}

void ActionIcons::apply(Ui::MorvaneWindow *ui)
{
    QStyle *style = QApplication::style();
    const auto standard = [style](QStyle::StandardPixmap pixmap) { return style->standardIcon(pixmap); };

    ui->actionNew_Project->setIcon(standard(QStyle::SP_FileIcon));
    ui->actionLoad_Project->setIcon(standard(QStyle::SP_DialogOpenButton));
    ui->actionSave_Project->setIcon(standard(QStyle::SP_DialogSaveButton));
    ui->actionSave_New_Version->setIcon(drawn([](QPainter &p) {
        p.setBrush(QColor(0x70, 0x90, 0xc8));
        p.drawRoundedRect(QRectF(3.5, 3.5, 14, 15), 2, 2);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(6.5, 3.5, 8, 5));
        p.setPen(QPen(QColor(0x20, 0x90, 0x30), 2.4, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(18, 14), QPointF(18, 22));
        p.drawLine(QPointF(14, 18), QPointF(22, 18));
    }));
    ui->actionUndo->setIcon(standard(QStyle::SP_ArrowBack));
    ui->actionRedo->setIcon(standard(QStyle::SP_ArrowForward));
    ui->actionCut->setIcon(drawn([](QPainter &p) {
        p.drawEllipse(QPointF(7, 18), 3, 3);
        p.drawEllipse(QPointF(17, 18), 3, 3);
        p.drawLine(QPointF(9, 15.5), QPointF(17, 3));
        p.drawLine(QPointF(15, 15.5), QPointF(7, 3));
    }));
    ui->actionCopy->setIcon(drawn([](QPainter &p) {
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(3.5, 3.5, 11, 13), 1.5, 1.5);
        p.drawRoundedRect(QRectF(9.5, 7.5, 11, 13), 1.5, 1.5);
    }));
    ui->actionPaste->setIcon(drawn([](QPainter &p) {
        p.setBrush(QColor(0xc8, 0xa0, 0x70));
        p.drawRoundedRect(QRectF(4.5, 4.5, 15, 17), 2, 2);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(7.5, 8.5, 9, 10));
        p.setBrush(QColor(0x90, 0x90, 0x90));
        p.drawRoundedRect(QRectF(8.5, 2.5, 7, 4), 1, 1);
    }));
    ui->actionDelete_From_All_Frames->setIcon(standard(QStyle::SP_TrashIcon));

    ui->actionWhite->setIcon(swatch(Qt::white));
    ui->actionBlack->setIcon(swatch(Qt::black));
    ui->actionGrey->setIcon(swatch(Qt::lightGray));
    ui->actionColorBackground->setIcon(drawn([](QPainter &p) {
        QConicalGradient rainbow(12, 12, 0);
        for (int i = 0; i <= 6; ++i)
            rainbow.setColorAt(i / 6.0, QColor::fromHsv((i * 60) % 360, 200, 240));
        p.setBrush(rainbow);
        p.drawRoundedRect(QRectF(3.5, 3.5, 17, 17), 3, 3);
    }));
    ui->actionCenterView->setIcon(drawn([](QPainter &p) {
        p.drawEllipse(QPointF(12, 12), 6, 6);
        p.drawLine(QPointF(12, 2), QPointF(12, 8));
        p.drawLine(QPointF(12, 16), QPointF(12, 22));
        p.drawLine(QPointF(2, 12), QPointF(8, 12));
        p.drawLine(QPointF(16, 12), QPointF(22, 12));
    }));

    ui->actionShow_Bones->setIcon(drawn(bone));
    ui->actionLock_Bones->setIcon(drawn([](QPainter &p) {
        bone(p);
        padlock(p);
    }));
    ui->actionShow_Sprites_2->setIcon(drawn(picture));
    ui->actionLock_Sprites->setIcon(drawn([](QPainter &p) {
        picture(p);
        padlock(p);
    }));
    ui->actionRotation_Snapping->setIcon(drawn([](QPainter &p) {
        p.drawArc(QRectF(4, 4, 16, 16), 30 * 16, 300 * 16);
        for (int i = 0; i < 8; ++i) {
            p.save();
            p.translate(12, 12);
            p.rotate(i * 45);
            p.drawLine(QPointF(9, 0), QPointF(11, 0));
            p.restore();
        }
        p.setBrush(ink);
        const QPointF head[] = {{19, 5}, {20.5, 10}, {15.5, 9}};
        p.drawPolygon(head, 3);
    }));
    ui->actionAlways_Play_Subentities->setIcon(standard(QStyle::SP_MediaPlay));
}

} // namespace Morvane
