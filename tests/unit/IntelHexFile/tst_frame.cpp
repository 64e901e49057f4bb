#include "IntelHexFile/frame.h"
#include "IntelHexFile/rs232.h"
#include "support/capturedoutput.h"
#include "support/linepeer.h"

#include <QtTest>

#include <vector>

using namespace IntelHexFile;

namespace
{
QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

const unsigned char *bytesOf(const QByteArray &text)
{
    return reinterpret_cast<const unsigned char *>(text.constData());
}

} // namespace

class FrameTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void sends_data();
    void sends();
    void sendsTheLongestRow();
    void refusesTooMuch_data();
    void refusesTooMuch();
    void sendingToNoPortFails();

    void receives_data();
    void receives();
    void receivesInParts_data();
    void receivesInParts();
    void timesOut_data();
    void timesOut();
    void replyFillsTheBuffer();

private:
    std::unique_ptr<LinePeer> peer;
};

void FrameTest::init()
{
    peer = std::make_unique<LinePeer>();
    QCOMPARE(OpenComport(0, 38400, peer->path().constData()), 0);
}

void FrameTest::cleanup()
{
    CloseComport(0);
    peer.reset();
}

void FrameTest::sends_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("version") << hex("0002") << QByteArray() << hex("55550002FE04");
    QTest::newRow("reset") << hex("0000") << QByteArray() << hex("555500000004");
    QTest::newRow("nothing") << QByteArray() << QByteArray() << hex("55550004");
    QTest::newRow("erase the profile page")
        << hex("0301009C00") << QByteArray() << hex("55550301009C006004");
    QTest::newRow("04 in the command")
        << hex("0104009C00") << QByteArray() << hex("5555010504009C005F04");
    QTest::newRow("55 in the data")
        << hex("0201000C00") << hex("55") << hex("55550201000C0005559C04");
    QTest::newRow("all three in the data")
        << hex("02") << hex("040555") << hex("5555020504050505 55A004");
    QTest::newRow("checksum 04") << hex("FC") << QByteArray() << hex("5555FC050404");
    QTest::newRow("checksum 05") << hex("FB") << QByteArray() << hex("5555FB050504");
    QTest::newRow("checksum 55") << hex("AB") << QByteArray() << hex("5555AB055504");
}

void FrameTest::sends()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, frame);
    QCOMPARE(int(sendcmd(bytesOf(command), std::uint32_t(command.size()), bytesOf(data),
                         std::uint32_t(data.size()), 0)),
             frame.size());
    QCOMPARE(peer->waitForBytes(frame.size()).toHex(), frame.toHex());
}

void FrameTest::sendsTheLongestRow()
{
    const QByteArray command = hex("0201040555");
    const QByteArray row(256, '\x55');
    // 0x61 from the command, 0x5500 from the row
    const QByteArray frame = hex("55550201050405050555") + hex("0555").repeated(256) + hex("9F04");
    QCOMPARE(int(sendcmd(bytesOf(command), 5, bytesOf(row), 256, 0)), frame.size());
    QCOMPARE(peer->waitForBytes(frame.size()), frame);
}

void FrameTest::refusesTooMuch_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("data");
    QTest::addColumn<char>("byte");
    QTest::addColumn<int>("sent");
    // two STX before, checksum and ETX behind
    QTest::newRow("longest command") << 261 << 0 << '\x01' << 265;
    QTest::newRow("command too long") << 262 << 0 << '\x01' << 0;
    QTest::newRow("longest frame") << 1 << 521 << '\x01' << 526;
    QTest::newRow("data too long") << 1 << 522 << '\x01' << 0;
    QTest::newRow("longest frame of escapes") << 0 << 261 << '\x55' << 526;
    QTest::newRow("escapes too long") << 0 << 262 << '\x55' << 0;
}

