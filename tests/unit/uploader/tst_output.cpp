#include "uploader/output.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QtTest>

#include <cstdio>
#include <thread>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
/// Standard output goes through this pipe as long as it lives.
class OutputPipe
{
public:
    OutputPipe() : original(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        if (original < 0 || pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0)
            qFatal("no pipe for the output");
        close(ends[1]);
    }
    ~OutputPipe()
    {
        std::fflush(stdout);
        dup2(original, STDOUT_FILENO);
        close(original);
        close(ends[0]);
    }
    OutputPipe(const OutputPipe &) = delete;
    OutputPipe &operator=(const OutputPipe &) = delete;

    /// What is in the pipe, as soon as there is anything.
    QByteArray chunk() const
    {
        pollfd event{ends[0], POLLIN, 0};
        poll(&event, 1, 30000);
        char buffer[4096];
        return QByteArray(buffer, int(read(ends[0], buffer, sizeof buffer)));
    }

    int unread() const
    {
        int count = -1;
        ioctl(ends[0], FIONREAD, &count);
        return count;
    }

private:
    int original;
    int ends[2] = {-1, -1};
};

} // namespace

class OutputTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void keepsTextsUntilThePhaseEnds();
    void phasesArriveAsChunks();
    void goesOnWithoutReader();
    void progress();
};

void OutputTest::initTestCase()
{
    Uploader::bufferOutput();
}

void OutputTest::keepsTextsUntilThePhaseEnds()
{
    const OutputPipe output;
    std::printf("\nline\n");
    for (int i = 0; i < 1000; ++i)
        std::printf("a line of the verify report\n");
    QCOMPARE(output.unread(), 0);
}

void OutputTest::phasesArriveAsChunks()
{
    const OutputPipe output;
    QList<QByteArray> chunks;
    std::thread watcher([&] {
        for (int i = 0; i < 20; ++i)
            chunks.append(output.chunk());
    });
    for (int i = 0; i < 20; ++i) {
        std::printf("first text, ");
        std::printf("phase %d", i);
        Uploader::endPhase();
    }
    watcher.join();
    for (int i = 0; i < 20; ++i)
        QCOMPARE(chunks.at(i), "first text, phase " + QByteArray::number(i));
}

void OutputTest::goesOnWithoutReader()
{
    const OutputPipe output;
    std::printf("nobody looks");
    QElapsedTimer clock;
    clock.start();
    Uploader::endPhase();
    // A second of short naps; a busy machine makes them longer.
    QVERIFY(clock.elapsed() >= 900);
    QVERIFY(clock.elapsed() < 30000);
    QCOMPARE(output.chunk(), QByteArray("nobody looks"));
}

void OutputTest::progress()
{
    const OutputPipe output;
    Uploader::showProgress("Upload", 7);
    QCOMPARE(output.chunk(), "Upload Progress   7%" + QByteArray(20, '\b'));
    Uploader::showProgress("Upload", 100);
    QCOMPARE(output.chunk(), "Upload Progress 100%" + QByteArray(20, '\b'));
}

QTEST_GUILESS_MAIN(OutputTest)
#include "tst_output.moc"
