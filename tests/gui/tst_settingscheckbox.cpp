#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingscheckbox.h"
#include "support/schemarecord.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using HParser::StructSetting;

class SettingsCheckBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void look();
    void showsTheSetting_data();
    void showsTheSetting();
    void clickStores();
    void followsTheSettingAndTellsIt();
    void enablesWithTheSetting();
    void bindsAnew();
    void outlivesItsSetting();
    void isLightOnDarkDesktops();

private:
    std::unique_ptr<HParser::StructSettings> record;
    StructSetting *setting = nullptr;
    std::unique_ptr<SettingsCheckBox> box;
};

void SettingsCheckBoxTest::init()
{
    record = schemaRecord({"char x; // bool, 1, \"Rotate Display\", \"x\", 0, 0, advanced"});
    setting = record->getOriginalOrderStructSettings().constFirst();
    box = std::make_unique<SettingsCheckBox>();
}

void SettingsCheckBoxTest::cleanup()
{
    box.reset();
}

void SettingsCheckBoxTest::look()
{
    QCOMPARE(box->objectName(), QString("SettingsCheckBox"));
    QVERIFY(!box->getSetting());
    box->bindSetting(setting);
    QCOMPARE(box->getSetting(), setting);
    QCOMPARE(box->accessibleName(), QString("Rotate Display"));
}

void SettingsCheckBoxTest::showsTheSetting_data()
{
    QTest::addColumn<bool>("on");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

void SettingsCheckBoxTest::showsTheSetting()
{
    QFETCH(bool, on);
    setting->setValue(on);
    box->setChecked(!on);
    box->bindSetting(setting);
    QCOMPARE(box->isChecked(), on);
    QCOMPARE(setting->getBool(), on);
}

void SettingsCheckBoxTest::clickStores()
{
    box->bindSetting(setting);
    const QSignalSpy changes(setting, &StructSetting::valueChanged);
    box->click();
    QCOMPARE(setting->getValue(), QString("true"));
    QTest::keyClick(box.get(), Qt::Key_Space);
    QCOMPARE(setting->getValue(), QString("false"));
    QCOMPARE(changes.count(), 2);
}

void SettingsCheckBoxTest::followsTheSettingAndTellsIt()
{
    box->bindSetting(setting);
    bool shownWhenTold = false;
    connect(box.get(), &SettingsCheckBox::settingChangedSig, this,
            [&] { shownWhenTold = box->isChecked(); });
    const QSignalSpy told(box.get(), &SettingsCheckBox::settingChangedSig);
    const QSignalSpy clicks(box.get(), &SettingsCheckBox::clicked);
    setting->setValue(true);
    QVERIFY(box->isChecked());
    QVERIFY(shownWhenTold);
    QCOMPARE(told.count(), 1);
    QCOMPARE(clicks.count(), 0);
}

void SettingsCheckBoxTest::enablesWithTheSetting()
{
    box->bindSetting(setting);
    setting->enableAdvancedMode(false);
    QVERIFY(!box->isEnabled());
    setting->enableAdvancedMode(true);
    QVERIFY(box->isEnabled());
}

void SettingsCheckBoxTest::bindsAnew()
{
    box->bindSetting(setting);
    const auto other = schemaRecord({"char y; // bool, 1, \"Y\", \"y\", 1, 0, basic"});
    box->bindSetting(other->getOriginalOrderStructSettings().constFirst());
    QVERIFY(box->isChecked());
    setting->setValue(true);
    setting->setValue(false);
    QVERIFY(box->isChecked());
    box->click();
    QVERIFY(!setting->getBool());
    QVERIFY(!box->getSetting()->getBool());
    box.reset();
}

void SettingsCheckBoxTest::outlivesItsSetting()
{
    box->bindSetting(setting);
    record.reset();
    box->click();
    QVERIFY(!box->getSetting());
}

void SettingsCheckBoxTest::isLightOnDarkDesktops()
{
    const QPalette before = QApplication::palette();
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(QPalette(QColor(40, 40, 40), QColor(30, 30, 30)));
    box = std::make_unique<SettingsCheckBox>();
    box->bindSetting(setting);
    // What is lightest and what is darkest in the middle of the box.
    const auto greys = [this] {
        const QImage shown = box->grab().toImage();
        const int middle = shown.height() / 2;
        QPair<int, int> found(0, 255);
        for (int x = middle - 4; x <= middle + 4; ++x) {
            const int grey = qGray(shown.pixel(x, middle));
            found = {qMax(found.first, grey), qMin(found.second, grey)};
        }
        return found;
    };
    QVERIFY(greys().first > 200);
    box->click();
    QVERIFY(greys().first - greys().second > 150); // and its mark stands out
    QApplication::setPalette(before);
}

QTEST_MAIN(SettingsCheckBoxTest)
#include "tst_settingscheckbox.moc"
