// Bundles, which come from the network or by hand.

#include "app/versionstring.h"
#include "bundles/velantorbundle.h"
#include "fuzz/ramfolder.h"
#include "fuzz/target.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace
{
const QString bundleName = QStringLiteral("v1.039.velantor");

/// A working directory, the only thing in a folder of its own: what else turns up in that folder
/// was written outside of the working directory.
class Site
{
public:
    Site() { enter(); }

    /// The text of a bundle, in which "{folder}" stands for the folder above.
    QByteArray fill(QByteArray text) const
    {
        return text.replace("{folder}", QFile::encodeName(folder.path()));
    }

    void requireNothingOutside() const
    {
        fuzz::require(QDir(folder.path()).entryList(everything) == QStringList(name),
                      "a bundle stays in its directory");
        fuzz::require(QDir::currentPath() == QDir(folder.filePath(name)).canonicalPath(),
                      "a bundle does not change the directory");
    }

    static QStringList files() { return QDir().entryList(everything); }

    void clear()
    {
        for (const QString &file : files())
            fuzz::require(QFile::remove(file), "a bundle makes plain files only");
    }

private:
    void enter()
    {
        fuzz::require(QDir(folder.path()).mkdir(name) && QDir::setCurrent(folder.filePath(name)),
                      "there is a working directory");
    }

    static constexpr auto everything =
        QDir::Filters(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    const QString name = QStringLiteral("work");
    QTemporaryDir folder{fuzz::ramFolder()};
};

void writeFile(const QString &name, const QByteArray &content)
{
    QFile file(name);
    fuzz::require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
                  "a file can be written");
}

QByteArray fileContent(const QString &name)
{
    QFile file(name);
    fuzz::require(file.open(QIODevice::ReadOnly), "a file can be read");
    return file.readAll();
}

/// What the choice among bundles does with a version.
void compareVersions(const QString &text)
{
    const VersionString version(text);
    const VersionString own(QStringLiteral("1.105"));
    fuzz::require(version.compare(version) == 0, "a version equals itself");
    fuzz::require(version.compare(own) == -own.compare(version), "versions have one order");
    fuzz::require(version.isValid() || version.lessThan(own), "what is no version is the lowest");
}

/// The text as a file name: no file needs to have it.
void nameTheVersion(const QByteArray &text)
{
    constexpr int longestName = 255;
    const QString version = VelantorBundle::getBundleVersion(
        QString::fromUtf8(text.left(longestName)) + QStringLiteral(".velantor"));
    fuzz::require(!version.isEmpty(), "every bundle has a version");
    compareVersions(version);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Site site;
    const QByteArray text =
        site.fill(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    writeFile(bundleName, text);

    VelantorBundle header(bundleName);
    header.parseKeyValuePairs();
    compareVersions(header.valueFromKey(QStringLiteral("VERSION")));
    compareVersions(header.valueFromKey(QStringLiteral("MIN_SOFTWARE_VERSION_REQUIRED")));
    compareVersions(VelantorBundle::getBundleVersion(bundleName));
    nameTheVersion(text);
    fuzz::require(Site::files() == QStringList(bundleName), "reading the header writes nothing");

    VelantorBundle bundle(bundleName);
    const bool parsed = bundle.parseBundle();
    fuzz::require(parsed == QFile::exists(QStringLiteral("device.txt")),
                  "a bundle is good when there is a device table");
    fuzz::require(!bundle.isFirmwareWhole() || QFile::exists(bundle.getHexFileName()),
                  "a whole firmware image is there");
    // The bundle lies where its members go, and none of them may take its place.
    fuzz::require(fileContent(bundleName) == text, "a bundle stays as it is");
    site.requireNothingOutside();
    site.clear();
    return 0;
}
