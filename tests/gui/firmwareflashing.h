#pragma once

#include "firmware/firmwareflasher.h"

#include "firmwareform.h"
#include "support/bundlemember.h"
#include "support/fakeuploader.h"
#include "support/messageboxanswers.h"

#include <QPointer>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>

/// What the uploader prints between two of its flushes.
inline const QByteArray ERASED =
    "Serial Uploader\nVersion 1.2\n\nBootloader Version is...1 6."
    "\nErasing 24 pages from c00 to 9c00\nAll flash above bldr erased!";
inline const QByteArray LOADED = "\nfile opened\nbuffers cleared\nhex file loaded";
inline const QByteArray WRITTEN = "Upload Progress 100%\nFlash Write success!";
inline const QByteArray VERIFIED = "Verify Progress 100%\nVerified Flash OK!";

/// The form in each state.
inline const QString ERASING_ROWS = QStringLiteral("100/0 0/100\u221A 0/100 0/100");
inline const QString LOADING_ROWS = QStringLiteral("100/100\u221A 100/0\u221A 0/100 0/100");
inline const QString UPLOADING_ROWS = QStringLiteral("100/100\u221A 100/100\u221A 0/100 0/100");
inline const QString VERIFYING_ROWS =
    QStringLiteral("100/100\u221A 100/100\u221A 100/100\u221A 0/100");
inline const QString DONE_ROWS =
    QStringLiteral("100/100\u221A 100/100\u221A 100/100\u221A 100/100\u221A");

inline const QString NO_PROGRESS =
    QStringLiteral("Please make sure you selected a valid Velantor firmware file, the correct COM "
                   "port, <br>and it is in bootloader mode.<br><br>                   The log file "
                   "\"logs/%1\"<br>will contain more information");

inline const QByteArray HEADER = "...\nVERSION = 9.001\n...\n";
inline const QByteArray TABLES = bundleMember("device_overwrite_profiles.txt", "v0106:\t0xA000\n") +
                                 bundleMember("device_keep_profiles.txt", "v0106:\t0x9C00\n");
inline const QByteArray FIRMWARE = bundleMember("v9.hex", ":00000001FF\n");

inline bool isRunning(qint64 pid)
{
    // A zombie would still be found.
    return kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH;
}

/// A test of the flasher: beside a form, an uploader that prints what the test says, and a clock of
/// the test's own.
class FirmwareFlashing : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    /// Starts an attempt with an uploader that prints what it hears() from the test.
    void startFlashing();
    /// Lets the uploader print a chunk. True once the flasher has dealt with it.
    bool hears(const QByteArray &chunk);
    /// Begins an attempt and goes through these chunks.
    bool reaches(const QByteArrayList &chunks);
    /// The name of the one log.
    QString logFile() const;
    QByteArray logged() const;
    /// The process of the uploader that runs.
    qint64 uploaderId() const;

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<MessageBoxAnswers> answers;
    QPointer<FirmwareForm> form;
    QPointer<FirmwareTool::FirmwareFlasher> flasher;
    std::chrono::milliseconds now = std::chrono::milliseconds::zero();
    QByteArray heard;
};
