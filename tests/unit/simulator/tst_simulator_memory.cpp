#include "simulator/memory.h"
#include "simulator/pages.h"

#include <QTest>

using simulator::Bytes;
using simulator::EepromMemory;
using simulator::FlashMemory;

namespace
{
const std::string endRecord = ":00000001FF\n";
const Bytes blankWord{0xFF, 0xFF, 0xFF, 0x00};
} // namespace

/// Flash, EEPROM and the Intel HEX text that fills them.
class SimulatorMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void readsHexText_data();
    void readsHexText();
    void refusesHexText_data();
    void refusesHexText();
    void writesHexText();
    void isBlankAtFirst();
    void writesOnlyClearBits();
    void erasesWholePages();
    void leavesTheBootloaderAlone_data();
    void leavesTheBootloaderAlone();
    void refusesBadRows();
    void flipsABit();
    void loadsOverBlankPages();
    void refusesDataBehindTheEnd();
    void eepromKeepsBytes();
    void namedPagesLoad();
};

void SimulatorMemoryTest::readsHexText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("pieces");
    QTest::newRow("only the end") << QByteArray(":00000001FF") << QByteArray();
    QTest::newRow("data") << QByteArray(":02001000AB10"
                                        "33\n:00000001FF\n")
                          << QByteArray("10:ab10 ");
    QTest::newRow("lower case, blanks and carriage returns")
        << QByteArray(":02001000ab1033 \r\n:00000001ff\r\n") << QByteArray("10:ab10 ");
    QTest::newRow("upper address")
        << QByteArray(":020000040001F9\n:0138000001C6\n:00000001FF\n") << QByteArray("13800:01 ");
    QTest::newRow("segment address")
        << QByteArray(":020000021000EC\n:0138000001C6\n:00000001FF\n") << QByteArray("13800:01 ");
    QTest::newRow("start address is passed over")
        << QByteArray(":0400000500000000F7\n:00000001FF\n") << QByteArray();
    QTest::newRow("text around the records")
        << QByteArray("; a page\n\n:0138000001C6\n:00000001FF\n; the end: really\n")
        << QByteArray("3800:01 ");
}

void SimulatorMemoryTest::readsHexText()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, pieces);
    std::vector<simulator::MemoryPiece> found;
    std::string error;
    QVERIFY2(simulator::readHexText(text.toStdString(), &found, &error), error.c_str());
    QByteArray told;
    for (const simulator::MemoryPiece &piece : found) {
        told += QByteArray::number(static_cast<qulonglong>(piece.address), 16) + ':' +
                QByteArray(reinterpret_cast<const char *>(piece.bytes.data()),
                           static_cast<int>(piece.bytes.size()))
                    .toHex() +
                ' ';
    }
    QCOMPARE(told, pieces);
}

void SimulatorMemoryTest::refusesHexText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("empty") << QByteArray() << QByteArray("there is no end record");
    QTest::newRow("no end") << QByteArray(":0138000001C6\n")
                            << QByteArray("there is no end record");
    QTest::newRow("wrong checksum")
        << QByteArray("\n:0138000001C7\n") << QByteArray("line 2 has a wrong checksum");
    QTest::newRow("no digit") << QByteArray(":01380000G1C6\n")
                              << QByteArray("line 1 holds something other than hex digits");
    QTest::newRow("half a byte") << QByteArray(":01380000011\n")
                                 << QByteArray("line 1 holds something other than hex digits");
    QTest::newRow("too short") << QByteArray(":023800000100\n")
                               << QByteArray("line 1 has a wrong length");
    QTest::newRow("nothing behind the colon")
        << QByteArray(":\n") << QByteArray("line 1 has a wrong length");
    QTest::newRow("unknown type") << QByteArray(":00000006FA\n")
                                  << QByteArray("line 1 is of an unknown type");
    QTest::newRow("address of one byte")
        << QByteArray(":0100000401FA\n") << QByteArray("line 1 has no address of two bytes");
}

void SimulatorMemoryTest::refusesHexText()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, reason);
    std::vector<simulator::MemoryPiece> found{{1, {2}}};
    std::string error;
    QVERIFY(!simulator::readHexText(text.toStdString(), &found, &error));
    QCOMPARE(QByteArray::fromStdString(error), reason);
    QCOMPARE(found.size(), size_t(1));
}

