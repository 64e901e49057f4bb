#include "firmware/firmwareflasher.h"

#include "app/filenames.h"
#include "bundles/velantorbundle.h"
#include "firmware/firmwareerrors.h"
#include "firmware/logfilename.h"
#include "firmware/stringmanipulation.h"
#include "ui_velantorfirmwaretoolwindow.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

using namespace std::chrono_literals;

namespace FirmwareTool
{

namespace
{

const QString noPath = QStringLiteral("NOPATH");
constexpr auto watchdogInterval = 5000ms;
/// Silence of the uploader from which on it counts as hung.
constexpr auto longestSilence = 4000ms;

void setCheckMark(QLabel *label)
{
    label->setText(QStringLiteral("\u221A"));
    label->show();
}

void setBusy(QProgressBar *bar)
{
    bar->setRange(0, 0);
    bar->setValue(100);
}

void deleteOnceEnded(QProcess *process)
{
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    // One that turns out not to have started does not finish.
    QObject::connect(process, &QProcess::stateChanged, process,
                     [process](QProcess::ProcessState state) {
                         if (state == QProcess::NotRunning)
                             process->deleteLater();
                     });
}

} // namespace

std::chrono::milliseconds FirmwareFlasher::steadyTime()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

FirmwareFlasher::FirmwareFlasher(QObject *parent, Ui::VelantorFirmwareToolWindow *ui, Clock clock)
    : QObject(parent), ui(ui), clock(std::move(clock)), hexPath(noPath)
{
}

FirmwareFlasher::~FirmwareFlasher()
{
    endUploader();
}

QString FirmwareFlasher::toString() const
{
    return QStringLiteral("Path : ") + hexPath;
}

void FirmwareFlasher::setHexPath(const QString &path)
{
    hexPath = path.isEmpty() ? noPath : path;
}

void FirmwareFlasher::setComPort(const QString &name)
{
    comPort = QStringLiteral("/dev/") + name;
}

void FirmwareFlasher::startFlashing()
{
    // Two uploaders on one line would flash a mixture.
    cleanup();

    extractRequiredFiles();
    state = FlasherState::Erasing;
    const QString firmware = firmwareFile();
    const QStringList arguments{QStringLiteral("-s"),
                                comPort,
                                QStringLiteral("-h"),
                                QStringLiteral("-V"),
                                QStringLiteral("-e"),
                                QStringLiteral("-w"),
                                firmware,
                                QStringLiteral("-v"),
                                firmware};
    initializeVexaLogFile();
    process = new QProcess(window());
    connect(process, &QProcess::readyReadStandardOutput, this, &FirmwareFlasher::readStream);
    process->start(QStringLiteral("./") + VEXA_FILE_NAME, arguments, QIODevice::ReadWrite);
    cleanUI();
    updateGUI();
    startTimeoutTimer();
}

void FirmwareFlasher::extractRequiredFiles()
{
    bundle = std::make_unique<VelantorBundle>(hexPath);
    if (bundle->parseBundle())
        bundle->allowOverwriteProfiles(overwriteProfiles);
}

bool FirmwareFlasher::isDeviceTableAsChosen() const
{
    QFile table(FILE_FOR_VEXA_NAME);
    if (!table.exists())
        return true; // the uploader says so and erases nothing
    QFile chosen(overwriteProfiles ? FILE_FOR_VEXA_OVERWRITE_PROFILES
                                   : FILE_FOR_VEXA_KEEP_PROFILES);
    return table.open(QIODevice::ReadOnly) && chosen.open(QIODevice::ReadOnly) &&
           table.readAll() == chosen.readAll();
}

QString FirmwareFlasher::firmwareFile() const
{
    // Without a name the uploader does nothing at all, and the watchdog reports it. Otherwise it
    // would erase the charger and then find half an image, or erase profiles that are to stay.
    if (!bundle->isFirmwareWhole() || !isDeviceTableAsChosen())
        return QString();
    return bundle->getHexFileName();
}

void FirmwareFlasher::initializeVexaLogFile()
{
    // The log is reached from the current directory, which stays what it is: all files of the suite
    // are opened relative to it.
    QDir().mkpath(LOG_DIRECTORY);
    const QString name = logFileName(QDateTime::currentDateTime());
    log = std::make_unique<QFile>(LOG_DIRECTORY + QLatin1Char('/') + name);
    if (!log->open(QIODevice::WriteOnly)) {
        log.reset();
        std::puts("Could not open file!");
        std::fflush(stdout);
        return;
    }
    logStream = std::make_unique<QTextStream>(log.get());
    // Each character is a byte, so that what the uploader prints is kept as it is in any locale.
    logStream->setCodec("ISO-8859-1");
    writeToLog("FLASHING VELANTOR FIRMWARE\n");
    writeToLog("Hex File Name: " + hexPath.toUtf8() + '\n');
    writeToLog("Output File Log Name : " + name.toUtf8() + '\n');
    writeToLog("---------------------\n\n");
}

void FirmwareFlasher::writeToLog(const QByteArray &bytes)
{
    if (!logStream)
        return;
    *logStream << QLatin1String(bytes.constData(), bytes.size());
    // Whatever happens next, the log tells what came before.
    logStream->flush();
}

void FirmwareFlasher::cleanUI()
{
    for (QProgressBar *bar : {ui->eraseFlashPB, ui->loadFilePB, ui->uploadPB, ui->verifyPB}) {
        bar->setMaximum(100);
        bar->setValue(0);
    }
    // The other rows keep their marks of an earlier attempt until they get new ones.
    ui->loadFileCM->setText(QStringLiteral("\u221A"));
}

void FirmwareFlasher::readStream()
{
    if (!process)
        return;
    const QByteArray chunk = process->readAllStandardOutput();
    writeToLog(chunk);
    switch (state) {
    case FlasherState::Erasing:
        examineErasing(chunk.constData());
        break;
    case FlasherState::Loading:
        examineLoading(chunk.constData());
        break;
    case FlasherState::Uploading:
        examineUploading(chunk.constData());
        break;
    case FlasherState::Verifying:
        examineVerifying(chunk.constData());
        break;
    case FlasherState::Done:
    case FlasherState::Stopped:
        break;
    }
}

void FirmwareFlasher::examineErasing(const char *text)
{
    if (StringManipulation::matchStar7(text))
        fail(FirmwareErrors::error2);
    else if (StringManipulation::contains("All flash above bldr erased", text))
        enterNextState("Entering loading state");
    else if (StringManipulation::contains("Can not open comport", text))
        fail(FirmwareErrors::error4);
    else if (StringManipulation::containsRegex("Bootloader Version is.*Timeout", text))
        fail(FirmwareErrors::error1);
    else if (StringManipulation::matchStar1(text))
        fail(FirmwareErrors::error3);
    else if (StringManipulation::contains("no stx char", text))
        fail(FirmwareErrors::error13);
}

void FirmwareFlasher::examineLoading(const char *text)
{
    if (StringManipulation::matchStar2(text))
        enterNextState("Entering uploading state");
    else if (StringManipulation::matchStar7(text))
        fail(FirmwareErrors::error2);
}

void FirmwareFlasher::examineUploading(const char *text)
{
    if (StringManipulation::matchStar5(text))
        enterNextState("Entering verifying state");
    else
        updateUploadingProgressBar(text);
}

void FirmwareFlasher::examineVerifying(const char *text)
{
    if (StringManipulation::contains("Verified Flash OK", text))
        finish();
    else if (StringManipulation::matchStar6(text))
        fail(FirmwareErrors::error5);
    else
        updateVerifyingProgressBar(text);
}

void FirmwareFlasher::enterNextState(const char *announcement)
{
    state = static_cast<FlasherState>(static_cast<int>(state) + 1);
    updateGUI();
    std::puts(announcement);
    std::fflush(stdout);
}

void FirmwareFlasher::fail(FormError error)
{
    cleanup();
    updateUITimestamp();
    // While its box is open the window may close, and take this object along.
    error(ui, window());
}

void FirmwareFlasher::finish()
{
    state = FlasherState::Done;
    updateGUI();
    cleanup();

    // Receivers may run the event loop, in which the window closes.
    const QPointer<FirmwareFlasher> self(this);
    emit flashed();
    if (!self)
        return;
    emit resetVelantorSignalFF(comPort);
    if (!self)
        return;
    enableButtons();
}

void FirmwareFlasher::updateGUI()
{
    updateUITimestamp();
    switch (state) {
    case FlasherState::Erasing:
        setBusy(ui->eraseFlashPB);
        break;
    case FlasherState::Loading:
        setCheckMark(ui->eraseFlashCM);
        ui->eraseFlashPB->setMaximum(100);
        setBusy(ui->loadFilePB);
        break;
    case FlasherState::Uploading:
        setCheckMark(ui->loadFileCM);
        ui->loadFilePB->setMaximum(100);
        break;
    case FlasherState::Verifying:
        setCheckMark(ui->uploadCM);
        ui->uploadPB->setValue(100);
        break;
    case FlasherState::Done:
        setCheckMark(ui->verifyCM);
        ui->verifyPB->setValue(100);
        break;
    case FlasherState::Stopped:
        break;
    }
}

void FirmwareFlasher::updateUITimestamp()
{
    timestamp = clock();
}

void FirmwareFlasher::updateUploadingProgressBar(const char *text)
{
    const int percentage = StringManipulation::getPercentage(text);
    if (percentage == -1)
        return;
    ui->uploadPB->setValue(percentage);
    updateUITimestamp();
}

void FirmwareFlasher::updateVerifyingProgressBar(const char *text)
{
    const int percentage = StringManipulation::getPercentage(text);
    if (percentage == -1)
        return;
    ui->verifyPB->setValue(percentage);
    updateUITimestamp();
}

void FirmwareFlasher::startTimeoutTimer()
{
    if (timer)
        return;
    timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &FirmwareFlasher::checkAppFrozen);
    timer->start(watchdogInterval);
}