void FrameTest::refusesTooMuch()
{
    QFETCH(int, command);
    QFETCH(int, data);
    QFETCH(char, byte);
    QFETCH(int, sent);
    const QByteArray payload(600, byte);
    QCOMPARE(int(sendcmd(bytesOf(payload), std::uint32_t(command), bytesOf(payload),
                         std::uint32_t(data), 0)),
             sent);
    QCOMPARE(peer->waitForBytes(sent).size(), sent);
}

void FrameTest::sendingToNoPortFails()
{
    CloseComport(0);
    const QByteArray command = hex("0002");
    QCOMPARE(sendcmd(bytesOf(command), 2, nullptr, 0, 0), 0u);
}

void FrameTest::receives_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("echo");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("printed");
    const QByteArray silent;
    QTest::newRow("version") << 0 << 0 << hex("5555 000200000106 F704") << 1 << hex("000200000106")
                             << silent;
    QTest::newRow("behind its echo") << 0 << 6 << hex("55550002FE04 5555 000200000106 F704") << 1
                                     << hex("000200000106") << silent;
    QTest::newRow("whatever the echo is")
        << 0 << 6 << hex("040404040404 5555 0002 FE 04") << 1 << hex("0002") << silent;
    QTest::newRow("escapes are removed")
        << 2 << 0 << hex("5555 02 0504 0505 0555 A0 04") << 1 << hex("02040555") << silent;
    QTest::newRow("checksum 04") << 0xFC << 0 << hex("5555 FC 0504 04") << 1 << hex("FC") << silent;
    QTest::newRow("checksum 05") << 0xFB << 0 << hex("5555 FB 0505 04") << 1 << hex("FB") << silent;
    QTest::newRow("escaped command byte")
        << 4 << 0 << hex("5555 0504 FC 04") << 1 << hex("04") << silent;
    QTest::newRow("no payload") << 0 << 0 << hex("5555 0500 04") << 1 << QByteArray() << silent;
    QTest::newRow("first STX missing")
        << 0 << 0 << hex("0055 0002 FE 04") << 1 << hex("0002") << QByteArray("\nno stx char!");
    QTest::newRow("second STX missing") << 0 << 0 << hex("5500 0002 FE 04") << 1 << hex("0002")
                                        << QByteArray("\nno second stx char!");
    QTest::newRow("both STX missing") << 0 << 0 << hex("AAAA 0002 FE 04") << 1 << hex("0002")
                                      << QByteArray("\nno stx char!\nno second stx char!");
    QTest::newRow("another command") << 2 << 0 << hex("5555 03 FD 04") << 1 << hex("03")
                                     << QByteArray("cmd does not match!3 != 2");
    QTest::newRow("another escaped command") << 2 << 0 << hex("5555 0505 FB 04") << 1 << hex("05")
                                             << QByteArray("cmd does not match!5 != 2");
    QTest::newRow("wrong checksum") << 0 << 0 << hex("5555 0002 FF 04") << 0 << QByteArray()
                                    << QByteArray("checksum error: 255 != 254");
    QTest::newRow("longest") << 1 << 0 << hex("5555") + QByteArray(522, '\x01') + hex("F604") << 1
                             << QByteArray(522, '\x01') << silent;
    QTest::newRow("too long by a byte")
        << 1 << 0 << hex("5555") + QByteArray(523, '\x01') + hex("F504") << 0 << QByteArray()
        << QByteArray("no data!");
    QTest::newRow("far too long") << 1 << 0 << hex("5555") + QByteArray(3000, '\x01') + hex("4804")
                                  << 0 << QByteArray() << QByteArray("no data!");
}

void FrameTest::receives()
{
    QFETCH(int, command);
    QFETCH(int, echo);
    QFETCH(QByteArray, line);
    QFETCH(int, result);
    QFETCH(QByteArray, payload);
    QFETCH(QByteArray, printed);
    peer->write(line);

    const auto cmd = static_cast<unsigned char>(command);
    std::vector<unsigned char> buffer(replySize);
    std::uint32_t length = 0;
    int received = -1;
    QCOMPARE(printedBy([&] {
                 received = receivecmd(&cmd, buffer.data(), &length, 0, std::uint32_t(echo));
             }),
             printed);
    QCOMPARE(received, result);
    if (result == 1) {
        QCOMPARE(int(length), payload.size());
        QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer.data()), payload.size()), payload);
        QCOMPARE(int(buffer[length]), 0);
    }
}

