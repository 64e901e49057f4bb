#include "simulator/charger.h"
#include "simulator/line.h"

#include <QTest>

#include <sstream>

using simulator::Bytes;
using simulator::Charger;
using simulator::FlashMemory;

namespace
{
QByteArray plain(const Bytes &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
}

Bytes fromHex(const QByteArray &hex)
{
    const QByteArray raw = QByteArray::fromHex(hex);
    return Bytes(raw.begin(), raw.end());
}

// A write of one row that is all of one byte.
QByteArray writeFrame(const QByteArray &address, char digit)
{
    Bytes payload = fromHex("0201" + address);
    const Bytes row = fromHex(QByteArray(2 * int(FlashMemory::rowSize), digit));
    payload.insert(payload.end(), row.begin(), row.end());
    return plain(simulator::encodeFrame(payload)).toHex();
}

struct Bench {
    std::ostringstream text;
    simulator::FrameLog log{&text};
    Charger charger{&log};
    double delay = 0;
    bool unplugged = false;

    explicit Bench(const char *fault = nullptr)
    {
        if (fault)
            add(fault);
    }
    void add(const char *fault)
    {
        std::string error;
        const auto parsed = simulator::parseFault(fault, &error);
        if (!parsed)
            qFatal("%s", error.c_str());
        charger.addFault(*parsed);
    }
    /// Echo and reply to what a client sends, in hex with a blank between.
    QByteArray send(const QByteArray &hex)
    {
        Bytes echo;
        Bytes reply;
        for (const std::uint8_t byte : fromHex(hex)) {
            const Charger::Reaction reaction = charger.receive(byte);
            if (reaction.echo)
                echo.push_back(byte);
            reply.insert(reply.end(), reaction.reply.begin(), reaction.reply.end());
            delay += reaction.delay;
            unplugged |= reaction.unplug;
        }
        return plain(echo).toHex() + ' ' + plain(reply).toHex();
    }
};

const char versionFrame[] = "55550002fe04";
const char versionReply[] = "5555000200000106f704";
const char eraseFrame[] = "55550301009c006004";
const char readFrame[] = "55550101009c006204"; // one word of the profile page
} // namespace

class SimulatorChargerTest : public QObject
{
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void readsWritesAndErases();
    void refusesTheBootloader();
    void leavesOnReset();
    void keepsEeprom();
    void greets();
    void misbehaves_data();
    void misbehaves();
    void misbehavesAtTheRightCommand_data();
    void misbehavesAtTheRightCommand();
    void lazyAndFlippedWrites();
    void staysDeadUntilCleared();
    void slowAnswersWait();
    void refusesFaults_data();
    void refusesFaults();
    void tellsPendingFaults();
    void logsFrames();

    void lineDeliversAtOnceWithoutPace();
    void linePacesBothDirections();
    void lineWaitsBeforeASlowReply();
    void lineForgetsTheAnswersOfAClientThatIsGone();
    void lineTellsOnceThatTheCableIsPulled();
};

void SimulatorChargerTest::answers_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("version") << QByteArray(versionFrame) << QByteArray(versionReply);
    QTest::newRow("read of no word")
        << QByteArray("55550100009c006304") << QByteArray("55550100009c006304");
    QTest::newRow("read of a blank word")
        << QByteArray(readFrame) << QByteArray("55550101009c00ffffff006504");
    QTest::newRow("erase") << QByteArray(eraseFrame) << QByteArray("555503fd04");
    QTest::newRow("row") << writeFrame("009c00", '1') << QByteArray("555502fe04");
    QTest::newRow("verify ok") << QByteArray("555508f804") << QByteArray("555508f804");
    QTest::newRow("row of 255 bytes")
        << QByteArray(
               plain(simulator::encodeFrame(fromHex("0201009c00" + QByteArray(510, '1')))).toHex())
        << QByteArray("5555ff0104");
    QTest::newRow("two rows at once")
        << QByteArray(
               plain(simulator::encodeFrame(fromHex("0202009c00" + QByteArray(512, '1')))).toHex())
        << QByteArray("5555ff0104");
    QTest::newRow("reset") << QByteArray("555500000004") << QByteArray();
    QTest::newRow("wrong checksum") << QByteArray("55550002ff04") << QByteArray();
    QTest::newRow("unknown command") << QByteArray("55550909ee04") << QByteArray();
    QTest::newRow("command 00 03") << QByteArray("55550003fd04") << QByteArray();
    QTest::newRow("half a read command") << QByteArray("55550101fe04") << QByteArray();
    QTest::newRow("read command with data") << QByteArray("55550101009c00006204") << QByteArray();
    QTest::newRow("row without data") << QByteArray("55550201009c006104") << QByteArray();
    QTest::newRow("nothing") << QByteArray("55550004") << QByteArray();
}

