#include "IntelHexFile/bootloader.h"
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

bootloader_t chargerRecord()
{
    bootloader_t bldr;
    bldr.maxBaud = 38400;
    bldr.flashEnd = 0xA000;
    bldr.bootloaderEnd = 0x0C00;
    bldr.pageSize = 0x0800;
    bldr.rowSize = 0x0100;
    bldr.wordSize = 4;
    bldr.addressSize = 2;
    bldr.verifyRowSize = 0x10;
    bldr.flashFiller = 0xFFFFFF00;
    bldr.flashFillerSize = 4;
    bldr.halfDuplex = 1;
    return bldr;
}

bootloader_t recordWithEeprom()
{
    bootloader_t bldr = chargerRecord();
    bldr.eepromStart = 0x20000;
    bldr.eepromEnd = 0x20100;
    bldr.eepromMaxSize = 0x100;
    bldr.eepromWordSize = 2;
    bldr.eepromAddressSize = 1;
    bldr.eepromRowSize = 8;
    bldr.eepromVerifyRowSize = 4;
    bldr.eepromFiller = 0xFFFF;
    bldr.eepromFillerSize = 2;
    return bldr;
}

const unsigned char *bytesOf(const QByteArray &text)
{
    return reinterpret_cast<const unsigned char *>(text.constData());
}

const QByteArray backspaces(20, '\b');

} // namespace

class BootloaderTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void addresses();
    void fillsBuffers_data();
    void fillsBuffers();
    void fillsNothing();

    void version();
    void versionWithoutEcho();
    void verifyOk();
    void reset();

    void identifies_data();
    void identifies();
    void identifyCallsAndGivesUp();
    void identifyTimes();
    void identifyWithoutPort();

    void erasesAll_data();
    void erasesAll();
    void eraseAllRefuses_data();
    void eraseAllRefuses();
    void erasesRange_data();
    void erasesRange();
    void wrongReplies();
    void noReply();

    void writesFlashRow();
    void writesEepromRow();
    void refusesRows_data();
    void refusesRows();

    void reads_data();
    void reads();
    void refusesReads_data();
    void refusesReads();

    void verifies();
    void verifySkipsFiller();
    void verifiesEeprom();
    void verifyFails_data();
    void verifyFails();

private:
    /// A peer with echo that answers so, on an open port.
    void connectTo(LinePeer::Answer answer);
    /// A peer that answers each frame with its first bytes and more.
    void connectToEchoing(int count, const QByteArray &more = QByteArray());

    std::unique_ptr<LinePeer> peer;
    unsigned char reply[replySize];
};

void BootloaderTest::connectTo(LinePeer::Answer answer)
{
    peer = std::make_unique<LinePeer>(LinePeer::Echo::On, std::move(answer));
    QCOMPARE(OpenComport(0, 38400, peer->path().constData()), 0);
}

void BootloaderTest::connectToEchoing(int count, const QByteArray &more)
{
    connectTo(
        [=](const QByteArray &payload) { return LinePeer::framed(payload.left(count) + more); });
}

void BootloaderTest::cleanup()
{
    CloseComport(0);
    peer.reset();
}

void BootloaderTest::addresses()
{
    const bootloader_t bldr = chargerRecord();
    QCOMPARE(byteIndexOf(0x9C00, bldr), std::uint64_t(0x13800));
    QCOMPARE(wordAddressOf(0x13800, bldr), std::uint64_t(0x9C00));
    QCOMPARE(pageSpan(bldr), std::uint64_t(0x400));
    QCOMPARE(wordAddressOf(bldr.rowSize, bldr), std::uint64_t(0x80));
    QCOMPARE(eepromAddressOf(0x10, recordWithEeprom()), std::uint64_t(8));

    const bootloader_t empty;
    QCOMPARE(byteIndexOf(1, empty), std::uint64_t(0));
    QCOMPARE(wordAddressOf(1, empty), std::uint64_t(0));
    QCOMPARE(eepromAddressOf(1, empty), std::uint64_t(0));
    QCOMPARE(pageSpan(empty), std::uint64_t(0));
}

void BootloaderTest::fillsBuffers_data()
{
    QTest::addColumn<quint32>("value");
    QTest::addColumn<quint32>("valueSize");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("a flash word") << 0xFFFFFF00u << 4u << hex("FFFFFF00FFFFFF00");
    QTest::newRow("high byte first") << 0x12345678u << 4u << hex("1234567812345678");
    QTest::newRow("two bytes") << 0x12345678u << 2u << hex("56785678");
    QTest::newRow("one byte") << 0xFFu << 1u << hex("FFFFFF");
    QTest::newRow("cut at the end") << 0x123456u << 3u << hex("1234561234");
    QTest::newRow("more than the value has") << 0x12345678u << 6u << hex("0000123456780000");
}

