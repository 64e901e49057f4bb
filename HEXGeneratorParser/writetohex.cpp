#include "HEXGeneratorParser/writetohex.h"

#include "HEXGeneratorParser/hexbuffer.h"
#include "HEXGeneratorParser/hexutility.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/rounding.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QRegExp>

#include <algorithm>

namespace HEXGeneratorParser
{
namespace
{
QByteArray binaryRepOf(const HParser::StructSetting *setting)
{
    switch (setting->settingKind) {
    case HParser::SettingKind::Num:
        // By way of the text with its six digits, so that a page holds what a profile file holds.
        return WriteToHEX::getBinaryRep(setting->cType, setting->getValue().toDouble(),
                                        setting->scale->toDouble());
    case HParser::SettingKind::Bool:
        return WriteToHEX::getBinaryRep(setting->getValue() == QLatin1String("true"));
    case HParser::SettingKind::String:
    case HParser::SettingKind::List:
        return WriteToHEX::getBinaryRep(setting->getValue(), setting->arraySize);
    case HParser::SettingKind::Unknown:
        break;
    }
    return QByteArray();
}
} // namespace

QByteArray WriteToHEX::getBinaryRep(const QString &cType, double value, double scale)
{
    const int numBytes = HexUtility::calculateByteCount(cType);
    Q_ASSERT(numBytes > 0);
    // The reciprocal first: with a division, ties would fall otherwise than in the charger's files.
    const qint64 raw = HParser::roundedToInt32(value * (1.0 / scale));
    QByteArray bytes;
    for (int i = 0; i < numBytes; ++i)
        bytes.append(
            static_cast<char>(static_cast<unsigned char>(quint64(raw) >> (8 * i) & 0xFFU)));
    return bytes;
}

QByteArray WriteToHEX::getBinaryRep(const QString &text, int length)
{
    const QString cut = text.left(qMax(0, length - 1));
    return cut.toUtf8() + QByteArray(qMax(0, length - cut.size()), '\0');
}

QByteArray WriteToHEX::getBinaryRep(bool value)
{
    return QByteArray(1, value ? '\1' : '\0');
}

bool WriteToHEX::canStoreTexts(const HParser::StructSettings *element)
{
    using HParser::SettingKind;
    const QList<HParser::StructSetting *> members = element->getOriginalOrderStructSettings();
    return std::all_of(members.begin(), members.end(), [](const HParser::StructSetting *member) {
        if (member->settingKind != SettingKind::String && member->settingKind != SettingKind::List)
            return true;
        const QString text = member->getValue();
        return std::all_of(text.begin(), text.end(), [](QChar one) { return one.unicode() < 128; });
    });
}

void WriteToHEX::serializeElement(HEXBuffer *buffer, const HParser::StructSettings *element)
{
    static const QRegExp digits(QStringLiteral("^\\d+$"));
    for (const HParser::StructSetting *setting : element->getOriginalOrderStructSettings()) {
        if (setting->xmlName == QLatin1String("calculated"))
            continue;
        if (setting->xmlName == QLatin1String("checksum")) {
            buffer->appendByte(static_cast<char>(static_cast<unsigned char>(
                HexUtility::getChecksumFromChecksumTotal(buffer->sumBytesStruct()) & 0xFF)));
            break;
        }
        const QByteArray bytes = binaryRepOf(setting);
        if (setting->bits == QLatin1String("auto")) {
            buffer->appendBytes(bytes);
        } else {
            if (!setting->bits.contains(digits))
                qt_assert("setting->size.contains(QRegExp(\"^\\\\d+$\"))", __FILE__, __LINE__);
            buffer->appendBits(bytes, setting->bits.toInt());
        }
    }
    buffer->finishWritingStruct();
}

bool WriteToHEX::write(const QString &fileName, const QList<HParser::StructSettings *> &profiles,
                       const QList<HParser::StructSettings *> &stats,
                       const HParser::Generator *generator)
{
    HEXBuffer hexBuffer(HexUtility::pageSize);
    serializeElement(&hexBuffer, generator->getPageCounterStruct());
    serializeElement(&hexBuffer, generator->getVersionInfoStruct());
    serializeElement(&hexBuffer, generator->getUnitSettingsStruct());
    for (const HParser::StructSettings *element : stats)
        serializeElement(&hexBuffer, element);
    for (const HParser::StructSettings *element : profiles)
        serializeElement(&hexBuffer, element);
    if (generator->getUnitStatsExists())
        serializeElement(&hexBuffer, generator->getUnitStatsStruct());
    if (generator->getHardwareVersionStruct())
        serializeElement(&hexBuffer, generator->getHardwareVersionStruct());
    if (generator->getBarcodeStruct())
        serializeElement(&hexBuffer, generator->getBarcodeStruct());

    // A page that is too long must not reach a charger; the limit on profiles keeps it short.
    Q_ASSERT(hexBuffer.size() <= 2048);
    return hexBuffer.writeToFile(fileName, generator->getProfileStartWordAddress());
}

} // namespace HEXGeneratorParser
