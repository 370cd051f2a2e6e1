#include "automation/method_params.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "automation/mcp_error.h"

namespace corvetta {

namespace {

[[noreturn]] void refuse(std::string_view name, std::string_view expected) {
    throw MCPError::invalidParam("Invalid param " + std::string(name) + ": expected " +
                                 std::string(expected));
}

}  // namespace

MethodParams::MethodParams(const Json& params) : params_(params) {}

const Json* MethodParams::find(std::string_view name) const {
    if (!params_.is_object()) {
        return nullptr;
    }
    const auto found = params_.find(name);
    return found == params_.end() || found->is_null() ? nullptr : &*found;
}

std::string MethodParams::requiredText(std::string_view name) const {
    auto text = optionalText(name);
    if (!text) {
        throw MCPError::missingParam(std::string(name));
    }
    return std::move(*text);
}

std::optional<std::string> MethodParams::optionalText(std::string_view name) const {
    const auto* value = find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_string()) {
        refuse(name, "a string");
    }
    return value->get<std::string>();
}

std::optional<std::size_t> MethodParams::optionalCount(std::string_view name) const {
    const auto* value = find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (value->is_number_unsigned() ||
        (value->is_number_integer() && value->get<std::int64_t>() >= 0)) {
        return static_cast<std::size_t>(std::min<std::uint64_t>(
            value->get<std::uint64_t>(), std::numeric_limits<std::size_t>::max()));
    }
    // Clients written in languages with one number type send 10.0 for 10.
    if (value->is_number_float()) {
        const double number = value->get<double>();
        if (number >= 0 && number < 1e15 && std::floor(number) == number) {
            return static_cast<std::size_t>(number);
        }
    }
    refuse(name, "a whole number from 0");
}

Rect MethodParams::requiredRect(std::string_view name) const {
    const auto* value = find(name);
    if (value == nullptr) {
        throw MCPError::missingParam(std::string(name));
    }
    const bool fourNumbers = value->is_array() && value->size() == 4 &&
                             std::all_of(value->begin(), value->end(), [](const Json& v) {
                                 return v.is_number() && std::isfinite(v.get<double>());
                             });
    if (!fourNumbers || (*value)[2].get<double>() <= 0 || (*value)[3].get<double>() <= 0) {
        refuse(name, "[x, y, width, height] with a positive width and height");
    }
    return Rect((*value)[0].get<double>(), (*value)[1].get<double>(), (*value)[2].get<double>(),
                (*value)[3].get<double>());
}

}  // namespace corvetta
