#include "automation/unix_socket.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace corvetta {

namespace {
#if defined(MSG_NOSIGNAL)
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;  // SO_NOSIGPIPE is set on the socket instead
#endif

void setCloseOnExec(int fd) {
    fcntl(fd, F_SETFD, fcntl(fd, F_GETFD) | FD_CLOEXEC);
}

void setNonBlocking(int fd) {
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
}

void suppressSigpipe([[maybe_unused]] int fd) {
#if !defined(MSG_NOSIGNAL) && defined(SO_NOSIGPIPE)
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

// A stream socket of the Unix domain, closed on exec.
Expected<UniqueFd, SocketError> newUnixSocket() {
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!fd.isValid()) {
        return unexpected(SocketError{"socket", errno});
    }
    setCloseOnExec(fd.get());
    suppressSigpipe(fd.get());
    return fd;
}

int connectTo(int fd, const sockaddr_un& address) {
    int result;
    do {
        result = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}
}  // namespace

void UniqueFd::reset(int fd) {
    if (fd_ >= 0) {
        ::close(fd_);
    }
    fd_ = fd;
}

std::string SocketError::description() const {
    return call + "() failed: " + std::to_string(number) + " (" + std::strerror(number) + ")";
}

std::size_t maxUnixSocketPathBytes() {
    return sizeof(sockaddr_un::sun_path) - 1;
}

std::optional<sockaddr_un> unixSocketAddress(const std::filesystem::path& path) {
    const std::string& text = path.native();
    if (text.empty() || text.size() > maxUnixSocketPathBytes() ||
        text.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, text.data(), text.size());
    return address;
}

Expected<UniqueFd, SocketError> connectUnixSocket(const std::filesystem::path& path) {
    const auto address = unixSocketAddress(path);
    if (!address) {
        return unexpected(SocketError{"connect", ENAMETOOLONG});
    }
    auto fd = newUnixSocket();
    if (!fd) {
        return fd;
    }
    if (const int failure = connectTo(fd->get(), *address); failure != 0) {
        return unexpected(SocketError{"connect", failure});
    }
    return fd;
}

bool isUnixSocketAnswering(const std::filesystem::path& path) {
    const auto address = unixSocketAddress(path);
    auto fd = newUnixSocket();
    if (!address || !fd) {
        return false;
    }
    setNonBlocking(fd->get());
    const int failure = connectTo(fd->get(), *address);
    return failure == 0 || failure == EAGAIN || failure == EINPROGRESS;
}

void prepareServedSocket(int fd) {
    setNonBlocking(fd);
    setCloseOnExec(fd);
    suppressSigpipe(fd);
}

std::optional<uid_t> peerUserId(int fd) {
#if defined(SO_PEERCRED)
    ucred credentials{};
    socklen_t length = sizeof credentials;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0) {
        return std::nullopt;
    }
    return credentials.uid;
#else
    uid_t uid = 0;
    gid_t gid = 0;
    if (getpeereid(fd, &uid, &gid) != 0) {
        return std::nullopt;
    }
    return uid;
#endif
}

StopSignal::StopSignal() {
    int fds[2];
    if (::pipe(fds) != 0) {
        throw std::runtime_error(std::string("Could not create a stop signal: ") +
                                 std::strerror(errno));
    }
    read_ = fds[0];
    write_ = fds[1];
    setCloseOnExec(read_);
    setCloseOnExec(write_);
}

StopSignal::~StopSignal() {
    ::close(read_);
    ::close(write_);
}

void StopSignal::raise() {
    if (!isRaised()) {
        const char byte = 1;
        [[maybe_unused]] const auto written = ::write(write_, &byte, 1);
    }
}

bool StopSignal::isRaised() const {
    pollfd polled{read_, POLLIN, 0};
    return ::poll(&polled, 1, 0) > 0;
}

SocketWait waitForSocket(int fd, short events, const StopSignal* stop,
                         std::optional<std::chrono::milliseconds> timeout) {
    pollfd polled[2] = {{fd, events, 0}, {stop ? stop->fd() : -1, POLLIN, 0}};
    const int timeoutMs = timeout ? static_cast<int>(timeout->count()) : -1;
    for (;;) {
        const int ready = ::poll(polled, stop ? 2 : 1, timeoutMs);
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready < 0) {
            return SocketWait::failed;
        }
        if (ready == 0) {
            return SocketWait::timedOut;
        }
        if (stop && polled[1].revents != 0) {
            return SocketWait::stopped;
        }
        return SocketWait::ready;
    }
}

void sendWithoutWaiting(int fd, std::string_view bytes) {
    [[maybe_unused]] const auto written =
        ::send(fd, bytes.data(), bytes.size(), kSendFlags | MSG_DONTWAIT);
}

bool sendAll(int fd, std::string_view bytes, const StopSignal* stop) {
    while (!bytes.empty()) {
        const ssize_t written = ::send(fd, bytes.data(), bytes.size(), kSendFlags);
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (waitForSocket(fd, POLLOUT, stop) != SocketWait::ready) {
                return false;
            }
        } else if (written < 0 && errno == EINTR) {
            continue;
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace corvetta
