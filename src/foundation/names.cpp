#include "foundation/names.h"

namespace corvetta {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\r\v\f";

}  // namespace

std::string trimmedName(std::string_view name) {
    const auto first = name.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(name.substr(first, name.find_last_not_of(kWhiteSpace) - first + 1));
}

std::string comparableName(std::string_view name) {
    std::string text = trimmedName(name);
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

}  // namespace corvetta
