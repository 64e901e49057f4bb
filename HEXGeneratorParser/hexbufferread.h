#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace HEXGeneratorParser
{
/// Takes bits and bytes out of a flash image and steps over the phantom byte of each flash word.
/// The image is not owned and must outlive the reader.
class HexBufferRead : public QObject
{
    Q_OBJECT

public:
    /// Reads data without a limit: the caller knows where to stop.
    explicit HexBufferRead(unsigned char *data, QObject *parent = nullptr);
    /// The same for an image of size bytes; what lies behind it reads as 0.
    HexBufferRead(unsigned char *data, int size, QObject *parent = nullptr);

    /// The byte that lies offset data bytes ahead.
    unsigned char peekByte(int offset) const;
    /// The next whole byte; a run of bits must have ended with its byte before.
    unsigned char readByte();
    bool readBit();
    /// The next count bits, from bit 0 of byte 0 upwards; unused high bits are 0.
    QByteArray readBits(int count);
    /// The next little-endian integer of a C type of the charger. One that does not fit into 63
    /// bits ends the process.
    long long readData(const QString &cType);
    /// The text of a field of length bytes, up to its first 0.
    QString readString(int length);
    /// Moves to the next word boundary, where another element begins.
    void finishReadingStruct();
    /// Sum of the element's bytes read so far.
    int sumBytesStruct() const;

private:
    unsigned char byteAt(int index) const;
    static int nextByteIndex(int index);

    unsigned char *data;
    /// Never rests on a phantom byte.
    int byteIndex = 0;
    int bitIndex = 0;
    /// Where the current element begins.
    int structStart = 0;
    /// Bytes that may be touched.
    int size;
};

} // namespace HEXGeneratorParser
