#include "firmwarestory.h"

#include "firmware/velantorfirmwaretoolwindow.h"
#include "support/bundlemember.h"
#include "support/filecontent.h"
#include "vexarun.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QTest>

namespace
{
constexpr int firmware = 0x0C00;      // word address
constexpr int smallSize = 3 * 0x0100; // rows
const QByteArray blankWord("\xFF\xFF\xFF\0", 4);

QByteArray tableMember(const char *name)
{
    return bundleMember(
        name, neededContentOf(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name)));
}
} // namespace

QByteArray FirmwareStory::bundleWith(const QByteArray &hexText)
{
    return "...\nVERSION = 1.040\nMIN_SOFTWARE_VERSION_REQUIRED = 1.100\n...\n" +
           tableMember("device_overwrite_profiles.txt") + tableMember("device_keep_profiles.txt") +
           bundleMember("v1.040.hex", hexText);
}

QByteArray FirmwareStory::smallImage(int seed)
{
    return patternImage(smallSize, seed);
}

QByteArray FirmwareStory::smallBundle(int seed)
{
    return bundleWith(hexText({{2 * firmware, smallImage(seed)}}));
}

QByteArray FirmwareStory::imageOf(const QByteArray &hexText, int from, int to)
{
    QByteArray image = blankWord.repeated((to - from) / 2);
    int upper = 0;
    for (const QByteArray &line : hexText.split('\n')) {
        if (!line.startsWith(':'))
            continue;
        const QByteArray record = QByteArray::fromHex(line.mid(1));
        const int size = quint8(record[0]);
        const int address = quint8(record[1]) << 8 | quint8(record[2]);
        const QByteArray data = record.mid(4, size);
        if (record[3] == 4)
            upper = quint8(data[0]) << 8 | quint8(data[1]);
        const int at = (upper << 16) + address - 2 * from;
        if (record[3] == 0 && at >= 0 && at + size <= image.size())
            image.replace(at, size, data);
    }
    return image;
}

QString FirmwareStory::save(const QString &name, const QByteArray &content) const
{
    const QString path = QDir::cleanPath(QDir::currentPath() + QStringLiteral("/../") + name);
    writeFile(path, content);
    return path;
}

bool FirmwareStory::openTool()
{
    story->action("actionFlashFirmware")->trigger();
    window = story->mainWindow()->findChild<FirmwareTool::VelantorFirmwareToolWindow *>();
    return window && QTest::qWaitForWindowExposed(window, PATIENCE);
}

void FirmwareStory::choose(const QString &bundle) const
{
    auto *line = widget<QLineEdit>("fileInputBox");
    line->setFocus();
    line->selectAll();
    QTest::keyClicks(line, bundle);
}

bool FirmwareStory::choosePort() const
{
    auto *ports = widget<QComboBox>("comPortsDropdown");
    const QString port = story->charger().portName();
    if (!QTest::qWaitFor([=] { return ports->findText(port) >= 0; }, PATIENCE))
        return false;
    ports->setCurrentText(port);
    return true;
}

void FirmwareStory::overwriteProfiles(bool overwrite) const
{
    auto *box = widget<QCheckBox>("deleteProfilesCB");
    if (box->isChecked() != overwrite)
        box->click();
}

void FirmwareStory::begin() const
{
    if (!isSubmitEnabled())
        qFatal("an attempt goes on");
    QTest::mouseClick(widget<QPushButton>("submitButton"), Qt::LeftButton);
}

bool FirmwareStory::waitForEnd(int milliseconds) const
{
    return QTest::qWaitFor(
        [this] { return isSubmitEnabled() && QApplication::activeModalWidget() == window; },
        milliseconds);
}

bool FirmwareStory::flash(const QString &bundle, int milliseconds) const
{
    const int boxes = story->boxes.seen().size();
    choose(bundle);
    if (!choosePort())
        return false;
    begin();
    return waitForEnd(milliseconds) && story->boxes.seen().size() == boxes && isCloseEnabled() &&
           marks() == QString::fromUtf8("√√√√");
}

QString FirmwareStory::marks() const
{
    QString result;
    for (const char *name : {"eraseFlashCM", "loadFileCM", "uploadCM", "verifyCM"}) {
        const auto *label = widget<QLabel>(name);
        result +=
            label->isVisible() && !label->text().isEmpty() ? label->text() : QStringLiteral("-");
    }
    return result;
}

QString FirmwareStory::logName()
{
    const QStringList names =
        QDir(QStringLiteral("logs")).entryList(QDir::Files, QDir::Time); // newest first
    return names.value(0);
}

QByteArray FirmwareStory::log()
{
    return SuiteStory::workingFile(QStringLiteral("logs/") + logName());
}
