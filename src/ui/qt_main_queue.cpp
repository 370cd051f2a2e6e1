#include "ui/qt_main_queue.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <cerrno>
#include <vector>

#include <poll.h>

namespace corvetta {

QtMainQueue::QtMainQueue(const Clock& clock, FailureHandler onFailure)
    : clock_(clock),
      core_([this] { wake(); }, std::move(onFailure)),
      mainThread_(std::this_thread::get_id()) {
    timer_.setSingleShot(true);
    // Coarse timers may fire up to 5% late; debounces and retries are specified to the
    // millisecond.
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { pump(); });
}

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::wake() {
    // One queued call is enough however many tasks arrive before it runs.
    if (wakePending_.exchange(true)) {
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            wakePending_ = false;
            pump();
        },
        Qt::QueuedConnection);
}

void QtMainQueue::post(Task task) {
    core_.post(std::move(task));
}

WorkItem QtMainQueue::postDelayed(Duration delay, Task task) {
    return core_.postDelayed(clock_.monotonicNow() + delay, std::move(task));
}

FdWatch QtMainQueue::watch(int fd, unsigned events, std::function<void(unsigned)> callback) {
    auto inner = std::make_shared<FdWatch>(core_.addWatch(fd, events, std::move(callback)));
    wake();
    // Dropping the watch outside a round (from a view's input handler, say) must still take its
    // notifier away before the descriptor can be closed and reused.
    return FdWatch([this, inner] {
        inner->reset();
        if (isMainThread()) {
            syncNotifiers();
        } else {
            wake();
        }
    });
}

bool QtMainQueue::isMainThread() const {
    return std::this_thread::get_id() == mainThread_.load();
}

void QtMainQueue::pump() {
    if (pumping_) {
        return;
    }
    pumping_ = true;
    core_.runPosted();
    const MonotonicTime now = clock_.monotonicNow();
    while (!stopRequested_ && core_.runNextDue(now, {})) {
    }
    pumping_ = false;
    syncNotifiers();
    armTimer();
}

void QtMainQueue::armTimer() {
    if (core_.hasPosted()) {
        wake();
        timer_.stop();
        return;
    }
    const auto due = core_.nextDue();
    if (!due) {
        timer_.stop();
        return;
    }
    const auto wait = *due - clock_.monotonicNow();
    // Round up so the timer never fires a little early and spins until the work is due.
    const auto ms =
        wait <= Duration::zero() ? 0 : std::chrono::ceil<std::chrono::milliseconds>(wait).count();
    timer_.start(static_cast<int>(ms > 1'000'000 ? 1'000'000 : ms));
}

void QtMainQueue::syncNotifiers() {
    const auto set = core_.pollSet();
    std::map<int, short> wanted;
    for (const auto& entry : set.fds) {
        wanted[entry.fd] |= entry.events;
    }
    for (auto it = notifiers_.begin(); it != notifiers_.end();) {
        const auto found = wanted.find(it->first);
        const bool keepRead = found != wanted.end() && (found->second & POLLIN);
        const bool keepWrite = found != wanted.end() && (found->second & POLLOUT);
        if (!keepRead && it->second.read) {
            it->second.read->setEnabled(false);
            it->second.read.release()->deleteLater();
        }
        if (!keepWrite && it->second.write) {
            it->second.write->setEnabled(false);
            it->second.write.release()->deleteLater();
        }
        it = (it->second.read || it->second.write) ? std::next(it) : notifiers_.erase(it);
    }
    for (const auto& [fd, events] : wanted) {
        auto& notifiers = notifiers_[fd];
        // Hang-ups and errors show up as readability, the way poll(2) reports them with POLLIN.
        if (!notifiers.read) {
            notifiers.read = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
            connect(notifiers.read.get(), &QSocketNotifier::activated, this,
                    [this] { serviceDescriptors(); });
        }
        if ((events & POLLOUT) && !notifiers.write) {
            notifiers.write = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Write);
            connect(notifiers.write.get(), &QSocketNotifier::activated, this,
                    [this] { serviceDescriptors(); });
        }
    }
}

void QtMainQueue::serviceDescriptors() {
    // A notifier says only that something is ready; poll(2) says what, with the same bits the poll
    // loop hands its callbacks.
    auto set = core_.pollSet();
    if (!set.fds.empty()) {
        int ready;
        do {
            ready = poll(set.fds.data(), set.fds.size(), 0);
        } while (ready < 0 && errno == EINTR);
        if (ready > 0) {
            core_.dispatch(set);
        }
    }
    pump();
}

void QtMainQueue::run() {
    mainThread_ = std::this_thread::get_id();
    stopRequested_ = false;
    pump();
    QEventLoop loop;
    runningLoop_ = &loop;
    loop.exec();
    runningLoop_ = nullptr;
}

void QtMainQueue::stop() {
    stopRequested_ = true;
    // stop() may come from any thread; the loop is told on its own.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (runningLoop_) {
                runningLoop_->quit();
            }
        },
        Qt::QueuedConnection);
}

}  // namespace corvetta
