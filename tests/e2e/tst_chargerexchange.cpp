#include "HEXGeneratorParser/hexmanager.h"
#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "device/uploaddownloadmanager.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"

#include "support/flashpage.h"
#include "support/messageboxanswers.h"
#include "support/simulatorprocess.h"
#include "support/workingdirectory.h"

#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QtTest>

#include <memory>

using HEXGeneratorParser::HEXManager;
using HParser::Generator;
using ImportProfiles::ImportProfilesMain;
using UploadDownload::UploadDownloadManager;

/// Reading and writing a simulated charger through everything but the main window, whose
/// connections are made here.
class ChargerExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void readingFillsTheList();
    void whatIsWrittenComesBack();
    void anotherChargerIsNotWritten_data();
    void anotherChargerIsNotWritten();
    void deviceSettingsAreWritten();
    void lostChargerKeepsTheList();

private:
    static constexpr int PATIENCE = 60000; // ms; four runs on a loaded computer

    void read();
    /// Waits until the dialog that is open can be closed by its button, and tells its status.
    QString statusAtTheEnd();
    QStringList titles() const;
    HParser::StructSetting *valueOf(int row, const char *member) const;
    bool hasDialog() const { return window->findChild<QDialog *>() != nullptr; }

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<SimulatorProcess> charger;
    std::unique_ptr<MessageBoxAnswers> user;
    std::unique_ptr<QWidget> window;
    QListWidget *list = nullptr;
    Generator *generator = nullptr;
    ImportProfilesMain *importer = nullptr;
    HEXManager *hexManager = nullptr;
    UploadDownloadManager *manager = nullptr;
};

void ChargerExchangeTest::init()
{
    folder = std::make_unique<WorkingDirectory>();
    QVERIFY(QFile::copy(QStringLiteral(VELANTOR_VEXA), VEXA_FILE_NAME));
    folder->copyHere(QStringLiteral(VELANTOR_SOURCE_DIR "/resources/files/device.txt"));
    for (const QString &schema : {MASTER_SS_FILE_NAME, REV6_48V_SS_FILE_NAME, REV7_48V_SS_FILE_NAME,
                                  REV7_24V_SS_FILE_NAME, REV7_72V_SS_FILE_NAME})
        folder->copyHere(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + schema);

    charger = std::make_unique<SimulatorProcess>(
        QStringList{QStringLiteral("--hardware"), QStringLiteral("48v")});
    user = std::make_unique<MessageBoxAnswers>();
    window = std::make_unique<QWidget>();
    list = new QListWidget(window.get());
    ProfileNameListWidget::qlistWidget = list;
    generator = new Generator(window.get());
    generator->parseSSFile(MASTER_SS_FILE_NAME);
    importer = new ImportProfilesMain(window.get(), generator, window.get());
    hexManager = new HEXManager(window.get(), list, generator, importer, window.get());
    manager = new UploadDownloadManager(hexManager, window.get());
    manager->on_COMPortChosen(charger->portName());

    connect(generator, &Generator::strictSSFileLoaded, hexManager, &HEXManager::importFSElements);
    connect(hexManager, &HEXManager::sortedFSElements, generator, &Generator::chooseNewSSFile);
    connect(hexManager, &HEXManager::deleteAllProfiles, list, &QListWidget::clear);
    connect(hexManager, &HEXManager::velantorAndSSMatch, manager,
            &UploadDownloadManager::continueWithWrite);
    connect(
        importer, &ImportProfilesMain::profileReadyForImport, list,
        [](ProfileSettings *settings) { (new ProfileNameListWidget(settings))->appendToList(); });
    connect(importer, &ImportProfilesMain::profilesLastImported, manager,
            &UploadDownloadManager::saveUnitSettingsToVel);
}

void ChargerExchangeTest::cleanup()
{
    window.reset();
    user.reset();
    charger.reset();
    folder.reset();
}

void ChargerExchangeTest::read()
{
    manager->on_readButtonPressed();
    QTRY_VERIFY_WITH_TIMEOUT(!hasDialog(), PATIENCE);
}

QString ChargerExchangeTest::statusAtTheEnd()
{
    auto *dialog = window->findChild<QDialog *>();
    if (!dialog)
        return QStringLiteral("no dialog");
    const auto *button = dialog->findChild<QPushButton *>(QStringLiteral("okButton"));
    if (!QTest::qWaitFor([button] { return button->isEnabled(); }, PATIENCE))
        return QStringLiteral("no end");
    return dialog->findChild<QLabel *>(QStringLiteral("status"))->text();
}

QStringList ChargerExchangeTest::titles() const
{
    QStringList result;
    for (int row = 0; row < list->count(); ++row)
        result.append(valueOf(row, "title")->getValue());
    return result;
}

