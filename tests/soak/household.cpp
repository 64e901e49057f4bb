#include "household.h"

#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "profiles/profilesettings.h"

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QPixmapCache>
#include <QProcess>

#include <algorithm>
#include <cstdio>

using ImportProfiles::ImportProfilesMain;

namespace
{
// What is not freed by design: the structs of a schema that another one has replaced, and the runs
// of the uploader. Profiles live as long as their rows, and those of the last device settings that
// were sent until the next ones.
constexpr qint64 bytesOfAProfile = (68 + 44) * 1024; // with its statistics
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
    QObject::connect(importer, &ImportProfilesMain::profileReadyForImport, importer,
                     [this] { ++imported; });
    QObject::connect(
        importer, &ImportProfilesMain::profilesLastImported, importer,
        [this](const QList<ProfileSettings *> &list) { kept.profilesSent = list.size(); });
    QObject::connect(story->generator(), &HParser::Generator::finished, importer,
                     [this] { ++kept.schemas; });
}

Household::Kept Household::keptSoFar() const
{
    Kept all = kept;
    all.rows = story->list()->count();
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
    const int profiles =
        now.rows + now.profilesSent - keptWhenSettled.rows - keptWhenSettled.profilesSent;
    const int schemas = now.schemas - keptWhenSettled.schemas;
    const qint64 allowed = bytesOfAList + qMax(0, profiles) * bytesOfAProfile +
                           schemas * bytesOfASchema +
                           (now.runs - keptWhenSettled.runs) * bytesOfARun;
    const qint64 grown = Resources::now().heap - settled.heap;
    std::printf("heap grown by %.1f MiB over %d more profiles in the list and %d schemas; %.1f MiB "
                "are allowed\n",
                mebibytes(grown), profiles, schemas, mebibytes(allowed));
    if (grown > allowed)
        diary->broken(QStringLiteral("memory grows without bound"));
}

QString Household::figures() const
{
    const Resources now = Resources::now();
    const Kept all = keptSoFar();
    return QStringLiteral("%1 profiles, %2 schemas; resident %3 MiB, heap %4 MiB, objects %5 of "
                          "%6, top-level widgets %7, open files %8, children %9")
        .arg(imported + user->profilesMade())
        .arg(all.schemas)
        .arg(mebibytes(now.resident), 0, 'f', 1)
        .arg(mebibytes(now.heap), 0, 'f', 1)
        .arg(lastingObjects())
        .arg(story->mainWindow()->findChildren<QObject *>().size())
        .arg(QApplication::topLevelWidgets().size())
        .arg(now.descriptors)
        .arg(now.children);
}
