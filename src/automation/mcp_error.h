// mcp_error.h: The errors a socket method answers with, and the texts clients see for them.
#pragma once

#include <string>
#include <variant>

namespace corvetta {

// The errors a socket method answers with; `description()` is the text sent to the client.
struct MCPError {
    struct UnknownMethod {
        std::string method;
    };
    struct MissingParam {
        std::string name;
    };
    struct InvalidParam {
        std::string message;
    };
    struct NotFound {
        std::string what;
    };
    struct NoFrontmostWindow {};

    std::variant<UnknownMethod, MissingParam, InvalidParam, NotFound, NoFrontmostWindow> value;

    static MCPError unknownMethod(std::string method) { return {UnknownMethod{std::move(method)}}; }
    static MCPError missingParam(std::string name) { return {MissingParam{std::move(name)}}; }
    static MCPError invalidParam(std::string message) { return {InvalidParam{std::move(message)}}; }
    static MCPError notFound(std::string what) { return {NotFound{std::move(what)}}; }
    static MCPError noFrontmostWindow() { return {NoFrontmostWindow{}}; }

    std::string description() const;
};

}  // namespace corvetta
