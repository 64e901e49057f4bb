// Profile files, which are edited by hand and come from anywhere: read, made into profiles, written
// and read again.

#include "ImportProfiles/importprofilesmain.h"
#include "ImportProfiles/parsedfselement.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "fuzz/target.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "support/messageboxanswers.h"
#include "xml/readfromxml.h"
#include "xml/writetoxml.h"
#include "xml/xmlutility.h"

#include <QApplication>
#include <QBuffer>
#include <QXmlStreamReader>

#include <memory>

using HParser::StructSetting;
using HParser::StructSettings;
using ImportProfiles::ImportProfilesMain;
using ImportProfiles::ParsedFSElement;
using XMLGeneratorParser::ReadFromXML;
using XMLGeneratorParser::WriteToXML;
using XMLGeneratorParser::XMLUtility;

namespace
{
/// An import takes far more time than the reading does.
constexpr int mostImported = 20;

/// An application of which only the import is there.
struct Application {
    Application() : application(argumentCount, arguments), importer(nullptr, &generator)
    {
        generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    }

    int argumentCount = 1;
    char name[5] = "fuzz";
    char *arguments[2] = {name, nullptr};
    QApplication application;
    MessageBoxAnswers user;
    HParser::Generator generator;
    ImportProfilesMain importer;
};

void read(ReadFromXML *reader, QByteArray text)
{
    QBuffer buffer(&text);
    fuzz::require(buffer.open(QIODevice::ReadOnly), "a buffer opens");
    reader->readProfiles(&buffer);
}

void requireOrder(const ReadFromXML &reader)
{
    int last = -1;
    for (const ParsedFSElement *profile : reader.getProfiles()) {
        fuzz::require(profile->getID() > last, "profiles come in the order of their ids");
        last = profile->getID();
        fuzz::require(profile->getProperties().value(QStringLiteral("profile_id")) ==
                          QLatin1String("255"),
                      "no profile of a file has a place on the charger");
    }
    const ParsedFSElement *settings = reader.getUnitSettings();
    fuzz::require(!settings || settings->getProperties().size() >= 5, "no stub counts as settings");
}

QString shownTexts(const StructSettings *record)
{
    QString texts = record->getDescriptiveName();
    for (const StructSetting *setting : record->getStructSettings())
        texts += QLatin1Char('\n') + setting->name + QLatin1Char('=') +
                 XMLUtility::withoutForbiddenChars(setting->getValue());
    return texts;
}

/// The rows that a file leads to.
class Rows
{
public:
    Rows(ImportProfilesMain *importer, const ReadFromXML &reader)
    {
        const QMetaObject::Connection listening =
            QObject::connect(importer, &ImportProfilesMain::profileReadyForImport,
                             [this](ProfileSettings *profile, bool active, bool isDefault) {
                                 add(profile, active, isDefault);
                             });
        importer->importProfilesAndStats(reader.getProfiles().mid(0, mostImported), {}, {});
        QObject::disconnect(listening);
    }
    ~Rows()
    {
        qDeleteAll(rows);
        // In the event loop their profiles go as well.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;

    QList<ProfileName *> names() const
    {
        QList<ProfileName *> result;
        for (const ProfileNameListWidget *row : rows)
            result.append(row->profileName);
        return result;
    }

    QStringList texts() const
    {
        QStringList result;
        for (const ProfileNameListWidget *row : rows) {
            const ProfileSettings *profile = row->profileName->getProfileSettings();
            result.append(shownTexts(profile->structSettings) +
                          QStringLiteral("\n%1 %2 %3")
                              .arg(row->profileName->getActiveStatus())
                              .arg(row->profileName->getDefaultStatus())
                              .arg(profile->getModifiable()));
        }
        return result;
    }

private:
    void add(ProfileSettings *profile, bool active, bool isDefault)
    {
        auto *row = new ProfileNameListWidget(profile);
        row->profileName->setActive(active);
        row->profileName->setDefault(isDefault);
        rows.append(row);
    }

    QList<ProfileNameListWidget *> rows;
};

QByteArray write(const Rows &rows, const StructSettings *settings)
{
    QBuffer buffer;
    fuzz::require(buffer.open(QIODevice::WriteOnly) &&
                      WriteToXML().write(&buffer, rows.names(), settings),
                  "a file can be written");
    return buffer.data();
}

void requireWellFormed(const QByteArray &text)
{
    QXmlStreamReader reader(text);
    while (!reader.atEnd())
        reader.readNext();
    fuzz::require(!reader.hasError(), "what is written is well-formed");
}

void requireSame(const QStringList &before, const QStringList &after)
{
    for (int i = 0; i < before.size(); ++i) {
        if (before.at(i) != after.value(i))
            std::fprintf(stderr, "%s\n\nbecame\n\n%s\n", qUtf8Printable(before.at(i)),
                         qUtf8Printable(after.value(i)));
    }
    fuzz::require(before == after, "profiles stay the same in a file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static Application application;
    StructSettings *settings = application.generator.getUnitSettingsStruct();

    ReadFromXML reader;
    read(&reader, QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    requireOrder(reader);
    application.importer.importSSFileStruct(reader.getUnitSettings(), settings);
    const Rows rows(&application.importer, reader);

    const QString settingsBefore = shownTexts(settings);
    const QByteArray text = write(rows, settings);
    requireWellFormed(text);

    ReadFromXML again;
    read(&again, text);
    fuzz::require(again.getUnitSettings(), "settings that were written are read");
    application.importer.importSSFileStruct(again.getUnitSettings(), settings);
    fuzz::require(shownTexts(settings) == settingsBefore, "settings stay the same in a file");
    const Rows rowsAgain(&application.importer, again);
    requireSame(rows.texts(), rowsAgain.texts());
    return 0;
}
