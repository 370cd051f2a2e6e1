#include "platform/linux/main_queue_bus.h"

#include <cstring>
#include <utility>

#include <systemd/sd-bus.h>

namespace corvetta {

namespace {

std::string errorText(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

}  // namespace

struct MainQueueBus::Connection {
    ~Connection() {
        watch.reset();
        sd_bus_slot_unref(call);
        sd_bus_slot_unref(match);
        sd_bus_flush_close_unref(bus);
    }

    static int onSignal(sd_bus_message* message, void* userdata, sd_bus_error*) {
        static_cast<MainQueueBus*>(userdata)->onSignal_(message);
        return 0;
    }

    static int onReply(sd_bus_message* message, void* userdata, sd_bus_error*) {
        // Taken out first: the handler may send the next call, which brings its own.
        const auto handler = std::exchange(static_cast<MainQueueBus*>(userdata)->onReply_, nullptr);
        if (handler) {
            handler(message);
        }
        return 0;
    }

    sd_bus* bus = nullptr;
    sd_bus_slot* match = nullptr;
    sd_bus_slot* call = nullptr;
    FdWatch watch;
};

MainQueueBus::MainQueueBus(MainQueue& queue, MessageHandler onSignal, LostHandler onLost)
    : queue_(queue),
      onSignal_(std::move(onSignal)),
      onLost_(std::move(onLost)),
      connection_(std::make_unique<Connection>()) {}

MainQueueBus::~MainQueueBus() = default;

std::unique_ptr<MainQueueBus> MainQueueBus::open(MainQueue& queue, Which which,
                                                 std::chrono::microseconds callTimeout,
                                                 const Member& signal, MessageHandler onSignal,
                                                 LostHandler onLost, std::string& whyNot) {
    std::unique_ptr<MainQueueBus> self(
        new MainQueueBus(queue, std::move(onSignal), std::move(onLost)));
    Connection& connection = *self->connection_;
    int result = which == Which::system ? sd_bus_open_system(&connection.bus)
                                        : sd_bus_open_user(&connection.bus);
    if (result >= 0) {
        sd_bus_set_method_call_timeout(connection.bus,
                                       static_cast<std::uint64_t>(callTimeout.count()));
        result =
            sd_bus_match_signal(connection.bus, &connection.match, signal.service, signal.path,
                                signal.interface, signal.name, &Connection::onSignal, self.get());
    }
    if (result < 0) {
        whyNot = errorText(result);
        return nullptr;
    }
    connection.watch =
        queue.watch(sd_bus_get_fd(connection.bus), static_cast<unsigned>(FdEvent::readable),
                    [raw = self.get()](unsigned events) { raw->serve(events); });
    return self;
}

bool MainQueueBus::callAsync(const Member& method,
                             std::initializer_list<const char*> stringArguments,
                             MessageHandler onReply, std::string& whyNot) {
    if (lost_) {
        whyNot = "the bus is gone";
        return false;
    }
    Connection& connection = *connection_;
    connection.call = sd_bus_slot_unref(connection.call);
    sd_bus_message* message = nullptr;
    int result = sd_bus_message_new_method_call(connection.bus, &message, method.service,
                                                method.path, method.interface, method.name);
    for (const char* argument : stringArguments) {
        if (result >= 0) {
            result = sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, argument);
        }
    }
    if (result >= 0) {
        onReply_ = std::move(onReply);
        result = sd_bus_call_async(connection.bus, &connection.call, message, &Connection::onReply,
                                   this, 0);
    }
    sd_bus_message_unref(message);
    if (result < 0) {
        onReply_ = nullptr;
        whyNot = errorText(result);
        return false;
    }
    return true;
}

void MainQueueBus::serve(unsigned events) {
    if (lost_) {
        return;
    }
    int processed = 0;
    while ((processed = sd_bus_process(connection_->bus, nullptr)) > 0) {
    }
    if (processed < 0) {
        lose(errorText(processed));
    } else if (hasEvent(events, FdEvent::hangup)) {
        lose("the bus hung up");
    }
}

void MainQueueBus::lose(const std::string& why) {
    lost_ = true;
    // Not from inside the watch's own callback: the connection goes on the next turn.
    queue_.post([this, alive = std::weak_ptr<bool>(alive_)] {
        if (alive.lock()) {
            connection_.reset();
        }
    });
    // Last: the owner may drop this object when it hears the bus is gone.
    onLost_(why);
}

}  // namespace corvetta
