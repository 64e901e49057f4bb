#include "household.h"

#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "profiles/profilesettings.h"

#include <QApplication>
#include <QDir>
#include <QPixmapCache>
#include <QProcess>

#include <algorithm>
#include <cstdio>

using ImportProfiles::ImportProfilesMain;

namespace
{
// What is not freed by design: profiles whose rows are gone, their statistics, and the structs of a
// schema that another one has replaced. Beside that the window keeps the runs of the uploader.
constexpr qint64 bytesOfAProfile = 68 * 1024;
constexpr qint64 bytesOfStatistics = 44 * 1024;
constexpr qint64 bytesOfASchema = 400 * 1024;
constexpr qint64 bytesOfARun = 4 * 1024;
// More rows may stand in the list than before, and caches may have filled.
constexpr qint64 bytesOfAList = 6 * 1024 * 1024;

double mebibytes(qint64 bytes)
{
    return double(bytes) / (1024 * 1024);
}

bool isRun(const QObject *object)
{
    return qobject_cast<const QProcess *>(object) ||
           object->inherits("UploadDownload::DownloadProfiles");
}
} // namespace

Household::Household(const SuiteStory *story, const RandomUser *user, Diary *diary)
    : story(story), user(user), diary(diary), workingFolder(QDir::currentPath())
{
    auto *importer = story->mainWindow()->findChild<ImportProfilesMain *>();
    const auto count = [this](const ProfileSettings *profile) {
        ++kept.profiles;
        kept.statistics += profile->getStats() ? 1 : 0;
    };
    QObject::connect(importer, &ImportProfilesMain::profileReadyForImport, importer, count);
    QObject::connect(importer, &ImportProfilesMain::profilesLastImported, importer,
                     [count](const QList<ProfileSettings *> &list) {
                         std::for_each(list.begin(), list.end(), count);
                     });
    QObject::connect(story->generator(), &HParser::Generator::finished, importer,
                     [this] { ++kept.schemas; });
}

Household::Kept Household::keptSoFar() const
{
    Kept all = kept;
    all.profiles += user->profilesMade();
    const auto objects = story->mainWindow()->findChildren<QObject *>();
    all.runs = int(std::count_if(objects.begin(), objects.end(), isRun));
    return all;
}

/// Objects of the window that stay from round to round: those of rows, pages and schemas, and the
/// runs of the uploader, are left out.
int Household::lastingObjects() const
{
    int count = 0;
    const MainWindow *window = story->mainWindow();
    const QStringList changing{QStringLiteral("profileNamesList"),
                               QStringLiteral("containerScroll"),
                               QStringLiteral("unitSettingsDisplay")};
    const auto objects = window->findChildren<QObject *>();
    for (const QObject *object : objects) {
        bool counts = true;
        for (const QObject *up = object; counts && up != window; up = up->parent())
            counts = !changing.contains(up->objectName()) && !isRun(up) &&
                     !qobject_cast<const HParser::Generator *>(up);
        count += counts ? 1 : 0;
    }
    return count;
}

void Household::checkNothingIsLeft()
{
    if (SuiteStory::dialog() || QApplication::activeModalWidget() ||
        QApplication::activePopupWidget())
        diary->broken(QStringLiteral("a dialog is left over"));
    if (QDir::currentPath() != workingFolder)
        diary->broken(QStringLiteral("the current directory is ") + QDir::currentPath());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const Resources now = Resources::now();
    if (now.children != 1)
        diary->broken(QStringLiteral("%1 children").arg(now.children));
    const int objects = lastingObjects();
    if (firstObjects == 0) {
        first = now;
        firstObjects = objects;
    }
    if (now.descriptors != first.descriptors)
        diary->broken(QStringLiteral("%1 open files in place of %2")
                          .arg(now.descriptors)
                          .arg(first.descriptors));
    if (objects != firstObjects)
        diary->broken(QStringLiteral("%1 objects of the window in place of %2")
                          .arg(objects)
                          .arg(firstObjects));
}

void Household::settle()
{
    QPixmapCache::clear();
    settled = Resources::now();
    keptWhenSettled = keptSoFar();
}

void Household::checkGrowth()
{
    QPixmapCache::clear();
    const Kept now = keptSoFar();
    const int profiles = now.profiles - keptWhenSettled.profiles;
    const int statistics = now.statistics - keptWhenSettled.statistics;
    const int schemas = now.schemas - keptWhenSettled.schemas;
    const qint64 allowed = bytesOfAList + profiles * bytesOfAProfile +
                           statistics * bytesOfStatistics + schemas * bytesOfASchema +
                           (now.runs - keptWhenSettled.runs) * bytesOfARun;
    const qint64 grown = Resources::now().heap - settled.heap;
    std::printf("heap grown by %.1f MiB over %d profiles, %d of them with statistics, and %d "
                "schemas; %.1f MiB are allowed\n",
                mebibytes(grown), profiles, statistics, schemas, mebibytes(allowed));
    if (grown > allowed)
        diary->broken(QStringLiteral("memory grows without bound"));
}

QString Household::figures() const
{
    const Resources now = Resources::now();
    const Kept all = keptSoFar();
    return QStringLiteral("%1 profiles, %2 schemas; resident %3 MiB, heap %4 MiB, objects %5 of "
                          "%6, top-level widgets %7, open files %8, children %9")
        .arg(all.profiles)
        .arg(all.schemas)
        .arg(mebibytes(now.resident), 0, 'f', 1)
        .arg(mebibytes(now.heap), 0, 'f', 1)
        .arg(lastingObjects())
        .arg(story->mainWindow()->findChildren<QObject *>().size())
        .arg(QApplication::topLevelWidgets().size())
        .arg(now.descriptors)
        .arg(now.children);
}
