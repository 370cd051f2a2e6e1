// line_reader.h: Splits a socket's byte stream into lines, bounded so no client can exhaust memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvetta {

// Cuts a byte stream into lines ended by a line feed. Bytes arrive in chunks of any size; a line
// split across chunks comes out once its line feed arrives. A line may not grow past the limit:
// the reader then reports it, and since it never holds more than about twice the limit, a client
// that never sends a line feed cannot make it grow without bound.
class LineReader {
public:
    explicit LineReader(std::size_t maxLineBytes) : maxLineBytes_(maxLineBytes) {}

    struct Next {
        enum class Kind { line, needMoreBytes, lineTooLong };
        Kind kind;
        // The line without its line feed, for Kind::line.
        std::string text;
    };

    void append(std::string_view bytes);
    // The next complete line, in order. Once a line is too long the reader stays that way: the
    // stream cannot be re-synchronised reliably, so the connection should end.
    Next next();

    std::size_t bufferedBytes() const { return buffer_.size() - consumed_; }
    std::size_t maxLineBytes() const { return maxLineBytes_; }

private:
    Next refuseLine();

    std::size_t maxLineBytes_;
    std::string buffer_;
    // Bytes before this offset were handed out already.
    std::size_t consumed_ = 0;
    // Bytes between consumed_ and this offset hold no line feed.
    std::size_t scanned_ = 0;
    bool tooLong_ = false;
};

}  // namespace corvetta
