#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settingcheckboxextended.h"
#include "editors/settingscheckbox.h"
#include "support/schemarecord.h"

#include <QBitmap>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using HParser::StructSetting;

class SettingCheckboxExtendedTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void layOut();
    void forwardsChangesOfBothConnections();
    void tooltip();
    void enablesEditing();
    void pictureLook();
    void pictureStartsAsTheBoxStands();
    void pictureTurnsWithTheSetting();
    void maskIsThePictures();
    void withoutAPicture();

private:
    QLayoutItem *item(int row, int column) const
    {
        return qobject_cast<QGridLayout *>(widget->layout())->itemAtPosition(row, column);
    }
    QLabel *picture() const { return qobject_cast<QLabel *>(item(1, 2)->widget()); }
    /// Colour of the picture shown, near its top left corner.
    QColor nearTop() const { return picture()->pixmap(Qt::ReturnByValue).toImage().pixel(8, 8); }

    QTemporaryDir folder;
    /// 80 x 66, the upper half red, the lower one blue, the left 4 columns transparent.
    QString path;
    std::unique_ptr<HParser::StructSettings> record;
    StructSetting *setting = nullptr;
    std::unique_ptr<SettingCheckboxExtended> widget;
    SettingsCheckBox *box = nullptr;
};

void SettingCheckboxExtendedTest::init()
{
    path = folder.filePath("picture.png");
    QImage image(80, 66, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(4, 0, 76, 33, Qt::red);
    painter.fillRect(4, 33, 76, 33, Qt::blue);
    painter.end();
    QVERIFY(image.save(path));

    record = schemaRecord({"char x; // bool, 1, \"Rotate Display\", \"x\", 0, 0, advanced"});
    setting = record->getOriginalOrderStructSettings().constFirst();
    widget = std::make_unique<SettingCheckboxExtended>(setting);
    box = widget->findChild<SettingsCheckBox *>();
}

void SettingCheckboxExtendedTest::cleanup()
{
    widget.reset();
}

void SettingCheckboxExtendedTest::layOut()
{
    auto *title = qobject_cast<QLabel *>(item(0, 0)->widget());
    QVERIFY(title);
    QCOMPARE(title->text(), QString("<b>Rotate Display?</b>"));
    QCOMPARE(title->font().pointSize(), QLabel().font().pointSize() + 2);
    QCOMPARE(item(0, 3)->widget(), title);
    QCOMPARE(title->buddy(), box);
    QCOMPARE(item(1, 0)->widget(), box);
    QCOMPARE(box->getSetting(), setting);
    QCOMPARE(box->accessibleName(), QString("Rotate Display"));
    QVERIFY(item(1, 3)->spacerItem());
    QVERIFY(item(1, 3)->expandingDirections() & Qt::Horizontal);
}

void SettingCheckboxExtendedTest::forwardsChangesOfBothConnections()
{
    const QSignalSpy told(widget.get(), &SettingCheckboxExtended::settingChanged);
    box->click();
    QVERIFY(setting->getBool());
    QCOMPARE(told.count(), 2);
    setting->setValue(false);
    QVERIFY(!box->isChecked());
    QCOMPARE(told.count(), 4);
}

void SettingCheckboxExtendedTest::tooltip()
{
    widget->setToolTip("Check this");
    QCOMPARE(item(0, 0)->widget()->toolTip(), QString("<FONT>Check this</FONT>"));
}

void SettingCheckboxExtendedTest::enablesEditing()
{
    widget->enableEditing(false);
    QVERIFY(!box->isEnabled());
    widget->enableEditing(true);
    QVERIFY(box->isEnabled());
}

void SettingCheckboxExtendedTest::pictureLook()
{
    widget->addFlippingImage(path);
    QCOMPARE(picture()->minimumHeight(), 33);
    QCOMPARE(picture()->maximumHeight(), 33);
    QVERIFY(picture()->hasScaledContents());
    QCOMPARE(picture()->pixmap(Qt::ReturnByValue).size(), QSize(40, 33));
    QVERIFY(item(1, 1)->spacerItem());
    QCOMPARE(item(1, 1)->sizeHint().width(), 15);
    QCOMPARE(item(1, 1)->maximumSize().width(), 15);
    widget->resize(400, 100);
    widget->show();
    QCOMPARE(picture()->size(), QSize(40, 33));
}

void SettingCheckboxExtendedTest::pictureStartsAsTheBoxStands()
{
    setting->setValue(true);
    widget->addFlippingImage(path);
    QCOMPARE(nearTop(), QColor(Qt::blue));
}

void SettingCheckboxExtendedTest::pictureTurnsWithTheSetting()
{
    widget->addFlippingImage(path);
    QCOMPARE(nearTop(), QColor(Qt::red));
    setting->setValue(true);
    QCOMPARE(nearTop(), QColor(Qt::blue));
    box->click();
    QCOMPARE(nearTop(), QColor(Qt::red));
}

void SettingCheckboxExtendedTest::maskIsThePictures()
{
    widget->addFlippingImage(path);
    QCOMPARE(picture()->mask(), QRegion(2, 0, 38, 33));
    setting->setValue(true);
    QCOMPARE(picture()->mask(), QRegion(0, 0, 38, 33));
}

void SettingCheckboxExtendedTest::withoutAPicture()
{
    widget->addFlippingImage(folder.filePath("none.png"));
    QVERIFY(!item(1, 2));
    setting->setValue(true);
    widget->screenFlipped();
    QVERIFY(box->isChecked());
}

QTEST_MAIN(SettingCheckboxExtendedTest)
#include "tst_settingcheckboxextended.moc"
