#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/settinglabel.h"
#include "support/schemarecord.h"

#include <QTest>

class SettingLabelTest : public QObject
{
    Q_OBJECT

private slots:
    void changesItsStyleWithTheFlag();
    void keepsItsStyleWhileOneIsMissing_data();
    void keepsItsStyleWhileOneIsMissing();
};

void SettingLabelTest::changesItsStyleWithTheFlag()
{
    const auto record = schemaRecord(
        {numberLine("0", "8", "1", "4"), "char flag; // bool, 1, \"Flag\", \"flag\", 1, 1, basic"});
    HParser::StructSetting *flag = record->getStructSettingByName("flag");
    SettingLabel label(record->getStructSettingByName("x"), flag);
    QCOMPARE(label.text(), QString("<b>Bulk Current:</b>"));
    flag->setValue(false);
    QCOMPARE(label.styleSheet(), QString());
    label.setStyleChange("color: red", "color: grey");
    QCOMPARE(label.styleSheet(), QString("color: grey"));
    flag->setValue(true);
    QCOMPARE(label.styleSheet(), QString("color: red"));
    flag->setValue(false);
    QCOMPARE(label.styleSheet(), QString("color: grey"));
}

void SettingLabelTest::keepsItsStyleWhileOneIsMissing_data()
{
    QTest::addColumn<QString>("onTrue");
    QTest::addColumn<QString>("onFalse");
    QTest::newRow("none for true") << ""
                                   << "color: grey";
    QTest::newRow("none for false") << "color: red"
                                    << "";
}

void SettingLabelTest::keepsItsStyleWhileOneIsMissing()
{
    QFETCH(QString, onTrue);
    QFETCH(QString, onFalse);
    const auto record = schemaRecord({"char flag; // bool, 1, \"Flag\", \"flag\", 0, 0, basic"});
    HParser::StructSetting *flag = record->getStructSettingByName("flag");
    SettingLabel label(flag, flag);
    label.setStyleSheet("color: blue");
    label.setStyleChange(onTrue, onFalse);
    flag->setValue(true);
    flag->setValue(false);
    QCOMPARE(label.styleSheet(), QString("color: blue"));
}

QTEST_MAIN(SettingLabelTest)
#include "tst_settinglabel.moc"
