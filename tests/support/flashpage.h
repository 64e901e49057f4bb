#pragma once

#include <QByteArray>

/// A page of the charger's flash, put together byte by byte. Shares no code with the writer and the
/// reader of pages, so that tests can hold either against it.
class FlashPage
{
public:
    /// Appends an element: its data bytes up to the checksum, which is worked out here, and the
    /// rest of its last flash word.
    FlashPage &add(const QByteArray &dataBytes);
    /// Appends data bytes as they stand and the rest of the last flash word.
    FlashPage &addRaw(const QByteArray &dataBytes, char filler = '\xFF');

    /// Data bytes in the order of files: in each word the third first, then a 0.
    QByteArray fileBytes() const;
    /// The page as Intel HEX, blank words behind the last element up to the end of the page.
    QByteArray toHex(int wordAddress = 0x9C00) const;
    /// The same for any bytes in file order.
    static QByteArray toHex(const QByteArray &fileBytes, int wordAddress);

    /// value as a little-endian number of this many bytes; behind the eighth there are zeros.
    static QByteArray number(qint64 value, int width);
    /// A field of this many bytes that begins with text and is filled up with zeros.
    static QByteArray text(const QByteArray &text, int width);

private:
    QByteArray stream;
};
