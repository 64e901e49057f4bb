// Information documents about updates, which come from the network.

#include "app/applicationglobalmap.h"
#include "fuzz/ramfolder.h"
#include "fuzz/target.h"
#include "updates/newfirmwarechecker.h"

#include <QCoreApplication>
#include <QDir>
#include <QMap>
#include <QStringList>
#include <QTemporaryDir>

using Checker = NewFirmwareChecker::NewFirmwareChecker;
using Info = QMap<QString, QString>;

namespace
{
struct Application {
    Application() : application(argumentCount, arguments)
    {
        fuzz::require(QDir(folder.path()).mkdir(name) && QDir::setCurrent(folder.filePath(name)),
                      "there is a working directory");
        ApplicationGlobalMap::putString("bundle_version", "1.039");
    }

    void requireNothingOutside() const
    {
        fuzz::require(QDir(folder.path()).entryList(everything) == QStringList(name),
                      "a bundle stays in its directory");
    }

    static QStringList files() { return QDir().entryList(everything); }

    static constexpr auto everything =
        QDir::Filters(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    const QString name = QStringLiteral("work");
    QTemporaryDir folder{fuzz::ramFolder()};
    int argumentCount = 1;
    char programName[5] = "fuzz";
    char *arguments[2] = {programName, nullptr};
    QCoreApplication application;
};

void requireKeys(const Info &info, const QStringList &known)
{
    for (const QString &key : info.keys())
        fuzz::require(known.contains(key), "only known elements are kept");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Application application;
    Checker checker;
    int told = 0;
    QObject::connect(&checker, &Checker::infoDownloaded,
                     [&told](const Info &firmware, const Info &software) {
                         ++told;
                         requireKeys(firmware, {"current_version", "download_link", "download_size",
                                                "build_type", "hardware_version"});
                         requireKeys(software, {"sw_version", "sw_link"});
                     });
    checker.on_InfoDownloaded(
        QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    fuzz::require(told == 1, "a document is told once");
    checker.isSoftwareUpdate();

    bool stored = false;
    bool failed = false;
    QObject::connect(&checker, &Checker::firmwareDownloaded, [&stored] { stored = true; });
    QObject::connect(&checker, &Checker::error, [&failed] { failed = true; });
    const bool needed = checker.downloadNeeded();
    checker.on_firmwareDownloaded("...\n");
    fuzz::require(stored != failed, "a bundle is stored or an error");
    fuzz::require(stored || !needed || size > 200, "a bundle that is needed is stored");
    application.requireNothingOutside();
    const QStringList files = Application::files();
    fuzz::require(files.size() == (stored ? 1 : 0), "a bundle is one file");
    for (const QString &file : files) {
        fuzz::require(file.startsWith('v') && file.endsWith(".velantor"),
                      "a bundle's name tells its version");
        fuzz::require(QFile::remove(file), "a bundle is a plain file");
    }
    return 0;
}
