// method_dispatcher.h: The seam between the socket server and its methods, and the reply contract.
#pragma once

// Included only by the automation sources: it brings in the JSON library.

#include <functional>
#include <string>

#include "foundation/expected.h"
#include "foundation/json.h"

namespace corvetta {

// What a socket method answers: its result object, or the text of its error.
using MethodOutcome = Expected<Json, std::string>;
using MethodReply = std::function<void(MethodOutcome)>;

// Runs the socket's methods on behalf of the server. `dispatch` is called on the main thread;
// `reply` must be called exactly once, on the main thread, at once or later (a method may wait for
// the desktop or for a window to move).
class MethodDispatcher {
public:
    virtual ~MethodDispatcher() = default;
    virtual void dispatch(const std::string& method, const Json& params, MethodReply reply) = 0;
};

}  // namespace corvetta
