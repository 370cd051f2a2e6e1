// qt_main_queue.h: The main queue over Qt's event loop, for when the interface runs.
#pragma once

#include <QEventLoop>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <atomic>
#include <map>
#include <memory>
#include <thread>

#include "foundation/queue_core.h"

namespace corvetta {

// The same contract as the poll loop (posted work in order, delayed work by due time, descriptor
// watches, run-and-wait from other threads), carried by Qt's event loop so that the interface's
// events and the product's work share one thread. Work from other threads wakes the loop with a
// queued call; delayed work rides one precise single-shot timer set to the earliest due time;
// watched descriptors get socket notifiers kept in step with the watch set after every round.
class QtMainQueue final : public QObject, public MainQueue {
    Q_OBJECT
public:
    explicit QtMainQueue(const Clock& clock, FailureHandler onFailure = {});
    ~QtMainQueue() override;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    // Runs Qt's event loop on the calling thread, which becomes the main thread, until stop().
    // Needs a QCoreApplication (or QApplication) to exist.
    void run();
    // Ends run() after the work in hand; safe from any thread, signal handlers excepted.
    void stop();

    void post(Task task) override;
    WorkItem postDelayed(Duration delay, Task task) override;
    FdWatch watch(int fd, unsigned events, std::function<void(unsigned)> callback) override;
    bool isMainThread() const override;
    const Clock& clock() const override { return clock_; }

private:
    // One round: posted work, due timers, then the notifiers and the timer set for what is left.
    void pump();
    void wake();
    void syncNotifiers();
    void serviceDescriptors();
    void armTimer();

    struct Notifiers {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };

    const Clock& clock_;
    QueueCore core_;
    QTimer timer_;
    std::map<int, Notifiers> notifiers_;
    std::atomic<bool> wakePending_{false};
    std::atomic<bool> stopRequested_{false};
    std::atomic<std::thread::id> mainThread_;
    bool pumping_ = false;
    QEventLoop* runningLoop_ = nullptr;
};

}  // namespace corvetta
