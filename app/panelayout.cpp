#include "app/panelayout.h"

#include "ui_mainwindow.h"

namespace
{
void centreOn(QWidget *widget, int centre)
{
    widget->move(centre - widget->width() / 2, widget->y());
}

void growDown(QWidget *widget, int by)
{
    widget->resize(widget->width(), widget->height() + by);
}

void moveDown(QWidget *widget, int by)
{
    widget->move(widget->x(), widget->y() + by);
}
} // namespace

PaneLayout::PaneLayout(Ui::MainWindow *ui)
    : ui(ui),
      cancelInProfileView(ui->cancelChangesButton->geometry()),
      defaultsAboveLowerEdge(ui->settingsList->geometry().bottom() - ui->resetDefaults->y())
{
}

void PaneLayout::place(const QSize &window)
{
    placeList(window.height());
    const QSize moved = placePane(window);

    const QRect pane = ui->settingsList->geometry();
    const int centre = pane.left() + pane.width() / 2;
    ui->editProfileButton->move(ui->editProfileButton->x() + moved.width(),
                                ui->editProfileButton->y());
    for (QWidget *title : {static_cast<QWidget *>(ui->profileSettingsName),
                           static_cast<QWidget *>(ui->profileSettingsDescription),
                           static_cast<QWidget *>(ui->unitSettingsTitle)})
        centreOn(title, centre - 15);
    for (QWidget *page : {ui->containerScroll, ui->unitSettingsDisplay}) {
        centreOn(page, centre);
        growDown(page, moved.height());
    }
    moveDown(ui->saveChangesButton, moved.height());
    QRect save = ui->saveChangesButton->geometry();
    save.moveRight(centre - 8);
    ui->saveChangesButton->setGeometry(save);
    placeCancelButton(centre);
    placeDefaultsButton();
}

bool PaneLayout::showsDeviceSettings() const
{
    return ui->editProfileButton->isHidden() && ui->viewDeviceSettings->isChecked();
}

int PaneLayout::firstRow() const
{
    return ui->settingsList->y() + 4;
}

void PaneLayout::placeList(int height)
{
    QWidget *below = ui->viewDeviceSettings;
    below->move(below->x(), height - 97);
    ui->profileNamesList->resize(ui->profileNamesList->width(), height - 129 - below->height());
    for (QWidget *button : {ui->profileNameUpButton, ui->profileNameDownButton})
        button->setGeometry(button->x(), height - 90 - below->height(), button->width(), 21);
}

QSize PaneLayout::placePane(const QSize &window)
{
    const QRect before = ui->settingsList->geometry();
    const QRect after(QPoint(before.left(), 3), QPoint(before.left() + window.width() - 217,
                                                       before.top() + window.height() - 70));
    ui->settingsList->setGeometry(after);
    return QSize(after.right() - before.right(), after.bottom() - before.bottom());
}

void PaneLayout::placeCancelButton(int centre)
{
    QWidget *cancel = ui->cancelChangesButton;
    if (showsDeviceSettings()) {
        const QRect save = ui->saveChangesButton->geometry();
        cancel->setGeometry(centre + 7, save.y(), save.width(), save.height());
    } else {
        cancel->setGeometry(cancelInProfileView.x(), firstRow(), cancelInProfileView.width(),
                            ui->profileActiveButton->height());
    }
}

void PaneLayout::placeDefaultsButton()
{
    QWidget *defaults = ui->resetDefaults;
    const int left =
        ui->cancelChangesButton->x() + ui->saveChangesButton->width() - defaults->width();
    // The row of "Cancel" in the profile view is free while the device settings are in view.
    const int top = showsDeviceSettings()
                        ? firstRow()
                        : ui->settingsList->geometry().bottom() - defaultsAboveLowerEdge;
    defaults->move(left, top);
}
