#include "automation/socket_request.h"

#include "automation/mcp_error.h"

namespace corvetta {

namespace {
std::string responseLine(const Json& response) {
    auto line = response.dump(-1, ' ', false, Json::error_handler_t::replace);
    line += '\n';
    return line;
}
}  // namespace

Expected<SocketRequest, SocketRequestRefusal> parseSocketRequest(std::string_view line) {
    auto parsed = parseJson(line);
    if (!parsed || !parsed->is_object()) {
        return unexpected(SocketRequestRefusal{});
    }
    Json& object = *parsed;
    const auto id = object.find("id");
    const auto method = object.find("method");
    if (id == object.end() || !id->is_string() || method == object.end() || !method->is_string()) {
        return unexpected(SocketRequestRefusal{});
    }
    SocketRequest request{id->get<std::string>(), method->get<std::string>()};
    if (const auto params = object.find("params"); params != object.end() && !params->is_null()) {
        if (!params->is_object()) {
            return unexpected(SocketRequestRefusal{
                std::move(request.id),
                MCPError::invalidParam("Invalid param params: expected an object").description()});
        }
        request.params = std::move(*params);
    }
    return request;
}

std::string resultResponseLine(const std::string& id, const Json& result) {
    Json response = Json::object();
    response["id"] = id;
    response["result"] = result;
    return responseLine(response);
}

std::string errorResponseLine(const std::string& id, const std::string& message) {
    Json response = Json::object();
    response["id"] = id;
    response["error"] = Json{{"message", message}};
    return responseLine(response);
}

std::string outcomeResponseLine(const std::string& id, const MethodOutcome& outcome) {
    return outcome ? resultResponseLine(id, *outcome) : errorResponseLine(id, outcome.error());
}

std::string refusalResponseLine(const SocketRequestRefusal& refusal) {
    return errorResponseLine(refusal.id, refusal.message);
}

}  // namespace corvetta