void FirmwareFlasher::checkAppFrozen()
{
    if (state == FlasherState::Stopped || clock() - timestamp < longestSilence)
        return;
    const QString logName = FirmwareErrors::getFileName(log.get());
    cleanup();
    // Not at once: this may be its own time-out.
    timer->stop();
    timer->deleteLater();
    timer = nullptr;

    const QPointer<FirmwareFlasher> self(this);
    FirmwareErrors::error9(logName, window());
    if (self)
        enableButtons();
}

void FirmwareFlasher::enableButtons()
{
    ui->submitButton->setEnabled(true);
    ui->closeButton->setEnabled(true);
}

void FirmwareFlasher::endUploader()
{
    if (!process)
        return;
    process->disconnect(this);
    process->kill();
    // A killed process may take its time to go, and whoever deletes it before waits for it: it goes
    // by itself, without the window. The application stays its owner until then.
    process->setParent(QCoreApplication::instance());
    // It may be in the midst of telling its output, with the loop of a box on top. What is deleted
    // later from here stays until that is over, whatever the process tells meanwhile.
    auto *told = new QObject(process);
    connect(told, &QObject::destroyed, process,
            [process = process.data()] { deleteOnceEnded(process); });
    told->deleteLater();
    process = nullptr;
}

void FirmwareFlasher::cleanup()
{
    endUploader();
    logStream.reset();
    log.reset();
    state = FlasherState::Stopped;
}

QWidget *FirmwareFlasher::window() const
{
    return qobject_cast<QWidget *>(parent());
}

} // namespace FirmwareTool
