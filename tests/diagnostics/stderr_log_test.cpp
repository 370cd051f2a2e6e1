#include "diagnostics/stderr_log.h"

#include <atomic>
#include <cstdio>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace std::chrono;

const Date kWhen = sys_days{year{2026} / 11 / 21} + hours{10} + minutes{15} + seconds{30};

LogEntry entry(std::string message, LogLevel level = LogLevel::info) {
    return {kWhen, level, "Svc", LogCategory::toast(), std::move(message)};
}

class Pipe {
public:
    Pipe() {
        if (pipe(fds_) != 0) {
            throw std::runtime_error("pipe failed");
        }
    }
    ~Pipe() {
        close(fds_[0]);
        closeWriteEnd();
    }
    int readFd() const { return fds_[0]; }
    int writeFd() const { return fds_[1]; }
    void closeWriteEnd() {
        if (fds_[1] >= 0) {
            close(fds_[1]);
            fds_[1] = -1;
        }
    }

    // Fills the pipe to the brim so the next blocking write waits for a reader. Returns how many
    // bytes it took.
    std::size_t fill() {
        fcntl(writeFd(), F_SETPIPE_SZ, 4096);  // smaller is quicker; the default works too
        setNonBlocking(writeFd(), true);
        const std::string chunk(512, 'x');
        std::size_t total = 0;
        while (true) {
            const ssize_t n = ::write(writeFd(), chunk.data(), chunk.size());
            if (n <= 0) {
                break;
            }
            total += static_cast<std::size_t>(n);
        }
        setNonBlocking(writeFd(), false);
        return total;
    }

    std::string readExactly(std::size_t size) const {
        std::string text(size, '\0');
        std::size_t done = 0;
        while (done < size) {
            const ssize_t n = ::read(readFd(), text.data() + done, size - done);
            if (n <= 0) {
                throw std::runtime_error("pipe closed early");
            }
            done += static_cast<std::size_t>(n);
        }
        return text;
    }

    // Whatever the pipe holds right now, without waiting for more.
    std::string readAvailable() const {
        int available = 0;
        ioctl(readFd(), FIONREAD, &available);
        return readExactly(static_cast<std::size_t>(available));
    }

    std::string readToEnd() const {
        std::string text;
        char buffer[4096];
        ssize_t n;
        while ((n = ::read(readFd(), buffer, sizeof buffer)) > 0) {
            text.append(buffer, static_cast<std::size_t>(n));
        }
        return text;
    }

private:
    static void setNonBlocking(int fd, bool on) {
        const int flags = fcntl(fd, F_GETFL);
        fcntl(fd, F_SETFL, on ? flags | O_NONBLOCK : flags & ~O_NONBLOCK);
    }

    int fds_[2];
};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(PlatformLogLine, IsOneCompactLine) {
    EXPECT_EQ(formatPlatformLogLine(entry("saved", LogLevel::warning)),
              "2026-11-21T10:15:30Z warning Svc[toast] saved\n");
    EXPECT_EQ(formatPlatformLogLine(entry("two\nlines\r\nhere")),
              "2026-11-21T10:15:30Z info Svc[toast] two\\nlines\\r\\nhere\n");
}

TEST(StderrLog, WritesOneLinePerEntryInOrder) {
    Pipe pipe;
    StderrLog log(pipe.writeFd());
    log.write(entry("first"));
    log.write(entry("second\nhalf", LogLevel::error));
    log.write(entry("third"));
    log.flush();
    EXPECT_THAT(linesOf(pipe.readAvailable()),
                ElementsAre("2026-11-21T10:15:30Z info Svc[toast] first",
                            "2026-11-21T10:15:30Z error Svc[toast] second\\nhalf",
                            "2026-11-21T10:15:30Z info Svc[toast] third"));
    log.flush();  // nothing queued: returns at once
}

// A descriptor inherited in non-blocking mode fills up now and then; nothing may be lost to that.
TEST(StderrLog, WaitsOutAFullNonBlockingDescriptor) {
    Pipe pipe;
    fcntl(pipe.writeFd(), F_SETPIPE_SZ, 4096);
    fcntl(pipe.writeFd(), F_SETFL, fcntl(pipe.writeFd(), F_GETFL) | O_NONBLOCK);
    std::string received;
    std::thread reader;
    constexpr int kEntries = 2000;
    {
        StderrLog log(pipe.writeFd());
        // Far more than the pipe holds, queued before anyone reads.
        for (int i = 0; i < kEntries; ++i) {
            log.write(entry("line " + std::to_string(i)));
        }
        reader = std::thread([&] { received = pipe.readToEnd(); });
        log.flush();
    }
    pipe.closeWriteEnd();
    reader.join();
    const auto lines = linesOf(received);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kEntries));
    EXPECT_EQ(lines.back(), "2026-11-21T10:15:30Z info Svc[toast] line 1999");
}

