#include "bundles/velantorbundle.h"
#include "support/workingdirectory.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <memory>

namespace
{
QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}
} // namespace

class AssembleBundleTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder = std::make_unique<WorkingDirectory>(); }
    void cleanup() { folder.reset(); }

    void writesHeaderAndMembersInOrder();
    void whatGoesInComesOut();
    void refusesMembersThatWouldChange_data();
    void refusesMembersThatWouldChange();
    void needsItsArguments_data();
    void needsItsArguments();
    void tellsThatItCannotWrite();

private:
    /// Runs the program; its exit status, with what it complained about in complaint.
    int assemble(const QStringList &arguments)
    {
        QProcess run;
        run.start(QStringLiteral(ASSEMBLE_BUNDLE), arguments);
        if (!run.waitForFinished() || run.exitStatus() != QProcess::NormalExit)
            return -1;
        complaint = run.readAllStandardError();
        return run.exitCode();
    }

    std::unique_ptr<WorkingDirectory> folder;
    QByteArray complaint;
};

void AssembleBundleTest::writesHeaderAndMembersInOrder()
{
    folder->write("b.txt"_s, "second\n");
    folder->write("a.txt"_s, "first\n\n");
    folder->write("checksums"_s, QByteArray());
    QCOMPARE(assemble({"v1.velantor"_s, "1.039"_s, "1.100"_s, "a.txt"_s,
                       QDir::currentPath() + "/b.txt"_s, "checksums"_s}),
             0);
    QCOMPARE(folder->read("v1.velantor"_s), QByteArray("...\n"
                                                       "VERSION = 1.039\n"
                                                       "MIN_SOFTWARE_VERSION_REQUIRED = 1.100\n"
                                                       "...\n"
                                                       "\n"
                                                       "////// a.txt //////\n"
                                                       "first\n"
                                                       "\n"
                                                       "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n"
                                                       "\n"
                                                       "////// b.txt //////\n"
                                                       "second\n"
                                                       "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n"
                                                       "\n"
                                                       "////// checksums //////\n"
                                                       "\\\\\\\\\\\\ END FILE \\\\\\\\\\\\\n"));
}

void AssembleBundleTest::whatGoesInComesOut()
{
    const QByteArray schema = "# \xc2\xb0"
                              "C\n\n////// looks like a start //////\n... \nEND FILE\n\\\\\n";
    folder->write("master.ss"_s, schema);
    folder->write("device_overwrite_profiles.txt"_s, "v0106:\t38400\n");
    folder->write("v1.hex"_s, ":00000001FF\n; end\n");
    QCOMPARE(assemble({"b.velantor"_s, "1.039"_s, "1.100"_s, "device_overwrite_profiles.txt"_s,
                       "master.ss"_s, "v1.hex"_s}),
             0);
    for (const QString &name : {"master.ss"_s, "device_overwrite_profiles.txt"_s, "v1.hex"_s})
        QVERIFY(QFile::remove(name));
    VelantorBundle bundle("b.velantor"_s);
    QVERIFY(bundle.parseBundle());
    QCOMPARE(bundle.valueFromKey("VERSION"_s), "1.039"_s);
    QCOMPARE(bundle.valueFromKey("MIN_SOFTWARE_VERSION_REQUIRED"_s), "1.100"_s);
    QCOMPARE(bundle.getHexFileName(), "v1.hex"_s);
    QCOMPARE(folder->read("master.ss"_s), schema);
    QCOMPARE(folder->read("device.txt"_s), QByteArray("v0106:\t38400\n"));
    QCOMPARE(folder->read("v1.hex"_s), QByteArray(":00000001FF\n; end\n"));
}

void AssembleBundleTest::refusesMembersThatWouldChange_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no end of the last line") << QByteArray("a\nb");
    QTest::newRow("carriage return") << QByteArray("a\r\n");
    QTest::newRow("end mark") << QByteArray("a\n\\\\\\ END FILE \\\\\\\nb\n");
    QTest::newRow("end mark within a line") << QByteArray("see \\\\\\END FILE\\\\\\ here\n");
    QTest::newRow("end mark behind its words") << QByteArray("END FILE \\\\\\END FILE\\\\\\\n");
}

void AssembleBundleTest::refusesMembersThatWouldChange()
{
    QFETCH(QByteArray, content);
    folder->write("good"_s, "good\n");
    folder->write("bad"_s, content);
    QCOMPARE(assemble({"b.velantor"_s, "1"_s, "1"_s, "good"_s, "bad"_s}), 1);
    QVERIFY2(complaint.contains("bad"), complaint);
    QVERIFY(!QFile::exists("b.velantor"_s));
}

void AssembleBundleTest::needsItsArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("none") << QStringList() << 2;
    QTest::newRow("no version") << QStringList{"b.velantor"_s} << 2;
    QTest::newRow("blank in the version") << QStringList{"b.velantor"_s, "1 2"_s, "1"_s} << 2;
    QTest::newRow("empty version") << QStringList{"b.velantor"_s, ""_s, "1"_s} << 2;
    QTest::newRow("dash in the software version") << QStringList{"b"_s, "1"_s, "1-2"_s} << 2;
    QTest::newRow("missing member") << QStringList{"b"_s, "1"_s, "1"_s, "missing"_s} << 1;
    QTest::newRow("folder as member") << QStringList{"b"_s, "1"_s, "1"_s, "."_s} << 1;
}

void AssembleBundleTest::needsItsArguments()
{
    QFETCH(QStringList, arguments);
    QTEST(assemble(arguments), "status");
    QVERIFY(!complaint.isEmpty());
    QVERIFY(QDir().isEmpty());
}

void AssembleBundleTest::tellsThatItCannotWrite()
{
    QCOMPARE(assemble({"missing/b.velantor"_s, "1"_s, "1"_s}), 1);
    QVERIFY(complaint.contains("missing/b.velantor"));
}

QTEST_GUILESS_MAIN(AssembleBundleTest)
#include "tst_assemblebundle.moc"
