#include "HEXGeneratorParser/selfcheck.h"

#include "HEXGeneratorParser/hexbuffer.h"
#include "HEXGeneratorParser/hexbufferread.h"
#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/writetohex.h"

#include <cstdio>

namespace HEXGeneratorParser
{
namespace
{
void announce(const char *group)
{
    std::printf("%s\n", group);
    std::fflush(stdout);
}

bool holds(const HEXBuffer &buffer, const QByteArray &expected)
{
    if (buffer.size() != expected.size())
        return false;
    for (int i = 0; i < expected.size(); ++i) {
        if (buffer.getByte(i) != static_cast<unsigned char>(expected.at(i)))
            return false;
    }
    return true;
}
} // namespace

void runWriteToHexChecks()
{
    announce("Running WriteToHEX tests");
    const QString unsignedChar = QStringLiteral("unsigned char");
    const QString targetInt = QStringLiteral("int");
    Q_ASSERT(WriteToHEX::getBinaryRep(QStringLiteral("hello"), 6) == QByteArray("hello\0", 6));
    Q_ASSERT(WriteToHEX::getBinaryRep(QStringLiteral("hello"), 3) == QByteArray("he\0", 3));
    Q_ASSERT(WriteToHEX::getBinaryRep(QString(), 4) == QByteArray(4, '\0'));
    Q_ASSERT(WriteToHEX::getBinaryRep(true) == QByteArray("\1", 1));
    Q_ASSERT(WriteToHEX::getBinaryRep(false) == QByteArray("\0", 1));
    Q_ASSERT(WriteToHEX::getBinaryRep(unsignedChar, 200, 1) == QByteArray("\xC8", 1));
    Q_ASSERT(WriteToHEX::getBinaryRep(targetInt, 145.6, 0.1) == QByteArray("\xB0\x05", 2));
    Q_ASSERT(WriteToHEX::getBinaryRep(targetInt, -1000, 1) == QByteArray("\x18\xFC", 2));
    Q_ASSERT(WriteToHEX::getBinaryRep(QStringLiteral("long"), 16909060, 1) ==
             QByteArray("\4\3\2\1", 4));
}

void runHexBufferChecks()
{
    announce("Running HEXBufferTests");
    HEXBuffer bytes(16);
    bytes.appendBytes(QByteArray("\x10\x20\x30\x40", 4));
    Q_ASSERT(holds(bytes, QByteArray("\x10\x20\x30\0\x40", 5)));
    Q_ASSERT(bytes.sumBytesStruct() == 0xA0);
    bytes.finishWritingStruct();
    Q_ASSERT(holds(bytes, QByteArray("\x10\x20\x30\0\x40\xFF\xFF\0", 8)));
    Q_ASSERT(bytes.sumBytesStruct() == 0);

    HEXBuffer bits(16);
    bits.appendBits(QByteArray("\xF4", 1), 8);
    bits.appendBits(QByteArray("\x0A\x14\xCD", 3), 20);
    Q_ASSERT(holds(bits, QByteArray("\xF4\x0A\x14\0\x0D", 5)));

    unsigned char image[] = {0xF4, 0x18, 0xFC, 0, 'h', 'i', 0, 0};
    HexBufferRead reader(image, sizeof image);
    Q_ASSERT(reader.readBits(8) == QByteArray("\xF4", 1));
    Q_ASSERT(reader.readData(QStringLiteral("int")) == -1000);
    Q_ASSERT(reader.readString(3) == QLatin1String("hi"));
}

void runHexUtilityChecks()
{
    announce("Running HexUtility tests");
    Q_ASSERT((HexUtility::getChecksumFromChecksumTotal(0x10203040) & 0xFF) == 0xC0);
    Q_ASSERT((HexUtility::getChecksumFromChecksumTotal(0x11223300) & 0xFF) == 0x00);
    Q_ASSERT(HexUtility::signedOrUnsigned(QStringLiteral("char")) == HexUtility::signedType);
    Q_ASSERT(HexUtility::signedOrUnsigned(QStringLiteral("unsigned int")) ==
             HexUtility::unsignedType);
    Q_ASSERT(HexUtility::calculateByteCount(QStringLiteral("int")) == 2);

    unsigned char number[] = {0x12, 0x34, 0x56, 0x78};
    HexUtility::twosComplement(number, 3);
    Q_ASSERT(number[0] == 0xEE && number[1] == 0xCB && number[2] == 0xA9 && number[3] == 0x78);
    HexUtility::fixBytesAlignment(number, 4);
    Q_ASSERT(number[0] == 0xA9 && number[1] == 0xCB && number[2] == 0xEE && number[3] == 0x78);
}

} // namespace HEXGeneratorParser
