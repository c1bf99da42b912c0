// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "windowactions.h"

#include "ui_morvanewindow.h"

namespace Morvane {

void WindowActions::applyStandardShortcuts(Ui::MorvaneWindow *ui)
{
    const std::pair<QAction *, QKeySequence::StandardKey> keys[] = {
        {ui->actionNew_Project, QKeySequence::New},
        {ui->actionLoad_Project, QKeySequence::Open},
        {ui->actionSave_Project, QKeySequence::Save},
        {ui->actionSave_Project_As, QKeySequence::SaveAs},
        {ui->actionClose_Project, QKeySequence::Close},
        {ui->actionExit, QKeySequence::Quit},
        {ui->actionUndo, QKeySequence::Undo},
        {ui->actionRedo, QKeySequence::Redo},
        {ui->actionCut, QKeySequence::Cut},
        {ui->actionCopy, QKeySequence::Copy},
        {ui->actionPaste, QKeySequence::Paste},
        {ui->actionDelete, QKeySequence::Delete},
        {ui->actionSelect_All, QKeySequence::SelectAll},
    };
    for (const auto &[action, key] : keys)
        action->setShortcuts(key);
    // Shift+Del is Delete From All Frames here; the platform also gives it to Cut, and a key
    // that two actions share fires neither.
    QList<QKeySequence> cut = ui->actionCut->shortcuts();
    cut.removeAll(QKeySequence(Qt::SHIFT | Qt::Key_Delete));
    ui->actionCut->setShortcuts(cut);
}

QList<QAction *> WindowActions::projectDependent(Ui::MorvaneWindow *ui)
{
    return {ui->actionSave_Project_As, ui->actionSave_New_Version,
            ui->actionImport_Another_Project_Into_Current,
            ui->actionGenerate_Sprite_Sheet_from_Project_Textures,
            ui->actionColorBackground,
            // The clipboard.
            ui->actionCut, ui->actionCopy, ui->actionPaste, ui->actionCopy_Current_Frame,
            ui->actionCopy_with_child_sprites, ui->actionCopy_with_child_bones,
            ui->actionCopy_with_children, ui->actionCopy_Selection_To_All_Frames,
            ui->actionAltPaste};
}

QList<QAction *> WindowActions::pending(Ui::MorvaneWindow *ui)
{
    return {
        // Export and conversion.
        ui->actionSave_Project_As_Legacy, ui->actionExport_To_PNG,
        ui->actionBatch_Export_To_PNG_GIF, ui->actionExport_Baked_Project,
        ui->actionGenerate_TexturePacker_Spritesheet_tps,
        ui->actionSave_As_Resized_Project_and_images,
        ui->actionClose_Project,
        // Canvas modes.
        ui->actionShow_Bones, ui->actionLock_Bones, ui->actionShow_Sprites_2,
        ui->actionLock_Sprites, ui->actionForce_names,
    };
}

QList<std::pair<QAction *, QString>> WindowActions::canvasLinks(Ui::MorvaneWindow *ui)
{
    return {
        {ui->actionZoom_In, QStringLiteral("actionZoom_In")},
        {ui->actionZoom_Out, QStringLiteral("actionZoom_Out")},
        {ui->actionRestore_Zoom, QStringLiteral("actionRestore_Zoom")},
        {ui->actionCenterView, QStringLiteral("actionCenter_View")},
        {ui->actionWhite, QStringLiteral("actionWhite_Background")},
        {ui->actionBlack, QStringLiteral("actionBlack_Background")},
        {ui->actionGrey, QStringLiteral("actionGrey_Background")},
        {ui->actionDelete, QStringLiteral("actionDelete")},
        {ui->actionDelete_From_All_Frames, QStringLiteral("actionDelete_From_All_Frames")},
        {ui->actionDelete_All_Instances, QStringLiteral("actionDelete_All_Instances")},
        {ui->actionSelect_All, QStringLiteral("actionSelect_All")},
        {ui->actionMove_Up_in_Z_Order, QStringLiteral("actionMove_Up_in_Z_Order")},
        {ui->actionMove_Down_In_Z_Order, QStringLiteral("actionMove_Down_In_Z_Order")},
        {ui->actionMove_To_Top_in_Z_Order, QStringLiteral("actionMove_To_Top_in_Z_Order")},
        {ui->actionMove_To_Bottom_in_Z_Order, QStringLiteral("actionMove_To_Bottom_in_Z_Order")},
        {ui->actionCopy_Z_Order_to_Other_Frames, QStringLiteral("actionCopy_Z_Order_to_Other_Frames")},
        {ui->actionSmooth_Sampling, QStringLiteral("actionSmooth_Sampling")},
        {ui->actionPixel_Art_Mode, QStringLiteral("actionPixel_Art_Mode")},
        {ui->actionRotation_Snapping, QStringLiteral("actionRotation_Snapping")},
    };
}

} // namespace Morvane
