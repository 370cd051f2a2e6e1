// running_process.h: A child program of a test, its output read through pipes with a deadline.
#pragma once

// The child is stopped and reaped when the test ends, however the test ends.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace corvetta::testing {

class RunningProcess {
public:
    // `argv[0]` is looked up in PATH unless it names a file; `environment` is NAME=VALUE texts.
    RunningProcess(std::vector<std::string> argv, std::vector<std::string> environment);
    ~RunningProcess();
    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    // The first line of standard output that starts with `prefix`, or nothing when the output
    // ended or the deadline passed first.
    std::optional<std::string> waitForLine(std::string_view prefix,
                                           std::chrono::seconds limit = kDeadline);
    // True once standard error holds `text`; false when it ended or the deadline passed first.
    bool waitForError(std::string_view text, std::chrono::seconds limit = kDeadline);
    // Which of `texts` standard error holds first at or after byte `offset` (errors().size()
    // taken earlier, so a line the program writes again is told from its last time); none when
    // it ended or the deadline passed first.
    std::optional<std::size_t> waitForErrorAfter(std::size_t offset,
                                                 const std::vector<std::string>& texts,
                                                 std::chrono::seconds limit = kDeadline);
    // The exit code, or 128 + the signal that ended it; nothing while it still runs at the end.
    std::optional<int> waitForExit(std::chrono::seconds limit = kDeadline);

    void signal(int number) const;
    pid_t pid() const { return pid_; }
    // Stops reading standard error. Closed, the program's writes to it fail; kept open, its pipe
    // (shrunk to one page) fills and the program's writes block, as behind a stuck terminal.
    void stopReadingErrors(bool close);
    const std::string& output() const { return out_.text; }
    const std::string& errors() const { return err_.text; }

    // Bounds only a hung child; sanitizer builds start slowly.
    static constexpr std::chrono::seconds kDeadline{30};

private:
    struct Stream {
        int fd = -1;
        std::string text;
    };
    // Reads what both streams have until `done` holds; false when both ended or time ran out.
    template <typename Done>
    bool pumpUntil(Done done, std::chrono::steady_clock::time_point deadline);

    pid_t pid_ = -1;
    Stream out_, err_;
    int unreadErrors_ = -1;
    std::size_t consumed_ = 0;  // standard output up to the last line handed out
};

}  // namespace corvetta::testing
