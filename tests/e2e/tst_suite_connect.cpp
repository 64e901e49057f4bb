#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "profiles/profilename.h"
#include "suitestory.h"
#include "support/flashpage.h"

#include <QComboBox>
#include <QLabel>
#include <QSerialPortInfo>
#include <QTest>

#include <algorithm>

/// Stories of connecting: the right schema, the right rows, and every way in which it can fail.
class SuiteConnectTest : public QObject
{
    Q_OBJECT

private slots:
    void theChargersProfilesFillTheList_data();
    void theChargersProfilesFillTheList();
    void theLatestCopyOfDeviceWideElementsCounts();
    void aPacedChargerConnectsAsWell();
    void failuresOfTheUploader_data();
    void failuresOfTheUploader();
    void failuresOfTheFiles_data();
    void failuresOfTheFiles();
    void cancelAfterAFailureClosesTheDialog();
    void aPortThatIsPluggedInLaterCanBeChosen();
    void onlyTheChosenChargerIsRead();
    void pagesThatCannotBeImported_data();
    void pagesThatCannotBeImported();
    void elementsThatTheStrictSchemaDoesNotKnow();
    void aStaleImageIsImportedAsItIs();
    void noImageAtAllIsSaid();
    void disconnectResetsTheCharger();
    void disconnectClearsTheMarks();
    void disconnectWithThePortGoneSaysSo();
    void rereadingBringsTheRowsBack();
    void failedRereadingDisconnects_data();
    void failedRereadingDisconnects();
};

namespace
{
QPushButton *connectButton()
{
    return SuiteStory::dialog()->findChild<QPushButton *>(QStringLiteral("okButton"));
}

QString labelText(const char *name)
{
    return SuiteStory::dialog()->findChild<QLabel *>(QLatin1String(name))->text();
}

const QString transferFailed = QStringLiteral(
    "<p>Please make sure to select the correct COM port, that the Velantor is in bootloader mode, "
    "and that you are connected to the computer, and try again.</p><p>To enter bootloader when the "
    "Velantor is on, hold down both buttons to enter the setup menu and select \"Connect to "
    "PC\".</p><p>If this is a reoccurring issue, turn off the Velantor fully and double check "
    "every cable connection. Once all the cables are fully connected, turn on the Velantor and "
    "then enter bootloader mode.</p>");
} // namespace

void SuiteConnectTest::theChargersProfilesFillTheList_data()
{
    QTest::addColumn<QString>("hardware");
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QList<bool>>("active");
    QTest::addColumn<int>("defaultRow");
    // The deleted profile of each page is missing, and later copies stand where the first one was.
    QTest::newRow("24 V") << "24v" << REV7_24V_SS_FILE_NAME
                          << QStringList{"12V SLA", "24V SLA", "22V Li (6s)", "24V NiCd"}
                          << QList<bool>{true, false, true, true} << 2;
    QTest::newRow("48 V") << "48v" << REV7_48V_SS_FILE_NAME
                          << QStringList{"36V Li(10s)", "36V Li(10s)", "48V Li(13s)",
                                         "52V Li(14s)", "36V NiMH",    "48V SLA"}
                          << QList<bool>{true, true, true, false, true, true} << 0;
    QTest::newRow("72 V") << "72v" << REV7_72V_SS_FILE_NAME
                          << QStringList{"72V Li(20s)", "72V Li(20s)", "60V LiFe", "72V NiMH",
                                         "72V SLA"}
                          << QList<bool>{true, true, true, true, true} << 0;
    QTest::newRow("first generation")
        << "48v-v1" << REV6_48V_SS_FILE_NAME << QStringList{"36V Li(10s)", "36V NiMH", "36V SLA"}
        << QList<bool>{true, true, true} << 0;
}

void SuiteConnectTest::theChargersProfilesFillTheList()
{
    QFETCH(QString, hardware);
    QFETCH(QString, schema);
    QFETCH(QStringList, titles);
    QFETCH(QList<bool>, active);
    QFETCH(int, defaultRow);
    SuiteStory story;
    story.plugIn({"--hardware", hardware});
    story.open();
    QVERIFY(story.connectCharger());
    QCOMPARE(story.titles(), titles);
    QCOMPARE(story.generator()->getHFileLocation(), schema);
    QVERIFY(!story.generator()->isMaster());
    for (int i = 0; i < titles.size(); ++i) {
        QCOMPARE(story.row(i)->getActiveStatus(), active.at(i));
        QCOMPARE(story.row(i)->getDefaultStatus(), i == defaultRow);
    }
    QCOMPARE(story.action("connectAction")->text(), QStringLiteral("Connected!"));
    QVERIFY(story.boxes.seen().isEmpty());
}

