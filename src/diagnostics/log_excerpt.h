// log_excerpt.h: Bounded, escaped excerpts of text that comes from outside, for log lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvetta {

// Enough to recognise a request id or a method name in a log line.
inline constexpr std::size_t kLogExcerptBytes = 80;

// At most `maxBytes` bytes of `text` (never cutting a UTF-8 sequence), with control characters
// escaped ("\n", "\t", "\x1b") so a client cannot forge or break log lines, and, when cut, the
// whole length: "abc… (1048576 bytes)". A client may send a megabyte where a name belongs; the
// log book keeps hundreds of entries and answers "get_logs" with them.
std::string logExcerpt(std::string_view text, std::size_t maxBytes = kLogExcerptBytes);

}  // namespace corvetta
