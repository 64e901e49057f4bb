#include "HEXGeneratorParser/hexbuffer.h"

#include "HEXGeneratorParser/hexutility.h"
#include "IntelHexFile/hexfile.h"

#include <QSaveFile>

#include <cstdio>
#include <cstdlib>

namespace HEXGeneratorParser
{
namespace
{
constexpr int rowSize = 256;

/// The image as Intel HEX text, end record included.
QByteArray toIntelHex(const QByteArray &rows, int size, int startAddress)
{
    char *text = nullptr;
    std::size_t length = 0;
    std::FILE *stream = open_memstream(&text, &length);
    if (!stream)
        return QByteArray();
    const int failed = IntelHexFile::makenewhexfile(
        reinterpret_cast<const unsigned char *>(rows.constData()), static_cast<std::uint32_t>(size),
        stream, 0xFFFFFF00, 4, rowSize, 16, 2 * static_cast<std::uint32_t>(startAddress));
    std::fputs(":00000001FF\n", stream);
    const bool complete = std::fclose(stream) == 0 && failed == 0;
    const QByteArray result = complete ? QByteArray(text, static_cast<int>(length)) : QByteArray();
    std::free(text);
    return result;
}
} // namespace

HEXBuffer::HEXBuffer(int capacity, QObject *parent) : QObject(parent)
{
    buffer.reserve(capacity);
}

void HEXBuffer::openByte(char byte)
{
    // The phantom byte is written only when the next word begins, so that an image may end just
    // behind three data bytes.
    if (lastByteAdded == 2) {
        buffer.append('\0');
        lastByteAdded = 3;
    }
    buffer.append(byte);
    lastByteAdded = (lastByteAdded + 1) % 4;
}

void HEXBuffer::appendByte(char byte)
{
    if (lastBitAdded != 7)
        qt_assert("lastBitAdded==7", __FILE__, __LINE__);
    openByte(byte);
}

void HEXBuffer::appendBytes(const QByteArray &bytes)
{
    for (const char byte : bytes)
        appendByte(byte);
}

void HEXBuffer::appendBit(bool bit)
{
    if (lastBitAdded == 7)
        openByte('\0');
    lastBitAdded = (lastBitAdded + 1) % 8;
    const unsigned last = static_cast<unsigned char>(buffer.back());
    const unsigned mask = 1U << lastBitAdded;
    buffer.back() = static_cast<char>(static_cast<unsigned char>(bit ? last | mask : last & ~mask));
}

void HEXBuffer::appendBits(const QByteArray &bits, int count)
{
    for (int i = 0; i < count; ++i) {
        const unsigned byte = static_cast<unsigned char>(bits.at(i / 8));
        appendBit((byte >> (i % 8) & 1U) != 0);
    }
}

void HEXBuffer::finishWritingStruct()
{
    if (lastByteAdded < 2)
        buffer.append(2 - lastByteAdded, '\xFF');
    if (lastByteAdded != 3)
        buffer.append('\0');
    lastByteAdded = 3;
    structStart = buffer.size();
}

int HEXBuffer::sumBytesStruct() const
{
    int sum = 0;
    for (int i = structStart; i < buffer.size(); ++i)
        sum += getByte(i);
    return sum;
}

bool HEXBuffer::writeToFile(const QString &fileName, int startAddress) const
{
    // The printer of records reads whole rows; what lies behind the image is blank flash.
    QByteArray rows =
        QByteArray("\xFF\xFF\xFF\0", 4).repeated((buffer.size() / rowSize + 1) * rowSize / 4);
    rows.replace(0, buffer.size(), buffer);
    HexUtility::fixBytesAlignment(reinterpret_cast<unsigned char *>(rows.data()), rows.size());

    const QByteArray text = toIntelHex(rows, buffer.size(), startAddress);
    QSaveFile file(fileName);
    // Where a folder takes no new files, an existing one may still be written.
    file.setDirectWriteFallback(true);
    if (text.isEmpty() || !file.open(QIODevice::WriteOnly))
        return false;
    // Flushed by hand: commit() puts a file in place although what it flushes found no room.
    return file.write(text) == text.size() && file.flush() && file.commit();
}

unsigned char HEXBuffer::getByte(int index) const
{
    return static_cast<unsigned char>(buffer.at(index));
}

void HEXBuffer::print() const
{
    for (int i = 0; i < buffer.size(); ++i)
        std::printf("0x%02x ", static_cast<unsigned>(getByte(i)));
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace HEXGeneratorParser
