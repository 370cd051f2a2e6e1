// socket_client.h: A blocking automation-socket client for corvetta-ctl, tests and benchmarks.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "automation/line_reader.h"
#include "automation/unix_socket.h"
#include "foundation/expected.h"

namespace corvetta {

// A blocking client of the automation socket: writes request lines, reads answer lines. Used by
// corvetta-ctl, the tests and the benchmarks.
class SocketClient {
public:
    // Answers may be far longer than requests (a full log book, every window).
    static constexpr std::size_t kMaxAnswerBytes = std::size_t{64} << 20;

    static Expected<SocketClient, SocketError> connect(const std::filesystem::path& path);
    explicit SocketClient(UniqueFd fd) : fd_(std::move(fd)), reader_(kMaxAnswerBytes) {}

    // False when the server went away before taking every byte.
    bool send(std::string_view bytes);

    enum class ReadFailure { closed, timedOut, tooLong };
    // The next line the server sent, without its line feed.
    Expected<std::string, ReadFailure> readLine(std::chrono::milliseconds timeout);

    int fd() const { return fd_.get(); }

private:
    UniqueFd fd_;
    LineReader reader_;
};

}  // namespace corvetta
