#include "textfile.h"

#include "IntelHexFile/bootloader.h"
#include "support/capturedoutput.h"

#include <QFile>
#include <QtTest>

using namespace IntelHexFile;

namespace
{
QByteArray contentOf(const char *file)
{
    QFile table(QString::fromUtf8(file));
    if (!table.open(QIODevice::ReadOnly))
        qFatal("cannot open %s", file);
    return table.readAll();
}

QList<QByteArray> fieldsWithEeprom()
{
    return {"v0203:", "115200", "Other", "0x15000", "0x1",    "0x2",  "0x400",      "0x600",
            "0x80",   "0x3",    "0x2",   "0x20",    "255",    "0x01", "0x01E00000", "0x01E01000",
            "0x2",    "0x1",    "0x10",  "0x08",    "0xFFFF", "0x02", "0x200"};
}

QByteArray lineOf(const QList<QByteArray> &fields)
{
    return fields.join('\t') + '\n';
}

struct Loaded {
    Loaded(const QByteArray &text, const char *key)
    {
        TextFile file(text);
        printed = printedBy([&] { result = bootloader_loadfromfile(key, file, &bldr); });
    }

    bootloader_t bldr;
    int result = -1;
    QByteArray printed;
};

} // namespace

class DeviceTableTest : public QObject
{
    Q_OBJECT

private slots:
    void shippedTables_data();
    void shippedTables();
    void everyField();
    void findsTheKey_data();
    void findsTheKey();
    void formats_data();
    void formats();
    void nameLength_data();
    void nameLength();
    void zeroFields_data();
    void zeroFields();
    void complainsInOrder();
    void everyTruncationIsSafe();
    void keepsTheLineKind();
    void scansFromTheBeginning();
};

void DeviceTableTest::shippedTables_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<quint32>("flashEnd");
    QTest::newRow("beside the tools")
        << QByteArray(VELANTOR_SOURCE_DIR "/resources/files/device.txt") << 0xA000u;
    QTest::newRow("overwrite") << QByteArray(VELANTOR_BUNDLE_MEMBERS
                                             "/device_overwrite_profiles.txt")
                               << 0xA000u;
    QTest::newRow("keep") << QByteArray(VELANTOR_BUNDLE_MEMBERS "/device_keep_profiles.txt")
                          << 0x9C00u;
}

void DeviceTableTest::shippedTables()
{
    QFETCH(QByteArray, file);
    QFETCH(quint32, flashEnd);
    const QByteArray text = contentOf(file.constData());
    QCOMPARE(text.count('\n'), 1);
    QCOMPARE(text.trimmed().split('\t').size(), 25);

    const Loaded loaded(text, "v0106:");
    QCOMPARE(loaded.result, int(recordLoaded));
    QCOMPARE(loaded.printed, QByteArray());
    const bootloader_t &bldr = loaded.bldr;
    QCOMPARE(bldr.maxBaud, 38400u);
    QCOMPARE(QByteArray(bldr.deviceName), QByteArray("Charger64"));
    QCOMPARE(bldr.flashEnd, flashEnd);
    QCOMPARE(bldr.reservedWord, 0u);
    QCOMPARE(bldr.bootloaderEnd, 0x0C00u);
    QCOMPARE(bldr.pageSize, 0x0800u);
    QCOMPARE(bldr.rowSize, 0x0100u);
    QCOMPARE(bldr.wordSize, 4u);
    QCOMPARE(bldr.addressSize, 2u);
    QCOMPARE(bldr.verifyRowSize, 0x10u);
    QCOMPARE(bldr.flashFiller, 0xFFFFFF00u);
    QCOMPARE(bldr.flashFillerSize, 4u);
    QCOMPARE(bldr.eepromStart, 0L);
    QCOMPARE(bldr.eepromEnd, 0L);
    for (const std::uint32_t field :
         {bldr.eepromMaxSize, bldr.eepromWordSize, bldr.eepromAddressSize, bldr.eepromRowSize,
          bldr.eepromVerifyRowSize, bldr.eepromFiller, bldr.eepromFillerSize})
        QCOMPARE(field, 0u);
}

