#include "app/panelayout.h"
#include "ui_mainwindow.h"

#include <QMainWindow>
#include <QTest>

/// The hand-made places of the main window's children.
class PaneLayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void anchorsHold_data();
    void anchorsHold();
    void anchorsDoNotDrift();
    void cancelStandsBesideSaveInTheDeviceSettings();
    void defaultsStandInTheFirstRowOfTheDeviceSettings_data();
    void defaultsStandInTheFirstRowOfTheDeviceSettings();

private:
    QMainWindow *window = nullptr;
    Ui::MainWindow ui;
    PaneLayout *panes = nullptr;
};

void PaneLayoutTest::init()
{
    window = new QMainWindow;
    ui.setupUi(window);
    panes = new PaneLayout(&ui);
}

void PaneLayoutTest::cleanup()
{
    delete panes;
    delete window;
}

void PaneLayoutTest::anchorsHold_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("smallest") << QSize(700, 350);
    QTest::newRow("first") << QSize(707, 730);
    QTest::newRow("large") << QSize(1600, 1000);
}

void PaneLayoutTest::anchorsHold()
{
    QFETCH(QSize, size);
    const int w = size.width();
    const int h = size.height();
    const int editFromRight = ui.settingsList->geometry().right() - ui.editProfileButton->x();
    const auto fromBottom = [this](const QWidget *widget) {
        return ui.settingsList->geometry().bottom() - widget->geometry().bottom();
    };
    const int scrollFromBottom = fromBottom(ui.containerScroll);
    const int unitsFromBottom = fromBottom(ui.unitSettingsDisplay);
    const int saveFromBottom = fromBottom(ui.saveChangesButton);
    const QSize deviceButton = ui.viewDeviceSettings->size();
    const int saveWidth = ui.saveChangesButton->width();
    const QRect cancel = ui.cancelChangesButton->geometry();
    const int resetFromBottom = fromBottom(ui.resetDefaults);
    const int listTop = ui.profileNamesList->y();
    const int paneLeft = ui.settingsList->x();

    panes->place(size);

    QCOMPARE(ui.viewDeviceSettings->y(), h - 97);
    QCOMPARE(ui.viewDeviceSettings->size(), deviceButton);
    QCOMPARE(ui.profileNamesList->y(), listTop);
    QCOMPARE(ui.profileNamesList->height(), h - 129 - deviceButton.height());
    for (QWidget *button : {ui.profileNameUpButton, ui.profileNameDownButton}) {
        QCOMPARE(button->y(), h - 90 - deviceButton.height());
        QCOMPARE(button->height(), 21);
    }
    const QRect pane = ui.settingsList->geometry();
    QCOMPARE(pane.left(), paneLeft);
    QCOMPARE(pane.top(), 3);
    QCOMPARE(pane.right(), paneLeft + w - 217);
    QCOMPARE(pane.bottom(), 3 + h - 70);
    QCOMPARE(pane.right() - ui.editProfileButton->x(), editFromRight);

    // Half pixels go to the left or to the right.
    const auto middle = [](const QWidget *widget) {
        return (widget->geometry().left() + widget->geometry().right()) / 2.0;
    };
    const double centre = middle(ui.settingsList);
    for (QWidget *widget : {ui.profileSettingsName, ui.profileSettingsDescription})
        QVERIFY(qAbs(middle(widget) - (centre - 15)) < 1);
    for (QWidget *widget : {ui.containerScroll, ui.unitSettingsDisplay})
        QVERIFY(qAbs(middle(widget) - centre) < 1);
    QCOMPARE(fromBottom(ui.containerScroll), scrollFromBottom);
    QCOMPARE(fromBottom(ui.unitSettingsDisplay), unitsFromBottom);
    QCOMPARE(fromBottom(ui.saveChangesButton), saveFromBottom);
    QVERIFY(qAbs(centre - ui.saveChangesButton->geometry().right() - 8) <= 0.5);
    QCOMPARE(ui.saveChangesButton->width(), saveWidth);
    QCOMPARE(ui.cancelChangesButton->y(), pane.top() + 4);
    QCOMPARE(ui.cancelChangesButton->height(), ui.profileActiveButton->height());
    QCOMPARE(ui.cancelChangesButton->geometry().left(), cancel.left());
    QCOMPARE(ui.cancelChangesButton->geometry().right(), cancel.right());
    QCOMPARE(fromBottom(ui.resetDefaults), resetFromBottom);
    QCOMPARE(ui.resetDefaults->x(), cancel.left() + saveWidth - ui.resetDefaults->width());
}

