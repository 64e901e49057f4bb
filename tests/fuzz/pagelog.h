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
    /// Behind the stream a reader comes by blank flash up to the byte blankEnd, then by zeros.
    explicit PageLog(const QByteArray &stream, int blankEnd = 0) : bytes(stream), blankEnd(blankEnd)
    {
    }

    enum class Checksums { AsTheyAre, Right };

    /// Gives every element the right checksum, if so wanted, and clears the top bit of every 8-byte
    /// number that a reader would come by. A reader ends the process at such a number, as it has
    /// to, which must not be taken for a mistake. Returns how a reader ends: one of its codes or
    /// goodEnd, or nothing where an element is cut.
    std::optional<int> prepare(const HParser::Generator *generator, Checksums checksums);
    static constexpr int goodEnd = -1;

    const QByteArray &stream() const { return bytes; }
    /// The whole elements that a reader comes by.
    int elementCount() const { return elements; }

private:
    enum class ElementEnd { Good, WrongChecksum, Cut };
    /// Moves *index behind the element.
    ElementEnd prepareElement(const HParser::StructSettings *element, int *index,
                              Checksums checksums);
    /// The value of the byte, behind the stream too.
    unsigned char byteAt(int index) const;
    void setByte(int index, int value);

    QByteArray bytes;
    int blankEnd;
    int elements = 0;
};