void SimulatorChargerTest::answers()
{
    QFETCH(QByteArray, frame);
    QFETCH(QByteArray, reply);
    Bench bench;
    QCOMPARE(bench.send(frame), frame + ' ' + reply);
}

void SimulatorChargerTest::readsWritesAndErases()
{
    Bench bench;
    bench.send(writeFrame("009c00", '5'));
    // 55 is escaped in the reply; 01+01+9C+3*55 = 19D, so the checksum is 63.
    QCOMPARE(bench.send(readFrame), QByteArray(readFrame) + " 55550101009c00055505550555006304");
    bench.send(eraseFrame);
    QCOMPARE(bench.send(readFrame), QByteArray(readFrame) + " 55550101009c00ffffff006504");
    QCOMPARE(bench.charger.commandCount(), 4ul);
}

void SimulatorChargerTest::refusesTheBootloader()
{
    Bench bench;
    // One page from 0x0800 on; 03+01+08 = 0C.
    QVERIFY(bench
                .send("555503010008"
                      "00f404")
                .endsWith(" 5555ff0104"));
    QVERIFY(bench.send(writeFrame("800b00", '1')).endsWith(" 5555ff0104"));
    QVERIFY(bench.text.str().find("--  refused\n") != std::string::npos);
    QCOMPARE(bench.charger.flash.save(), std::string(":00000001FF\n"));
}

void SimulatorChargerTest::leavesOnReset()
{
    Bench bench;
    bench.send("555500000004");
    QVERIFY(bench.charger.mode() == Charger::Mode::Left);
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ');
    bench.charger.setMode(Charger::Mode::Bootloader);
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ' + versionReply);
}

void SimulatorChargerTest::keepsEeprom()
{
    Bench bench;
    // Two words of two bytes at 0x10: 05+02+10+11+22+33+44 = C1.
    QVERIFY(bench.send("5555050502100000112233443f04").endsWith(" 55550505fb04"));
    // Read them: 04+02+10 = 16, with the data C0.
    QVERIFY(bench
                .send("55550504021000"
                      "00ea04")
                .endsWith(" 5555050402100000112233444004"));
    // A count that does not fit the data.
    QVERIFY(bench.send("5555050501100000112233444004").endsWith(" 5555ff0104"));
}

void SimulatorChargerTest::greets()
{
    Bench bench;
    bench.charger.setMode(Charger::Mode::PowerOn);
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ');
    QCOMPARE(bench.send("5555005555"), QByteArray("5555005555 "));
    QCOMPARE(bench.send("55"), QByteArray("55 43410106"));
    QVERIFY(bench.charger.mode() == Charger::Mode::Bootloader);
    // Greetings that were under way do no harm.
    QCOMPARE(bench.send("555555"), QByteArray("555555 "));
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ' + versionReply);

    Bench other("version=02F0");
    other.charger.setMode(Charger::Mode::PowerOn);
    QCOMPARE(other.send("555555"), QByteArray("555555 434102f0"));
    Bench silent("silent@sync");
    silent.charger.setMode(Charger::Mode::PowerOn);
    QCOMPARE(silent.send("555555555555"), QByteArray("555555555555 "));
}

