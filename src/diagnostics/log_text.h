// log_text.h: Renders log entries as text to copy, stamped for machines and for people.
#pragma once

#include <string>
#include <vector>

#include "diagnostics/log_entry.h"

namespace corvetta {

// Entries as text for copying, one per line:
// "2026-11-21T10:15:30Z | Nov 21, 2026 at 10:15:30 AM | INFO | Service | category | message"
// The first timestamp is for machines, the second for people.
std::string renderLogText(const std::vector<LogEntry>& entries,
                          TimeZoneChoice zone = TimeZoneChoice::local);

}  // namespace corvetta