HParser::StructSetting *ChargerExchangeTest::valueOf(int row, const char *member) const
{
    return static_cast<ProfileNameListWidget *>(list->item(row))
        ->profileName->getProfileSettings()
        ->structSettings->getStructSettingByName(QLatin1String(member));
}

void ChargerExchangeTest::readingFillsTheList()
{
    QVERIFY(generator->isMaster());
    read();
    QCOMPARE(titles(), QStringList({QStringLiteral("36V Li(10s)"), QStringLiteral("36V Li(10s)"),
                                    QStringLiteral("48V Li(13s)"), QStringLiteral("52V Li(14s)"),
                                    QStringLiteral("36V NiMH"), QStringLiteral("48V SLA")}));
    QVERIFY(!generator->isMaster());
    QCOMPARE(generator->getHFileLocation(), REV7_48V_SS_FILE_NAME);
    // The later copy of a profile counts.
    QCOMPARE(valueOf(1, "bulk_I")->getValue(), QStringLiteral("3.5"));
    QCOMPARE(user->titles(), QStringList());
}

void ChargerExchangeTest::whatIsWrittenComesBack()
{
    read();
    QStringList expected = titles();
    expected[4] = QStringLiteral("changed");
    valueOf(4, "title")->setValue(QStringLiteral("changed"));
    manager->on_writeButtonPressed();
    QCOMPARE(statusAtTheEnd(), QStringLiteral("Success!"));
    QCOMPARE(titles(), expected);
    window->findChild<QDialog *>()->close();

    // Once more from the charger, with nothing left in memory.
    QTRY_VERIFY(!hasDialog());
    list->clear();
    generator->parseSSFile(MASTER_SS_FILE_NAME);
    read();
    QCOMPARE(titles(), expected);
    QCOMPARE(valueOf(1, "bulk_I")->getValue(), QStringLiteral("3.5"));
    QCOMPARE(user->titles(), QStringList());
}

void ChargerExchangeTest::anotherChargerIsNotWritten_data()
{
    // What another charger says about itself; that of the list is 4, "0000".
    QTest::addColumn<int>("hardware");
    QTest::addColumn<QByteArray>("barcode");
    QTest::newRow("barcode") << 4 << QByteArray("0001");
    QTest::newRow("hardware") << 1 << QByteArray("0000");
}

void ChargerExchangeTest::anotherChargerIsNotWritten()
{
    QFETCH(int, hardware);
    QFETCH(QByteArray, barcode);
    read();
    const QStringList before = titles();
    QVERIFY(!before.isEmpty());

    const auto number = [](int value) { return FlashPage::number(value, 1); };
    folder->write(QStringLiteral("other.hex"), FlashPage()
                                                   .add(number(3) + number(12))
                                                   .add(number(4) + number(2))
                                                   .add(number(16) + number(hardware))
                                                   .add(number(17) + FlashPage::text(barcode, 5))
                                                   .toHex());
    charger->control(QStringLiteral("page ") + folder->path() + QStringLiteral("/other.hex"));
    const QByteArray page = charger->flash(0x9C00, 0xA000);

    manager->on_writeButtonPressed();
    QCOMPARE(statusAtTheEnd(), QStringLiteral("Failed!"));
    QVERIFY(!QFile::exists(UPLOADED_PROFILES_FILE_NAME));
    QCOMPARE(charger->flash(0x9C00, 0xA000), page);
    QVERIFY(!charger->commands().contains(QStringLiteral("erase")));
    QCOMPARE(titles(), before);
}

void ChargerExchangeTest::deviceSettingsAreWritten()
{
    read();
    const QStringList before = titles();
    const QString brightness = QStringLiteral("brightness");
    generator->getUnitSettingsStruct()->getStructSettingByName(brightness)->setValue(9.0);
    importer->sendProfilesToUploader();
    QCOMPARE(statusAtTheEnd(), QStringLiteral("Success!"));
    window->findChild<QDialog *>()->close();
    QTRY_VERIFY(!hasDialog());

    generator->parseSSFile(MASTER_SS_FILE_NAME);
    read();
    QCOMPARE(generator->getUnitSettingsStruct()->getStructSettingByName(brightness)->getValue(),
             QStringLiteral("9"));
    QCOMPARE(titles(), before);
}

void ChargerExchangeTest::lostChargerKeepsTheList()
{
    read();
    const QStringList before = titles();
    QVERIFY(!before.isEmpty());
    charger->control(QStringLiteral("unplug"));
    read();
    QCOMPARE(user->titles(), QStringList(QStringLiteral("Failed!")));
    QCOMPARE(titles(), before);
}

QTEST_MAIN(ChargerExchangeTest)
#include "tst_chargerexchange.moc"
