#include "uploader/image.h"

#include <QtTest>

using namespace IntelHexFile;
using namespace Uploader;

namespace
{
bootloader_t chargerRecord()
{
    bootloader_t bldr;
    bldr.flashEnd = 0xA000;
    bldr.bootloaderEnd = 0x0C00;
    bldr.rowSize = 0x0100;
    bldr.wordSize = 4;
    bldr.addressSize = 2;
    bldr.verifyRowSize = 0x10;
    bldr.flashFiller = 0xFFFFFF00;
    bldr.flashFillerSize = 4;
    return bldr;
}

} // namespace

class ImageTest : public QObject
{
    Q_OBJECT

private slots:
    void blank();
    void roomForOneRowMore_data();
    void roomForOneRowMore();
    void limits_data();
    void limits();
};

void ImageTest::blank()
{
    bootloader_t bldr = chargerRecord();
    bldr.eepromMaxSize = 0x100;
    bldr.eepromFiller = 0xFFFF;
    bldr.eepromFillerSize = 2;
    const Image image(bldr);
    for (std::size_t i = 0; i < image.flash.size(); ++i)
        QCOMPARE(int(image.flash[i]), i % 4 == 3 ? 0x00 : 0xFF);
    for (const unsigned char byte : image.eeprom)
        QCOMPARE(int(byte), 0xFF);
    QCOMPARE(image.flashTop, 0u);
    QCOMPARE(image.eepromTop, 0u);
    QVERIFY(!image.hasEeprom);
}

void ImageTest::roomForOneRowMore_data()
{
    QTest::addColumn<quint32>("rowSize");
    QTest::addColumn<quint32>("verifyRowSize");
    QTest::newRow("write rows are longer") << 0x100u << 0x10u;
    QTest::newRow("verify rows are longer") << 0x10u << 0x100u;
    QTest::newRow("as long as the image") << 0x30000u << 1u;
}

void ImageTest::roomForOneRowMore()
{
    QFETCH(quint32, rowSize);
    QFETCH(quint32, verifyRowSize);
    bootloader_t bldr = chargerRecord();
    bldr.rowSize = bldr.eepromRowSize = rowSize;
    bldr.verifyRowSize = bldr.eepromVerifyRowSize = verifyRowSize;
    QVERIFY(Image(bldr).flash.size() >= 0x30000 + std::max(rowSize, verifyRowSize));
    QVERIFY(Image(bldr).eeprom.size() >= 0x1000);
    bldr.eepromMaxSize = 0x100;
    QVERIFY(Image(bldr).eeprom.size() >= 0x1000 + std::max(rowSize, verifyRowSize));
}

void ImageTest::limits_data()
{
    QTest::addColumn<quint32>("bootloaderEnd");
    QTest::addColumn<quint32>("flashEnd");
    QTest::addColumn<quint32>("start");
    QTest::addColumn<quint32>("end");
    QTest::newRow("with the profiles") << 0x0C00u << 0xA000u << 0x1800u << 0x14000u;
    QTest::newRow("without them") << 0x0C00u << 0x9C00u << 0x1800u << 0x13800u;
    QTest::newRow("flash above the image") << 0x0C00u << 0xFFFFFFFFu << 0x1800u << 0x30000u;
    QTest::newRow("bootloader above the image")
        << 0xF0000000u << 0xFFFFFFFFu << 0x30000u << 0x30000u;
}

void ImageTest::limits()
{
    QFETCH(quint32, bootloaderEnd);
    QFETCH(quint32, flashEnd);
    bootloader_t bldr = chargerRecord();
    bldr.bootloaderEnd = bootloaderEnd;
    bldr.flashEnd = flashEnd;
    QTEST(quint32(flashStartIndex(bldr)), "start");
    QTEST(quint32(flashEndIndex(bldr)), "end");
}

QTEST_GUILESS_MAIN(ImageTest)
#include "tst_image.moc"