void SimulatorMemoryTest::writesHexText()
{
    Bytes memory(0x10030, 0xFF);
    memory[0x0F] = 0x01;
    memory[0x10020] = 0xAB;
    QCOMPARE(QByteArray::fromStdString(simulator::writeHexText(memory, {0xFF})),
             QByteArray(":10000000FFFFFFFFFFFFFFFFFFFFFFFFFFFFFF01FE\n"
                        ":020000040001F9\n"
                        ":10002000ABFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF34\n"
                        ":00000001FF\n"));
    QCOMPARE(simulator::writeHexText(Bytes(0x100, 0xFF), {0xFF}), endRecord);
}

void SimulatorMemoryTest::isBlankAtFirst()
{
    const FlashMemory flash;
    QCOMPARE(flash.save(), endRecord);
    QCOMPARE(flash.read(0, 1), blankWord);
    QCOMPARE(flash.read(0x17FFE, 1), blankWord);
    QCOMPARE(flash.read(0x9C00, 0), Bytes());
    // Behind the end.
    QCOMPARE(flash.read(0xFFFFFE, 1), blankWord);
    QCOMPARE(flash.read(0x17FFE, 2), (Bytes{0xFF, 0xFF, 0xFF, 0, 0xFF, 0xFF, 0xFF, 0}));
}

void SimulatorMemoryTest::writesOnlyClearBits()
{
    FlashMemory flash;
    Bytes row(FlashMemory::rowSize, 0xF0);
    QVERIFY(flash.writeRow(0x9C00, row));
    // The fourth byte does not exist.
    QCOMPARE(flash.read(0x9C00, 1), (Bytes{0xF0, 0xF0, 0xF0, 0x00}));
    row.assign(FlashMemory::rowSize, 0x3C);
    QVERIFY(flash.writeRow(0x9C00, row));
    QCOMPARE(flash.read(0x9C00, 1), (Bytes{0x30, 0x30, 0x30, 0x00}));
    QCOMPARE(flash.read(0x9C7E, 2), (Bytes{0x30, 0x30, 0x30, 0x00, 0xFF, 0xFF, 0xFF, 0x00}));
    QVERIFY(flash.erasePages(0x9C00, 1));
    QVERIFY(flash.writeRow(0x9C00, row));
    QCOMPARE(flash.read(0x9C00, 1), (Bytes{0x3C, 0x3C, 0x3C, 0x00}));
}

void SimulatorMemoryTest::erasesWholePages()
{
    FlashMemory flash;
    const Bytes row(FlashMemory::rowSize, 0x00);
    for (const std::size_t address : {0x9780u, 0x9800u, 0x9B80u, 0x9C00u, 0x9F80u, 0xA000u})
        QVERIFY(flash.writeRow(address, row));
    QVERIFY(flash.erasePages(0x9C00, 1));
    QCOMPARE(flash.read(0x9BFE, 1), Bytes(4, 0x00));
    QCOMPARE(flash.read(0x9C00, 1), blankWord);
    QCOMPARE(flash.read(0x9FFE, 1), blankWord);
    QCOMPARE(flash.read(0xA000, 1), Bytes(4, 0x00));
    // From within a page: that page and the next.
    QVERIFY(flash.erasePages(0x9B80, 2));
    QCOMPARE(flash.read(0x97FE, 1), Bytes(4, 0x00));
    QCOMPARE(flash.read(0x9800, 1), blankWord);
    QCOMPARE(flash.read(0x9BFE, 1), blankWord);
    QCOMPARE(flash.read(0xA000, 1), Bytes(4, 0x00));
}

void SimulatorMemoryTest::leavesTheBootloaderAlone_data()
{
    QTest::addColumn<int>("address");
    QTest::addColumn<bool>("done");
    QTest::newRow("start") << 0x0000 << false;
    QTest::newRow("last row of the bootloader") << 0x0B80 << false;
    QTest::newRow("first row of the firmware") << 0x0C00 << true;
    QTest::newRow("last row") << 0x17F80 << true;
    QTest::newRow("behind the end") << 0x18000 << false;
    QTest::newRow("far behind the end") << 0xFFFFFF << false;
}

void SimulatorMemoryTest::leavesTheBootloaderAlone()
{
    QFETCH(int, address);
    QFETCH(bool, done);
    FlashMemory flash;
    const auto at = static_cast<std::size_t>(address);
    QCOMPARE(flash.writeRow(at, Bytes(FlashMemory::rowSize, 0x11)), done);
    QCOMPARE(flash.save() != endRecord, done);
    QCOMPARE(flash.erasePages(at, 1), done);
    // A long erase that begins or ends outside changes nothing at all.
    QVERIFY(flash.writeRow(0x0C00, Bytes(FlashMemory::rowSize, 0x11)));
    QVERIFY(!flash.erasePages(0x0800, 255));
    QVERIFY(!flash.erasePages(0x0C00, 255));
    QCOMPARE(flash.read(0x0C00, 1), (Bytes{0x11, 0x11, 0x11, 0x00}));
}

