#include "e2e/vexarun.h"
#include "support/simulatorprocess.h"
#include "support/workingdirectory.h"

#include <QFile>
#include <QTest>

#define S QStringLiteral

namespace
{
/// Follows a flashing run by its output as the firmware tool does: each piece is looked at once,
/// for the step at hand alone.
class Watcher
{
public:
    void look(const QByteArray &chunk)
    {
        switch (step) {
        case 0:
            if (chunk.contains("failed to find input file"))
                found = "failed to find input file";
            else if (chunk.contains("All flash above bldr erased"))
                ++step;
            else if (chunk.contains("Can not open comport"))
                found = "Can not open comport";
            else if (chunk.indexOf("Timeout", chunk.indexOf("Bootloader Version is")) > 0)
                found = "Timeout";
            else if (chunk.contains("Could not find device.txt file"))
                found = "Could not find device.txt file";
            else if (chunk.contains("no stx char"))
                found = "no stx char";
            break;
        case 1:
            if (chunk.contains("hex file loaded"))
                ++step;
            else if (chunk.contains("failed to find input file"))
                found = "failed to find input file";
            break;
        case 2:
            if (chunk.contains("Flash Write success"))
                ++step;
            else
                percentages[0] += chunk.contains('%');
            break;
        case 3:
            if (chunk.contains("Verified Flash OK"))
                ++step;
            else if (chunk.contains("verify fail"))
                found = "verify fail";
            else
                percentages[1] += chunk.contains('%');
            break;
        }
    }

    int step = 0; ///< erasing, loading, uploading, verifying, done
    QByteArray found;
    int percentages[2] = {0, 0};
};
} // namespace

/// The pieces in which the uploader's output reaches a program that watches it.
class VexaChunksTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void flashingCanBeFollowed();
    void everyPercentageComesAlone();
    void failuresCanBeToldApart_data();
    void failuresCanBeToldApart();

private:
    VexaRun flash(const QString &port)
    {
        return runVexa({S("-s"), port, S("-h"), S("-V"), S("-e"), S("-w"), S("firmware.hex"),
                        S("-v"), S("firmware.hex")});
    }

    WorkingDirectory folder;
};

void VexaChunksTest::initTestCase()
{
    QFile::copy(S(VELANTOR_BUNDLE_MEMBERS "/device_keep_profiles.txt"), S("device.txt"));
    folder.write(S("firmware.hex"), hexText({{0x1800, patternImage(0x4000, 1)}}));
}

void VexaChunksTest::flashingCanBeFollowed()
{
    SimulatorProcess simulator;
    const VexaRun run = flash(simulator.port());
    QCOMPARE(run.status, 0);
    Watcher watcher;
    for (const QByteArray &chunk : run.chunks)
        watcher.look(chunk);
    QCOMPARE(watcher.step, 4);
    QCOMPARE(watcher.found, QByteArray());
    QVERIFY(watcher.percentages[0] > 10);
    QVERIFY(watcher.percentages[1] > 10);
    // Everything up to the erased flash comes in one piece.
    QCOMPARE(run.chunks.first(), QByteArray(vexaBanner) + "\nBootloader Version is...1 6."
                                                          "\nErasing 24 pages from c00 to 9c00"
                                                          "\nAll flash above bldr erased!");
}

void VexaChunksTest::everyPercentageComesAlone()
{
    SimulatorProcess simulator;
    const VexaRun run = flash(simulator.port());
    const QByteArray back(20, '\b');
    int last[2] = {-1, -1};
    for (const QByteArray &chunk : run.chunks) {
        // The percentage that a watcher reads is the two digits before the sign.
        QVERIFY2(chunk.count('%') <= 1, chunk.constData());
        if (!chunk.contains('%') || chunk.contains("success"))
            continue;
        const int kind = chunk.contains("Verify") ? 1 : 0;
        const QByteArray name = kind ? "Verify Progress " : "Upload Progress ";
        const int at = chunk.indexOf(name) + name.size();
        const int percent = chunk.mid(at, 3).trimmed().toInt();
        QVERIFY2(percent > last[kind], chunk.constData());
        last[kind] = percent;
        QCOMPARE(chunk.mid(at + 3), '%' + back);
    }
}

void VexaChunksTest::failuresCanBeToldApart_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("step");
    QTest::addColumn<QByteArray>("found");
    QTest::newRow("no answer") << S("silent") << 0 << QByteArray("Timeout");
    QTest::newRow("wrong start of the erase") << S("bad-stx@erase") << 1 << QByteArray();
    QTest::newRow("wrong start of a failed erase")
        << S("reply=000003fc04@erase") << 0 << QByteArray("no stx char");
    QTest::newRow("wrong bit") << S("flip-bit=40@write:5") << 3 << QByteArray("verify fail");
    QTest::newRow("row not written") << S("lazy@write:5") << 3 << QByteArray("verify fail");
    // Told by nothing but the silence behind it.
    QTest::newRow("unknown version") << S("version=0200") << 0 << QByteArray();
    QTest::newRow("row without an answer") << S("silent@write:3") << 2 << QByteArray();
}

void VexaChunksTest::failuresCanBeToldApart()
{
    QFETCH(QString, fault);
    QFETCH(int, step);
    QFETCH(QByteArray, found);
    SimulatorProcess simulator({S("--fault"), fault});
    const VexaRun run = flash(simulator.port());
    Watcher watcher;
    for (const QByteArray &chunk : run.chunks) {
        if (watcher.found.isEmpty())
            watcher.look(chunk);
    }
    QCOMPARE(watcher.found, found);
    if (!found.isEmpty() || run.status != 0)
        QCOMPARE(watcher.step, step);
}

QTEST_GUILESS_MAIN(VexaChunksTest)
#include "tst_vexa_chunks.moc"
