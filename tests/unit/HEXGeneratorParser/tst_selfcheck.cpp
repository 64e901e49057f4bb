#include "HEXGeneratorParser/selfcheck.h"

#include "support/capturedoutput.h"

#include <QtTest>

using namespace HEXGeneratorParser;

class SelfCheckTest : public QObject
{
    Q_OBJECT

private slots:
    void passesAndSaysWhatItDoes();
};

void SelfCheckTest::passesAndSaysWhatItDoes()
{
    QCOMPARE(printedBy(runWriteToHexChecks), QByteArray("Running WriteToHEX tests\n"));
    QCOMPARE(printedBy(runHexBufferChecks), QByteArray("Running HEXBufferTests\n"));
    QCOMPARE(printedBy(runHexUtilityChecks), QByteArray("Running HexUtility tests\n"));
}

QTEST_GUILESS_MAIN(SelfCheckTest)
#include "tst_selfcheck.moc"
