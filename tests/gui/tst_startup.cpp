#include "app/filenames.h"
#include "app/mainwindow.h"
#include "support/messageboxanswers.h"
#include "support/workingdirectory.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <cstdio>

/// How the application comes alive where something is missing. The start may end the process, so
/// each one runs in a child: this program itself, which links no embedded files and so finds only
/// what a test put into the working directory.
class StartupTest : public QObject
{
    Q_OBJECT

private slots:
    void oldFilesWithoutABundleStart();
    void whatIsMissingEndsTheStart_data();
    void whatIsMissingEndsTheStart();
    void aWorkingDirectoryThatCannotBeMadeEndsTheStart();
    void savedProfilesIsMade();
    void theUsersConfigurationSurvives();
    void theSelfCheckSpeaksFirst();
};

namespace
{
struct Outcome {
    int exitCode = -1;
    QString output;
};

/// What lies in the working directory after an earlier run, without any bundle.
void leaveOldFiles(const WorkingDirectory &home)
{
    QDir().mkpath(QStringLiteral("data/tst_startup"));
    const QString members = QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/");
    QFile::copy(members + MASTER_SS_FILE_NAME,
                QStringLiteral("data/tst_startup/") + MASTER_SS_FILE_NAME);
    home.write(QStringLiteral("data/tst_startup/") + VEXA_FILE_NAME, "tool");
    home.write(QStringLiteral("data/tst_startup/") + FILE_FOR_VEXA_NAME, "table");
}

Outcome start(const WorkingDirectory &home)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.path() + QStringLiteral("/data"));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--start")});
    Outcome outcome;
    if (!child.waitForFinished(60000) || child.exitStatus() != QProcess::NormalExit)
        return outcome;
    outcome.exitCode = child.exitCode();
    outcome.output = QString::fromUtf8(child.readAllStandardOutput());
    return outcome;
}

/// The child: starts the application, names each message box, and ends when the loop would begin.
int startAndTell(int argc, char *argv[])
{
    QApplication application(argc, argv);
    MessageBoxAnswers answers;
    QObject::connect(&answers, &MessageBoxAnswers::answered, &answers, [&answers] {
        const MessageBoxAnswers::Box box = answers.seen().last();
        std::printf("BOX %s | %s\n", qPrintable(box.title), qPrintable(box.text));
        std::fflush(stdout);
    });
    answers.push([](QMessageBox *box) {
        // A reload while the start is not through must do nothing, not even show a second box.
        QMetaObject::invokeMethod(box->parentWidget(), "reloadBundle");
        box->close();
    });
    MainWindow window;
    std::printf("STARTED %s\n", qPrintable(window.windowTitle()));
    return 0;
}
} // namespace

void StartupTest::oldFilesWithoutABundleStart()
{
    WorkingDirectory home;
    leaveOldFiles(home);
    const Outcome outcome = start(home);
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.output.count(QStringLiteral("BOX")), 1);
    QVERIFY(outcome.output.contains(
        QStringLiteral("BOX No Bundles | No valid bundles were found! Please reinstall, or "
                       "contact Tolk for support.\n")));
    QVERIFY(outcome.output.contains(
        QStringLiteral("STARTED Velantor Software Suite For Firmware v1.0+\n")));
}

void StartupTest::whatIsMissingEndsTheStart_data()
{
    QTest::addColumn<QStringList>("missing");
    QTest::addColumn<QString>("text");
    const QString schema =
        "The file \"master.ss\" could not be found.\n\nPlease try reinstalling the program. If "
        "that "
        "doesn't work the \".velantor\" bundle might be corrupted, try looking for a more recent "
        "version of software.";
    const QString uploader = "The executable vexa.bin could not be found. Please try "
                             "reinstalling the program.";
    const QString table = "The file device.txt could not be found. Please try reinstalling the "
                          "program.If that doesn't work the .velantor bundle might be corrupted, "
                          "please find a new one.";
    QTest::newRow("schema") << QStringList{MASTER_SS_FILE_NAME} << schema;
    QTest::newRow("uploader") << QStringList{VEXA_FILE_NAME} << uploader;
    QTest::newRow("device table") << QStringList{FILE_FOR_VEXA_NAME} << table;
    // Only the first of them is told.
    QTest::newRow("all") << QStringList{MASTER_SS_FILE_NAME, VEXA_FILE_NAME, FILE_FOR_VEXA_NAME}
                         << schema;
    QTest::newRow("uploader and device table")
        << QStringList{VEXA_FILE_NAME, FILE_FOR_VEXA_NAME} << uploader;
}

void StartupTest::whatIsMissingEndsTheStart()
{
    QFETCH(QStringList, missing);
    QFETCH(QString, text);
    WorkingDirectory home;
    leaveOldFiles(home);
    for (const QString &name : missing)
        QVERIFY(QFile::remove(QStringLiteral("data/tst_startup/") + name));
    const Outcome outcome = start(home);
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY(outcome.output.contains(QStringLiteral("BOX Installation Error | ") + text +
                                    QLatin1Char('\n')));
    QCOMPARE(outcome.output.count(QStringLiteral("Installation Error")), 1);
    QVERIFY(!outcome.output.contains(QStringLiteral("STARTED")));
}

void StartupTest::aWorkingDirectoryThatCannotBeMadeEndsTheStart()
{
    WorkingDirectory home;
    home.write(QStringLiteral("data"), "a file in the way");
    const Outcome outcome = start(home);
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY(outcome.output.contains(
        QStringLiteral("BOX Installation Error | The folder Velantor Software Suite Files could "
                       "not be found. Please try reinstalling the program.\n")));
}

void StartupTest::savedProfilesIsMade()
{
    WorkingDirectory home;
    leaveOldFiles(home);
    const Outcome outcome = start(home);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(QDir(QStringLiteral("data/tst_startup/saved_profiles")).exists());
}

void StartupTest::theUsersConfigurationSurvives()
{
    WorkingDirectory home;
    leaveOldFiles(home);
    const QString config = QStringLiteral("data/tst_startup/") + CONFIG_FILE;
    home.write(config, "automatic_updates false\n");
    QCOMPARE(start(home).exitCode, 0);
    QCOMPARE(home.read(config), QByteArray("automatic_updates false\n"));
}

void StartupTest::theSelfCheckSpeaksFirst()
{
    WorkingDirectory home;
    leaveOldFiles(home);
    const Outcome outcome = start(home);
    QVERIFY(outcome.output.startsWith(
        QStringLiteral("Running WriteToHEX tests\nRunning HEXBufferTests\nRunning HexUtility "
                       "tests\nRunning VersionString tests\n")));
}

int main(int argc, char *argv[])
{
    if (argc > 1 && qstrcmp(argv[1], "--start") == 0)
        return startAndTell(argc, argv);
    QCoreApplication application(argc, argv);
    StartupTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_startup.moc"
