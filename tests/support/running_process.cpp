#include "support/running_process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/child_process.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;

int exitCode(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

RunningProcess::RunningProcess(std::vector<std::string> argv,
                               std::vector<std::string> environment) {
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("could not create pipes for " + argv[0]);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    const int failed =
        posix_spawnp(&pid_, argv[0].c_str(), &actions, nullptr, nullTerminated(argv).data(),
                     nullTerminated(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    out_.fd = out[0];
    err_.fd = err[0];
    if (failed) {
        pid_ = -1;
        throw std::runtime_error("could not start " + argv[0]);
    }
}

RunningProcess::~RunningProcess() {
    if (pid_ > 0 && !waitForExit(std::chrono::seconds(0))) {
        signal(SIGTERM);
        if (!waitForExit(std::chrono::seconds(5))) {
            signal(SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    for (int fd : {out_.fd, err_.fd, unreadErrors_}) {
        if (fd >= 0) {
            close(fd);
        }
    }
}

template <typename Done>
bool RunningProcess::pumpUntil(Done done, Clock::time_point deadline) {
    while (!done()) {
        std::vector<pollfd> polled;
        for (const Stream* stream : {&out_, &err_}) {
            if (stream->fd >= 0) {
                polled.push_back({stream->fd, POLLIN, 0});
            }
        }
        if (polled.empty()) {
            return false;
        }
        const int ready =
            poll(polled.data(), static_cast<nfds_t>(polled.size()), millisecondsUntil(deadline));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return false;
        }
        for (Stream* stream : {&out_, &err_}) {
            const bool readable = std::any_of(polled.begin(), polled.end(), [&](const pollfd& p) {
                return p.fd == stream->fd && p.revents;
            });
            if (!readable) {
                continue;
            }
            char buffer[4096];
            const ssize_t count = read(stream->fd, buffer, sizeof buffer);
            if (count <= 0) {
                close(stream->fd);
                stream->fd = -1;
            } else {
                stream->text.append(buffer, static_cast<std::size_t>(count));
            }
        }
    }
    return true;
}

std::optional<std::string> RunningProcess::waitForLine(std::string_view prefix,
                                                       std::chrono::seconds limit) {
    std::optional<std::string> found;
    auto lineFound = [&] {
        for (auto end = out_.text.find('\n', consumed_); end != std::string::npos;
             end = out_.text.find('\n', consumed_)) {
            std::string line = out_.text.substr(consumed_, end - consumed_);
            consumed_ = end + 1;
            if (line.starts_with(prefix)) {
                found = std::move(line);
                return true;
            }
        }
        return false;
    };
    pumpUntil(lineFound, Clock::now() + limit);
    return found;
}

bool RunningProcess::waitForError(std::string_view text, std::chrono::seconds limit) {
    return pumpUntil([&] { return err_.text.find(text) != std::string::npos; },
                     Clock::now() + limit);
}

std::optional<std::size_t> RunningProcess::waitForErrorAfter(std::size_t offset,
                                                             const std::vector<std::string>& texts,
                                                             std::chrono::seconds limit) {
    std::optional<std::size_t> found;
    pumpUntil(
        [&] {
            std::size_t first = std::string::npos;
            for (std::size_t i = 0; i < texts.size(); ++i) {
                const auto at = err_.text.find(texts[i], offset);
                if (at < first) {
                    first = at;
                    found = i;
                }
            }
            return found.has_value();
        },
        Clock::now() + limit);
    return found;
}

std::optional<int> RunningProcess::waitForExit(std::chrono::seconds limit) {
    if (pid_ <= 0) {
        return std::nullopt;
    }
    // The streams end when the program does (unless it left children holding them); reading them
    // meanwhile keeps a chatty child from blocking on a full pipe.
    pumpUntil([] { return false; }, Clock::now() + limit);
    int status = 0;
    if (waitpid(pid_, &status, limit.count() == 0 || out_.fd >= 0 || err_.fd >= 0 ? WNOHANG : 0) !=
        pid_) {
        return std::nullopt;
    }
    pid_ = -1;
    return exitCode(status);
}

void RunningProcess::stopReadingErrors(bool close) {
    if (err_.fd < 0) {
        return;
    }
    if (close) {
        ::close(std::exchange(err_.fd, -1));
    } else {
        fcntl(err_.fd, F_SETPIPE_SZ, 4096);
        unreadErrors_ = std::exchange(err_.fd, -1);
    }
}

void RunningProcess::signal(int number) const {
    if (pid_ > 0) {
        kill(pid_, number);
    }
}

}  // namespace corvetta::testing
