// unix_socket.h: Unix-domain socket plumbing the automation server and its clients share.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sys/types.h>
#include <sys/un.h>

#include "foundation/expected.h"

namespace corvetta {

// A file descriptor that is closed when dropped. Move-only.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            reset(std::exchange(other.fd_, -1));
        }
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    bool isValid() const { return fd_ >= 0; }
    void reset(int fd = -1);

private:
    int fd_ = -1;
};

// A failed system call: its name and errno.
struct SocketError {
    std::string call;
    int number = 0;

    // "connect() failed: 2 (No such file or directory)".
    std::string description() const;
};

// The address of a socket file; nothing when the path does not fit the address.
std::optional<sockaddr_un> unixSocketAddress(const std::filesystem::path& path);
// The longest socket path the platform can bind or connect to, in bytes.
std::size_t maxUnixSocketPathBytes();

// A connected stream socket, blocking and closed on exec.
Expected<UniqueFd, SocketError> connectUnixSocket(const std::filesystem::path& path);

// Whether a server accepts connections on the socket file now. Never blocks: a server whose
// backlog is full still counts as answering.
bool isUnixSocketAnswering(const std::filesystem::path& path);

// Puts a socket in non-blocking mode and keeps writes to a vanished peer from raising SIGPIPE.
void prepareServedSocket(int fd);

// The user id of the process at the other end of a connected socket.
std::optional<uid_t> peerUserId(int fd);

// Wakes every thread blocked in waitForSocket on it, once and for good: a shared "stop" that
// works for any number of waiting threads, since nobody ever drains it.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    void raise();
    bool isRaised() const;
    int fd() const { return read_; }

private:
    int read_ = -1;
    int write_ = -1;
};

enum class SocketWait { ready, stopped, timedOut, failed };
// Waits until `fd` is ready for `events` (poll(2) flags), the stop signal is raised, or the
// timeout passes; a hang-up or error on `fd` counts as ready so the next call reports it.
SocketWait waitForSocket(int fd, short events, const StopSignal* stop,
                         std::optional<std::chrono::milliseconds> timeout = std::nullopt);

// One write without waiting, for a short notice to a connection about to be closed.
void sendWithoutWaiting(int fd, std::string_view bytes);

// Writes every byte, waiting while the peer's receive buffer is full. False when the peer went
// away or the stop signal was raised first.
bool sendAll(int fd, std::string_view bytes, const StopSignal* stop);

}  // namespace corvetta
