// socket_request.h: Parses the socket's request lines and writes its response lines.
#pragma once

// Included only by the automation sources: it brings in the JSON library.

#include <optional>
#include <string>
#include <string_view>

#include "automation/method_dispatcher.h"
#include "foundation/json.h"

namespace corvetta {

// One request line of the automation socket: {"id": text, "method": text, "params": {...}}.
struct SocketRequest {
    std::string id;
    std::string method;
    // An empty object when the line has none.
    Json params = Json::object();
};

// Nothing when the line is not a JSON object with a string "id" and a string "method", or when
// its "params" is present (and not null) but not an object.
std::optional<SocketRequest> parseSocketRequest(std::string_view line);

// The id answers carry when the request had none that could be read.
inline constexpr const char* kUnknownRequestId = "unknown";
inline constexpr const char* kInvalidRequestMessage = "Invalid JSON-RPC request";

// The response lines, each one compact JSON object ended by a line feed. Text that is not valid
// UTF-8 (a window title, say) is replaced rather than allowed to fail the answer.
std::string resultResponseLine(const std::string& id, const Json& result);
std::string errorResponseLine(const std::string& id, const std::string& message);
std::string outcomeResponseLine(const std::string& id, const MethodOutcome& outcome);
const std::string& invalidRequestResponseLine();

}  // namespace corvetta
