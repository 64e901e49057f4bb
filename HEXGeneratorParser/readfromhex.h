#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser
namespace ImportProfiles
{
class ParsedFSElement;
}

namespace HEXGeneratorParser
{
/// Why a page could not be imported; these numbers are thrown as plain int.
enum ImportCode {
    FileNotRead = 0,
    ChecksumMismatch = 1,
    UnknownType = 2,
    NoPageCounter = 3,
    OutdatedElement = 4,
};

/// Reads a page of flash, element by element, in the order of the log. What the bytes mean is known
/// only to the schema. Every image is safe to read.
class ReadFromHEX : public QObject
{
    Q_OBJECT

public:
    explicit ReadFromHEX(QObject *parent = nullptr);
    ~ReadFromHEX() override;

    /// Loads an Intel HEX file whose page begins at this word address. False when it cannot be
    /// opened or holds nothing.
    bool read(const QString &fileName, int wordAddress);
    /// The page in stream order; null before a file was read. Lives as long as this object.
    unsigned char *getBinaryData() const { return binaryData; }

    /// The struct of an element with this type number, or null.
    static HParser::StructSettings *getProfileFromType(const HParser::Generator *generator,
                                                       int type);

    /// The elements of the log; of repeated version, hardware and barcode elements the last one.
    /// The caller owns them. Throws UnknownType, OutdatedElement or ChecksumMismatch as int.
    QList<ImportProfiles::ParsedFSElement *> parseFSElements(const HParser::Generator *generator);

private:
    int bytesBehindBinaryData() const;

    unsigned char *binaryData = nullptr;
    std::unique_ptr<unsigned char[]> memoryImage;
};

} // namespace HEXGeneratorParser
