#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace HEXGeneratorParser
{
/// A growing flash image: packs bits and bytes into flash words of three data bytes and a phantom
/// byte, which is always 0. An element begins and ends on a word boundary.
class HEXBuffer : public QObject
{
    Q_OBJECT

public:
    /// An empty image with room for capacity bytes.
    explicit HEXBuffer(int capacity, QObject *parent = nullptr);

    /// Appends one whole byte; a run of bits must have filled its last byte before.
    void appendByte(char byte);
    void appendBytes(const QByteArray &bytes);
    /// Appends one bit. Bits fill a byte from its least significant end.
    void appendBit(bool bit);
    /// Appends the first count bits of bits, least significant bit of byte 0 first.
    void appendBits(const QByteArray &bits, int count);
    /// Fills up the last flash word; the next element starts behind it.
    void finishWritingStruct();
    /// Sum of the bytes of the current element so far.
    int sumBytesStruct() const;

    /// Writes the image as Intel HEX that begins at this word address. False, with a former file of
    /// the name untouched, when the file cannot be written.
    bool writeToFile(const QString &fileName, int startAddress) const;

    /// The byte at this offset, phantom bytes counted.
    unsigned char getByte(int index) const;
    /// Bytes so far, phantom bytes counted.
    int size() const { return buffer.size(); }
    /// Dumps the bytes to standard output.
    void print() const;

private:
    void openByte(char byte);

    QByteArray buffer;
    /// Place of the last byte in its flash word: -1 in a fresh image, 3 behind a finished element.
    int lastByteAdded = -1;
    /// Place of the last bit in the last byte; 7 means that the byte is full.
    int lastBitAdded = 7;
    /// Where the current element begins.
    int structStart = 0;
};

} // namespace HEXGeneratorParser
