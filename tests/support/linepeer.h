#pragma once

#include <QByteArray>
#include <QList>

#include <functional>
#include <mutex>
#include <thread>

/// The other end of a serial line, on a pseudo-terminal: it remembers what arrives, gives it back
/// where the line has an echo, and answers whole frames as the test tells it.
class LinePeer
{
public:
    enum class Echo { Off, On };

    /// What to put on the line for the unescaped payload of a frame.
    using Answer = std::function<QByteArray(const QByteArray &payload)>;

    explicit LinePeer(Echo echo = Echo::Off, Answer answer = {});
    ~LinePeer();
    LinePeer(const LinePeer &) = delete;
    LinePeer &operator=(const LinePeer &) = delete;

    /// Path of the end that is opened by the code under test.
    QByteArray path() const { return name; }
    /// Puts bytes on the line.
    void write(const QByteArray &bytes);
    /// Waits until all of it has been taken from the line.
    void waitUntilTaken() const;

    /// All bytes that have arrived so far.
    QByteArray received() const;
    /// Waits (30 seconds at most) until that many bytes have arrived; all that have.
    QByteArray waitForBytes(int count) const;
    /// The payloads of the frames that have arrived so far.
    QList<QByteArray> payloads() const;

    /// A frame around a payload.
    static QByteArray framed(const QByteArray &payload);

private:
    void serve();
    void take(char byte);

    int master = -1;
    int slave = -1;
    int wake[2] = {-1, -1};
    QByteArray name;
    Echo echo;
    Answer answer;

    mutable std::mutex mutex;
    QByteArray bytes;
    QList<QByteArray> frames;

    QByteArray frame; ///< what stands between the beginning of a frame and now, unescaped
    int startBytes = 0;
    bool escaped = false;
    std::thread thread;
};
