#include "HEXGeneratorParser/hexmanager.h"
#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "profiles/profilenameslistmanager.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace
{
constexpr int fullPage = 17;
constexpr int rounds = 15;

/// The median of the processor times of some calls, in milliseconds.
double medianTime(const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const std::clock_t start = std::clock();
        work();
        times.push_back(1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}
} // namespace

/// Imports and writes a full page, rows and their widgets included.
int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QTemporaryDir folder;
    for (const QString &name : {MASTER_SS_FILE_NAME, REV7_48V_SS_FILE_NAME})
        QFile::copy(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + name, folder.filePath(name));
    QDir::setCurrent(folder.path());

    HParser::Generator generator;
    generator.parseSSFile(REV7_48V_SS_FILE_NAME);
    QWidget window;
    QListWidget list(&window);
    QPushButton add(&window);
    QPushButton up(&window);
    QPushButton down(&window);
    QWidget display(&window);
    // No row moves here, and so the list has nothing to tell a pane.
    ProfileNamesListManager rows(&window, &list, &add, &display, &up, &down, &generator, nullptr);
    ImportProfiles::ImportProfilesMain importer(&window, &generator, nullptr);
    HEXGeneratorParser::HEXManager manager(&window, &list, &generator, &importer, nullptr);
    QObject::connect(&importer, &ImportProfiles::ImportProfilesMain::profileReadyForImport, &rows,
                     &ProfileNamesListManager::on_profileReadyForImport);
    QObject::connect(&manager, &HEXGeneratorParser::HEXManager::deleteAllProfiles, &rows,
                     &ProfileNamesListManager::deleteAllProfilesNoConfirmation);
    rows.enableMarkingChanges();

    const QStringList chemistries{QStringLiteral("Lithium"), QStringLiteral("Nickel"),
                                  QStringLiteral("Lead")};
    for (int i = 0; i < fullPage; ++i) {
        auto *stats = new ProfileStats;
        stats->initializeStructSettings(QStringLiteral("Profile stats"), &generator);
        auto *profile = new ProfileSettings;
        profile->initializeStructSettings(chemistries.at(i % chemistries.size()), &generator);
        profile->setProfileStats(stats);
        emit importer.profileReadyForImport(profile, true, i == 0);
    }

    const double write = medianTime([&] { manager.exportProfiles(DOWNLOADED_PROFILES_FILE_NAME); });
    const double read = medianTime([&] { manager.importFSElements(); });
    std::printf("write a page of %d profiles: %.2f ms\nimport it: %.2f ms (%d rows)\n", fullPage,
                write, read, list.count());
    return list.count() == fullPage ? 0 : 1;
}