void BootloaderTest::fillsBuffers()
{
    QFETCH(quint32, value);
    QFETCH(quint32, valueSize);
    QFETCH(QByteArray, bytes);
    std::vector<unsigned char> buffer(std::size_t(bytes.size()), 0xAA);
    fillhexbuffer(buffer.data(), std::uint32_t(buffer.size()), value, valueSize);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer.data()), bytes.size()), bytes);
    QVERIFY(isFilled(buffer.data(), std::uint32_t(buffer.size()), value, valueSize));
    for (unsigned char &byte : buffer) {
        ++byte;
        QVERIFY(!isFilled(buffer.data(), std::uint32_t(buffer.size()), value, valueSize));
        --byte;
    }
}

void BootloaderTest::fillsNothing()
{
    unsigned char byte = 0xAA;
    fillhexbuffer(&byte, 1, 0, 0);
    QCOMPARE(int(byte), 0xAA);
    QVERIFY(!isFilled(&byte, 1, 0xAA, 0));
}

void BootloaderTest::version()
{
    connectTo([](const QByteArray &) { return hex("5555 000200000106 F7 04"); });
    QCOMPARE(bootloader_getversion(reply, 0, chargerRecord()), 6u);
    QCOMPARE(int(reply[4]), 1);
    QCOMPARE(int(reply[5]), 6);
    QCOMPARE(peer->received(), hex("5555 0002 FE 04"));
}

void BootloaderTest::versionWithoutEcho()
{
    peer = std::make_unique<LinePeer>(
        LinePeer::Echo::Off, [](const QByteArray &) { return hex("5555 000200000106 F7 04"); });
    QCOMPARE(OpenComport(0, 9600, peer->path().constData()), 0);
    bootloader_t bldr = chargerRecord();
    bldr.halfDuplex = 0;
    QCOMPARE(bootloader_getversion(reply, 0, bldr), 6u);
    QCOMPARE(int(reply[5]), 6);
}

void BootloaderTest::verifyOk()
{
    connectToEchoing(1);
    QCOMPARE(int(bootloader_sendverifyOK(reply, 0, chargerRecord())), 8);
    QCOMPARE(peer->received(), hex("5555 08 F8 04"));
}

void BootloaderTest::reset()
{
    connectTo({});
    QCOMPARE(bootloader_sendreset(0), 1);
    QCOMPARE(peer->waitForBytes(6), hex("555500000004"));
    CloseComport(0);
    QCOMPARE(bootloader_sendreset(0), 0);
}

void BootloaderTest::identifies_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("at once") << QByteArray("CA\x01\x06");
    QTest::newRow("behind an echo") << QByteArray("UUUUUUCA\x01\x06");
    QTest::newRow("others between are passed over") << QByteArray("AxCyCA\x01\x06");
    QTest::newRow("the rest does not matter") << QByteArray("CA\x01\x06"
                                                            "CA\x02\x03");
}

void BootloaderTest::identifies()
{
    QFETCH(QByteArray, line);
    connectTo({});
    peer->write(line);
    QCOMPARE(bootloader_identify(reply, 0), 0u);
    QCOMPARE(int(reply[0]), 1);
    QCOMPARE(int(reply[1]), 6);
}

void BootloaderTest::identifyCallsAndGivesUp()
{
    connectTo({});
    IdentifyTimes times;
    times.syncInterval = 2000;
    times.giveUp = 2600000;
    std::uint32_t result = 0;
    const QByteArray printed = printedBy([&] { result = bootloader_identify(reply, 0, times); });
    QCOMPARE(result, 65534u);
    QVERIFY(peer->waitForBytes(6).startsWith("UUUUUU"));
    QCOMPARE(peer->received().count('U'), peer->received().size());
    // No more than a call in each interval.
    QVERIFY2(peer->received().size() <= 3 * 2600000 / 2000,
             QByteArray::number(peer->received().size()));
    // A picture for each half of a second, and all over again.
    QCOMPARE(printed, QByteArray("    \b\b\b\b.   \b\b\b\b..  \b\b\b\b... \b\b\b\b....\b\b\b\b"
                                 "    \b\b\b\b"));
}

