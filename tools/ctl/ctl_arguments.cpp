#include "ctl/ctl_arguments.h"

#include <cmath>

#include "foundation/json.h"

namespace corvetta {

namespace {
// "5", "true", "[1, 2]" and "\"text\"" mean what JSON says; anything else is plain text, so
// `bundle_id=com.example.editor` needs no quoting.
Json parameterValue(const std::string& text) {
    auto parsed = parseJson(text);
    return parsed ? std::move(*parsed) : Json(text);
}

Expected<std::string, std::string> methodRequest(const std::string& method,
                                                 const std::vector<std::string>& pairs) {
    Json params = Json::object();
    for (const auto& pair : pairs) {
        const auto equals = pair.find('=');
        if (equals == std::string::npos || equals == 0) {
            return unexpected("expected key=value, got '" + pair + "'");
        }
        const auto key = pair.substr(0, equals);
        if (params.contains(key)) {
            return unexpected("parameter '" + key + "' is given twice");
        }
        params[key] = parameterValue(pair.substr(equals + 1));
    }
    Json request = Json::object();
    request["id"] = kCtlRequestId;
    request["method"] = method;
    request["params"] = std::move(params);
    return writeJson(request, JsonStyle::compact);
}

// A request written over several lines still goes out as one; text that is not JSON goes out as
// it is, for trying how the server answers it.
Expected<std::string, std::string> rawRequest(const std::string& text) {
    if (const auto parsed = parseJson(text)) {
        return writeJson(*parsed, JsonStyle::compact);
    }
    if (text.find('\n') != std::string::npos) {
        return unexpected(std::string("a --raw request that is not JSON must be one line"));
    }
    return text;
}

Expected<std::chrono::milliseconds, std::string> timeoutFrom(const std::string& text) {
    std::size_t used = 0;
    double seconds = 0;
    try {
        seconds = std::stod(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used != text.size() || !std::isfinite(seconds) || seconds <= 0 || seconds > 86'400) {
        return unexpected("--timeout takes a number of seconds, got '" + text + "'");
    }
    return std::chrono::milliseconds(static_cast<long long>(std::ceil(seconds * 1000)));
}
}  // namespace

Expected<CtlInvocation, std::string> parseCtlArguments(const std::vector<std::string>& arguments) {
    CtlInvocation invocation;
    std::optional<std::string> raw;
    std::size_t at = 0;
    for (; at < arguments.size() && arguments[at].starts_with("-"); ++at) {
        const auto& argument = arguments[at];
        if (argument == "--help" || argument == "-h") {
            invocation.showHelp = true;
            return invocation;
        }
        const auto equals = argument.find('=');
        const auto name = argument.substr(0, equals);
        if (name != "--socket" && name != "--timeout" && name != "--raw") {
            return unexpected("unknown option '" + argument + "'");
        }
        std::string value;
        if (equals != std::string::npos) {
            value = argument.substr(equals + 1);
        } else if (at + 1 < arguments.size()) {
            value = arguments[++at];
        } else {
            return unexpected(name + " needs a value");
        }
        if (name == "--socket") {
            invocation.socketPath = value;
        } else if (name == "--raw") {
            raw = value;
        } else {
            auto timeout = timeoutFrom(value);
            if (!timeout) {
                return unexpected(timeout.error());
            }
            invocation.timeout = *timeout;
        }
    }

    const std::vector<std::string> rest(arguments.begin() + static_cast<std::ptrdiff_t>(at),
                                        arguments.end());
    Expected<std::string, std::string> request = std::string();
    if (raw) {
        if (!rest.empty()) {
            return unexpected("--raw takes no method or parameters besides the request");
        }
        request = rawRequest(*raw);
        invocation.raw = true;
    } else if (rest.empty()) {
        return unexpected(std::string("no method given"));
    } else {
        request = methodRequest(rest[0], std::vector<std::string>(rest.begin() + 1, rest.end()));
    }
    if (!request) {
        return unexpected(request.error());
    }
    invocation.requestLine = std::move(*request);
    return invocation;
}

}  // namespace corvetta