void SimulatorMemoryTest::refusesBadRows()
{
    FlashMemory flash;
    QVERIFY(!flash.writeRow(0x9C00, Bytes(FlashMemory::rowSize - 1, 0)));
    QVERIFY(!flash.writeRow(0x9C00, Bytes(FlashMemory::rowSize + 1, 0)));
    QVERIFY(!flash.writeRow(0x9C00, Bytes()));
    QCOMPARE(flash.save(), endRecord);
}

void SimulatorMemoryTest::flipsABit()
{
    FlashMemory flash;
    flash.flipBit(0x9C00, 9);
    QCOMPARE(flash.read(0x9C00, 1), (Bytes{0xFF, 0xFD, 0xFF, 0x00}));
    flash.flipBit(0x9C00, 9);
    flash.flipBit(0x18000, 0);
    flash.flipBit(0x9C00, 1u << 30);
    QCOMPARE(flash.save(), endRecord);
}

void SimulatorMemoryTest::loadsOverBlankPages()
{
    FlashMemory flash;
    for (const std::size_t address : {0x0C00u, 0x1000u, 0x9C00u})
        QVERIFY(flash.writeRow(address, Bytes(FlashMemory::rowSize, 0x00)));
    std::string error;
    // Word address 0x0C08, with a fourth byte that the flash does not have.
    QVERIFY(flash.load(":04181000112233"
                       "442A\n" +
                           endRecord,
                       &error));
    QCOMPARE(flash.read(0x0C08, 1), (Bytes{0x11, 0x22, 0x33, 0x00}));
    QCOMPARE(flash.read(0x0C00, 1), blankWord);
    QCOMPARE(flash.read(0x9C00, 1), blankWord);
    QCOMPARE(flash.read(0x1000, 1), Bytes(4, 0x00));

    QVERIFY(!flash.load("", &error));
    QCOMPARE(error, std::string("there is no end record"));
    QCOMPARE(flash.read(0x0C08, 1), (Bytes{0x11, 0x22, 0x33, 0x00}));
}

void SimulatorMemoryTest::refusesDataBehindTheEnd()
{
    FlashMemory flash;
    std::string error;
    // Byte address 0x2FFFF is the last one.
    QVERIFY(flash.load(":020000040002F8\n:01FFFF000001\n" + endRecord, &error));
    QVERIFY(!flash.load(":020000040002F8\n:02FFFF00000000\n" + endRecord, &error));
    QVERIFY(!flash.load(":02000004FFFFFC\n:0100000000FF\n" + endRecord, &error));
    QCOMPARE(error, std::string("there is data behind the end of the flash memory"));
}

void SimulatorMemoryTest::eepromKeepsBytes()
{
    EepromMemory eeprom;
    QCOMPARE(eeprom.read(0, 2), Bytes(4, 0xFF));
    QVERIFY(eeprom.write(0x10, {1, 2, 3, 4}));
    QVERIFY(eeprom.write(0x11, {0xF2}));
    QCOMPARE(eeprom.read(0x10, 2), (Bytes{1, 0xF2, 3, 4}));
    QVERIFY(eeprom.write(0xFFE, {1, 2}));
    QVERIFY(!eeprom.write(0xFFF, {1, 2}));
    QVERIFY(!eeprom.write(0xFFFFFF, {1}));
    QVERIFY(!eeprom.write(0, {}));
    QCOMPARE(eeprom.read(0xFFE, 2), (Bytes{1, 2, 0xFF, 0xFF}));
}

void SimulatorMemoryTest::namedPagesLoad()
{
    QCOMPARE(simulator::namedPageNames(), std::string("24v|48v|48v-v1|72v"));
    QVERIFY(!simulator::findNamedPage(""));
    QVERIFY(!simulator::findNamedPage("36v"));
    for (const simulator::NamedPage &page : simulator::namedPages()) {
        FlashMemory flash;
        std::string error;
        QVERIFY2(flash.load(page.hexText, &error), error.c_str());
        // A page counter comes first: type 3, in file order the third byte of the word.
        QCOMPARE(flash.read(0x9C00, 1)[2], std::uint8_t(3));
        QCOMPARE(flash.read(0x9FFE, 1), blankWord);
        QCOMPARE(simulator::findNamedPage(page.name), &page.hexText);
    }
}

QTEST_GUILESS_MAIN(SimulatorMemoryTest)
#include "tst_simulator_memory.moc"