void DeviceTableTest::everyField()
{
    const Loaded loaded(lineOf(fieldsWithEeprom()), "v0203:");
    QCOMPARE(loaded.result, int(recordLoaded));
    const bootloader_t &bldr = loaded.bldr;
    QCOMPARE(bldr.maxBaud, 115200u);
    QCOMPARE(QByteArray(bldr.deviceName), QByteArray("Other"));
    QCOMPARE(bldr.flashEnd, 0x15000u);
    QCOMPARE(bldr.reservedWord, 2u);
    QCOMPARE(bldr.bootloaderEnd, 0x400u);
    QCOMPARE(bldr.pageSize, 0x600u);
    QCOMPARE(bldr.rowSize, 0x80u);
    QCOMPARE(bldr.wordSize, 3u);
    QCOMPARE(bldr.addressSize, 2u);
    QCOMPARE(bldr.verifyRowSize, 0x20u);
    QCOMPARE(bldr.flashFiller, 255u);
    QCOMPARE(bldr.flashFillerSize, 1u);
    QCOMPARE(bldr.eepromStart, 0x01E00000L);
    QCOMPARE(bldr.eepromEnd, 0x01E01000L);
    QCOMPARE(bldr.eepromWordSize, 2u);
    QCOMPARE(bldr.eepromAddressSize, 1u);
    QCOMPARE(bldr.eepromRowSize, 0x10u);
    QCOMPARE(bldr.eepromVerifyRowSize, 8u);
    QCOMPARE(bldr.eepromFiller, 0xFFFFu);
    QCOMPARE(bldr.eepromFillerSize, 2u);
    QCOMPARE(bldr.eepromMaxSize, 0x200u);
}

void DeviceTableTest::findsTheKey_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<int>("result");
    QTest::newRow("at the beginning") << QByteArray() << 0;
    QTest::newRow("on a later line") << QByteArray("v0105:\t1\tother\nv01:\t\n") << 0;
    QTest::newRow("in the middle of a line") << QByteArray("a comment about ") << 0;
    QTest::newRow("behind its own beginning") << QByteArray("v010v") << 0;
    QTest::newRow("behind two beginnings") << QByteArray("vv01") << 0;
}

void DeviceTableTest::findsTheKey()
{
    QFETCH(QByteArray, before);
    QList<QByteArray> fields = fieldsWithEeprom();
    fields[0] = "v0106:";
    const Loaded loaded(before + lineOf(fields), "v0106:");
    QTEST(loaded.result, "result");
    QCOMPARE(loaded.bldr.maxBaud, 115200u);

    const Loaded missing(before + lineOf(fields), "v0107:");
    QCOMPARE(missing.result, 3);
    QCOMPARE(missing.printed, QByteArray());
}

void DeviceTableTest::formats_data()
{
    QTest::addColumn<QByteArray>("text");
    const QByteArray line = lineOf(fieldsWithEeprom());
    QTest::newRow("line feed") << line + "v0204:\t1\n";
    QTest::newRow("carriage return and line feed") << line.trimmed() + "\r\nv0204:\t1\r\n";
    QTest::newRow("carriage return") << line.trimmed() + "\rv0204:\t1\r";
    QTest::newRow("end of file") << line.trimmed();
    QTest::newRow("further columns") << line.trimmed() + "\t0x013800\t0x014000\n";
    QTest::newRow("runs of tabs") << QByteArray(line).replace('\t', "\t\t\t");
}

void DeviceTableTest::formats()
{
    QFETCH(QByteArray, text);
    const Loaded loaded(text, "v0203:");
    QCOMPARE(loaded.result, 0);
    QCOMPARE(loaded.printed, QByteArray());
    QCOMPARE(loaded.bldr.eepromMaxSize, 0x200u);
    QCOMPARE(loaded.bldr.eepromFillerSize, 2u);
}

void DeviceTableTest::nameLength_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("result");
    QTest::newRow("longest") << 29 << 0;
    QTest::newRow("too long") << 30 << 4;
    QTest::newRow("much too long") << 100000 << 4;
}

void DeviceTableTest::nameLength()
{
    QFETCH(int, length);
    QList<QByteArray> fields = fieldsWithEeprom();
    fields[2] = QByteArray(length, 'x');
    const Loaded loaded(lineOf(fields), "v0203:");
    QTEST(loaded.result, "result");
    QVERIFY(qstrlen(loaded.bldr.deviceName) <= 29);
}

