// log_messages.h: Lists the messages the log book kept, for tests that assert on logging.
#pragma once

#include <string>
#include <vector>

#include "diagnostics/logbook.h"

namespace corvetta::testing {

// The messages the log book kept, oldest first: what most logging assertions compare against.
inline std::vector<std::string> loggedMessages(const Logbook& book, const LogFilter& filter = {}) {
    std::vector<std::string> messages;
    for (const auto& entry : book.recentEntries(filter)) {
        messages.push_back(entry.message);
    }
    return messages;
}

}  // namespace corvetta::testing
