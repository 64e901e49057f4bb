#include "IntelHexFile/hexfile.h"

#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>
#include <vector>

namespace
{
constexpr int firmwareStart = 0x1800;
constexpr int firmwareEnd = 0x13800;
constexpr int rowSize = 0x100;
} // namespace

class MakeFirmwareImageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void fillsEveryRowOfTheFirmwareAndNothingElse();
    void isMadeOfFlashWords();
    void everyLineIsARecordOrAComment();
    void endsWithComments();
    void isTheSameForOneVersion();
    void needsAVersion();

private:
    static QByteArray make(const QStringList &arguments, int *status = nullptr)
    {
        QProcess run;
        run.start(QStringLiteral(MAKE_FIRMWARE_IMAGE), arguments);
        if (!run.waitForFinished())
            qFatal("the program does not end");
        if (status)
            *status = run.exitCode();
        return run.readAllStandardOutput();
    }

    QByteArray text;
    std::vector<unsigned char> image;
    std::uint32_t top = 0;
};

void MakeFirmwareImageTest::initTestCase()
{
    text = make({QStringLiteral("1.039")});
    std::FILE *file = std::tmpfile();
    QVERIFY(file);
    QCOMPARE(std::fwrite(text.constData(), 1, std::size_t(text.size()), file),
             std::size_t(text.size()));
    std::rewind(file);
    // What is not written stays as an erased chip reads.
    image.resize(IntelHexFile::flashImageSize + 4);
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = i % 4 == 3 ? 0x00 : 0xFF;
    std::vector<unsigned char> eeprom(IntelHexFile::eepromImageSize + 4);
    char eepromSeen = 0;
    std::uint32_t eepromTop = 0;
    top =
        IntelHexFile::loadhexfile(image.data(), eeprom.data(), file, &eepromSeen, &eepromTop, 0, 0);
    std::fclose(file);
}

void MakeFirmwareImageTest::fillsEveryRowOfTheFirmwareAndNothingElse()
{
    QCOMPARE(int(top), firmwareEnd);
    for (int row = 0; row < int(IntelHexFile::flashImageSize); row += rowSize) {
        bool blank = true;
        for (int i = row; i < row + rowSize; ++i)
            blank = blank && image[std::size_t(i)] == (i % 4 == 3 ? 0x00 : 0xFF);
        QVERIFY2(blank == (row < firmwareStart || row >= firmwareEnd), QByteArray::number(row, 16));
    }
}

void MakeFirmwareImageTest::isMadeOfFlashWords()
{
    for (int i = firmwareStart + 3; i < firmwareEnd; i += 4)
        QCOMPARE(image[std::size_t(i)], static_cast<unsigned char>(0));
}

void MakeFirmwareImageTest::everyLineIsARecordOrAComment()
{
    int comments = 0;
    for (const QByteArray &line : text.chopped(1).split('\n')) {
        if (line.startsWith(';')) {
            ++comments;
            QVERIFY2(!line.contains(':'), line);
            continue;
        }
        QCOMPARE(comments, 0);
        QVERIFY2(line.startsWith(':'), line);
        const QByteArray bytes = QByteArray::fromHex(line.mid(1));
        QCOMPARE(bytes.toHex().toUpper(), line.mid(1));
        unsigned char sum = 0;
        for (const char byte : bytes)
            sum = static_cast<unsigned char>(sum + static_cast<unsigned char>(byte));
        QCOMPARE(sum, static_cast<unsigned char>(0));
        QCOMPARE(int(static_cast<unsigned char>(bytes.at(0))), bytes.size() - 5);
    }
}

void MakeFirmwareImageTest::endsWithComments()
{
    const QByteArray end = text.mid(text.indexOf(":00000001FF\n"));
    QVERIFY(end.startsWith(":00000001FF\n; "));
    QVERIFY(end.endsWith('\n'));
    QVERIFY(end.contains("1.039"));
}

void MakeFirmwareImageTest::isTheSameForOneVersion()
{
    QCOMPARE(make({QStringLiteral("1.039")}), text);
    QVERIFY(make({QStringLiteral("1.040")}) != text);
}

void MakeFirmwareImageTest::needsAVersion()
{
    int status = 0;
    QVERIFY(make({}, &status).isEmpty());
    QCOMPARE(status, 2);
}

QTEST_GUILESS_MAIN(MakeFirmwareImageTest)
#include "tst_makefirmwareimage.moc"
