#include "xml/lenientutf8.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstring>

namespace XMLGeneratorParser
{
namespace
{
constexpr int chunkSize = 16 * 1024;
constexpr int longestCharacter = 4;
constexpr int longestTag = 32 * 1024;

bool isBetween(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}

/// How many bytes a character takes that begins with this one; 0 for none.
int lengthFromFirstByte(unsigned char first)
{
    if (first < 0x80)
        return 1;
    if (isBetween(first, 0xC2, 0xDF))
        return 2;
    if (isBetween(first, 0xE0, 0xEF))
        return 3;
    return isBetween(first, 0xF0, 0xF4) ? 4 : 0;
}

/// Whether a second byte may follow a first one: longer forms than needed, surrogates and numbers
/// beyond Unicode's are no characters.
bool maySecondFollow(unsigned char first, unsigned char second)
{
    switch (first) {
    case 0xE0:
        return isBetween(second, 0xA0, 0xBF);
    case 0xED:
        return isBetween(second, 0x80, 0x9F);
    case 0xF0:
        return isBetween(second, 0x90, 0xBF);
    case 0xF4:
        return isBetween(second, 0x80, 0x8F);
    default:
        return isBetween(second, 0x80, 0xBF);
    }
}

/// The length of the character at the beginning of bytes; 0 where there is none.
int lengthOfCharacter(const unsigned char *bytes, int size)
{
    const int length = lengthFromFirstByte(bytes[0]);
    if (length > size)
        return 0;
    for (int i = 1; i < length; ++i) {
        if (i == 1 ? !maySecondFollow(bytes[0], bytes[1]) : !isBetween(bytes[i], 0x80, 0xBF))
            return 0;
    }
    return length;
}

bool isForbidden(unsigned char byte)
{
    return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}
} // namespace

LenientUtf8::LenientUtf8(QIODevice *source) : source(source)
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool LenientUtf8::isMeantFor(QIODevice *source)
{
    constexpr int longestDeclaration = 256;
    const QByteArray start = source->peek(longestDeclaration);
    if (start.startsWith("\xFE\xFF") || start.startsWith("\xFF\xFE") ||
        start.left(longestCharacter).contains('\0'))
        return false;
    static const QRegularExpression declaration(QStringLiteral(
        "^(?:\u00EF\u00BB\u00BF)?<\\?xml\\b[^>]*\\bencoding\\s*=\\s*[\"']([^\"']*)"));
    const QRegularExpressionMatch match = declaration.match(QString::fromLatin1(start));
    return !match.hasMatch() ||
           match.captured(1).compare(QLatin1String("utf-8"), Qt::CaseInsensitive) == 0;
}

bool LenientUtf8::atEnd() const
{
    return exhausted && readyFrom == ready.size();
}

qint64 LenientUtf8::bytesAvailable() const
{
    return ready.size() - readyFrom + pending.size() + source->bytesAvailable();
}

/// Counts the bytes of a tag. Comments and their like are none; a '<' always begins anew, since no
/// tag holds one.
bool LenientUtf8::isInLongTag(unsigned char byte)
{
    if (byte == '<') {
        tagSize = 1;
        quote = 0;
    } else if (tagSize == 1 && (byte == '!' || byte == '?')) {
        tagSize = 0;
    } else if (tagSize > 0) {
        ++tagSize;
        if (quote)
            quote = byte == quote ? 0 : quote;
        else if (byte == '"' || byte == '\'')
            quote = byte;
        else if (byte == '>')
            tagSize = 0;
    }
    return tagSize > longestTag;
}

void LenientUtf8::convertMore()
{
    const QByteArray more = source->read(chunkSize);
    const QByteArray raw = pending + more;
    exhausted = more.isEmpty();
    const auto *bytes = reinterpret_cast<const unsigned char *>(raw.constData());

    ready.resize(0);
    readyFrom = 0;
    int at = 0;
    while (at < raw.size()) {
        if (isInLongTag(bytes[at])) {
            exhausted = true;
            pending.clear();
            return;
        }
        const int left = raw.size() - at;
        const int length = lengthOfCharacter(bytes + at, left);
        if (length == 0 && left < longestCharacter && !exhausted)
            break;
        if (length == 0) {
            ready += static_cast<char>(0xC0 | bytes[at] >> 6);
            ready += static_cast<char>(0x80 | (bytes[at] & 0x3F));
        } else if (length > 1 || !isForbidden(bytes[at])) {
            ready.append(raw.constData() + at, length);
        }
        at += std::max(length, 1);
    }
    pending = raw.mid(at);
    emit converted();
}

qint64 LenientUtf8::readData(char *data, qint64 maxSize)
{
    while (readyFrom == ready.size() && !exhausted)
        convertMore();
    const qint64 size = std::min<qint64>(maxSize, ready.size() - readyFrom);
    if (size == 0)
        return maxSize == 0 ? 0 : -1;
    std::memcpy(data, ready.constData() + readyFrom, static_cast<std::size_t>(size));
    readyFrom += static_cast<int>(size);
    return size;
}

} // namespace XMLGeneratorParser