void FrameTest::receivesInParts_data()
{
    QTest::addColumn<int>("echo");
    QTest::addColumn<QList<QByteArray>>("parts");
    QTest::addColumn<QByteArray>("payload");
    using Parts = QList<QByteArray>;
    QTest::newRow("an escaped 04 ends a part")
        << 0 << Parts{hex("5555000504"), hex("FC04")} << hex("0004");
    QTest::newRow("an escape ends a part")
        << 0 << Parts{hex("55550005"), hex("04FC04")} << hex("0004");
    QTest::newRow("an escaped escape, then 04")
        << 0 << Parts{hex("5555000505"), hex("05"), hex("04F704")} << hex("000504");
    QTest::newRow("four bytes that end with 04")
        << 0 << Parts{hex("55550504"), hex("FC04")} << hex("04");
    QTest::newRow("the echo ends in the middle of a part")
        << 6 << Parts{hex("5555"), hex("0002FE045555"), hex("00020000"), hex("0106F704")}
        << hex("000200000106");
}

void FrameTest::receivesInParts()
{
    QFETCH(int, echo);
    QFETCH(QList<QByteArray>, parts);
    QFETCH(QByteArray, payload);
    std::thread line([&] {
        for (const QByteArray &part : parts) {
            peer->write(part);
            peer->waitUntilTaken();
        }
    });
    const auto cmd = static_cast<unsigned char>(payload.at(0));
    std::vector<unsigned char> buffer(replySize);
    std::uint32_t length = 0;
    const int result = receivecmd(&cmd, buffer.data(), &length, 0, std::uint32_t(echo));
    line.join();
    QCOMPARE(result, 1);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer.data()), int(length)), payload);
}

void FrameTest::timesOut_data()
{
    QTest::addColumn<int>("echo");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("silence") << 0 << QByteArray();
    QTest::newRow("only the echo") << 6 << hex("55550002FE04");
    QTest::newRow("no end") << 0 << hex("55550002FE");
    QTest::newRow("an escaped end") << 0 << hex("5555000504");
    QTest::newRow("four bytes are no reply") << 0 << hex("55550004");
    QTest::newRow("no end, and too long") << 0 << QByteArray(3000, '\x01');
}

void FrameTest::timesOut()
{
    QFETCH(int, echo);
    QFETCH(QByteArray, line);
    if (!line.isEmpty())
        peer->write(line);
    const unsigned char cmd = 0;
    std::vector<unsigned char> buffer(replySize);
    std::uint32_t length = 0;
    int result = -1;
    const std::clock_t start = std::clock();
    QCOMPARE(printedBy([&] {
                 result = receivecmd(&cmd, buffer.data(), &length, 0, std::uint32_t(echo));
             }),
             QByteArray("\nTimeout!"));
    QCOMPARE(result, 0);
    const std::clock_t ticks = std::clock() - start;
    QVERIFY(ticks > 999999);
    QVERIFY2(ticks < 2000000, QByteArray::number(qint64(ticks)));
}

void FrameTest::replyFillsTheBuffer()
{
    peer->write(hex("5555 0002 FE 04"));
    const unsigned char cmd = 0;
    std::vector<unsigned char> buffer(replySize, 0x12);
    std::uint32_t length = 0;
    QCOMPARE(receivecmd(&cmd, buffer.data(), &length, 0, 0), 1);
    QVERIFY(std::all_of(buffer.begin() + 6, buffer.end(),
                        [](unsigned char byte) { return byte == 0xFF; }));
}

QTEST_GUILESS_MAIN(FrameTest)
#include "tst_frame.moc"
