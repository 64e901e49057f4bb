// The import of a profile page, from the file that the uploader left to the profiles of the list,
// and back: what was imported goes to the charger again.
//
// An input: flags, and the log in stream order without phantom bytes.

#include "HEXGeneratorParser/hexmanager.h"
#include "HEXGeneratorParser/hexutility.h"
#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "fuzz/pagelog.h"
#include "fuzz/ramfolder.h"
#include "fuzz/target.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"
#include "support/flashpage.h"
#include "support/messageboxanswers.h"

#include <QApplication>
#include <QFile>
#include <QListWidget>
#include <QTemporaryDir>

#include <cmath>

using HEXGeneratorParser::HEXManager;
using HEXGeneratorParser::HexUtility;
using HParser::Generator;
using HParser::SettingKind;
using HParser::StructSetting;
using HParser::StructSettings;
using ImportProfiles::ImportProfilesMain;

namespace
{
constexpr int pageWordAddress = 0x9C00;

enum Flag : std::uint8_t { RightChecksums = 1 };

const QStringList schemaFiles = {MASTER_SS_FILE_NAME, REV6_48V_SS_FILE_NAME, REV7_48V_SS_FILE_NAME,
                                 REV7_24V_SS_FILE_NAME, REV7_72V_SS_FILE_NAME};

/// An application of which only the import is there.
class Application
{
public:
    Application() : application(argumentCount, arguments)
    {
        fuzz::require(QDir::setCurrent(folder.path()), "there is a working directory");
        for (const QString &name : schemaFiles)
            fuzz::require(QFile::copy(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + name, name),
                          "a file can be copied");
    }

private:
    QTemporaryDir folder{fuzz::ramFolder()};
    int argumentCount = 1;
    char name[5] = "fuzz";
    char *arguments[2] = {name, nullptr};
    QApplication application;
    MessageBoxAnswers user;
};

/// One import, from the start of the application on.
class Import
{
public:
    Import() : importer(nullptr, &generator), manager(nullptr, &list, loaded(), &importer)
    {
        QObject::connect(&manager, &HEXManager::sortedFSElements, &generator,
                         &Generator::chooseNewSSFile);
        QObject::connect(&generator, &Generator::strictSSFileLoaded, &manager,
                         &HEXManager::importFSElements);
        QObject::connect(&importer, &ImportProfilesMain::profileReadyForImport, &manager,
                         [this](ProfileSettings *profile) { profiles.append(profile); });
    }
    ~Import()
    {
        for (ProfileSettings *profile : profiles) {
            if (ProfileStats *stats = profile->getStats()) {
                delete stats->structSettings;
                delete stats;
            }
            delete profile->structSettings;
            delete profile;
        }
    }
    Import(const Import &) = delete;
    Import &operator=(const Import &) = delete;

    /// False when the page was refused.
    bool run()
    {
        try {
            manager.importFSElements();
        } catch (int) {
            return false;
        }
        return true;
    }

