#include "fuzz/pagelog.h"

#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/readfromhex.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

using HEXGeneratorParser::HexUtility;
using HEXGeneratorParser::ReadFromHEX;

namespace
{
constexpr int wordSize = 4; // three bytes and the phantom
constexpr int widest = 8;

int nextByte(int index)
{
    return index % wordSize == wordSize - 2 ? index + 2 : index + 1;
}

bool isWideNumber(const HParser::StructSetting *setting)
{
    return setting->bits == QLatin1String("auto") && !setting->isArray &&
           HexUtility::calculateByteCount(setting->cType) == widest;
}

/// Bits that a member takes in the stream.
int width(const HParser::StructSetting *setting)
{
    if (setting->bits != QLatin1String("auto"))
        return setting->bits.toInt();
    return 8 *
           (setting->isArray ? setting->arraySize : HexUtility::calculateByteCount(setting->cType));
}
} // namespace

void PageLog::tame(const HParser::Generator *generator)
{
    walk(generator, false);
}

std::optional<int> PageLog::mend(const HParser::Generator *generator)
{
    return walk(generator, true);
}

std::optional<int> PageLog::walk(const HParser::Generator *generator, bool mendChecksums)
{
    elements = 0;
    for (int index = 0;; ++elements) {
        const int type = byteAt(index);
        if (type == 0xFF)
            return goodEnd;
        if (type <= 2)
            return HEXGeneratorParser::OutdatedElement;
        const HParser::StructSettings *element = ReadFromHEX::getProfileFromType(generator, type);
        if (!element)
            return HEXGeneratorParser::UnknownType;
        if (!walkElement(element, &index, mendChecksums))
            return std::nullopt;
    }
}

bool PageLog::walkElement(const HParser::StructSettings *element, int *index, bool mendChecksums)
{
    const int start = *index;
    int at = nextByte(start); // behind the type
    int bits = 0;
    for (const HParser::StructSetting *setting : element->getOriginalOrderStructSettings()) {
        if (setting->xmlName == QLatin1String("type") ||
            setting->xmlName == QLatin1String("calculated"))
            continue;
        if (mendChecksums && setting->xmlName == QLatin1String("checksum")) {
            int sum = 0;
            for (int i = start; i < at; ++i)
                sum += byteAt(i);
            setByte(at, -sum);
        }
        int last = at;
        for (bits += width(setting); bits >= 8; bits -= 8) {
            last = at;
            at = nextByte(at);
        }
        if (isWideNumber(setting))
            setByte(last, byteAt(last) & 0x7F);
    }
    *index = (at + wordSize - 1) / wordSize * wordSize;
    return at <= bytes.size();
}

unsigned char PageLog::byteAt(int index) const
{
    return index < bytes.size() ? static_cast<unsigned char>(bytes.at(index)) : 0;
}

void PageLog::setByte(int index, int value)
{
    if (index < bytes.size())
        bytes[index] = static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}
