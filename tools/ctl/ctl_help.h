// ctl_help.h: The usage text corvetta-ctl prints, listing the methods it can call.
#pragma once

#include <filesystem>
#include <string>

namespace corvetta {

// The usage text of corvetta-ctl, with the methods it can call and their parameters.
std::string ctlHelpText(const std::filesystem::path& defaultSocketPath);

// The one-line reminder printed after a usage error.
std::string ctlUsageLine();

}  // namespace corvetta
