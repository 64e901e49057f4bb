#include "xml/writetoxml.h"

#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "xml/xmlutility.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

namespace XMLGeneratorParser
{
namespace
{
QString textOf(const HParser::StructSetting *setting)
{
    QString text =
        XMLUtility::escapeReservedChars(XMLUtility::withoutForbiddenChars(setting->getValue()));
    // A reader of XML takes a bare carriage return for a line feed.
    return text.replace(QLatin1Char('\r'), QLatin1String("&#13;"));
}
} // namespace

WriteToXML::WriteToXML(QObject *parent) : QObject(parent) {}

bool WriteToXML::write(const QString &fileName, const QList<ProfileName *> &rows,
                       const HParser::StructSettings *globalSettings)
{
    // A device or a pipe would be replaced by a file.
    const QFileInfo place(fileName);
    if (place.exists() && !place.isFile())
        return false;
    QSaveFile file(fileName);
    // Flushed by hand: commit() puts a file in place although what it flushes found no room.
    return file.open(QIODevice::WriteOnly) && write(&file, rows, globalSettings) && file.flush() &&
           file.commit();
}

bool WriteToXML::write(QIODevice *device, const QList<ProfileName *> &rows,
                       const HParser::StructSettings *globalSettings)
{
    QTextStream out(device);
    out.setCodec("UTF-8");
    out << "<VelantorProfiles>\n";
    if (globalSettings) {
        out << "\t<GlobalSettings>\n";
        xmlOutputSettings(&out, globalSettings->getStructSettings());
        out << "\t</GlobalSettings>\n";
    }
    for (int i = 0; i < rows.size(); ++i) {
        writeProfile(&out, i, rows.at(i));
        emit progressed(i + 1, rows.size());
    }
    out << "</VelantorProfiles>\n";
    out.flush();
    return out.status() == QTextStream::Ok;
}

void WriteToXML::writeProfile(QTextStream *out, int id, const ProfileName *row)
{
    const ProfileSettings *profile = row->getProfileSettings();
    *out << "\t<profile id=\"" << id << "\" active=\"" << boolToString(row->getActiveStatus())
         << "\" default=\"" << boolToString(row->getDefaultStatus()) << "\" modifiable=\""
         << boolToString(profile->getModifiable()) << "\">\n";
    *out << "\t\t<name>" << profile->structSettings->getDescriptiveName() << "</name>\n";
    *out << "\t\t<!-- Chemistry Specific Properties: -->\n";
    xmlOutputSettings(out, profile->structSettings->getStructSettings());
    *out << "\t</profile>\n";
}

void WriteToXML::xmlOutputSettings(QTextStream *out,
                                   const QList<HParser::StructSetting *> &settings)
{
    for (const HParser::StructSetting *setting : settings) {
        const QString tag = XMLUtility::xmlTagFromString(setting->xmlName);
        *out << "\t\t<" << tag << '>' << textOf(setting) << "</" << tag << ">\n";
    }
}

QString WriteToXML::boolToString(bool value) const
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace XMLGeneratorParser