void BootloaderTest::identifyTimes()
{
    const IdentifyTimes times;
    QCOMPARE(times.syncInterval, std::clock_t(20000));
    QCOMPARE(times.giveUp, std::clock_t(30000000));
}

void BootloaderTest::identifyWithoutPort()
{
    IdentifyTimes times;
    times.syncInterval = 1;
    QCOMPARE(bootloader_identify(reply, 0, times), 65535u);
}

void BootloaderTest::erasesAll_data()
{
    QTest::addColumn<quint32>("flashEnd");
    QTest::addColumn<QList<QByteArray>>("payloads");
    QTest::addColumn<QByteArray>("printed");
    using Payloads = QList<QByteArray>;
    QTest::newRow("with the profiles") << 0xA000u << Payloads{hex("0325000C00")}
                                       << QByteArray("\nErasing 25 pages from c00 to a000");
    QTest::newRow("without them") << 0x9C00u << Payloads{hex("0324000C00")}
                                  << QByteArray("\nErasing 24 pages from c00 to 9c00");
    QTest::newRow("255 pages") << 0x40800u << Payloads{hex("03FF000C00")}
                               << QByteArray("\nErasing ff pages from c00 to 40800");
    QTest::newRow("300 pages") << 0x4BC00u << Payloads{hex("03FF000C00"), hex("032D000804")}
                               << QByteArray("\nErasing ff pages from c00 to 40800"
                                             "\nErasing 2d pages from 40800 to 4bc00");
}

void BootloaderTest::erasesAll()
{
    QFETCH(quint32, flashEnd);
    connectToEchoing(1);
    bootloader_t bldr = chargerRecord();
    bldr.flashEnd = flashEnd;
    int result = -1;
    QTEST(printedBy([&] { result = bootloader_eraseall(reply, 0, bldr); }), "printed");
    QCOMPARE(result, 0);
    QTEST(peer->payloads(), "payloads");
}

void BootloaderTest::eraseAllRefuses_data()
{
    QTest::addColumn<quint32>("flashEnd");
    QTest::addColumn<quint32>("pageSize");
    QTest::newRow("flash ends below the bootloader") << 0x0800u << 0x0800u;
    QTest::newRow("no flash") << 0x0C00u << 0x0800u;
    QTest::newRow("less than a page") << 0x0FFFu << 0x0800u;
    QTest::newRow("no pages") << 0xA000u << 0u;
}

void BootloaderTest::eraseAllRefuses()
{
    QFETCH(quint32, flashEnd);
    QFETCH(quint32, pageSize);
    connectToEchoing(1);
    bootloader_t bldr = chargerRecord();
    bldr.flashEnd = flashEnd;
    bldr.pageSize = pageSize;
    QCOMPARE(bootloader_eraseall(reply, 0, bldr), 1);
    QCOMPARE(peer->payloads(), QList<QByteArray>());
}

void BootloaderTest::erasesRange_data()
{
    QTest::addColumn<quint32>("from");
    QTest::addColumn<quint32>("to");
    QTest::addColumn<int>("result");
    QTest::addColumn<QList<QByteArray>>("payloads");
    using Payloads = QList<QByteArray>;
    QTest::newRow("the profile page") << 0x9C00u << 0xA000u << 0 << Payloads{hex("0301009C00")};
    QTest::newRow("the other way round") << 0xA000u << 0x9C00u << 0 << Payloads{hex("0301009C00")};
    QTest::newRow("below the bootloader's end and above the flash")
        << 0u << 0x14000u << 0 << Payloads{hex("0350000000")};
    QTest::newRow("255 pages") << 0u << 0x3FC00u << 0 << Payloads{hex("03FF000000")};
    QTest::newRow("more than a command can name") << 0u << 0x40000u << 1 << Payloads{};
    QTest::newRow("an address of four bytes") << 0x01000000u << 0x01000400u << 1 << Payloads{};
    QTest::newRow("equal") << 0x9C00u << 0x9C00u << 4 << Payloads{};
    QTest::newRow("less than a page") << 0x9C00u << 0x9FFFu << 4 << Payloads{};
    QTest::newRow("a begun page") << 0x9C00u << 0xA100u << 0 << Payloads{hex("0301009C00")};
}

void BootloaderTest::erasesRange()
{
    QFETCH(quint32, from);
    QFETCH(quint32, to);
    connectToEchoing(1);
    QTEST(bootloader_eraserange(reply, 0, chargerRecord(), from, to), "result");
    QTEST(peer->payloads(), "payloads");
}

