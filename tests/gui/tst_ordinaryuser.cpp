#include "app/filenames.h"
#include "app/mainwindow.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <grp.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

/// The suite as a user starts it who may not read and write everything: the uploader that it
/// unpacks can be executed and replaced, though not read. Root starts a child that becomes such a
/// user.
class OrdinaryUserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void theUnpackedUploaderRuns();
    void aSecondStartReplacesWhatItUnpacks_data();
    void aSecondStartReplacesWhatItUnpacks();
    void whatIsTheUsersSurvives();

private:
    QString workFile(const QString &name) const
    {
        return home->filePath(QStringLiteral("data/velantor-suite/") + name);
    }
    QByteArray start() const;

    std::unique_ptr<QTemporaryDir> home;
};

namespace
{
constexpr uid_t NOBODY = 65534;

bool isRoot()
{
    return geteuid() == 0;
}

void giveToTheUser(const QString &path)
{
    if (isRoot() && lchown(QFile::encodeName(path).constData(), NOBODY, NOBODY) != 0)
        qFatal("%s cannot be given away", qPrintable(path));
}

/// A child that has no rights but those of its user.
class UserProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        if (isRoot() && (setgroups(0, nullptr) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0))
            _exit(99);
    }
};

int modeOf(const QString &name)
{
    struct stat status = {};
    if (stat(QFile::encodeName(name).constData(), &status) != 0)
        return -1;
    return static_cast<int>(status.st_mode & 07777);
}

QByteArray contentOf(const QString &name)
{
    // Who owns a file may make it readable.
    const int mode = modeOf(name);
    const QByteArray path = QFile::encodeName(name);
    chmod(path.constData(), 0600);
    QFile file(name);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    file.close();
    chmod(path.constData(), static_cast<mode_t>(mode));
    return content;
}

/// The child: starts the application, runs the uploader that it unpacked, and tells of both.
int startAndTell(int argc, char *argv[])
{
    QApplication application(argc, argv);
    MessageBoxAnswers answers;
    const MainWindow window;
    for (const QString &title : answers.titles())
        std::printf("BOX %s\n", qPrintable(title));
    std::printf("STARTED as %s\n", isRoot() ? "root" : "a user");
    QFile uploader(VEXA_FILE_NAME);
    std::printf("READABLE %s\n", uploader.open(QIODevice::ReadOnly) ? "yes" : "no");
    QProcess run;
    run.start(QStringLiteral("./") + VEXA_FILE_NAME, QStringList());
    run.waitForFinished();
    std::printf("UPLOADER %s\n", run.readAllStandardOutput().left(43).constData());
    return 0;
}
} // namespace

void OrdinaryUserTest::init()
{
    home = std::make_unique<QTemporaryDir>();
    QVERIFY(home->isValid());
    giveToTheUser(home->path());
    // The folder of the build may be closed to others.
    const QString program = home->filePath(QStringLiteral("velantor-suite"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    QCOMPARE(chmod(QFile::encodeName(program).constData(), 0755), 0);
}

QByteArray OrdinaryUserTest::start() const
{
    UserProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home->path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home->filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home->path());
    child.setProcessEnvironment(environment);
    child.start(home->filePath(QStringLiteral("velantor-suite")), {QStringLiteral("--start")});
    if (!child.waitForFinished(2 * PATIENCE) || child.exitCode() != 0)
        return "failed: " + child.readAllStandardError();
    QByteArray printed = child.readAllStandardOutput();
    return printed.mid(printed.indexOf("tests\n", printed.indexOf("VersionString")) + 6);
}

void OrdinaryUserTest::theUnpackedUploaderRuns()
{
    const QByteArray first = start();
    QCOMPARE(first, QByteArray("STARTED as a user\nREADABLE no\n"
                               "UPLOADER Serial Uploader by Tolk Technologies (2011)\n"));
    QCOMPARE(modeOf(workFile(VEXA_FILE_NAME)), 0111);
    QCOMPARE(start(), first);
}

void OrdinaryUserTest::aSecondStartReplacesWhatItUnpacks_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");
    QTest::newRow("uploader") << VEXA_FILE_NAME << 0111;
    QTest::newRow("device table") << FILE_FOR_VEXA_NAME << 0444;
    QTest::newRow("bundle") << QStringLiteral("v1.039.velantor") << 0444;
    QTest::newRow("member of the bundle") << MASTER_SS_FILE_NAME << 0644;
    QTest::newRow("delivered profiles")
        << QStringLiteral("saved_profiles/48v_default_profiles.xml") << 0444;
}

void OrdinaryUserTest::aSecondStartReplacesWhatItUnpacks()
{
    QFETCH(QString, name);
    QFETCH(int, mode);
    QVERIFY(start().startsWith("STARTED"));
    const QByteArray content = contentOf(workFile(name));
    QVERIFY(!content.isEmpty());

    QVERIFY(QFile::remove(workFile(name)));
    QFile old(workFile(name));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("of an older version");
    old.close();
    giveToTheUser(workFile(name));
    QCOMPARE(chmod(QFile::encodeName(workFile(name)).constData(), static_cast<mode_t>(mode)), 0);

    QVERIFY(start().startsWith("STARTED"));
    QCOMPARE(contentOf(workFile(name)), content);
}

void OrdinaryUserTest::whatIsTheUsersSurvives()
{
    QVERIFY(start().startsWith("STARTED"));
    const QStringList own{CONFIG_FILE, QStringLiteral("v9.000.velantor.txt"),
                          DOWNLOADED_PROFILES_FILE_NAME, QStringLiteral("saved_profiles/mine.xml")};
    for (const QString &name : own) {
        QFile file(workFile(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("mine");
    }
    QVERIFY(start().startsWith("STARTED"));
    for (const QString &name : own)
        QCOMPARE(contentOf(workFile(name)), QByteArray("mine"));
}

int main(int argc, char *argv[])
{
    if (argc > 1 && std::strcmp(argv[1], "--start") == 0)
        return startAndTell(argc, argv);
    QCoreApplication application(argc, argv);
    OrdinaryUserTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ordinaryuser.moc"