void SimulatorChargerTest::misbehaves_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QByteArray>("echo");
    QTest::addColumn<QByteArray>("reply");
    const QByteArray whole(versionFrame);
    QTest::newRow("silent") << QByteArray("silent") << whole << QByteArray();
    QTest::newRow("dead") << QByteArray("dead") << QByteArray("55550002fe") << QByteArray();
    QTest::newRow("lost echo") << QByteArray("lost-echo") << QByteArray("55550002fe")
                               << QByteArray(versionReply);
    QTest::newRow("wrong checksum")
        << QByteArray("bad-checksum") << whole << QByteArray("5555000200000106f604");
    QTest::newRow("wrong STX") << QByteArray("bad-stx") << whole
                               << QByteArray("0055000200000106f704");
    QTest::newRow("truncated") << QByteArray("truncate") << whole << QByteArray("55550002");
    QTest::newRow("truncated to nothing") << QByteArray("truncate=0") << whole << QByteArray();
    QTest::newRow("truncated behind its end")
        << QByteArray("truncate=99") << whole << QByteArray(versionReply);
    QTest::newRow("another command's reply")
        << QByteArray("wrong-reply") << whole << QByteArray("5555ff0200000106f804");
    QTest::newRow("a given first byte")
        << QByteArray("wrong-reply=10") << whole << QByteArray("5555100200000106e704");
    QTest::newRow("other bytes") << QByteArray("reply=00 04AB") << whole << QByteArray("0004ab");
    QTest::newRow("version") << QByteArray("version=02F0") << whole
                             << QByteArray("55550002000002f00c04");
    QTest::newRow("unplugged") << QByteArray("unplug") << whole << QByteArray();
}

void SimulatorChargerTest::misbehaves()
{
    QFETCH(QByteArray, fault);
    QFETCH(QByteArray, echo);
    QFETCH(QByteArray, reply);
    Bench bench(fault);
    QCOMPARE(bench.send(versionFrame), echo + ' ' + reply);
    QCOMPARE(bench.unplugged, fault == "unplug");
}

void SimulatorChargerTest::misbehavesAtTheRightCommand_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QByteArray>("struck"); // of version, read, version, erase, read, version
    QTest::newRow("lasting from the first") << QByteArray("silent") << QByteArray("xxxxxx");
    QTest::newRow("lasting from the third") << QByteArray("silent@3") << QByteArray("..xxxx");
    QTest::newRow("once") << QByteArray("truncate=0") << QByteArray("x.....");
    QTest::newRow("once, later") << QByteArray("truncate=0@6") << QByteArray(".....x");
    QTest::newRow("once, too late") << QByteArray("truncate=0@7") << QByteArray("......");
    QTest::newRow("first of a kind") << QByteArray("truncate=0@read") << QByteArray(".x....");
    QTest::newRow("second of a kind") << QByteArray("truncate=0@version:2") << QByteArray("..x...");
    QTest::newRow("lasting for a kind") << QByteArray("silent@version:2") << QByteArray("..x..x");
    QTest::newRow("made lasting") << QByteArray("truncate=0@version+") << QByteArray("x.x..x");
    QTest::newRow("made lasting from a number")
        << QByteArray("truncate=0@4+") << QByteArray("...xxx");
}

void SimulatorChargerTest::misbehavesAtTheRightCommand()
{
    QFETCH(QByteArray, fault);
    QFETCH(QByteArray, struck);
    Bench bench(fault);
    QByteArray found;
    for (const char *frame :
         {versionFrame, readFrame, versionFrame, eraseFrame, readFrame, versionFrame})
        found += bench.send(frame).endsWith(' ') ? 'x' : '.';
    QCOMPARE(found, struck);
}

void SimulatorChargerTest::lazyAndFlippedWrites()
{
    Bench bench("lazy@write");
    QVERIFY(bench.send(writeFrame("009c00", '1')).endsWith(" 555502fe04"));
    QCOMPARE(bench.charger.flash.save(), std::string(":00000001FF\n"));
    bench.add("flip-bit=8");
    bench.send(eraseFrame);
    QVERIFY(bench.send(writeFrame("009c00", '1')).endsWith(" 555502fe04"));
    QCOMPARE(bench.charger.flash.read(0x9C00, 2),
             (Bytes{0x11, 0x10, 0x11, 0, 0x11, 0x11, 0x11, 0}));
    bench.add("lazy@erase");
    QVERIFY(bench.send(eraseFrame).endsWith(" 555503fd04"));
    QCOMPARE(bench.charger.flash.read(0x9C00, 1), (Bytes{0x11, 0x10, 0x11, 0}));
}

