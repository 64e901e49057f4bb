// The profile page, as a charger holds it and as users hand it on.
//
// An input: the schema, flags, the word address (four bytes, signed), and the log in stream order.

#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/readfromhex.h"
#include "ImportProfiles/parsedfselement.h"
#include "IntelHexFile/hexfile.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsettings.h"
#include "fuzz/pagelog.h"
#include "fuzz/ramfolder.h"
#include "fuzz/target.h"
#include "support/flashpage.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

using HEXGeneratorParser::HexUtility;
using HEXGeneratorParser::ReadFromHEX;
using ImportProfiles::ParsedFSElement;

namespace
{
constexpr int imageSize = IntelHexFile::flashImageSize;
constexpr int otherWordAddress = 0x9C00;

enum Flag : std::uint8_t {
    RightChecksums = 1,
    PhantomBytes = 2, ///< the log comes with its phantom bytes, else they are put in as zeros
    BlankEnd = 4,
};

/// The delivered schemas, parsed once.
class Schemas
{
public:
    Schemas()
    {
        for (const char *name :
             {"master.ss", "24V_rev7.ss", "48V_FSv1.ss", "48V_FSv2.ss", "72V_rev7.ss"}) {
            auto generator = std::make_unique<HParser::Generator>();
            generator->parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") +
                                   QLatin1String(name));
            generators.push_back(std::move(generator));
        }
    }

    const HParser::Generator *at(std::size_t number) const
    {
        return generators[number % generators.size()].get();
    }

private:
    std::vector<std::unique_ptr<HParser::Generator>> generators;
};

QByteArray withPhantomBytes(const QByteArray &dataBytes)
{
    QByteArray stream;
    for (int i = 0; i < dataBytes.size(); i += 3)
        stream += dataBytes.mid(i, 3).leftJustified(3, '\xFF') + '\0';
    return stream;
}

/// Of a page that starts so many bytes before the end of the image.
int bytesTurned(int roomInImage)
{
    return std::min(HexUtility::pageSize, roomInImage / 4 * 4);
}

/// With its last word complete, where a reader turns that round.
QByteArray wholeWords(const QByteArray &stream, int roomInImage)
{
    const int missing = stream.size() < bytesTurned(roomInImage) ? (4 - stream.size() % 4) % 4 : 0;
    return stream + QByteArray(missing, '\0');
}

/// Where the blank flash ends that a reader puts behind a log of full rows; 0 without any.
int blankEnd(const QByteArray &stream, int roomInImage)
{
    constexpr int row = 256;
    const bool fullRows = !stream.isEmpty() && stream.size() % row == 0;
    return fullRows ? std::min(HexUtility::pageSize, roomInImage) : 0;
}

/// The bytes of the file from which a reader makes the stream: it turns the words of one page round
/// and leaves alone what lies behind.
QByteArray fileBytes(const QByteArray &stream, int roomInImage)
{
    QByteArray bytes = stream;
    for (int word = 0; word + 4 <= std::min(bytesTurned(roomInImage), bytes.size()); word += 4)
        std::swap(bytes.data()[word], bytes.data()[word + 2]);
    return bytes;
}

struct Result {
    int code = PageLog::goodEnd;
    QList<ParsedFSElement *> elements;
};

Result parse(ReadFromHEX *reader, const HParser::Generator *generator)
{
    Result result;
    try {
        result.elements = reader->parseFSElements(generator);
    } catch (int code) {
        result.code = code;
    }
    return result;
}

void check(const QList<ParsedFSElement *> &elements, const HParser::Generator *generator)
{
    for (ParsedFSElement *element : elements) {
        const QMap<QString, QString> properties = element->getProperties();
        for (const char *key : {"name", "type", "checksum"})
            fuzz::require(!properties.value(QLatin1String(key)).isEmpty(),
                          "an element says what it is");
        HParser::StructSettings *values = element->toStructSettings(generator);
        fuzz::require(values, "an element has a struct");
        delete values;
        delete element;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Schemas schemas;
    static const QTemporaryDir folder(fuzz::ramFolder());
    const QString fileName = folder.filePath(QStringLiteral("page.hex"));

    fuzz::Input input(data, size);
    const HParser::Generator *generator = schemas.at(input.byte());
    const unsigned flags = input.byte();
    const auto wordAddress = static_cast<std::int32_t>(input.number());
    const std::vector<std::uint8_t> rest = input.rest();
    QByteArray stream(reinterpret_cast<const char *>(rest.data()), static_cast<int>(rest.size()));
    if (!(flags & PhantomBytes))
        stream = withPhantomBytes(stream);
    if (flags & BlankEnd)
        stream.append("\xFF\xFF\xFF\0", 4);

    const bool inside = wordAddress >= 0 && wordAddress < imageSize / 2;
    const int fileAddress = inside ? wordAddress : otherWordAddress;
    const int room = imageSize - 2 * fileAddress;
    stream = wholeWords(stream.left(room), room);
    PageLog log(stream, blankEnd(stream, room));
    const std::optional<int> expected =
        log.prepare(generator, flags & RightChecksums ? PageLog::Checksums::Right
                                                      : PageLog::Checksums::AsTheyAre);

    QFile file(fileName);
    fuzz::require(file.open(QIODevice::WriteOnly), "a file can be written");
    file.write(FlashPage::toHex(fileBytes(log.stream(), room), fileAddress));
    file.close();

    ReadFromHEX reader;
    const bool read = reader.read(fileName, wordAddress);
    fuzz::require(read == !log.stream().isEmpty(), "a file with data is read");
    const Result result = parse(&reader, generator);
    if (expected && inside) {
        fuzz::require(result.code == *expected, "a log ends as its bytes say");
        fuzz::require(result.code != PageLog::goodEnd ||
                          (result.elements.size() <= log.elementCount() &&
                           result.elements.isEmpty() == (log.elementCount() == 0)),
                      "a log has no more elements than that");
    }
    check(result.elements, generator);
    return 0;
}