void PaneLayoutTest::anchorsDoNotDrift()
{
    panes->place(QSize(707, 730));
    const QRect scroll = ui.containerScroll->geometry();
    const QRect reset = ui.resetDefaults->geometry();
    for (int round = 0; round < 5; ++round) {
        panes->place(QSize(1600, 1000));
        panes->place(QSize(701, 351));
    }
    panes->place(QSize(707, 730));
    QCOMPARE(ui.containerScroll->geometry(), scroll);
    QCOMPARE(ui.resetDefaults->geometry(), reset);
}

void PaneLayoutTest::cancelStandsBesideSaveInTheDeviceSettings()
{
    panes->place(QSize(707, 730));
    const QRect inProfileView = ui.cancelChangesButton->geometry();
    ui.editProfileButton->hide();
    ui.viewDeviceSettings->setChecked(true);
    panes->place(QSize(707, 730));
    const QRect save = ui.saveChangesButton->geometry();
    const QRect cancel = ui.cancelChangesButton->geometry();
    QCOMPARE(cancel.y(), save.y());
    QCOMPARE(cancel.width(), save.width());
    QCOMPARE(cancel.left() - save.right(), 8 + 7);
    QCOMPARE(ui.resetDefaults->geometry().right(), cancel.right());

    // A row was clicked: the profile's widgets are in view before the button comes up.
    ui.editProfileButton->show();
    panes->place(QSize(707, 730));
    QCOMPARE(ui.cancelChangesButton->geometry(), inProfileView);
    ui.viewDeviceSettings->setChecked(false);
    panes->place(QSize(707, 730));
    QCOMPARE(ui.cancelChangesButton->geometry(), inProfileView);
    // No profile is in view either.
    ui.editProfileButton->hide();
    panes->place(QSize(707, 730));
    QCOMPARE(ui.cancelChangesButton->geometry(), inProfileView);
}

void PaneLayoutTest::defaultsStandInTheFirstRowOfTheDeviceSettings_data()
{
    anchorsHold_data();
}

void PaneLayoutTest::defaultsStandInTheFirstRowOfTheDeviceSettings()
{
    QFETCH(QSize, size);
    const int fromBottom = ui.settingsList->geometry().bottom() - ui.resetDefaults->y();
    const QSize own = ui.resetDefaults->size();
    panes->place(QSize(707, 730));
    const int firstRow = ui.cancelChangesButton->y();

    ui.editProfileButton->hide();
    ui.viewDeviceSettings->setChecked(true);
    ui.resetDefaults->move(0, 500); // wherever it was put
    panes->place(size);
    QCOMPARE(ui.resetDefaults->y(), firstRow);
    QCOMPARE(ui.resetDefaults->size(), own);
    QCOMPARE(ui.resetDefaults->geometry().right(), ui.cancelChangesButton->geometry().right());
    QVERIFY(!ui.resetDefaults->geometry().intersects(ui.unitSettingsTitle->geometry()));
    QVERIFY(!ui.resetDefaults->geometry().intersects(ui.unitSettingsDisplay->geometry()));
    QVERIFY(ui.settingsList->geometry().contains(ui.resetDefaults->geometry()));

    // Out of sight it keeps to the lower edge.
    ui.editProfileButton->show();
    ui.viewDeviceSettings->setChecked(false);
    panes->place(size);
    QCOMPARE(ui.settingsList->geometry().bottom() - ui.resetDefaults->y(), fromBottom);
}

QTEST_MAIN(PaneLayoutTest)
#include "tst_panelayout.moc"
