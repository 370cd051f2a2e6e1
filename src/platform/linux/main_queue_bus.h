// main_queue_bus.h: A D-Bus connection served on the main queue, with one signal routed to a
// handler.
#pragma once

#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "foundation/main_queue.h"

struct sd_bus_message;

namespace corvetta {

// Opens the system bus or the user's session bus, routes one signal to a handler and serves the
// bus's descriptor on the main queue (no threads). Signals and replies are handled during the
// queue's turns. When the bus fails or hangs up, `onLost` hears why, once; the connection is
// closed on the next turn and nothing more is heard from it.
class MainQueueBus {
public:
    enum class Which { system, session };
    // Where a signal comes from or a method call goes.
    struct Member {
        const char* service;
        const char* path;
        const char* interface;
        const char* name;
    };
    using MessageHandler = std::function<void(sd_bus_message*)>;
    using LostHandler = std::function<void(const std::string& why)>;

    // Connects ($DBUS_SYSTEM_BUS_ADDRESS or $DBUS_SESSION_BUS_ADDRESS) and asks the bus to route
    // `signal`; blocking calls give up after `callTimeout`. Null, with `whyNot` set, when either
    // fails. Call on the main thread.
    static std::unique_ptr<MainQueueBus> open(MainQueue& queue, Which which,
                                              std::chrono::microseconds callTimeout,
                                              const Member& signal, MessageHandler onSignal,
                                              LostHandler onLost, std::string& whyNot);
    ~MainQueueBus();
    MainQueueBus(const MainQueueBus&) = delete;
    MainQueueBus& operator=(const MainQueueBus&) = delete;

    bool isLost() const { return lost_; }

    // Sends a call whose arguments are all strings; its reply, or the error in its place,
    // reaches `onReply` on a later turn. A newer call replaces one not yet answered. False, with
    // `whyNot` set, when the call cannot be sent.
    bool callAsync(const Member& method, std::initializer_list<const char*> stringArguments,
                   MessageHandler onReply, std::string& whyNot);

private:
    struct Connection;

    MainQueueBus(MainQueue& queue, MessageHandler onSignal, LostHandler onLost);
    void serve(unsigned events);
    void lose(const std::string& why);

    MainQueue& queue_;
    MessageHandler onSignal_;
    LostHandler onLost_;
    MessageHandler onReply_;
    bool lost_ = false;
    std::unique_ptr<Connection> connection_;
    // Lets the close posted on losing the bus see whether this object still exists.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