void DeviceTableTest::zeroFields_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QByteArray>("complaint");
    QTest::newRow("word size") << 9 << QByteArray("Flash Word size cannot be 0!");
    QTest::newRow("address size") << 10 << QByteArray("Flash Address size cannot be 0!");
    QTest::newRow("filler size") << 13 << QByteArray("Flash Filler byte size cannot be 0!");
    QTest::newRow("row size") << 8 << QByteArray("Flash Row size cannot be 0!");
    QTest::newRow("EEPROM row size")
        << 18 << QByteArray("EEPROM Row size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM word size")
        << 16 << QByteArray("EEPROM Word size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM size") << 22
                                 << QByteArray("EEPROM Max size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM start") << 14
                                  << QByteArray(
                                         "EEPROM start address cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM end") << 15
                                << QByteArray("EEPROM end address cannot be 0 if eeprom exists!");
}

void DeviceTableTest::zeroFields()
{
    QFETCH(int, field);
    QFETCH(QByteArray, complaint);
    QList<QByteArray> fields = fieldsWithEeprom();
    fields[field] = "0x00";
    const Loaded loaded(lineOf(fields), "v0203:");
    QCOMPARE(loaded.result, 5);
    QCOMPARE(loaded.printed, complaint);
}

void DeviceTableTest::complainsInOrder()
{
    const QList<int> order{9, 10, 13, 8, 18, 16, 22, 14, 15};
    QList<QByteArray> complaints;
    QList<QByteArray> fields = fieldsWithEeprom();
    // The EEPROM's start keeps it in existence while its other fields are 0.
    for (const int field : order) {
        if (field != 14)
            fields[field] = "0";
    }
    for (const int field : order) {
        complaints.append(Loaded(lineOf(fields), "v0203:").printed);
        fields[field] = field == 14 ? "0" : "0x10";
        if (field == 22)
            fields[14] = "0";
        if (field == 14)
            fields[14] = "0x10";
    }
    QCOMPARE(complaints.at(0), QByteArray("Flash Word size cannot be 0!"));
    QCOMPARE(complaints.at(1), QByteArray("Flash Address size cannot be 0!"));
    QCOMPARE(complaints.at(2), QByteArray("Flash Filler byte size cannot be 0!"));
    QCOMPARE(complaints.at(3), QByteArray("Flash Row size cannot be 0!"));
    QCOMPARE(complaints.at(4), QByteArray("EEPROM Row size cannot be 0 if eeprom exists!"));
    QCOMPARE(complaints.at(5), QByteArray("EEPROM Word size cannot be 0 if eeprom exists!"));
    QCOMPARE(complaints.at(6), QByteArray("EEPROM Max size cannot be 0 if eeprom exists!"));
    QCOMPARE(complaints.at(7), QByteArray("EEPROM start address cannot be 0 if eeprom exists!"));
    QCOMPARE(complaints.at(8), QByteArray("EEPROM end address cannot be 0 if eeprom exists!"));
}

void DeviceTableTest::everyTruncationIsSafe()
{
    const QByteArray next = "\nv0204:\t9600\tNext\t0x7777\n";
    const QByteArray line = lineOf(fieldsWithEeprom()).trimmed();
    for (int length = 0; length <= line.size(); ++length) {
        const Loaded loaded(line.left(length) + next, "v0203:");
        QVERIFY(loaded.result == 0 || loaded.result == 3 || loaded.result == 5);
        // What a short line lacks is not taken from the next one.
        QVERIFY(loaded.bldr.flashEnd != 0x7777u);
        QVERIFY(loaded.bldr.maxBaud != 9600u);
    }
}

void DeviceTableTest::keepsTheLineKind()
{
    TextFile file(lineOf(fieldsWithEeprom()));
    bootloader_t bldr;
    bldr.halfDuplex = 1;
    bldr.versionNumber = 0x0203;
    QCOMPARE(bootloader_loadfromfile("v0203:", file, &bldr), 0);
    QCOMPARE(int(bldr.halfDuplex), 1);
    QCOMPARE(bldr.versionNumber, 0x0203u);
}

void DeviceTableTest::scansFromTheBeginning()
{
    TextFile file(lineOf(fieldsWithEeprom()));
    bootloader_t bldr;
    QCOMPARE(bootloader_loadfromfile("v0203:", file, &bldr), 0);
    QCOMPARE(bootloader_loadfromfile("v0203:", file, &bldr), 0);
}

QTEST_GUILESS_MAIN(DeviceTableTest)
#include "tst_devicetable.moc"
