#include "support/fakeuploader.h"

#include <QFile>

const QString FakeUploader::SUCCEED = QStringLiteral("exit 0");
const QString FakeUploader::FAIL = QStringLiteral("exit 1");
const QString FakeUploader::CRASH = QStringLiteral("kill -9 $$");
const QString FakeUploader::WAIT =
    QStringLiteral("while [ -e plan ] && [ ! -e released ]; do sleep 0.01; done");
const QString FakeUploader::WAIT_AND_FAIL = WAIT + QStringLiteral("; exit 1");
const QString FakeUploader::SPEAK =
    QStringLiteral("while [ -e plan ] && [ ! -e released ]; do "
                   "if mv words spoken 2> /dev/null; then cat spoken; else sleep 0.01; fi; done");

FakeUploader::FakeUploader()
{
    folder.write(QStringLiteral("vexa.bin"), "#!/bin/sh\n"
                                             "echo \"$*\" >> runs\n"
                                             "run=$(wc -l < runs)\n"
                                             "eval \"$(sed -n \"${run}p\" plan)\"\n"
                                             "exit 0\n");
    QFile::setPermissions(QStringLiteral("vexa.bin"), QFile::ReadOwner | QFile::ExeOwner);
    plan({});
}

void FakeUploader::plan(const QStringList &runs)
{
    QFile::remove(QStringLiteral("runs"));
    folder.write(QStringLiteral("plan"), runs.join(QLatin1Char('\n')).toUtf8() + '\n');
}

void FakeUploader::release()
{
    folder.write(QStringLiteral("released"), {});
}

void FakeUploader::say(const QByteArray &text)
{
    folder.write(QStringLiteral("words being written"), text);
    if (!QFile::rename(QStringLiteral("words being written"), QStringLiteral("words")))
        qFatal("the words before are still unspoken");
}

void FakeUploader::remove()
{
    QFile::remove(QStringLiteral("vexa.bin"));
}

QStringList FakeUploader::runs() const
{
    return QString::fromUtf8(folder.read(QStringLiteral("runs")))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