void BootloaderTest::wrongReplies()
{
    connectTo([](const QByteArray &) { return LinePeer::framed(hex("0A")); });
    const QByteArray row(256, '\x11');
    const QByteArray printed = printedBy([&] {
        QCOMPARE(bootloader_eraseall(reply, 0, chargerRecord()), 3);
        QCOMPARE(bootloader_eraserange(reply, 0, chargerRecord(), 0x9C00, 0xA000), 3);
        QCOMPARE(bootloader_writerow(bytesOf(row), reply, chargerRecord(), 0x9C00, 0, false), 3);
    });
    QCOMPARE(printed, QByteArray("\nErasing 25 pages from c00 to a000cmd does not match!10 != 3"
                                 "cmd does not match!10 != 3cmd does not match!10 != 2"));
}

void BootloaderTest::noReply()
{
    connectTo({});
    QCOMPARE(bootloader_eraserange(reply, 0, chargerRecord(), 0x9C00, 0xA000), 1);
    QCOMPARE(bootloader_getversion(reply, 0, chargerRecord()), 0u);
    QCOMPARE(int(bootloader_sendverifyOK(reply, 0, chargerRecord())), 0);
    QCOMPARE(bootloader_read(reply, 64, 0x9C00, 0, 0, false, chargerRecord()), 65535u);
}

void BootloaderTest::writesFlashRow()
{
    connectToEchoing(1);
    QByteArray row(256, '\x55');
    QCOMPARE(bootloader_writerow(bytesOf(row), reply, chargerRecord(), 0x9C80, 0, false), 0);
    QCOMPARE(peer->payloads(), QList<QByteArray>{hex("0201809C00") + row});
    QVERIFY(peer->received().startsWith(hex("55550201809C00 0555 0555")));
}

void BootloaderTest::writesEepromRow()
{
    connectToEchoing(1);
    const QByteArray row = hex("0102030405060708");
    QCOMPARE(bootloader_writerow(bytesOf(row), reply, recordWithEeprom(), 0x14, 0, true), 0);
    QCOMPARE(peer->payloads(), QList<QByteArray>{hex("0504140000") + row});
}

void BootloaderTest::refusesRows_data()
{
    QTest::addColumn<quint32>("rowSize");
    QTest::addColumn<quint32>("wordSize");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<bool>("isEeprom");
    QTest::newRow("longer than a frame") << 600u << 4u << 0x9C00u << false;
    QTest::newRow("an address of four bytes") << 256u << 4u << 0x01000000u << false;
    QTest::newRow("EEPROM without words") << 8u << 0u << 0u << true;
    QTest::newRow("EEPROM row of no words") << 2u << 4u << 0u << true;
    QTest::newRow("too many EEPROM words") << 256u << 1u << 0u << true;
}

void BootloaderTest::refusesRows()
{
    QFETCH(quint32, rowSize);
    QFETCH(quint32, wordSize);
    QFETCH(quint32, address);
    QFETCH(bool, isEeprom);
    connectToEchoing(1);
    bootloader_t bldr = recordWithEeprom();
    (isEeprom ? bldr.eepromRowSize : bldr.rowSize) = rowSize;
    (isEeprom ? bldr.eepromWordSize : bldr.wordSize) = wordSize;
    const std::vector<unsigned char> row(rowSize, 0x11);
    QCOMPARE(bootloader_writerow(row.data(), reply, bldr, address, 0, isEeprom), 1);
    QCOMPARE(peer->payloads(), QList<QByteArray>());
}

void BootloaderTest::reads_data()
{
    QTest::addColumn<bool>("isEeprom");
    QTest::addColumn<int>("words");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("highByte");
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("flash") << false << 64 << 0x9C80 << 0 << hex("0140809C00");
    QTest::newRow("flash with its high byte") << false << 1 << 0x1234 << 7 << hex("0101341207");
    QTest::newRow("EEPROM") << true << 4 << 0x0110 << 7 << hex("0404100100");
}

void BootloaderTest::reads()
{
    QFETCH(bool, isEeprom);
    QFETCH(int, words);
    QFETCH(int, address);
    QFETCH(int, highByte);
    QFETCH(QByteArray, command);
    const QByteArray data = hex("0405550102");
    connectToEchoing(5, data);
    QCOMPARE(bootloader_read(reply, std::uint32_t(words), std::uint32_t(address),
                             static_cast<unsigned char>(highByte), 0, isEeprom, recordWithEeprom()),
             10u);
    QCOMPARE(peer->payloads(), QList<QByteArray>{command});
    QCOMPARE(QByteArray(reinterpret_cast<char *>(reply), 10), command + data);
}

