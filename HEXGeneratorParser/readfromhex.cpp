#include "HEXGeneratorParser/readfromhex.h"

#include "HEXGeneratorParser/hexbufferread.h"
#include "HEXGeneratorParser/hexutility.h"
#include "ImportProfiles/parsedfselement.h"
#include "IntelHexFile/hexfile.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "xml/xmlutility.h"

#include <QFile>
#include <QSet>

#include <cstdio>
#include <vector>

using ImportProfiles::ParsedFSElement;
using Properties = QMap<QString, QString>;

namespace HEXGeneratorParser
{
namespace
{
constexpr int blankType = 255;
constexpr int newestOutdatedType = 2;
/// Bytes of a row that is left out of a HEX file while it is blank.
constexpr int rowSize = 256;

const QString nameKey = QStringLiteral("name");
const QString checksumKey = QStringLiteral("checksum");

/// Whether the schema gives a struct this type number: it is the default of the first member.
bool declaresType(const HParser::StructSettings *element, int type)
{
    if (!element || element->getOriginalOrderStructSettings().isEmpty())
        return false;
    const HParser::Formula *number =
        element->getOriginalOrderStructSettings().first()->defaultFormula;
    return number && number->toString().toInt() == type;
}

/// The type number that a struct holds as its value.
int currentTypeNumber(const HParser::StructSettings *element)
{
    return element->getStructSettingByName(QStringLiteral("type"))->getValue().toInt();
}

QString displayText(long long raw, const HParser::StructSetting *setting)
{
    return QString::number(HexUtility::applyDisplayFormula(raw, setting), 'g', 6);
}

QString flagText(bool on)
{
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

QString readMember(HexBufferRead *reader, const HParser::StructSetting *setting)
{
    const bool wholeBytes = setting->bits == QLatin1String("auto");
    const QByteArray bits = wholeBytes ? QByteArray() : reader->readBits(setting->bits.toInt());
    switch (setting->settingKind) {
    case HParser::SettingKind::Num:
        return displayText(wholeBytes ? reader->readData(setting->cType)
                                      : static_cast<long long>(HexUtility::byteBufferToNum(bits)),
                           setting);
    case HParser::SettingKind::Bool:
        return flagText(wholeBytes ? reader->readData(setting->cType) != 0
                                   : HexUtility::byteBufferToBool(bits));
    case HParser::SettingKind::String:
    case HParser::SettingKind::List:
        return wholeBytes ? reader->readString(setting->arraySize) : QString();
    case HParser::SettingKind::Unknown:
        break;
    }
    return QString();
}

/// Whoever writes a HEX file leaves blank rows out. A log that fills its last row to the brim is
/// then followed by nothing, where the charger has the blank word that ends it: the rows of the
/// page behind the file's last one are blank again. A page without any row of its own stays as it
/// is, and so does one that was cut off within a row.
void fillLeftOutRows(unsigned char *image, qint64 top, qint64 pageStart)
{
    constexpr unsigned char blankWord[] = {0xFF, 0xFF, 0xFF, 0x00};
    const qint64 pageEnd =
        qMin(pageStart + HexUtility::pageSize, qint64(IntelHexFile::flashImageSize));
    if (pageStart < 0 || top <= pageStart || (top - pageStart) % rowSize != 0)
        return;
    for (qint64 address = top; address < pageEnd; ++address)
        image[address] = blankWord[address % 4];
}

/// The properties of the element behind its type byte. Throws ChecksumMismatch.
Properties readElement(HexBufferRead *reader, const HParser::StructSettings *element, int type)
{
    Properties properties;
    int expected = 0;
    for (const HParser::StructSetting *setting : element->getOriginalOrderStructSettings()) {
        if (setting->xmlName == QLatin1String("type")) {
            properties.insert(QStringLiteral("type"), QString::number(type));
            continue;
        }
        if (setting->xmlName == QLatin1String("calculated"))
            continue;
        if (setting->xmlName == checksumKey)
            expected = HexUtility::getChecksumFromChecksumTotal(reader->sumBytesStruct()) & 0xFF;
        properties.insert(XMLGeneratorParser::XMLUtility::xmlTagFromString(setting->xmlName),
                          readMember(reader, setting));
    }
    properties.insert(nameKey, element->getDescriptiveName());

    const int found = properties.value(checksumKey).toInt();
    if (found != expected) {
        std::printf("ERROR: Checksums dont match! Expected : %d, Found : %d\n", expected, found);
        std::fflush(stdout);
        throw int(ChecksumMismatch);
    }
    return properties;
}

/// Takes out the elements that a later copy supersedes, of those that tell one charger from
/// another. The indices kept on the way are not corrected when an element goes: with several
/// repeated elements another one than the superseded copy can go. That is the established reading
/// of such logs.
QList<ParsedFSElement *> withoutSuperseded(const QList<ParsedFSElement *> &log,
                                           const HParser::Generator *generator)
{
    QList<ParsedFSElement *> elements = log;
    QMap<QString, int> indexByName;
    for (ParsedFSElement *element : log) {
        const Properties properties = element->getProperties();
        if (!properties.contains(nameKey))
            continue;
        const QString name = properties.value(nameKey);
        if (!generator->getVeficationFSElementByName(name))
            continue;
        const int earlier = indexByName.value(name, -1);
        if (earlier >= 0 && earlier < elements.size())
            elements.removeAt(earlier);
        indexByName.insert(name, elements.indexOf(element));
    }
    return elements;
}
} // namespace

ReadFromHEX::ReadFromHEX(QObject *parent) : QObject(parent) {}

ReadFromHEX::~ReadFromHEX() = default;

bool ReadFromHEX::read(const QString &fileName, int wordAddress)
{
    binaryData = nullptr;
    memoryImage.reset();
    std::FILE *file = std::fopen(QFile::encodeName(fileName).constData(), "r");
    if (!file)
        return false;

    // Zeros, not blank flash, stand where the file says nothing.
    memoryImage = std::make_unique<unsigned char[]>(IntelHexFile::flashImageSize);
    const auto unusedEeprom = std::make_unique<unsigned char[]>(IntelHexFile::eepromImageSize);
    char eepromSeen = 0;
    std::uint32_t eepromTop = 0;
    const std::uint32_t top = IntelHexFile::loadhexfile(memoryImage.get(), unusedEeprom.get(), file,
                                                        &eepromSeen, &eepromTop, 0, 0);
    std::fclose(file);
    fillLeftOutRows(memoryImage.get(), top, 2 * qint64(wordAddress));

    // A page outside the image reads as one that the file does not mention.
    const qint64 start = 2 * qint64(wordAddress);
    const bool inside = start >= 0 && start < qint64(IntelHexFile::flashImageSize);
    binaryData = memoryImage.get() + (inside ? start : qint64(IntelHexFile::flashImageSize));
    HexUtility::fixBytesAlignment(binaryData,
                                  qMin(HexUtility::pageSize, bytesBehindBinaryData() / 4 * 4));
    return top != 0;
}

int ReadFromHEX::bytesBehindBinaryData() const
{
    return static_cast<int>(memoryImage.get() + IntelHexFile::flashImageSize - binaryData);
}

HParser::StructSettings *ReadFromHEX::getProfileFromType(const HParser::Generator *generator,
                                                         int type)
{
    for (HParser::StructSettings *element :
         {generator->getUnitSettingsStruct(), generator->getUnitStatsStruct(),
          generator->getPageCounterStruct(), generator->getVersionInfoStruct(),
          generator->getProfileStatsStruct()}) {
        if (declaresType(element, type))
            return element;
    }
    for (HParser::StructSettings *element :
         {generator->getHardwareVersionStruct(), generator->getBarcodeStruct()}) {
        if (element && currentTypeNumber(element) == type)
            return element;
    }
    for (HParser::StructSettings *element : generator->getChemistrySettings()) {
        if (declaresType(element, type))
            return element;
    }
    return nullptr;
}

QList<ParsedFSElement *> ReadFromHEX::parseFSElements(const HParser::Generator *generator)
{
    Q_ASSERT(binaryData);
    // The log ends at its first blank word, wherever that is; behind the image there are zeros,
    // which end it as an outdated element.
    HexBufferRead reader(binaryData, bytesBehindBinaryData());
    std::vector<std::unique_ptr<ParsedFSElement>> log;
    for (;;) {
        const int type = static_cast<int>(reader.readData(QStringLiteral("unsigned char")));
        if (type == blankType)
            break;
        if (type <= newestOutdatedType)
            throw int(OutdatedElement);
        const HParser::StructSettings *element = getProfileFromType(generator, type);
        if (!element) {
            std::printf("Error! Invalid type\n");
            std::fflush(stdout);
            throw int(UnknownType);
        }
        auto record = std::make_unique<ParsedFSElement>();
        record->setProperties(readElement(&reader, element, type));
        log.push_back(std::move(record));
        reader.finishReadingStruct();
    }

    QList<ParsedFSElement *> all;
    for (const auto &record : log)
        all.append(record.get());
    const QList<ParsedFSElement *> kept = withoutSuperseded(all, generator);
    const QSet<ParsedFSElement *> handedOver(kept.begin(), kept.end());
    for (auto &record : log) {
        if (handedOver.contains(record.get()))
            record.release();
    }
    return kept;
}

} // namespace HEXGeneratorParser
