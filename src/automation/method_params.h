// method_params.h: Reads request parameters, turning bad ones into the errors clients see.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/geometry.h"
#include "foundation/json.h"

namespace corvetta {

// Reads a request's "params". Every read throws the MCPError a client should see: missingParam
// for a required parameter that is absent or null, invalidParam for one of the wrong kind.
// Params that are not an object count as empty.
class MethodParams {
public:
    explicit MethodParams(const Json& params);

    const Json* find(std::string_view name) const;
    // The params as sent, for methods that refuse names they do not know.
    const Json& raw() const { return params_; }
    std::string requiredText(std::string_view name) const;
    std::optional<std::string> optionalText(std::string_view name) const;
    // A whole number from 0.
    std::optional<std::size_t> optionalCount(std::string_view name) const;
    // [x, y, width, height] with a positive width and height.
    Rect requiredRect(std::string_view name) const;

private:
    const Json& params_;
};

}  // namespace corvetta
