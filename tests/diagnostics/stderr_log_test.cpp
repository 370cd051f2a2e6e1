#include "diagnostics/stderr_log.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace corvetta {
namespace {

using ::testing::HasSubstr;
using namespace std::chrono;

const std::string kPrefix = "2026-11-21T10:15:30Z info Svc[toast] ";
// For tests whose reader is slow but keeps reading: never give up on it.
constexpr std::chrono::minutes kPatient{10};

LogEntry entry(std::string message, LogLevel level = LogLevel::info) {
    const Date when = sys_days{year{2026} / 11 / 21} + hours{10} + minutes{15} + seconds{30};
    return {when, level, "Svc", LogCategory::toast(), std::move(message)};
}

struct Pipe {
    Pipe() { EXPECT_EQ(pipe(fds), 0); }
    ~Pipe() {
        close(fds[0]);
        close(fds[1]);
    }
    // A small pipe fills quickly; a descriptor may be inherited non-blocking.
    void shrink(bool nonBlocking) {
        fcntl(fds[1], F_SETPIPE_SZ, 4096);
        const int flags = fcntl(fds[1], F_GETFL);
        fcntl(fds[1], F_SETFL, nonBlocking ? flags | O_NONBLOCK : flags & ~O_NONBLOCK);
    }
    // Fills the pipe so the next blocking write waits for a reader; returns the bytes it took.
    std::size_t fill() {
        shrink(true);
        const std::string chunk(512, 'x');
        std::size_t total = 0;
        for (ssize_t n; (n = ::write(fds[1], chunk.data(), chunk.size())) > 0;) {
            total += static_cast<std::size_t>(n);
        }
        shrink(false);
        return total;
    }
    // Reads until `size` bytes or the end of the pipe.
    std::string read(std::size_t size = SIZE_MAX) const {
        std::string text;
        char buffer[4096];
        for (ssize_t n;
             text.size() < size &&
             (n = ::read(fds[0], buffer, std::min(sizeof buffer, size - text.size()))) > 0;) {
            text.append(buffer, static_cast<std::size_t>(n));
        }
        return text;
    }
    std::string readAvailable() const {
        int available = 0;
        ioctl(fds[0], FIONREAD, &available);
        return read(static_cast<std::size_t>(available));
    }
    void closeWriteEnd() {
        close(fds[1]);
        fds[1] = -1;
    }
    int fds[2] = {-1, -1};
};

TEST(StderrLog, WritesOneEscapedLinePerEntryInOrder) {
    EXPECT_EQ(formatPlatformLogLine(entry("saved", LogLevel::warning)),
              "2026-11-21T10:15:30Z warning Svc[toast] saved\n");
    Pipe pipe;
    StderrLog log(pipe.fds[1]);
    log.write(entry("first"));
    log.write(entry("two\nlines\r\nhere", LogLevel::error));
    log.write(entry("third"));
    log.flush();
    EXPECT_EQ(pipe.readAvailable(),
              kPrefix + "first\n" +
                  "2026-11-21T10:15:30Z error Svc[toast] two\\nlines\\r\\nhere\n" + kPrefix +
                  "third\n");
    log.flush();  // nothing queued: must return at once
}

// The writer is stuck on a full pipe when the log goes, so most lines are still queued; and an
// inherited non-blocking descriptor must be waited out, not given up on.
TEST(StderrLog, DestructionWritesEverythingQueuedThroughAFullNonBlockingDescriptor) {
    constexpr int kEntries = 2000;  // far more than the pipe holds
    Pipe pipe;
    const std::size_t filler = pipe.fill();
    pipe.shrink(true);
    std::optional<StderrLog> log(std::in_place, pipe.fds[1], 10'000, kPatient);
    std::string expected(filler, 'x');
    for (int i = 0; i < kEntries; ++i) {
        log->write(entry("m" + std::to_string(i)));
        expected += kPrefix + "m" + std::to_string(i) + "\n";
    }
    std::string output;
    std::thread reader([&] { output = pipe.read(); });
    log.reset();
    pipe.closeWriteEnd();
    reader.join();
    EXPECT_EQ(output, expected);
}

TEST(StderrLog, DropsLinesPastCapacityAndSaysHowMany) {
    constexpr std::size_t kCapacity = 3;
    constexpr int kEntries = 50;
    Pipe pipe;
    // The writer blocks on its first batch until this test reads, so at most that batch and one
    // full backlog survive; lines dropped before that batch earn a note of their own.
    const std::size_t filler = pipe.fill();
    StderrLog log(pipe.fds[1], kCapacity, kPatient);
    for (int i = 0; i < kEntries; ++i) {
        log.write(entry("m" + std::to_string(i)));
    }
    pipe.read(filler);
    log.flush();

    std::istringstream lines(pipe.readAvailable());
    int next = 0;
    std::size_t kept = 0;
    std::string last;
    for (std::string line; std::getline(lines, line); last = line) {
        int dropped = 0;
        if (std::sscanf(line.c_str(), "(%d log lines dropped", &dropped) == 1) {
            EXPECT_GT(dropped, 0);
            next += dropped;
        } else {
            EXPECT_EQ(line, kPrefix + "m" + std::to_string(next++));
            ++kept;
        }
    }
    EXPECT_EQ(next, kEntries);
    EXPECT_GE(kept, kCapacity);
    EXPECT_LE(kept, 2 * kCapacity);
    EXPECT_THAT(last, HasSubstr(" log lines dropped"));

    // Caught up, lines flow again and the drop is not reported twice.
    log.write(entry("later"));
    log.flush();
    EXPECT_EQ(pipe.readAvailable(), kPrefix + "later\n");
}

TEST(StderrLog, FlushWaitsUntilTheLineIsInThePipe) {
    Pipe pipe;
    const std::size_t filler = pipe.fill();
    StderrLog log(pipe.fds[1], 10'000, kPatient);
    log.write(entry("slow"));
    // The line only fits once the filler is read, which starts only once flush is under way: a
    // flush that returned early would see the filler still there.
    int heldAfterFlush = -1;
    std::atomic<bool> flushing{false};
    std::thread flusher([&] {
        flushing = true;
        log.flush();
        ioctl(pipe.fds[0], FIONREAD, &heldAfterFlush);
    });
    while (!flushing) {
        std::this_thread::yield();
    }
    pipe.read(filler);
    flusher.join();
    EXPECT_EQ(heldAfterFlush, static_cast<int>(kPrefix.size() + 5));
    EXPECT_EQ(pipe.readAvailable(), kPrefix + "slow\n");
}

// A reader that stopped reading, or went away, must not keep the program from ending.
TEST(StderrLog, GivesUpOnADescriptorThatStallsOrIsGone) {
    signal(SIGPIPE, SIG_IGN);  // as the program does; else the closed pipe ends the test
    for (const bool closed : {false, true}) {
        SCOPED_TRACE(closed ? "closed" : "stalled");
        Pipe pipe;
        if (closed) {
            close(std::exchange(pipe.fds[0], -1));
        } else {
            pipe.fill();
        }
        std::optional<StderrLog> log(std::in_place, pipe.fds[1], 10'000,
                                     std::chrono::milliseconds(20));
        log->write(entry("nobody reads this"));
        EXPECT_FALSE(log->flush());
        log->write(entry("nor this"));
        EXPECT_FALSE(log->flush());
        log.reset();
    }
}

}  // namespace
}  // namespace corvetta