void SimulatorChargerTest::staysDeadUntilCleared()
{
    Bench bench("dead@2");
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ' + versionReply);
    bench.send(versionFrame);
    QCOMPARE(bench.send(versionFrame), QByteArray(" "));
    bench.charger.clearFaults();
    QCOMPARE(bench.send(versionFrame), QByteArray(versionFrame) + ' ' + versionReply);
}

void SimulatorChargerTest::slowAnswersWait()
{
    Bench bench("slow-erase=1.5");
    bench.send(versionFrame);
    QCOMPARE(bench.delay, 0.0);
    bench.send(eraseFrame);
    QCOMPARE(bench.delay, 1.5);
    bench.add("slow=2@version");
    bench.send(versionFrame);
    QCOMPARE(bench.delay, 3.5);
}

void SimulatorChargerTest::refusesFaults_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("nothing") << QByteArray() << QByteArray("there is no fault \"\"");
    QTest::newRow("unknown") << QByteArray("loud") << QByteArray("there is no fault \"loud\"");
    const QByteArray silent("the fault is written silent[@WHEN]");
    QTest::newRow("value of a flag") << QByteArray("silent=1") << silent;
    QTest::newRow("empty value") << QByteArray("silent=") << silent;
    QTest::newRow("no version") << QByteArray("version")
                                << QByteArray("the fault is written version=XXYY[@WHEN]");
    QTest::newRow("short version")
        << QByteArray("version=01") << QByteArray("the fault is written version=XXYY[@WHEN]");
    QTest::newRow("negative time")
        << QByteArray("slow=-1") << QByteArray("the fault is written slow=SECONDS[@WHEN]");
    QTest::newRow("no number") << QByteArray("truncate=x")
                               << QByteArray("the fault is written truncate[=BYTES][@WHEN]");
    QTest::newRow("zeroth command")
        << QByteArray("silent@0") << QByteArray("\"0\" is neither N, COMMAND nor COMMAND:N");
    QTest::newRow("unknown command")
        << QByteArray("silent@boil") << QByteArray("\"boil\" is neither N, COMMAND nor COMMAND:N");
    QTest::newRow("no count") << QByteArray("silent@read:")
                              << QByteArray("\"read:\" is neither N, COMMAND nor COMMAND:N");
    QTest::newRow("nothing behind the at sign")
        << QByteArray("silent@") << QByteArray("\"\" is neither N, COMMAND nor COMMAND:N");
}

void SimulatorChargerTest::refusesFaults()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, reason);
    std::string error;
    QVERIFY(!simulator::parseFault(text.toStdString(), &error));
    QCOMPARE(QByteArray::fromStdString(error), reason);
}

void SimulatorChargerTest::tellsPendingFaults()
{
    Bench bench("truncate");
    bench.add("silent@erase");
    bench.send(versionFrame);
    QCOMPARE(bench.charger.pendingFaults(), std::vector<std::string>{"silent@erase"});
    bench.send(eraseFrame);
    QCOMPARE(bench.charger.pendingFaults(), std::vector<std::string>{"silent@erase"});
    bench.charger.clearFaults();
    QVERIFY(bench.charger.pendingFaults().empty());
}

void SimulatorChargerTest::logsFrames()
{
    Bench bench("bad-checksum");
    bench.send(versionFrame);
    bench.send("55550002ff04");
    bench.send("555500000004");
    QCOMPARE(QByteArray::fromStdString(bench.text.str()),
             QByteArray("in  version 55 55 00 02 FE 04\n"
                        "out version 55 55 00 02 00 00 01 06 F6 04\n"
                        "in  version 55 55 00 02 FF 04\n"
                        "--  wrong checksum, no answer\n"
                        "in  reset 55 55 00 00 00 04\n"
                        "--  left the bootloader\n"));
}