void SuiteConnectTest::theLatestCopyOfDeviceWideElementsCounts()
{
    SuiteStory story;
    story.plugIn({"--hardware", "72v"});
    story.open();
    QVERIFY(story.connectCharger());
    HParser::StructSettings *settings = story.generator()->getUnitSettingsStruct();
    QCOMPARE(settings->getStructSettingByName("brightness")->getValue(), QStringLiteral("7"));
    QVERIFY(story.generator()->getUnitStatsExists());
}

void SuiteConnectTest::aPacedChargerConnectsAsWell()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v", "--pace"});
    story.open();
    QVERIFY(story.connectCharger());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteConnectTest::failuresOfTheUploader_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("silent from the start") << "silent@version";
    QTest::newRow("dead line") << "dead@version";
    QTest::newRow("silent while reading") << "silent@read:3";
    QTest::newRow("wrong checksum of the version") << "bad-checksum@version";
    QTest::newRow("wrong checksum while reading") << "bad-checksum@read:2";
    QTest::newRow("cut off answer") << "truncate=40@read:5";
    QTest::newRow("lost echo") << "lost-echo@read:1";
    QTest::newRow("unknown bootloader") << "version=0205";
    QTest::newRow("cable pulled at the version") << "unplug@version";
    QTest::newRow("cable pulled while reading") << "unplug@read:4";
}

void SuiteConnectTest::failuresOfTheUploader()
{
    QFETCH(QString, fault);
    SuiteStory story;
    story.plugIn({"--hardware", "48v", "--fault", fault});
    story.open();
    story.boxes.push(QMessageBox::Ok);
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    const MessageBoxAnswers::Box box = story.boxes.seen().first();
    QCOMPARE(box.title, QStringLiteral("Failed!"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.text, transferFailed);
    QVERIFY(SuiteStory::dialog());
    QCOMPARE(connectButton()->text(), QStringLiteral("Try Again"));
    QVERIFY(!story.isConnected());
    QCOMPARE(story.list()->count(), 0);
    QVERIFY(story.generator()->isMaster());

    story.mend();
    QVERIFY(story.pressConnect());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteConnectTest::failuresOfTheFiles_data()
{
    QTest::addColumn<QString>("missing");
    QTest::newRow("no uploader") << VEXA_FILE_NAME;
    QTest::newRow("no device table") << FILE_FOR_VEXA_NAME;
}

void SuiteConnectTest::failuresOfTheFiles()
{
    QFETCH(QString, missing);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    const QString away = missing + QStringLiteral(".away");
    QVERIFY(QFile::rename(missing, away));
    story.boxes.push(QMessageBox::Ok);
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.boxes.seen().first().title, QStringLiteral("Failed!"));
    QVERIFY(connectButton()->isEnabled());
    QVERIFY(!story.isConnected());

    QVERIFY(QFile::rename(away, missing));
    QVERIFY(story.pressConnect());
}

void SuiteConnectTest::cancelAfterAFailureClosesTheDialog()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v", "--fault", "lost-echo@version"});
    story.open();
    story.boxes.push(QMessageBox::Cancel);
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_VERIFY(!SuiteStory::dialog() && !story.boxes.seen().isEmpty());
    QVERIFY(!story.isConnected());
    story.mend();
    QVERIFY(story.connectCharger());
}

void SuiteConnectTest::aPortThatIsPluggedInLaterCanBeChosen()
{
    SuiteStory story;
    story.open();
    QVERIFY(story.startConnecting());
    auto *ports = SuiteStory::dialog()->findChild<QComboBox *>("comPortsDropdown");
    // A cable that is plugged into this computer is a port already.
    const auto present = QSerialPortInfo::availablePorts();
    const bool none = std::all_of(present.begin(), present.end(), [](const QSerialPortInfo &port) {
        return port.portName().contains("ttyS");
    });
    QCOMPARE(ports->count() == 0, none);
    if (none)
        QCOMPARE(labelText("errorMessage"), QStringLiteral("No COM Port available!"));
    QCOMPARE(connectButton()->isEnabled(), !none);
    story.plugIn({"--hardware", "24v"});
    QTRY_VERIFY(ports->findText(story.charger().portName()) >= 0);
    QVERIFY(connectButton()->isEnabled());
    QCOMPARE(labelText("errorMessage"), QString());
    if (none)
        QCOMPARE(ports->currentText(), story.charger().portName());
    QVERIFY(story.pressConnect());
    QCOMPARE(story.list()->count(), 4);
}

