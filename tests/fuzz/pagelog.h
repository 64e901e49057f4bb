#pragma once

#include <QByteArray>

#include <optional>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

/// A log of the charger in stream order with its phantom bytes, while an input is made from it.
class PageLog
{
public:
    explicit PageLog(const QByteArray &stream) : bytes(stream) {}

    /// Clears the top bit of every 8-byte number that a reader would come by. A reader ends the
    /// process at such a number, as it has to, which must not be taken for a mistake.
    void tame(const HParser::Generator *generator);
    /// The same, and gives every element the right checksum. Returns how a reader ends, one of its
    /// codes or goodEnd; nothing where an element is cut.
    std::optional<int> mend(const HParser::Generator *generator);
    static constexpr int goodEnd = -1;

    const QByteArray &stream() const { return bytes; }
    /// The elements that the last call found.
    int elementCount() const { return elements; }

private:
    std::optional<int> walk(const HParser::Generator *generator, bool mendChecksums);
    /// False where the element at *index is cut; else moves *index behind it.
    bool walkElement(const HParser::StructSettings *element, int *index, bool mendChecksums);
    /// The value of the byte; 0 behind the end.
    unsigned char byteAt(int index) const;
    void setByte(int index, int value);

    QByteArray bytes;
    int elements = 0;
};