void BootloaderTest::refusesReads_data()
{
    QTest::addColumn<quint32>("words");
    QTest::addColumn<quint32>("address");
    QTest::newRow("no words") << 0u << 0x9C00u;
    QTest::newRow("too many words") << 256u << 0x9C00u;
    QTest::newRow("an address of 17 bits") << 64u << 0x10000u;
}

void BootloaderTest::refusesReads()
{
    QFETCH(quint32, words);
    QFETCH(quint32, address);
    connectToEchoing(5);
    QCOMPARE(bootloader_read(reply, words, address, 0, 0, false, chargerRecord()), 65535u);
    QCOMPARE(peer->payloads(), QList<QByteArray>());
}

void BootloaderTest::verifies()
{
    connectToEchoing(5, QByteArray(16, '\x11'));
    const std::vector<unsigned char> image(0x1840, 0x11);
    int result = -1;
    const QByteArray printed = printedBy([&] {
        result = bootloader_verify(0x1800, 0x1830, image.data(), 0, 0x10, false, chargerRecord());
    });
    QCOMPARE(result, 0);
    // 0x1800, 0x1810 and 0x1820 of 0x1830: 99 percent each
    QCOMPARE(printed, "Verify Progress  99%" + backspaces);
    QCOMPARE(peer->payloads(),
             (QList<QByteArray>{hex("0104000C00"), hex("0104080C00"), hex("0104100C00")}));
}

void BootloaderTest::verifySkipsFiller()
{
    connectToEchoing(5, QByteArray(16, '\x11'));
    std::vector<unsigned char> image(0x50);
    fillhexbuffer(image.data(), 0x50, 0xFFFFFF00, 4);
    std::fill(image.begin() + 0x20, image.begin() + 0x30, 0x11);
    int result = -1;
    const QByteArray printed = printedBy([&] {
        result = bootloader_verify(0, 0x40, image.data(), 0, 0x10, false, chargerRecord());
    });
    QCOMPARE(result, 0);
    QCOMPARE(peer->payloads(), QList<QByteArray>{hex("0104100000")});
    QCOMPARE(printed, "Verify Progress  25%" + backspaces + "Verify Progress  50%" + backspaces +
                          "Verify Progress  75%" + backspaces);
}

void BootloaderTest::verifiesEeprom()
{
    connectToEchoing(5, hex("01020304"));
    const std::vector<unsigned char> image{1, 2, 3, 4, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4};
    int result = -1;
    const QByteArray printed = printedBy(
        [&] { result = bootloader_verify(0, 12, image.data(), 0, 4, true, recordWithEeprom()); });
    QCOMPARE(result, 0);
    QCOMPARE(printed, QByteArray());
    QCOMPARE(peer->payloads(), (QList<QByteArray>{hex("0402000000"), hex("0402040000")}));
}

void BootloaderTest::verifyFails_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<quint32>("rowBytes");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("a difference")
        << hex("1111AA11") << 4u << 3
        << QByteArray("\nverify fail at row address c00 with rowsize 4 at byte 2!"
                      "\n11 = 11\n11 = 11\n11 != aa\n11 != 11");
    QTest::newRow("no data") << QByteArray() << 4u << 2
                             << QByteArray("Written flash ends at word address c00, "
                                           "verify failure!");
    QTest::newRow("too little data") << hex("111111") << 4u << 1 << QByteArray("Flash Read fail!");
    QTest::newRow("rows of no words")
        << hex("11111111") << 2u << 1 << QByteArray("Flash Read fail!");
    QTest::newRow("rows of no bytes")
        << hex("11111111") << 0u << 1 << QByteArray("Flash Read fail!");
    QTest::newRow("rows of more words than a command can name")
        << hex("11111111") << 1024u << 1 << QByteArray("Flash Read fail!");
}

void BootloaderTest::verifyFails()
{
    QFETCH(QByteArray, data);
    QFETCH(quint32, rowBytes);
    connectTo([&](const QByteArray &payload) {
        return LinePeer::framed(payload + (payload.at(1) ? data : QByteArray()));
    });
    const std::vector<unsigned char> image(0x1804 + rowBytes, 0x11);
    int result = -1;
    QTEST(printedBy([&] {
              result = bootloader_verify(0x1800, 0x1804, image.data(), 0, rowBytes, false,
                                         chargerRecord());
          }),
          "printed");
    QTEST(result, "result");
}

QTEST_GUILESS_MAIN(BootloaderTest)
#include "tst_bootloader.moc"
