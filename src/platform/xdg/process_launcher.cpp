#include "platform/xdg/process_launcher.h"

#include <cstring>

#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvetta {

ProcessLauncher::ProcessLauncher(MainQueue& queue) : queue_(queue) {}

ProcessLauncher::~ProcessLauncher() {
    for (auto& [process, running] : state_->running) {
        running.watch.reset();
        close(running.descriptor);
    }
    state_->running.clear();
}

namespace {

std::vector<char*> nullTerminated(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const auto& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Expected<ProcessId, std::string> ProcessLauncher::launch(
    const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
    const std::string& workingDirectory) {
    if (arguments.empty() || arguments.front().empty()) {
        return unexpected(std::string("no program to start"));
    }
    auto argv = nullTerminated(arguments);
    auto envp = nullTerminated(environment);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!workingDirectory.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());
    }
    pid_t process = 0;
    const int failed =
        posix_spawnp(&process, argv.front(), &actions, &attributes, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (failed != 0) {
        return unexpected("cannot start " + arguments.front() + ": " + std::strerror(failed));
    }
    // A process descriptor turns readable when the process ends.
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (descriptor >= 0) {
        const std::weak_ptr<State> weak = state_;
        auto& queue = queue_;
        state_->running[process] = {
            descriptor, queue_.watch(descriptor, static_cast<unsigned>(FdEvent::readable),
                                     [weak, &queue, process](unsigned) {
                                         // Not from inside the watch's own callback, which the
                                         // reaping drops.
                                         queue.post([weak, process] {
                                             if (const auto state = weak.lock()) {
                                                 state->reap(process);
                                             }
                                         });
                                     })};
    }
    return process;
}

void ProcessLauncher::State::reap(ProcessId process) {
    const auto found = running.find(process);
    if (found == running.end()) {
        return;
    }
    waitpid(process, nullptr, WNOHANG);
    found->second.watch.reset();
    close(found->second.descriptor);
    running.erase(found);
}

}  // namespace corvetta
