#include "automation/line_reader.h"

namespace corvetta {

void LineReader::append(std::string_view bytes) {
    if (tooLong_) {
        return;
    }
    // Drop what was handed out once it is the larger part, so the buffer stays near one line.
    if (consumed_ > 0 && consumed_ >= buffer_.size() / 2) {
        buffer_.erase(0, consumed_);
        scanned_ -= consumed_;
        consumed_ = 0;
    }
    buffer_.append(bytes);
}

LineReader::Next LineReader::refuseLine() {
    tooLong_ = true;
    std::string().swap(buffer_);
    consumed_ = scanned_ = 0;
    return {Next::Kind::lineTooLong, {}};
}

LineReader::Next LineReader::next() {
    using enum Next::Kind;
    if (tooLong_) {
        return {lineTooLong, {}};
    }
    const auto end = buffer_.find('\n', scanned_);
    if (end == std::string::npos) {
        scanned_ = buffer_.size();
        if (scanned_ - consumed_ > maxLineBytes_) {
            return refuseLine();
        }
        return {needMoreBytes, {}};
    }
    if (end - consumed_ > maxLineBytes_) {
        return refuseLine();
    }
    Next complete{line, buffer_.substr(consumed_, end - consumed_)};
    consumed_ = scanned_ = end + 1;
    return complete;
}

}  // namespace corvetta
