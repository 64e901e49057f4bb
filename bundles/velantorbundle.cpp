#include "bundles/velantorbundle.h"

#include "app/filenames.h"
#include "bundles/memberfile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegExp>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace
{
const QString memberMark = QStringLiteral("//////");
const QString headerMark = QStringLiteral("...");
constexpr std::string_view memberMarkBytes = "//////";

/// The header is looked for in so many bytes. One that is never closed takes in the members of any
/// real bundle, and still a folder full of large bundles is looked through at once.
constexpr qint64 longestHeader = 1024 * 1024;
/// A bundle holds some ten members; thousands would only litter the folder.
constexpr std::size_t mostMembers = 256;
/// Longer than any name that a file system takes.
constexpr std::size_t longestStartLine = 64 * 1024;

/// The first bytes of a bundle. Nothing where it cannot be opened as a plain file: what never ends,
/// or waits for a writer, is no bundle.
std::optional<QByteArray> firstBytes(const QString &path, qint64 most)
{
    QFile file(path);
    if (!VelantorBundle::canBeBundle(path) || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.read(most);
    // Carriage returns are no part of a bundle's text.
    return bytes.replace('\r', QByteArray());
}

/// The lines of a text that outlives this, one after the other and without their ends.
class Lines
{
public:
    explicit Lines(const QByteArray &text) : rest(text.constData(), std::size_t(text.size())) {}

    bool atEnd() const { return rest.empty(); }
    /// What was not read yet.
    const char *position() const { return rest.data(); }
    std::string_view next()
    {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        return line;
    }

private:
    std::string_view rest;
};

bool contains(std::string_view line, std::string_view part)
{
    return line.find(part) != std::string_view::npos;
}

QString toText(std::string_view line)
{
    return QString::fromUtf8(line.data(), int(line.size()));
}

/// Start-up waits for these looks at lines: only those that can be marks become text.
bool isStartLine(std::string_view line)
{
    return line.size() >= 2 * memberMarkBytes.size() &&
           line.substr(0, memberMarkBytes.size()) == memberMarkBytes &&
           line.substr(line.size() - memberMarkBytes.size()) == memberMarkBytes;
}

bool isEndLine(std::string_view line)
{
    if (!contains(line, "END FILE") || !contains(line, R"(\\\)"))
        return false;
    const QRegExp endMark(QStringLiteral("\\\\\\\\\\\\\\s*END FILE\\s*\\\\\\\\\\\\"));
    return endMark.indexIn(toText(line)) >= 0;
}

bool isFirmwareName(const QString &name)
{
    return name.endsWith(QLatin1String(".hex")) || name.endsWith(QLatin1String(".HEX"));
}

/// A member as it stands in the text of a bundle.
struct Member {
    std::string_view startLine;
    std::string_view content; ///< whole lines
    bool isClosed;            ///< by its end line
};

/// The rest of the member whose start line was read last.
Member readMember(std::string_view startLine, Lines &lines)
{
    const char *const begin = lines.position();
    const char *end = begin;
    bool isClosed = isEndLine(lines.next());
    // At the end of the file the line read last is not content, whatever it is.
    while (!lines.atEnd() && !isClosed) {
        end = lines.position();
        isClosed = isEndLine(lines.next());
    }
    return {startLine, std::string_view(begin, std::size_t(end - begin)), isClosed};
}

/// Nothing where there are more members than a bundle has.
std::optional<std::vector<Member>> readMembers(const QByteArray &bundle)
{
    std::vector<Member> members;
    Lines lines(bundle);
    while (!lines.atEnd()) {
        const std::string_view line = lines.next();
        if (!isStartLine(line))
            continue;
        if (members.size() == mostMembers)
            return std::nullopt;
        members.push_back(readMember(line, lines));
    }
    return members;
}
} // namespace

VelantorBundle::VelantorBundle(QString path) : bundlePath(std::move(path)), hexFileName() {}

QString VelantorBundle::getBundleVersion(const QString &path)
{
    VelantorBundle bundle(path);
    bundle.parseKeyValuePairs();
    const QString version = bundle.valueFromKey(VELANTOR_BUNDLE_VERSION_KEY);
    if (!version.isEmpty())
        return version;

    const QString name = QFileInfo(path).fileName();
    if (!name.contains(QRegExp(QStringLiteral("(\\d+\\.)*\\d+.*\\.velantor"))))
        return QStringLiteral("0");
    const QRegExp number(QStringLiteral("(\\d+\\.)*\\d+"));
    number.indexIn(name);
    return number.cap();
}

bool VelantorBundle::canBeBundle(const QString &path)
{
    const QFileInfo file(path);
    return file.isFile() && file.size() <= longestBundle;
}

void VelantorBundle::parseKeyValuePairs()
{
    const std::optional<QByteArray> start = firstBytes(bundlePath, longestHeader);
    if (!start)
        return;
    Lines lines(*start);
    if (toText(lines.next()) != headerMark)
        return;

    const QRegExp keyAndValue(QStringLiteral("^\\s*[\\w\\.]*\\s*\\=\\s*[\\w\\.]*\\s*$"));
    while (!lines.atEnd()) {
        const std::string_view bytes = lines.next();
        // A header that is never closed takes in all members: the cheap look comes first.
        if (!contains(bytes, "=") && !contains(bytes, "..."))
            continue;
        const QString line = toText(bytes);
        if (line == headerMark)
            return;
        if (keyAndValue.indexIn(line) >= 0)
            extractAndStoreKeyValuePair(line);
    }
}

QString VelantorBundle::valueFromKey(const QString &key)
{
    return keyValuePairs[key];
}

bool VelantorBundle::parseBundle()
{
    firmwareIsWhole = false;
    parseKeyValuePairs();

    // One byte more than allowed: the file may grow meanwhile.
    const std::optional<QByteArray> text = firstBytes(bundlePath, longestBundle + 1);
    if (!text || text->size() > longestBundle)
        return false;
    const std::optional<std::vector<Member>> members = readMembers(*text);
    if (!members)
        return false;

    for (const Member &member : *members) {
        if (member.startLine.size() > longestStartLine)
            continue;
        const QString firmwareSoFar = hexFileName;
        const QString name = parseFileName(toText(member.startLine));
        const bool mayWrite = MemberFile::mayWrite(name);
        const bool isWritten =
            mayWrite &&
            MemberFile::write(QByteArray(member.content.data(), int(member.content.size())), name);
        if (!mayWrite)
            hexFileName = firmwareSoFar; // a file elsewhere is no firmware of this bundle
        if (isFirmwareName(name))
            firmwareIsWhole = isWritten && member.isClosed;
    }
    return allowOverwriteProfiles(true);
}

bool VelantorBundle::allowOverwriteProfiles(bool allow)
{
    QFile::remove(FILE_FOR_VEXA_NAME);
    QFile table(allow ? FILE_FOR_VEXA_OVERWRITE_PROFILES : FILE_FOR_VEXA_KEEP_PROFILES);
    if (!table.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    table.copy(FILE_FOR_VEXA_NAME);
    return true;
}

bool VelantorBundle::matchesStartLine(const QString &line) const
{
    return isStartLine(line.toStdString());
}

bool VelantorBundle::matchesEndLine(const QString &line) const
{
    return isEndLine(line.toStdString());
}

QString VelantorBundle::parseFileName(const QString &line)
{
    const QString name = QString(line).remove(memberMark).trimmed();
    if (isFirmwareName(name))
        hexFileName = name;
    return name;
}

void VelantorBundle::extractAndStoreKeyValuePair(const QString &line)
{
    const QStringList parts = line.split(QLatin1Char('='), Qt::SkipEmptyParts);
    if (parts.size() == 2)
        keyValuePairs.insert(parts.at(0).trimmed(), parts.at(1).trimmed());
}

bool VelantorBundle::saveFile(const QString &content, const QString &fileName)
{
    return MemberFile::write(content.toUtf8(), fileName);
}
