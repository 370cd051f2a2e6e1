#include "automation/mcp_error.h"

namespace corvetta {

std::string MCPError::description() const {
    struct Describe {
        std::string operator()(const UnknownMethod& e) const {
            return "Unknown method: " + e.method;
        }
        std::string operator()(const MissingParam& e) const {
            return "Missing required param: " + e.name;
        }
        std::string operator()(const InvalidParam& e) const { return e.message; }
        std::string operator()(const NotFound& e) const { return "Not found: " + e.what; }
        std::string operator()(const NoFrontmostWindow&) const { return "No frontmost window"; }
    };
    return std::visit(Describe{}, value);
}

}  // namespace corvetta