void SuiteConnectTest::onlyTheChosenChargerIsRead()
{
    SuiteStory story;
    story.plugIn({"--hardware", "72v"});
    SimulatorProcess other({"--hardware", "24v"});
    story.open();
    QVERIFY(story.connectCharger());
    QCOMPARE(story.generator()->getHFileLocation(), REV7_72V_SS_FILE_NAME);
    QCOMPARE(other.commands(), QStringList());
}

void SuiteConnectTest::pagesThatCannotBeImported_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QMessageBox::Icon>("icon");
    QTest::addColumn<QString>("text");
    // Words as a HEX file has them: third data byte first, the fourth byte does not exist.
    QTest::newRow("blank page: nothing in the file")
        << QByteArray() << "Import from HEX status" << QMessageBox::Warning
        << "An error occurred while reading profiles from HEX. Please try again.";
    QTest::newRow("blank first word: no page counter")
        << QByteArray("FFFFFF00FD000300") << "Import from HEX status" << QMessageBox::Critical
        << "No page count when reading from Velantor! Please reset your Velantor so it can "
           "recover.";
    QTest::newRow("page counter with a wrong checksum")
        << QByteArray("FC000300") << "Import from HEX status" << QMessageBox::Warning
        << "An error occurred while importing profiles from HEX: Invalid Checksum. Please check "
           "firmware version and try again.";
    QTest::newRow("element of an unknown type")
        << QByteArray("FD000300FFFF0B00") << "Import from HEX status" << QMessageBox::Warning
        << "An error occurred while importing profiles from HEX: Invalid Type Field. Please try "
           "again.";
    QTest::newRow("element of an outdated type")
        << QByteArray("FD000300FFFF0200") << "Outdated Profiles" << QMessageBox::Warning
        << "An error occurred while importing profiles.<br/><br/>This can happen when trying to "
           "connect to a Velantor with outdated firmware or outdated profiles. Please click <a "
           "href = \"https://www.velantor.example/velantor-suite-help#outdated_profiles\">here</a> "
           "for more information on how to upgrade to the latest firmware correctly.";
}

void SuiteConnectTest::pagesThatCannotBeImported()
{
    QFETCH(QByteArray, words);
    QFETCH(QString, title);
    QFETCH(QMessageBox::Icon, icon);
    QFETCH(QString, text);
    QTemporaryDir folder;
    QByteArray data = QByteArray::fromHex(words);
    while (data.size() < 16)
        data += QByteArray::fromHex("FFFFFF00");
    QByteArray record = QByteArray::fromHex("10380000") + data;
    char sum = 0;
    for (const char byte : qAsConst(record))
        sum = static_cast<char>(sum + byte);
    record += static_cast<char>(-sum);
    QFile page(folder.filePath("page.hex"));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write(":020000040001F9\n:" + record.toHex().toUpper() + "\n:00000001FF\n");
    page.close();

    SuiteStory story;
    story.plugIn({"--page", page.fileName()});
    story.open();
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    QTRY_VERIFY(!SuiteStory::dialog());
    const MessageBoxAnswers::Box box = story.boxes.seen().first();
    QCOMPARE(box.title, title);
    QCOMPARE(box.icon, icon);
    QCOMPARE(QString(box.text).remove('"').simplified(), QString(text).remove('"').simplified());
    QVERIFY(!story.isConnected());
    QVERIFY(story.generator()->isMaster());
    QCOMPARE(story.list()->count(), 0);

    // The next charger connects as if nothing had been.
    story.plugIn({"--hardware", "48v"});
    QVERIFY(story.connectCharger());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteConnectTest::elementsThatTheStrictSchemaDoesNotKnow()
{
    // A charger of the first generation has no hardware version, though the master knows one: the
    // failure comes out of the import that the strict schema has started from within the first.
    QTemporaryDir folder;
    QFile page(folder.filePath("page.hex"));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write(FlashPage()
                   .add(FlashPage::number(3, 1) + FlashPage::number(41, 1))
                   .add(FlashPage::number(4, 1) + FlashPage::number(1, 1))
                   .add(FlashPage::number(16, 1) + FlashPage::number(4, 1))
                   .toHex());
    page.close();
    SuiteStory story;
    story.plugIn({"--page", page.fileName()});
    story.open();
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    QTRY_VERIFY(!SuiteStory::dialog());
    QVERIFY(story.boxes.seen().first().text.contains("Invalid Type Field"));
    QVERIFY(!story.isConnected());
    QVERIFY(story.generator()->isMaster());

    story.plugIn({"--hardware", "48v"});
    QVERIFY(story.connectCharger());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteConnectTest::aStaleImageIsImportedAsItIs()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    // An uploader that ends well and reads nothing, as after a second opening that failed.
    story.replaceUploader("echo 'Can not open comport'\nexit 0\n");
    story.charger().control("hardware 24v");
    QVERIFY(story.readData());
    QVERIFY(story.isConnected());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteConnectTest::noImageAtAllIsSaid()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    story.replaceUploader("exit 0\n");
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.boxes.seen().first().text,
             QStringLiteral("An error occurred while reading profiles from HEX. Please try "
                            "again."));
    QCOMPARE(story.boxes.seen().first().icon, QMessageBox::Warning);
    QTRY_VERIFY(!SuiteStory::dialog());
    QVERIFY(!story.isConnected());
    story.bringUploaderBack();
    QVERIFY(story.connectCharger());
}

