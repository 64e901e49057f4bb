#include "IntelHexFile/bootloader.h"
#include "IntelHexFile/rs232.h"
#include "support/capturedoutput.h"

#include <QtTest>

using namespace IntelHexFile;

class Rs232StubTest : public QObject
{
    Q_OBJECT

private slots:
    void openingStops();
    void commandsFail();
};

void Rs232StubTest::openingStops()
{
    QCOMPARE(lastWordsOf([] { OpenComport(0, 9600, "/dev/ttyUSB0"); }),
             QByteArray("ASSERT: \"false\" in file ../IntelHexFile/rs232.cpp, line 52\n"));
}

void Rs232StubTest::commandsFail()
{
    unsigned char buffer[replySize];
    QCOMPARE(bootloader_getversion(buffer, 0, bootloader_t()), 0u);
    QCOMPARE(bootloader_sendreset(0), 0);
    QCOMPARE(PollComport(0, buffer, 1), 0);
    QCOMPARE(SendByte(0, 0), 1);
    QCOMPARE(IsCTSEnabled(0), 0);
    cprintf(0, "text");
    CloseComport(0);
}

QTEST_GUILESS_MAIN(Rs232StubTest)
#include "tst_rs232stub.moc"
