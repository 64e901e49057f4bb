#include "firmwarestory.h"
#include "wholeflash.h"

#include <QTest>

/// Whole images at the speed of the real line, which takes minutes.
class SuiteFirmwarePacedTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheProfiles();
    void overwritesTheProfilesBesideABusyProgram();
};

namespace
{
/// Some 80 seconds on the wire, and as much again and more where the machine does not keep up.
constexpr int patience = 500000;
const QStringList charger{QStringLiteral("--hardware"), QStringLiteral("48v"),
                          QStringLiteral("--pace")};
} // namespace

void SuiteFirmwarePacedTest::keepsTheProfiles()
{
    SuiteStory story;
    story.plugIn(charger);
    flashWholeImage(story, false, patience);
}

void SuiteFirmwarePacedTest::overwritesTheProfilesBesideABusyProgram()
{
    SuiteStory story;
    story.plugIn(charger);
    const BusyProgram busy;
    flashWholeImage(story, true, patience);
}

QTEST_MAIN(SuiteFirmwarePacedTest)
#include "tst_suite_firmware_paced.moc"
