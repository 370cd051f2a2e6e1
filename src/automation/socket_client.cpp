#include "automation/socket_client.h"

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

namespace corvetta {

Expected<SocketClient, SocketError> SocketClient::connect(const std::filesystem::path& path) {
    auto fd = connectUnixSocket(path);
    if (!fd) {
        return unexpected(fd.error());
    }
    return SocketClient(std::move(*fd));
}

bool SocketClient::send(std::string_view bytes) {
    return sendAll(fd_.get(), bytes, nullptr);
}

Expected<std::string, SocketClient::ReadFailure> SocketClient::readLine(
    std::chrono::milliseconds timeout) {
    using namespace std::chrono;
    const auto deadline = steady_clock::now() + timeout;
    for (;;) {
        auto next = reader_.next();
        if (next.kind == LineReader::Next::Kind::line) {
            return std::move(next.text);
        }
        if (next.kind == LineReader::Next::Kind::lineTooLong) {
            return unexpected(ReadFailure::tooLong);
        }
        const auto left = duration_cast<milliseconds>(deadline - steady_clock::now());
        if (left.count() <= 0 ||
            waitForSocket(fd_.get(), POLLIN, nullptr, left) == SocketWait::timedOut) {
            return unexpected(ReadFailure::timedOut);
        }
        char chunk[65536];
        const ssize_t received = ::recv(fd_.get(), chunk, sizeof chunk, 0);
        if (received > 0) {
            reader_.append(std::string_view(chunk, static_cast<std::size_t>(received)));
        } else if (received == 0 || errno != EINTR) {
            return unexpected(ReadFailure::closed);
        }
    }
}

}  // namespace corvetta
