#pragma once

#include "simulator/bytes.h"

#include <chrono>
#include <memory>
#include <string>

namespace simulator
{
/// The pseudo-terminal that stands for the serial port. Clients open its slave side by name; the
/// port holds the slave open as well, so that it outlives each of them.
class PtyPort
{
public:
    /// Opens a new one in raw mode. Null, with the reason in *error, where there is none.
    static std::unique_ptr<PtyPort> open(std::string *error);
    ~PtyPort();
    PtyPort(const PtyPort &) = delete;
    PtyPort &operator=(const PtyPort &) = delete;

    /// Path of the slave, such as "/dev/pts/3".
    std::string path() const { return slavePath; }
    /// The same without the directory of devices: "pts/3".
    std::string bareName() const;

    /// To be polled for reading, and for writing while hasUnsent().
    int descriptor() const { return master; }
    /// To be polled for reading; -1 where the system does not tell about clients.
    int clientWatch() const { return watch; }

    /// Whether the last client has closed the port since the last call.
    bool takeClientGone();
    /// Whether a client holds the port open.
    bool hasClient() const { return clients > 0; }

    /// What has arrived; empty for nothing.
    Bytes read();
    /// Sends bytes now or, where the client does not take them, with later calls of flush().
    void write(const Bytes &bytes);
    bool hasUnsent() const { return !unsent.empty(); }
    void flush();
    /// Throws away what no client has read, as a serial port does when it is closed.
    void discardUnread();

    /// The baud rate that the client has set.
    unsigned baud() const;
    /// Time of one byte of ten bits at that rate.
    std::chrono::nanoseconds byteTime() const;

private:
    PtyPort() = default;

    std::string slavePath;
    int master = -1;
    int slave = -1;
    int watch = -1;
    int clients = 0;
    Bytes unsent;
};

} // namespace simulator
