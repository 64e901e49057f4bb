#pragma once

#include <QByteArray>
#include <QString>

namespace HParser
{
class Generator;
class StructSetting;
class StructSettings;
} // namespace HParser

namespace HEXGeneratorParser
{
/// What writer and reader of the flash stack agree on: the charger's C types, its checksum, the
/// order of bytes in a flash word, the room in a page.
class HexUtility
{
public:
    static constexpr bool signedType = true;
    static constexpr bool unsignedType = false;

    /// Image bytes of one flash page, phantom bytes included.
    static constexpr int pageSize = 2048;

    HexUtility() = delete;

    /// Width in bytes that the charger's compiler gives a C type: its int has 16 bits. An unknown
    /// type ends the process.
    static int calculateByteCount(const QString &cType);
    /// signedType, or unsignedType where the first word says "unsigned".
    static bool signedOrUnsigned(const QString &cType);

    /// Negates the little-endian number of count bytes in place.
    static void twosComplement(unsigned char *bytes, int count);
    /// The first eight bytes, or fewer, as a little-endian number.
    static unsigned long long byteBufferToNum(const QByteArray &bytes);
    /// Whether byte 0 is set; bytes must not be empty.
    static bool byteBufferToBool(const QByteArray &bytes);
    /// The display value of a stored integer: the number in the text of scale, times raw.
    static double applyDisplayFormula(long long raw, const HParser::StructSetting *setting);

    /// The number whose low byte brings a sum of bytes to 0 modulo 256. checksumTotal >= 0.
    static int getChecksumFromChecksumTotal(int checksumTotal);
    /// The only kind of host that is supported.
    static bool machineIsLittleEndian();
    /// Exchanges first and third byte of every four: files hold a flash word most significant byte
    /// first, streams hold it the other way round. size must be divisible by four.
    static void fixBytesAlignment(unsigned char *buffer, int size);

    /// Image bytes that an element is counted with, in whole flash words. Members that are only
    /// calculated count as well: the limit on the number of profiles is built on this figure.
    static int getFlashStackStructSize(const HParser::StructSettings *element);
    /// How many profiles, each with its statistics, a page has room for whatever their chemistry.
    static int numProfilesAllowed(const HParser::Generator *generator);
};

} // namespace HEXGeneratorParser
