#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "app/filenames.h"
#include "app/look.h"
#include "app/mainwindow.h"
#include "profiles/profilenameslistmanager.h"
#include "xml/xmlmanager.h"

#include <QApplication>
#include <QFile>
#include <QListWidget>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>

namespace
{
/// A file of so many profiles: those of the delivered set over and over.
bool writeProfiles(const QString &name, int count)
{
    QFile set(QStringLiteral("saved_profiles/48v_default_profiles.xml"));
    QFile file(name);
    if (!set.open(QIODevice::ReadOnly) || !file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray text = set.readAll();
    QList<QByteArray> profiles;
    int from = 0;
    for (int end = 0; (from = text.indexOf("\t<profile", end)) != -1;) {
        end = text.indexOf("</profile>\n", from) + 11;
        profiles.append(text.mid(from, end - from));
    }
    file.write("<VelantorProfiles>\n");
    for (int i = 0; i < count; ++i) {
        QByteArray profile = profiles.at(i % profiles.size());
        const int id = profile.indexOf("id=\"") + 4;
        profile.replace(id, profile.indexOf('"', id) - id, QByteArray::number(i));
        file.write(profile);
    }
    file.write("</VelantorProfiles>\n");
    return true;
}

/// Processor time in microseconds.
double since(std::clock_t start)
{
    return 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}
} // namespace

/// Loads files of 17, 1,000 and 10,000 profiles into the shown list and empties it again, and tells
/// the processor time for each profile in microseconds.
int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()));
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velantor-suite"));
    MainWindow window;
    window.show();
    setSuiteLook();

    auto *list = window.findChild<QListWidget *>(QStringLiteral("profileNamesList"));
    auto *listManager = window.findChild<ProfileNamesListManager *>();
    HParser::Generator generator;
    generator.parseSSFile(MASTER_SS_FILE_NAME);
    XMLGeneratorParser::XMLManager manager(
        &window, list, window.findChild<ImportProfiles::ImportProfilesMain *>(), &generator);

    double few = 0;
    for (const int count : {17, 1000, 10000}) {
        if (!writeProfiles(QStringLiteral("many.xml"), count))
            return 1;
        const int repetitions = qMax(1, 2000 / count);
        double loading = 0;
        double emptying = 0;
        for (int i = 0; i < repetitions; ++i) {
            const std::clock_t start = std::clock();
            if (!manager.importFromXML(QStringLiteral("many.xml")))
                return 1;
            QApplication::processEvents();
            loading += since(start);
            if (list->count() != count)
                return 1;
            const std::clock_t loaded = std::clock();
            listManager->deleteAllProfilesNoConfirmation();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QApplication::processEvents();
            emptying += since(loaded);
        }
        const double each = loading / repetitions / count;
        if (few == 0)
            few = each;
        std::printf("load %5d profiles: %.0f us each (%.2f times that of 17), empty the list: "
                    "%.0f us each\n",
                    count, each, each / few, emptying / repetitions / count);
        std::fflush(stdout);
    }
    return 0;
}
