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

std::optional<int> PageLog::prepare(const HParser::Generator *generator, Checksums checksums)
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
        switch (prepareElement(element, &index, checksums)) {
        case ElementEnd::Good:
            break;
        case ElementEnd::WrongChecksum:
            return HEXGeneratorParser::ChecksumMismatch;
        case ElementEnd::Cut:
            return std::nullopt;
        }
    }
}

PageLog::ElementEnd PageLog::prepareElement(const HParser::StructSettings *element, int *index,
                                            Checksums checksums)
{
    const int start = *index;
    int at = nextByte(start); // behind the type
    int bits = 0;
    bool right = true;
    for (const HParser::StructSetting *setting : element->getOriginalOrderStructSettings()) {
        if (setting->xmlName == QLatin1String("type") ||
            setting->xmlName == QLatin1String("calculated"))
            continue;
        if (setting->xmlName == QLatin1String("checksum")) {
            int sum = 0;
            for (int i = start; i < at; ++i)
                sum += byteAt(i);
            if (checksums == Checksums::Right)
                setByte(at, -sum);
            right = (sum + byteAt(at)) % 256 == 0;
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
    if (at > bytes.size())
        return ElementEnd::Cut;
    return right ? ElementEnd::Good : ElementEnd::WrongChecksum;
}

unsigned char PageLog::byteAt(int index) const
{
    if (index < bytes.size())
        return static_cast<unsigned char>(bytes.at(index));
    return index < blankEnd && index % wordSize != wordSize - 1 ? 0xFF : 0;
}

void PageLog::setByte(int index, int value)
{
    if (index < bytes.size())
        bytes[index] = static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}
