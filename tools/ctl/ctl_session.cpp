#include "ctl/ctl_session.h"

#include "automation/socket_client.h"
#include "foundation/json.h"

namespace corvetta {

int runCtlRequest(const CtlInvocation& invocation, const std::filesystem::path& socketPath,
                  bool prettyOutput, std::ostream& out, std::ostream& err) {
    const auto noServer = [&](const std::string& why) {
        err << "corvetta-ctl: no answer from " << socketPath.string() << ": " << why << "\n";
        return kCtlNoServer;
    };
    auto client = SocketClient::connect(socketPath);
    if (!client) {
        return noServer(client.error().description());
    }
    if (!client->send(invocation.requestLine + "\n")) {
        return noServer("the server closed the connection");
    }
    const auto line = client->readLine(invocation.timeout);
    if (!line) {
        switch (line.error()) {
            case SocketClient::ReadFailure::closed:
                return noServer("the server closed the connection");
            case SocketClient::ReadFailure::timedOut:
                return noServer("timed out");
            case SocketClient::ReadFailure::tooLong:
                return noServer("the answer is too long");
        }
    }
    const auto answer = parseJson(*line);
    if (!answer || !answer->is_object() ||
        (!answer->contains("result") && !answer->contains("error"))) {
        return noServer("the answer is not a JSON-RPC response: " + *line);
    }
    const auto style = prettyOutput ? JsonStyle::pretty : JsonStyle::compact;
    const bool failed = answer->contains("error");
    if (invocation.raw) {
        out << writeJson(*answer, style) << "\n";
    } else if (failed) {
        const auto& error = (*answer)["error"];
        const auto message =
            error.is_object() && error.contains("message") && error["message"].is_string()
                ? error["message"].get<std::string>()
                : writeJson(error, JsonStyle::compact);
        err << "corvetta-ctl: " << message << "\n";
    } else {
        out << writeJson((*answer)["result"], style) << "\n";
    }
    return failed ? kCtlErrorAnswer : kCtlResult;
}

}  // namespace corvetta
