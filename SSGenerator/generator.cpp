#include "SSGenerator/generator.h"

#include "SSGenerator/assertion.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/rounding.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"

#include <QFile>
#include <QRegExp>

#include <algorithm>

namespace HParser
{

namespace
{

constexpr char PLACE[] = "../SSGenerator/generator.cpp";

bool isBlank(const QString &line)
{
    return std::all_of(line.begin(), line.end(), [](QChar c) { return c.isSpace(); });
}

/// Whether the first character that is not white space is this one.
bool beginsWith(const QString &line, char wanted)
{
    const auto first =
        std::find_if_not(line.begin(), line.end(), [](QChar c) { return c.isSpace(); });
    return first != line.end() && *first == QLatin1Char(wanted);
}

/// The lines of a text file that are not blank.
QStringList visibleLines(QFile &file)
{
    QStringList lines =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    lines.erase(std::remove_if(lines.begin(), lines.end(), isBlank), lines.end());
    return lines;
}

/// First line with a define that matches the pattern; null where there is none.
QString findDefine(const QStringList &lines, const QString &pattern)
{
    const QRegExp define(pattern);
    for (const QString &line : lines) {
        // Most lines are members; the pattern is slow and all of them begin with a hash.
        if (beginsWith(line, '#') && line.contains(define))
            return line;
    }
    return QString();
}

/// The number at the end of a define: decimal, 0x hexadecimal or 0 octal.
int defineValue(const QString &line, int place)
{
    const QString token = line.simplified().section(QLatin1Char(' '), -1);
    bool conversionSuccessful = false;
    const int value = token.toInt(&conversionSuccessful, 0);
    demand(conversionSuccessful, "conversionSuccessful", PLACE, place);
    return value;
}

int parseProfileStartAddress(const QStringList &lines)
{
    const QString line =
        findDefine(lines, QStringLiteral("^\\s*\\#\\s*define\\s*PROFILESTARTADDRESS\\s*"));
    demand(!line.isNull(), "false", PLACE, 489);
    return defineValue(line, 482);
}

bool parseMasterStatus(const QStringList &lines)
{
    return !findDefine(lines, QStringLiteral("^\\s*\\#define\\s*MASTERSSFILE\\s*")).isNull();
}

int parseNumProfiles(const QStringList &lines)
{
    const QString line =
        findDefine(lines, QStringLiteral("^\\s*\\#\\bdefine\\b\\s*\\bNUMPROFILETYPES\\b\\s*"));
    return line.isNull() ? 3 : defineValue(line, 529);
}

QList<int> createStructIndicesList(const QStringList &lines)
{
    const QRegExp head(QStringLiteral(
        "^\\s*struct\\s*\\w+\\s*\\{\\s*\\/\\/\\s*Settings\\s*\\:\\s*\"[\\w\\s]*\"\\s*\\,\\s*"
        "(global_settings|chemistry|profile_stats|global_stats|version|page_counter|hw_version|"
        "barcode)\\s*$"));
    QList<int> indices;
    for (int i = 0; i < lines.size(); ++i) {
        if (beginsWith(lines.at(i), 's') && lines.at(i).contains(head))
            indices.append(i);
    }
    return indices;
}

QString parseDescriptiveName(const QString &head)
{
    QRegExp quoted(QStringLiteral("\"[\\w\\s]*\""));
    const int posFound = quoted.indexIn(head);
    demand(posFound != -1, "posFound != -1", PLACE, 408);
    const QString withQuotes = quoted.cap();
    demand(withQuotes.at(0) == QLatin1Char('"'), "descriptiveNameWithQuotes.at(0) == '\"'", PLACE,
           414);
    demand(withQuotes.at(withQuotes.length() - 1) == QLatin1Char('"'),
           "descriptiveNameWithQuotes.at(descriptiveNameWithQuotes.length() - 1) == '\"'", PLACE,
           415);
    return withQuotes.mid(1, withQuotes.length() - 2);
}

bool closesStruct(const QString &line)
{
    return line.trimmed() == QLatin1String("}");
}

/// First word of a line of help texts: its word characters and, where none of white space follows,
/// the character after them.
QString tooltipKey(const QString &line)
{
    QRegExp word(QStringLiteral("\\w*[^\\t\\s]"));
    word.indexIn(line);
    return word.cap();
}

/// What stands between the first and the last double quote.
QString tooltipText(const QString &line)
{
    const int first = line.indexOf(QLatin1Char('"'));
    const int last = line.lastIndexOf(QLatin1Char('"'));
    if (first == last)
        return QString();
    return line.mid(first + 1, last - first - 1).remove(QLatin1Char('"'));
}

StructSettings *findByName(std::initializer_list<StructSettings *> elements, const QString &name)
{
    for (StructSettings *element : elements) {
        if (element && element->getDescriptiveName() == name)
            return element;
    }
    return nullptr;
}

} // namespace

Generator::Generator(QObject *parent) : QObject(parent) {}

bool Generator::parseSSAndTooltips()
{
    if (!parseSSFile())
        return false;
    tooltips = parseTooltips();
    return true;
}

bool Generator::parseSSFile()
{
    if (hFileLocation.isEmpty())
        return false;
    clearCurrentStructs();
    fileContentsList = splitHeaderFile(hFileLocation);
    profileStartWordAddress = parseProfileStartAddress(fileContentsList);
    masterFile = parseMasterStatus(fileContentsList);

    QList<StructSettings *> elements;
    for (const int headIndex : createStructIndicesList(fileContentsList))
        elements.append(processStruct(headIndex));
    for (StructSettings *element : qAsConst(elements)) {
        fileStruct(element);
        element->buildFormulaTrees();
    }
    checkCompleteness();
    // The device-wide settings settle once more now that everything else exists.
    globalSettings->buildFormulaTrees();
    emit finished();
    return true;
}

void Generator::parseSSFile(const QString &file)
{
    setHFileLocation(file);
    parseSSFile();
}

void Generator::chooseNewSSFile()
{
    parseSSFile(ssFileMatchingCurrentState());
    if (!masterFile)
        emit strictSSFileLoaded();
}

void Generator::loadMasterSSFile()
{
    parseSSFile(MASTER_SS_FILE_NAME);
    emit masterSSFileLoaded();
}

QString Generator::ssFileMatchingCurrentState() const
{
    const QString version = QStringLiteral("version");
    // The first flash-stack generation has 48 V hardware only, and no element to say so.
    if (versionInfo &&
        versionInfo->getStructSettingByName(version)->getValue() == QLatin1String("1"))
        return REV6_48V_SS_FILE_NAME;
    if (!hardwareVersion)
        return QString();
    switch (hardwareVersion->getStructSettingByName(version)->getValue().toInt()) {
    case 1:
    case 4:
        return REV7_48V_SS_FILE_NAME;
    case 2:
        return REV7_24V_SS_FILE_NAME;
    case 5:
        return REV7_72V_SS_FILE_NAME;
    default:
        return QString();
    }
}

StructSettings *Generator::getChemistrySettingsByName(const QString &name) const
{
    for (StructSettings *chemistry : chemistrySettings) {
        if (chemistry->getDescriptiveName() == name)
            return chemistry;
    }
    return nullptr;
}

StructSettings *Generator::getFSElementByName(const QString &name) const
{
    StructSettings *element = findByName({globalSettings, globalStats, profileStats, versionInfo,
                                          pageCounter, hardwareVersion, barcodeStruct},
                                         name);
    return element ? element : getChemistrySettingsByName(name);
}

StructSettings *Generator::getVeficationFSElementByName(const QString &name) const
{
    return findByName({versionInfo, hardwareVersion, barcodeStruct}, name);
}

StructSettings *Generator::copyFlashstackElementSettings(const QString &name) const
{
    const StructSettings *element =
        findByName({globalSettings, profileStats, globalStats, versionInfo, pageCounter,
                    hardwareVersion, barcodeStruct},
                   name);
    if (!element)
        element = getChemistrySettingsByName(name);
    return element ? element->deepCopy() : nullptr;
}

int Generator::hwVersion() const
{
    const StructSettings *lithium = getChemistrySettingsByName(QStringLiteral("Lithium"));
    const StructSetting *bulkCurrent =
        lithium ? lithium->getStructSettingByName(QStringLiteral("bulk_I")) : nullptr;
    if (!bulkCurrent)
        return 0;
    switch (truncatedToInt32(bulkCurrent->upperBound->toDouble())) {
    case 5:
        return 72;
    case 8:
        return 48;
    case 15:
        return 24;
    default:
        return 0;
    }
}

void Generator::clearCurrentStructs()
{
    // Nothing is deleted: rows and dialogs may still refer to the structs of the former schema.
    globalSettings = nullptr;
    chemistrySettings.clear();
    globalStats = nullptr;
    profileStats = nullptr;
    pageCounter = nullptr;
    versionInfo = nullptr;
    hardwareVersion = nullptr;
    barcodeStruct = nullptr;
    unitStatsExists = false;
    profileStartWordAddress = 0;
    masterFile = false;
}

QStringList Generator::splitHeaderFile(const QString &file) const
{
    QFile schema(file);
    demand(schema.open(QIODevice::ReadOnly | QIODevice::Text), "false", PLACE, 300);
    return visibleLines(schema);
}

StructSettings *Generator::processStruct(int headIndex)
{
    const QString &head = fileContentsList.at(headIndex);
    auto *element = new StructSettings(this);
    element->setDescriptiveName(parseDescriptiveName(head));
    element->setStructType(head.split(QLatin1Char(','), Qt::SkipEmptyParts).last().simplified());

    QList<StructSetting *> members;
    for (int i = headIndex + 1; i < fileContentsList.size(); ++i) {
        if (closesStruct(fileContentsList.at(i)))
            break;
        members.append(new StructSetting(fileContentsList.at(i)));
    }
    element->setOriginalOrderStructSettings(members);
    element->setStructSettings(StructSettings::sortByVisualIndex(members));
    return element;
}

void Generator::fileStruct(StructSettings *element)
{
    const QString kind = element->getStructType();
    if (kind == QLatin1String("global_settings")) {
        globalSettings = element;
    } else if (kind == QLatin1String("profile_stats")) {
        profileStats = element;
    } else if (kind == QLatin1String("global_stats")) {
        globalStats = element;
    } else if (kind == QLatin1String("version")) {
        versionInfo = element;
    } else if (kind == QLatin1String("page_counter")) {
        pageCounter = element;
    } else if (kind == QLatin1String("hw_version")) {
        hardwareVersion = element;
    } else if (kind == QLatin1String("barcode")) {
        barcodeStruct = element;
    } else {
        demand(kind == QLatin1String("chemistry"),
               "temp->getStructType().compare(\"chemistry\") == 0", PLACE, 147);
        chemistrySettings.append(element);
    }
}

void Generator::checkCompleteness() const
{
    if (masterFile) {
        demand(hardwareVersion, "hardwareVersion != NULL", PLACE, 156);
        demand(barcodeStruct, "barcodeStruct != NULL", PLACE, 157);
    }
    demand(versionInfo, "versionInfo != NULL", PLACE, 160);
    demand(pageCounter, "pageCounter != NULL", PLACE, 161);
    demand(globalStats, "globalStats != NULL", PLACE, 162);
    demand(globalSettings, "globalSettings != NULL", PLACE, 163);
    demand(profileStats, "profileStats != NULL", PLACE, 164);
    demand(chemistrySettings.size() == parseNumProfiles(fileContentsList),
           "chemistrySettings.size() == parseNumProfiles(fileContentsList)", PLACE, 165);
}

QMap<int, QMap<QString, QString>> Generator::parseTooltips() const
{
    QMap<int, QMap<QString, QString>> result;
    QFile file(tooltipFileLoc);
    if (tooltipFileLoc.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return result;

    const QRegExp section(QStringLiteral("Type \\d"));
    QRegExp number(QStringLiteral("\\d+"));
    int currentType = 0;
    QMap<QString, QString> currentMap;
    for (const QString &line : visibleLines(file)) {
        if (line.contains(section)) {
            // What stands before the first section belongs to no struct.
            if (currentType != 0)
                result[currentType] = currentMap;
            number.indexIn(line);
            currentType = number.cap().toInt();
            currentMap.clear();
        } else {
            currentMap[tooltipKey(line)] = tooltipText(line);
        }
    }
    result[currentType] = currentMap;
    return result;
}

} // namespace HParser