using Clock = simulator::Line::Clock;
using std::chrono::milliseconds;

void SimulatorChargerTest::lineDeliversAtOnceWithoutPace()
{
    Bench bench;
    simulator::Line line(&bench.charger);
    const Clock::time_point now{};
    QVERIFY(!line.nextDue(milliseconds(0)));
    line.fromClient(fromHex(versionFrame), now);
    QCOMPARE(plain(line.advance(now, milliseconds(0))).toHex(),
             QByteArray(versionFrame) + versionReply);
    QVERIFY(!line.nextDue(milliseconds(0)));
}

void SimulatorChargerTest::linePacesBothDirections()
{
    Bench bench;
    simulator::Line line(&bench.charger);
    const Clock::time_point start{};
    line.fromClient(fromHex(versionFrame), start);
    QByteArray got;
    const QByteArray all = QByteArray(versionFrame) + versionReply;
    for (int passed = 0; passed < 16; ++passed) {
        got += plain(line.advance(start + milliseconds(passed), milliseconds(1))).toHex();
        QCOMPARE(got, all.left(2 * passed));
        QVERIFY(line.nextDue(milliseconds(1)) == start + milliseconds(passed + 1));
    }
    // A late look finds all that has passed meanwhile.
    got += plain(line.advance(start + milliseconds(99), milliseconds(1))).toHex();
    QCOMPARE(got, all);
    // And an idle line begins to count anew.
    line.fromClient(fromHex("00"), start + milliseconds(200));
    QVERIFY(line.nextDue(milliseconds(1)) == start + milliseconds(201));
}

void SimulatorChargerTest::lineWaitsBeforeASlowReply()
{
    Bench bench("slow=2");
    simulator::Line line(&bench.charger);
    const Clock::time_point start{};
    line.fromClient(fromHex(versionFrame), start);
    QCOMPARE(plain(line.advance(start, milliseconds(0))).toHex(), QByteArray(versionFrame));
    QVERIFY(line.nextDue(milliseconds(0)) == start + milliseconds(2000));
    QVERIFY(line.advance(start + milliseconds(1999), milliseconds(0)).empty());
    QCOMPARE(plain(line.advance(start + milliseconds(2000), milliseconds(0))).toHex(),
             QByteArray(versionReply));
}

void SimulatorChargerTest::lineForgetsTheAnswersOfAClientThatIsGone()
{
    Bench bench;
    simulator::Line line(&bench.charger);
    const Clock::time_point start{};
    line.fromClient(fromHex("5555000000045555"), start);
    line.clientGone();
    QVERIFY(bench.charger.mode() == Charger::Mode::Left);
    QVERIFY(!line.nextDue(milliseconds(1)));
    QVERIFY(line.advance(start + milliseconds(99), milliseconds(1)).empty());
    // Nor does a frame begun by the one client go on with the next.
    bench.charger.setMode(Charger::Mode::Bootloader);
    line.fromClient(fromHex("0002fe04"), start);
    QCOMPARE(plain(line.advance(start, milliseconds(0))).toHex(), QByteArray("0002fe04"));
}

void SimulatorChargerTest::lineTellsOnceThatTheCableIsPulled()
{
    Bench bench("unplug");
    simulator::Line line(&bench.charger);
    const Clock::time_point start{};
    line.fromClient(fromHex(QByteArray(versionFrame) + versionFrame), start);
    // The frame's last byte is not echoed any more, and nothing behind it passes.
    QCOMPARE(plain(line.advance(start, milliseconds(0))).toHex(), QByteArray("55550002fe"));
    QVERIFY(line.takeUnplugged());
    QVERIFY(!line.takeUnplugged());
    QCOMPARE(bench.charger.commandCount(), 1ul);
}

QTEST_GUILESS_MAIN(SimulatorChargerTest)
#include "tst_simulator_charger.moc"