TEST(StderrLog, DropsLinesPastCapacityAndSaysHowMany) {
    constexpr std::size_t kCapacity = 3;
    constexpr int kEntries = 50;
    Pipe pipe;
    // With the pipe full, the writer blocks on the first batch it takes and nothing drains until
    // this test reads, so at most that batch and one full backlog survive. Lines may also be
    // dropped before the writer takes that first batch, so there can be a note after each batch.
    const std::size_t filler = pipe.fill();
    StderrLog log(pipe.writeFd(), kCapacity);
    for (int i = 0; i < kEntries; ++i) {
        log.write(entry("m" + std::to_string(i)));
    }
    pipe.readExactly(filler);
    log.flush();

    const auto lines = linesOf(pipe.readAvailable());
    ASSERT_FALSE(lines.empty());
    // Each note counts exactly the entries missing between the lines around it.
    int next = 0;
    std::size_t kept = 0;
    for (const auto& line : lines) {
        int dropped = 0;
        if (std::sscanf(line.c_str(), "(%d log lines dropped", &dropped) == 1) {
            EXPECT_GT(dropped, 0);
            next += dropped;
        } else {
            EXPECT_EQ(line, "2026-11-21T10:15:30Z info Svc[toast] m" + std::to_string(next));
            ++next;
            ++kept;
        }
    }
    EXPECT_EQ(next, kEntries);
    EXPECT_GE(kept, kCapacity);
    EXPECT_LE(kept, 2 * kCapacity);
    EXPECT_THAT(lines.back(), HasSubstr(" log lines dropped"));

    // Once caught up, lines flow again and the drop is not reported twice.
    log.write(entry("later"));
    log.flush();
    EXPECT_THAT(linesOf(pipe.readAvailable()),
                ElementsAre("2026-11-21T10:15:30Z info Svc[toast] later"));
}

TEST(StderrLog, FlushWaitsUntilTheLineIsInThePipe) {
    Pipe pipe;
    const std::size_t filler = pipe.fill();
    StderrLog log(pipe.writeFd());
    const std::string line = "2026-11-21T10:15:30Z info Svc[toast] slow\n";
    log.write(entry("slow"));
    // The line can only go in once the filler is out, so whenever flush returns the pipe holds
    // the line and nothing else.
    int heldAfterFlush = -1;
    std::atomic<bool> flushing{false};
    std::thread flusher([&] {
        flushing = true;
        log.flush();
        ioctl(pipe.readFd(), FIONREAD, &heldAfterFlush);
    });
    // Reading only once flush is under way lets a flush that returns early see the filler.
    while (!flushing) {
        std::this_thread::yield();
    }
    pipe.readExactly(filler);
    flusher.join();
    EXPECT_EQ(heldAfterFlush, static_cast<int>(line.size()));
    EXPECT_EQ(pipe.readAvailable(), line);
}

TEST(StderrLog, DestructionWritesEverythingQueued) {
    constexpr int kEntries = 20;
    Pipe pipe;
    const std::size_t filler = pipe.fill();
    std::optional<StderrLog> log(std::in_place, pipe.writeFd());
    for (int i = 0; i < kEntries; ++i) {
        log->write(entry("m" + std::to_string(i)));
    }
    // The writer is stuck on the full pipe, so most lines are still queued when the log goes;
    // reading must run alongside, or the destructor would wait for ever.
    std::string output;
    std::thread reader([&] { output = pipe.readToEnd(); });
    log.reset();
    pipe.closeWriteEnd();
    reader.join();

    ASSERT_GE(output.size(), filler);
    const auto lines = linesOf(output.substr(filler));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kEntries));
    for (int i = 0; i < kEntries; ++i) {
        EXPECT_EQ(lines[static_cast<std::size_t>(i)],
                  "2026-11-21T10:15:30Z info Svc[toast] m" + std::to_string(i));
    }
}

}  // namespace
}  // namespace corvetta
