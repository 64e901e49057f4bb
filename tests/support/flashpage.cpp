#include "support/flashpage.h"

FlashPage &FlashPage::add(const QByteArray &dataBytes)
{
    int sum = 0;
    for (const char byte : dataBytes)
        sum += static_cast<unsigned char>(byte);
    return addRaw(dataBytes + number(256 - sum % 256, 1));
}

FlashPage &FlashPage::addRaw(const QByteArray &dataBytes, char filler)
{
    stream += dataBytes;
    while (stream.size() % 3 != 0)
        stream += filler;
    return *this;
}

QByteArray FlashPage::fileBytes() const
{
    QByteArray bytes;
    for (int i = 0; i < stream.size(); i += 3) {
        bytes += stream.at(i + 2);
        bytes += stream.at(i + 1);
        bytes += stream.at(i);
        bytes += '\0';
    }
    return bytes;
}

QByteArray FlashPage::toHex(int wordAddress) const
{
    QByteArray bytes = fileBytes();
    while (bytes.size() < 2048)
        bytes += QByteArray("\xFF\xFF\xFF\0", 4);
    return toHex(bytes, wordAddress);
}

QByteArray FlashPage::toHex(const QByteArray &fileBytes, int wordAddress)
{
    const auto record = [](int address, int type, const QByteArray &data) {
        QByteArray bytes = number(data.size(), 1) + number(address >> 8, 1) + number(address, 1) +
                           number(type, 1) + data;
        int sum = 0;
        for (const char byte : bytes)
            sum += static_cast<unsigned char>(byte);
        bytes += number(256 - sum % 256, 1);
        return ":" + bytes.toHex().toUpper() + "\n";
    };
    QByteArray text;
    int upper = -1;
    for (int i = 0; i < fileBytes.size(); i += 16) {
        const int address = 2 * wordAddress + i;
        if (address / 65536 != upper) {
            upper = address / 65536;
            text += record(0, 4, number(upper >> 8, 1) + number(upper, 1));
        }
        text += record(address % 65536, 0, fileBytes.mid(i, 16));
    }
    return text + record(0, 1, QByteArray());
}

QByteArray FlashPage::number(qint64 value, int width)
{
    QByteArray bytes;
    auto rest = static_cast<quint64>(value);
    for (int i = 0; i < width; ++i) {
        bytes += static_cast<char>(static_cast<unsigned char>(rest & 0xFF));
        rest >>= 8;
    }
    return bytes;
}

QByteArray FlashPage::text(const QByteArray &text, int width)
{
    return text.leftJustified(width, '\0', true);
}
