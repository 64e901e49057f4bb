#pragma once

#include <QByteArray>
#include <QIODevice>

namespace XMLGeneratorParser
{
/// Reads the bytes of another device in a form that an XML parser does not stumble over: bytes that
/// are no UTF-8 count as Latin-1, one by one, and control characters that no XML may hold are left
/// out. Well-formed UTF-8 comes out as it is.
///
/// The text ends within a tag that is longer than any profile's: the parser compares each attribute
/// with all the others of its tag, which would freeze it.
///
/// Earlier versions wrote files in the encoding of the user's locale; the parser would give up on
/// such a file many characters before the first one that it cannot read.
class LenientUtf8 : public QIODevice
{
    Q_OBJECT

public:
    /// source is open, not owned, and is read on from where it stands.
    explicit LenientUtf8(QIODevice *source);

    /// Whether a device holds UTF-8 or nothing that says otherwise: no UTF-16, and no declaration
    /// of another encoding. Reads nothing.
    static bool isMeantFor(QIODevice *source);

    bool isSequential() const override { return true; }
    bool atEnd() const override;
    qint64 bytesAvailable() const override;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

signals:
    /// Some more of the source has been read, perhaps in the middle of a long token.
    void converted();

private:
    void convertMore();
    bool isInLongTag(unsigned char byte);

    QIODevice *source;
    /// The beginning of a character of which the rest has not been read.
    QByteArray pending;
    /// Converted and not yet asked for, from readyFrom on.
    QByteArray ready;
    int readyFrom = 0;
    /// How much of a tag has been read; 0 outside. The quote that is open in it, or 0.
    int tagSize = 0;
    unsigned char quote = 0;
    /// Nothing comes from the source any more.
    bool exhausted = false;
};

} // namespace XMLGeneratorParser
