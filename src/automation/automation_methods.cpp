#include "automation/automation_methods.h"

#include <exception>
#include <utility>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"

namespace corvetta {

AutomationMethods::AutomationMethods(AutomationContext context)
    : context_(std::make_shared<const AutomationContext>(std::move(context))) {
    addWindowMethods(methods_, context_);
    addApplicationMethods(methods_, context_);
    addNewWindowMethods(methods_, context_);
    addLayoutMethods(methods_, context_);
    addLayoutLockMethods(methods_, context_);
    addStatusMethods(methods_, context_);
    addWorkspaceMethods(methods_, context_);
    addSetupMethods(methods_, context_);
    addCaptureMethods(methods_, context_);
    addShortcutMethods(methods_, context_);
    addThemeMethods(methods_, context_);
}

void AutomationMethods::add(const std::string& method, MethodHandler handler) {
    // An answer the method leaves waiting is dropped once this object is gone, as the table's own
    // methods drop theirs.
    methods_[method] = [alive = std::weak_ptr<bool>(alive_), handler = std::move(handler)](
                           const MethodParams& params, MethodReply& reply) {
        MethodReply guarded = [alive, inner = reply](MethodOutcome outcome) {
            if (alive.lock()) {
                inner(std::move(outcome));
            }
        };
        handler(params, guarded);
        if (!guarded) {
            reply = nullptr;
        }
    };
}

void AutomationMethods::dispatch(const std::string& method, const Json& params, MethodReply reply) {
    // The desktop's backend keeps what it read until the desktop announces a change, and the
    // announcement of a change the client just made may not have been read yet.
    context_->desktop.synchronize([this, alive = std::weak_ptr<bool>(alive_), method, params,
                                   reply = std::move(reply)]() mutable {
        if (alive.lock()) {
            run(method, params, reply);
        }
    });
}

void AutomationMethods::run(const std::string& method, const Json& params,
                            MethodReply& reply) const {
    // A method throws only before it hands the reply on, so an error is answered once.
    const auto answerError = [&reply](std::string text) {
        if (reply) {
            std::exchange(reply, nullptr)(unexpected(std::move(text)));
        }
    };
    const auto found = methods_.find(method);
    if (found == methods_.end()) {
        answerError(MCPError::unknownMethod(method).description());
        return;
    }
    try {
        found->second(MethodParams(params), reply);
    } catch (const MCPError& error) {
        answerError(error.description());
    } catch (const std::exception& error) {
        answerError(error.what());
    }
}

}  // namespace corvetta
