// socket_request.h: Reads one request line of the automation socket and writes the answer lines.
#pragma once

// Included only by the automation sources: it brings in the JSON library.

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

// The id answers carry when the request had none that could be read.
inline constexpr const char* kUnknownRequestId = "unknown";
inline constexpr const char* kInvalidRequestMessage = "Invalid JSON-RPC request";

// Why a line is not a request, and the id to answer under.
struct SocketRequestRefusal {
    std::string id = kUnknownRequestId;
    std::string message = kInvalidRequestMessage;
};

// A line that is not a JSON object with a string "id" and a string "method" (a raw NUL byte makes
// it no JSON at all) is refused under "unknown"; one whose "params" is present (and not null) but
// not an object, under its own id with the invalid-param text naming "params".
Expected<SocketRequest, SocketRequestRefusal> parseSocketRequest(std::string_view line);

// The response lines, each one compact JSON object ended by a line feed. Text that is not valid
// UTF-8 (a window title, say) is replaced rather than allowed to fail the answer.
std::string resultResponseLine(const std::string& id, const Json& result);
std::string errorResponseLine(const std::string& id, const std::string& message);
std::string outcomeResponseLine(const std::string& id, const MethodOutcome& outcome);
std::string refusalResponseLine(const SocketRequestRefusal& refusal);

}  // namespace corvetta
