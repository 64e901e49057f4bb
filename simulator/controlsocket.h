#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace simulator
{
/// A Unix socket on which other programs give commands, a line each, and get an answer for each.
class ControlSocket
{
public:
    /// Takes a command, returns the answer with all its line feeds.
    using Handler = std::function<std::string(const std::string &command)>;

    /// Listens at path, in place of a socket that a dead program has left there. Null, with the
    /// reason in *error, where that fails.
    static std::unique_ptr<ControlSocket> listenAt(const std::string &path, Handler handler,
                                                   std::string *error);
    ~ControlSocket();
    ControlSocket(const ControlSocket &) = delete;
    ControlSocket &operator=(const ControlSocket &) = delete;

    /// To be polled for reading.
    std::vector<int> descriptors() const;
    /// Serves whatever has arrived.
    void serve();

private:
    struct Connection {
        int descriptor;
        std::string received;
    };

    explicit ControlSocket(Handler handler) : handler(std::move(handler)) {}
    /// False when the other side is gone.
    bool serve(Connection *connection);

    Handler handler;
    std::string path;
    int listener = -1;
    std::list<Connection> connections;
};

} // namespace simulator
