#include "HEXGeneratorParser/hexbufferread.h"

#include "HEXGeneratorParser/hexutility.h"

#include <limits>

namespace HEXGeneratorParser
{
HexBufferRead::HexBufferRead(unsigned char *data, QObject *parent)
    : HexBufferRead(data, std::numeric_limits<int>::max(), parent)
{
}

HexBufferRead::HexBufferRead(unsigned char *data, int size, QObject *parent)
    : QObject(parent), data(data), size(size)
{
}

unsigned char HexBufferRead::byteAt(int index) const
{
    return index < size ? data[index] : 0;
}

int HexBufferRead::nextByteIndex(int index)
{
    return (index + 2) % 4 == 0 ? index + 2 : index + 1;
}

unsigned char HexBufferRead::peekByte(int offset) const
{
    Q_ASSERT(bitIndex == 0);
    int index = byteIndex;
    for (int i = 0; i < offset; ++i)
        index = nextByteIndex(index);
    return byteAt(index);
}

unsigned char HexBufferRead::readByte()
{
    Q_ASSERT(bitIndex == 0);
    const unsigned char byte = byteAt(byteIndex);
    byteIndex = nextByteIndex(byteIndex);
    return byte;
}

bool HexBufferRead::readBit()
{
    const bool bit = (byteAt(byteIndex) >> bitIndex & 1) != 0;
    bitIndex = (bitIndex + 1) % 8;
    if (bitIndex == 0)
        byteIndex = nextByteIndex(byteIndex);
    return bit;
}

QByteArray HexBufferRead::readBits(int count)
{
    QByteArray bits((count + 7) / 8, '\0');
    for (int i = 0; i < count; ++i) {
        if (!readBit())
            continue;
        const unsigned byte = static_cast<unsigned char>(bits.at(i / 8)) | 1U << (i % 8);
        bits.data()[i / 8] = static_cast<char>(static_cast<unsigned char>(byte));
    }
    return bits;
}

long long HexBufferRead::readData(const QString &cType)
{
    const int width = HexUtility::calculateByteCount(cType);
    QByteArray bytes(width, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(readByte());

    const bool negative = HexUtility::signedOrUnsigned(cType) == HexUtility::signedType &&
                          (static_cast<unsigned char>(bytes.back()) & 0x80U) != 0;
    if (negative)
        HexUtility::twosComplement(reinterpret_cast<unsigned char *>(bytes.data()), width);
    const auto number = static_cast<long long>(HexUtility::byteBufferToNum(bytes));
    Q_ASSERT(number >= 0);
    return negative ? -number : number;
}

QString HexBufferRead::readString(int length)
{
    QByteArray field(length, '\0');
    for (char &byte : field)
        byte = static_cast<char>(readByte());
    // A field may come without a 0: then all of it is the text.
    return QString::fromLatin1(
        field.constData(),
        static_cast<int>(qstrnlen(field.constData(), static_cast<uint>(length))));
}

void HexBufferRead::finishReadingStruct()
{
    byteIndex = (byteIndex + 3) / 4 * 4;
    structStart = byteIndex;
}

int HexBufferRead::sumBytesStruct() const
{
    int sum = 0;
    for (int i = structStart; i < byteIndex; ++i)
        sum += byteAt(i);
    return sum;
}

} // namespace HEXGeneratorParser