    Generator generator;
    QListWidget list;
    ImportProfilesMain importer;
    HEXManager manager;
    QList<ProfileSettings *> profiles;

private:
    Generator *loaded()
    {
        generator.parseSSFile(MASTER_SS_FILE_NAME);
        return &generator;
    }
};

/// A page in stream order with these data bytes, blank behind them as a charger's page is.
QByteArray wholePage(const std::vector<std::uint8_t> &dataBytes)
{
    QByteArray stream;
    for (std::size_t i = 0; stream.size() < HexUtility::pageSize; ++i) {
        stream.append(i < dataBytes.size() ? static_cast<char>(dataBytes[i]) : '\xFF');
        if (i % 3 == 2)
            stream.append('\0');
    }
    return stream;
}

void writePage(QByteArray stream)
{
    for (int word = 0; word < stream.size(); word += 4)
        std::swap(stream.data()[word], stream.data()[word + 2]);
    QFile file(DOWNLOADED_PROFILES_FILE_NAME);
    fuzz::require(file.open(QIODevice::WriteOnly), "a file can be written");
    file.write(FlashPage::toHex(stream, pageWordAddress));
}

/// A charger must never get a number that its schema rules out.
void requireInBounds(const ProfileSettings *profile)
{
    for (const StructSetting *setting : profile->structSettings->getOriginalOrderStructSettings()) {
        if (setting->settingKind != SettingKind::Num)
            continue;
        const double value = setting->getNumber();
        const double step = std::pow(10.0, -setting->decimals->toDouble());
        fuzz::require(std::abs(setting->getValueInBounds(value) - value) <= step,
                      "a profile keeps to the limits");
    }
}

/// Numbers beyond 32 bits and characters beyond ASCII do not fit the charger's format.
bool isWritable(const StructSettings *element)
{
    for (const StructSetting *setting : element->getOriginalOrderStructSettings()) {
        const QString text = setting->getValue();
        if (setting->settingKind == SettingKind::Num &&
            !(std::abs(text.toDouble() / setting->scale->toDouble()) < 2147483000))
            return false;
        if (text != QString::fromLatin1(text.toLatin1()) || text.toUtf8().size() != text.size())
            return false;
    }
    return true;
}

bool isWritable(const Import &import)
{
    QList<const StructSettings *> elements = {import.generator.getUnitSettingsStruct(),
                                              import.generator.getBarcodeStruct(),
                                              import.generator.getUnitStatsStruct()};
    for (const ProfileSettings *profile : import.profiles) {
        elements.append(profile->structSettings);
        if (profile->getStats())
            elements.append(profile->getStats()->structSettings);
    }
    return import.profiles.size() <= import.manager.getNumProfilesAllowed() &&
           std::all_of(elements.begin(), elements.end(), [](const StructSettings *element) {
               return !element || isWritable(element);
           });
}

QStringList texts(const Import &import)
{
    QStringList result;
    const auto add = [&result](const StructSettings *element) {
        for (const StructSetting *setting : element->getOriginalOrderStructSettings()) {
            if (setting->xmlName != QLatin1String("checksum") &&
                setting->xmlName != QLatin1String("calculated"))
                result.append(setting->name + QLatin1Char('=') + setting->getValue());
        }
    };
    add(import.generator.getUnitSettingsStruct());
    for (const ProfileSettings *profile : import.profiles) {
        add(profile->structSettings);
        if (profile->getStats())
            add(profile->getStats()->structSettings);
    }
    return result;
}

/// Makes the whole page of the charger from the rows that are written, which leave out the blank
/// end. A log that ends with a row could not be read from those alone.
void fillUpExportedPage()
{
    QFile written(UPLOADED_PROFILES_FILE_NAME);
    fuzz::require(written.open(QIODevice::ReadOnly), "a page has been written");
    QByteArray text = written.readAll();
    const int size = 16 * text.count(":10");
    QByteArray blank;
    while (blank.size() < HexUtility::pageSize - size)
        blank.append("\xFF\xFF\xFF\0", 4);
    const QByteArray endRecord = ":00000001FF\n";
    text.replace(endRecord, FlashPage::toHex(blank, pageWordAddress + size / 2));
    QFile page(DOWNLOADED_PROFILES_FILE_NAME);
    fuzz::require(page.open(QIODevice::WriteOnly), "a file can be written");
    page.write(text);
}

void exportAndImportAgain(Import *import)
{
    fuzz::require(import->manager.exportProfiles(import->profiles), "a page can be written");
    fillUpExportedPage();
    Import again;
    fuzz::require(again.run(), "what was exported can be imported");
    const QStringList before = texts(*import);
    const QStringList after = texts(again);
    for (int i = 0; i < qMin(before.size(), after.size()); ++i) {
        if (before.at(i) != after.at(i))
            std::fprintf(stderr, "%s became %s\n", qUtf8Printable(before.at(i)),
                         qUtf8Printable(after.at(i)));
    }
    fuzz::require(before == after, "nothing changes on the way to the charger and back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const Application application;

    fuzz::Input input(data, size);
    const unsigned flags = input.byte();
    const std::vector<std::uint8_t> rest = input.rest();
    const QByteArray stream = wholePage(rest);

    Import import;
    PageLog log(stream);
    log.prepare(&import.generator,
                flags & RightChecksums ? PageLog::Checksums::Right : PageLog::Checksums::AsTheyAre);
    writePage(log.stream());
    if (!import.run())
        return 0;
    for (const ProfileSettings *profile : import.profiles)
        requireInBounds(profile);
    if (!import.generator.isMaster() && isWritable(import))
        exportAndImportAgain(&import);
    return 0;
}
