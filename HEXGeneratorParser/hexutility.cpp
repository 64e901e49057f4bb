#include "HEXGeneratorParser/hexutility.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QHash>
#include <QStringList>

#include <utility>

namespace HEXGeneratorParser
{
int HexUtility::calculateByteCount(const QString &cType)
{
    static const QHash<QString, int> widths = {
        {QStringLiteral("char"), 1},          {QStringLiteral("signed char"), 1},
        {QStringLiteral("unsigned char"), 1}, {QStringLiteral("short"), 2},
        {QStringLiteral("signed short"), 2},  {QStringLiteral("unsigned short"), 2},
        {QStringLiteral("int"), 2},           {QStringLiteral("signed int"), 2},
        {QStringLiteral("unsigned int"), 2},  {QStringLiteral("long"), 4},
        {QStringLiteral("signed long"), 4},   {QStringLiteral("unsigned long"), 4},
        {QStringLiteral("long long"), 8},     {QStringLiteral("unsigned long long"), 8},
    };
    const int numBytes = widths.value(cType, 0);
    Q_ASSERT(numBytes != 0);
    return numBytes;
}

bool HexUtility::signedOrUnsigned(const QString &cType)
{
    return cType.split(QLatin1Char(' ')).first() == QLatin1String("unsigned") ? unsignedType
                                                                              : signedType;
}

void HexUtility::twosComplement(unsigned char *bytes, int count)
{
    unsigned carry = 1;
    for (int i = 0; i < count; ++i) {
        const unsigned sum = (~unsigned(bytes[i]) & 0xFFU) + carry;
        bytes[i] = static_cast<unsigned char>(sum & 0xFFU);
        carry = sum >> 8;
    }
}

unsigned long long HexUtility::byteBufferToNum(const QByteArray &bytes)
{
    unsigned long long number = 0;
    for (int i = qMin(bytes.size(), 8) - 1; i >= 0; --i)
        number = number << 8 | static_cast<unsigned char>(bytes.at(i));
    return number;
}

bool HexUtility::byteBufferToBool(const QByteArray &bytes)
{
    return bytes.at(0) != 0;
}

double HexUtility::applyDisplayFormula(long long raw, const HParser::StructSetting *setting)
{
    return setting->scale->toString().toDouble() * static_cast<double>(raw);
}

int HexUtility::getChecksumFromChecksumTotal(int checksumTotal)
{
    Q_ASSERT(checksumTotal >= 0);
    return -(checksumTotal & 0xFF);
}

bool HexUtility::machineIsLittleEndian()
{
    return Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
}

void HexUtility::fixBytesAlignment(unsigned char *buffer, int size)
{
    if (size % 4 != 0)
        qt_assert("size%4 == 0", __FILE__, __LINE__);
    for (int word = 0; word < size; word += 4)
        std::swap(buffer[word], buffer[word + 2]);
}

int HexUtility::getFlashStackStructSize(const HParser::StructSettings *element)
{
    int numBits = 0;
    int numBytes = 0;
    for (const HParser::StructSetting *setting : element->getOriginalOrderStructSettings()) {
        bool isBitCount = false;
        const int bits = setting->bits.toInt(&isBitCount);
        if (isBitCount)
            numBits += bits;
        else if (setting->isArray)
            numBytes += setting->arraySize;
        else
            numBytes += calculateByteCount(setting->cType);
    }
    if (numBits % 8 != 0)
        qt_assert("numBitsOccupied%8 == 0", __FILE__, __LINE__);
    numBytes += numBits / 8;
    return 4 * ((numBytes + 2) / 3);
}

int HexUtility::numProfilesAllowed(const HParser::Generator *generator)
{
    int largestProfile = 0;
    for (const HParser::StructSettings *chemistry : generator->getChemistrySettings())
        largestProfile = qMax(largestProfile, getFlashStackStructSize(chemistry));
    const int perProfile =
        largestProfile + getFlashStackStructSize(generator->getProfileStatsStruct());

    // Lifetime statistics are counted although not every charger has them: the limit must not
    // depend on which charger was read last.
    int room = pageSize;
    for (const HParser::StructSettings *element :
         {generator->getUnitSettingsStruct(), generator->getUnitStatsStruct(),
          generator->getVersionInfoStruct(), generator->getPageCounterStruct(),
          generator->getHardwareVersionStruct(), generator->getBarcodeStruct()}) {
        if (element)
            room -= getFlashStackStructSize(element);
    }
    return room / perProfile;
}

} // namespace HEXGeneratorParser
