#include "simulator/controlsocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace simulator
{
namespace
{
constexpr std::size_t longestCommand = 8192;

// Whether a program answers at that address.
bool isAlive(const sockaddr_un &address)
{
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool alive = probe >= 0 && ::connect(probe, reinterpret_cast<const sockaddr *>(&address),
                                               sizeof address) == 0;
    if (probe >= 0)
        ::close(probe);
    return alive;
}
} // namespace

std::unique_ptr<ControlSocket> ControlSocket::listenAt(const std::string &path, Handler handler,
                                                       std::string *error)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        *error = path + ": too long for the name of a socket";
        return nullptr;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size());

    std::unique_ptr<ControlSocket> socket(new ControlSocket(std::move(handler)));
    socket->listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const auto bindIt = [&] {
        return ::bind(socket->listener, reinterpret_cast<sockaddr *>(&address), sizeof address) ==
               0;
    };
    bool bound = bindIt();
    if (!bound && errno == EADDRINUSE && !isAlive(address)) {
        ::unlink(path.c_str());
        bound = bindIt();
    }
    if (!bound || ::listen(socket->listener, 8) != 0) {
        *error = path + ": " + std::strerror(errno);
        return nullptr;
    }
    socket->path = path;
    return socket;
}

ControlSocket::~ControlSocket()
{
    for (const Connection &connection : connections)
        ::close(connection.descriptor);
    if (listener >= 0)
        ::close(listener);
    if (!path.empty())
        ::unlink(path.c_str());
}

std::vector<int> ControlSocket::descriptors() const
{
    std::vector<int> all{listener};
    for (const Connection &connection : connections)
        all.push_back(connection.descriptor);
    return all;
}

void ControlSocket::serve()
{
    int descriptor;
    while ((descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0)
        connections.push_back({descriptor, {}});
    for (auto connection = connections.begin(); connection != connections.end();) {
        if (serve(&*connection)) {
            ++connection;
        } else {
            ::close(connection->descriptor);
            connection = connections.erase(connection);
        }
    }
}

bool ControlSocket::serve(Connection *connection)
{
    char buffer[1024];
    ssize_t size;
    while ((size = ::recv(connection->descriptor, buffer, sizeof buffer, 0)) > 0) {
        connection->received.append(buffer, static_cast<std::size_t>(size));
        std::size_t end;
        while ((end = connection->received.find('\n')) != std::string::npos) {
            const std::string answer = handler(connection->received.substr(0, end));
            connection->received.erase(0, end + 1);
            ::send(connection->descriptor, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
        if (connection->received.size() > longestCommand)
            return false;
    }
    return size < 0 && (errno == EAGAIN || errno == EINTR);
}

} // namespace simulator
