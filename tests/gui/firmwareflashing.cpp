#include "firmwareflashing.h"

#include "support/patience.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

using FirmwareTool::FirmwareFlasher;
using namespace std::chrono_literals;

void FirmwareFlashing::init()
{
    uploader = std::make_unique<FakeUploader>();
    uploader->folder.write("fw.velantor", HEADER + TABLES + FIRMWARE);
    answers = std::make_unique<MessageBoxAnswers>();
    now = 1000s;
    form = new FirmwareForm;
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->show();
    flasher = new FirmwareFlasher(form, &form->ui, [this] { return now; });
    flasher->setHexPath("fw.velantor");
    flasher->setComPort("ttyUSB0");
}

void FirmwareFlashing::cleanup()
{
    delete form;
    uploader->release();
    // Nobody may still run in the folder of a test that is over.
    const bool ended =
        QTest::qWaitFor([] { return qApp->findChildren<QProcess *>().isEmpty(); }, PATIENCE);
    answers.reset();
    uploader.reset();
    QVERIFY(ended);
}

void FirmwareFlashing::startFlashing()
{
    uploader->plan({FakeUploader::SPEAK});
    QDir("logs").removeRecursively();
    heard.clear();
    flasher->startFlashing();
}

bool FirmwareFlashing::hears(const QByteArray &chunk)
{
    uploader->say(chunk);
    heard += chunk;
    return QTest::qWaitFor([this] { return logged().endsWith("\n\n" + heard); }, PATIENCE);
}

bool FirmwareFlashing::reaches(const QByteArrayList &chunks)
{
    startFlashing();
    for (const QByteArray &chunk : chunks) {
        if (!hears(chunk))
            return false;
    }
    return true;
}

QString FirmwareFlashing::logFile() const
{
    const QStringList logs = QDir("logs").entryList(QDir::Files);
    return logs.size() == 1 ? logs.first() : QString();
}

QByteArray FirmwareFlashing::logged() const
{
    return uploader->folder.read("logs/" + logFile());
}

qint64 FirmwareFlashing::uploaderId() const
{
    const auto *process = form->findChild<QProcess *>();
    return process ? process->processId() : 0;
}
