#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

namespace HEXGeneratorParser
{
class HEXBuffer;

/// Writes a page of flash: one copy of each element, laid out as the schema says.
class WriteToHEX : public QObject
{
    Q_OBJECT

public:
    /// value / scale, rounded, as a little-endian integer of the C type's width. What does not fit
    /// loses its high bytes; what does not even fit 32 bits is stored as 0x80000000.
    static QByteArray getBinaryRep(const QString &cType, double value, double scale);
    /// text, cut to length - 1 characters and filled up to length with zeros. Characters beyond
    /// ASCII take more than one byte and make the field longer.
    static QByteArray getBinaryRep(const QString &text, int length);
    /// One byte, 1 or 0.
    static QByteArray getBinaryRep(bool value);
    static QByteArray getBinaryRep(const char *) = delete;

    /// Whether the fields of an element hold its texts. With a character beyond ASCII in one of
    /// them a charger reads everything behind it wrongly.
    static bool canStoreTexts(const HParser::StructSettings *element);
    /// Appends an element up to its checksum and closes it.
    static void serializeElement(HEXBuffer *buffer, const HParser::StructSettings *element);

    /// Writes the device-wide elements of generator, the profiles and their statistics to a file.
    /// All of it must fit into a page. False, with a former file untouched, when the file cannot
    /// be written.
    static bool write(const QString &fileName, const QList<HParser::StructSettings *> &profiles,
                      const QList<HParser::StructSettings *> &stats,
                      const HParser::Generator *generator);
};

} // namespace HEXGeneratorParser
