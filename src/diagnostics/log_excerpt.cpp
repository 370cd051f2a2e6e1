#include "diagnostics/log_excerpt.h"

namespace corvetta {

namespace {

bool isContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

void appendEscaped(std::string& out, char c) {
    static constexpr char kHex[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            break;
    }
    if (byte < 0x20 || byte == 0x7F) {
        out += "\\x";
        out += kHex[byte >> 4];
        out += kHex[byte & 0xF];
    } else {
        out += c;
    }
}

}  // namespace

std::string logExcerpt(std::string_view text, std::size_t maxBytes) {
    std::size_t keep = text.size();
    if (keep > maxBytes) {
        keep = maxBytes;
        while (keep > 0 && isContinuationByte(text[keep])) {
            --keep;
        }
    }
    std::string out;
    out.reserve(keep + 24);
    for (const char c : text.substr(0, keep)) {
        appendEscaped(out, c);
    }
    if (keep < text.size()) {
        out += "\xE2\x80\xA6 (" + std::to_string(text.size()) + " bytes)";
    }
    return out;
}

}  // namespace corvetta
