// names.h: How the names people give records are cleaned and compared.
#pragma once

#include <string>
#include <string_view>

namespace corvetta {

// Without the white space and new lines around it.
std::string trimmedName(std::string_view name);

// Trimmed and lower-cased (ASCII letters only, so "É" and "é" stay apart): two names that
// compare equal this way clash, whatever case and spacing the user typed.
std::string comparableName(std::string_view name);

}  // namespace corvetta
