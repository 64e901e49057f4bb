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
    : ui(ui), cancelInProfileView(ui->cancelChangesButton->geometry())
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
    centreOn(ui->profileSettingsName, centre - 15);
    centreOn(ui->profileSettingsDescription, centre - 15);
    centreOn(ui->unitSettingsTitle, centre);
    for (QWidget *page : {ui->containerScroll, ui->unitSettingsDisplay}) {
        centreOn(page, centre);
        growDown(page, moved.height());
    }
    moveDown(ui->saveChangesButton, moved.height());
    QRect save = ui->saveChangesButton->geometry();
    save.moveRight(centre - 8);
    ui->saveChangesButton->setGeometry(save);
    placeCancelButton(centre);
    moveDown(ui->resetDefaults, moved.height());
    ui->resetDefaults->move(ui->cancelChangesButton->x() + ui->saveChangesButton->width() -
                                ui->resetDefaults->width(),
                            ui->resetDefaults->y());
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
    const bool deviceSettingsInView =
        ui->editProfileButton->isHidden() && ui->viewDeviceSettings->isChecked();
    if (deviceSettingsInView) {
        const QRect save = ui->saveChangesButton->geometry();
        cancel->setGeometry(centre + 7, save.y(), save.width(), save.height());
    } else {
        cancel->setGeometry(cancelInProfileView.x(), ui->settingsList->y() + 4,
                            cancelInProfileView.width(), ui->profileActiveButton->height());
    }
}