void SuiteConnectTest::disconnectResetsTheCharger()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    QVERIFY(story.disconnectCharger());
    QTRY_COMPARE(story.chargerMode(), QStringLiteral("left"));
    QCOMPARE(story.charger().log().filter("in  reset"), QStringList{"in  reset 55 55 00 00 00 04"});
    QVERIFY(story.boxes.seen().isEmpty());
    QVERIFY(story.generator()->isMaster());
    QCOMPARE(story.list()->count(), 6);
    QCOMPARE(story.action("connectAction")->text(), QStringLiteral("Connect"));

    // It charges now and does not answer, until its user has it enter the bootloader again.
    story.boxes.push(QMessageBox::Ok);
    QVERIFY(story.startConnecting());
    connectButton()->click();
    QTRY_COMPARE(story.boxes.titles(), QStringList{"Failed!"});
    story.charger().control("enter");
    QVERIFY(story.pressConnect());
}

void SuiteConnectTest::disconnectClearsTheMarks()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    QTest::mouseClick(story.row(1)->findChild<QAbstractButton *>("activeProfileButton"),
                      Qt::LeftButton);
    QCOMPARE(story.titles().at(1), QStringLiteral("36V Li(10s)**"));
    QVERIFY(story.disconnectCharger());
    QCOMPARE(story.titles().at(1), QStringLiteral("36V Li(10s)"));
    QVERIFY(!story.row(1)->getActiveStatus()); // the change itself stays
}

void SuiteConnectTest::disconnectWithThePortGoneSaysSo()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().control("unplug");
    QVERIFY(story.disconnectCharger());
    QCOMPARE(story.boxes.seen().size(), 1);
    const MessageBoxAnswers::Box box = story.boxes.seen().first();
    QCOMPARE(box.title, QStringLiteral("Failed Opening Serial Port"));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.text, QStringLiteral("<strong>Device Not Found error:<strong/><br/><br/>Could "
                                      "not find device requested!"));
    story.mend();
    QVERIFY(story.connectCharger());
}

void SuiteConnectTest::rereadingBringsTheRowsBack()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QStringList titles = story.titles();
    story.boxes.push(QMessageBox::Yes);
    story.action("actionDeleteAllProfiles")->trigger();
    QCOMPARE(story.list()->count(), 0);
    QVERIFY(story.readData());
    QCOMPARE(story.titles(), titles);
    QVERIFY(story.isConnected());
}

void SuiteConnectTest::failedRereadingDisconnects_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("silent") << "silent@read:2";
    QTest::newRow("cable pulled") << "unplug@read:3";
}

void SuiteConnectTest::failedRereadingDisconnects()
{
    QFETCH(QString, fault);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().fault(fault);
    story.boxes.push(QMessageBox::Ok);
    QVERIFY(story.readData());
    QCOMPARE(story.boxes.titles(), QStringList{"Failed!"});
    QCOMPARE(story.boxes.seen().first().text, transferFailed);
    QVERIFY(!story.isConnected());
    QVERIFY(story.generator()->isMaster());
    QCOMPARE(story.list()->count(), 6);
    story.mend();
    QVERIFY(story.connectCharger());
}

QTEST_MAIN(SuiteConnectTest)
#include "tst_suite_connect.moc"
