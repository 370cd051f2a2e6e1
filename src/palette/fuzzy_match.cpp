#include "palette/fuzzy_match.h"

#include <algorithm>
#include <limits>

namespace corvetta {

namespace {

constexpr int kNone = std::numeric_limits<int>::min() / 2;

bool isAsciiUpper(char32_t c) {
    return c >= U'A' && c <= U'Z';
}
bool isAsciiLower(char32_t c) {
    return c >= U'a' && c <= U'z';
}
bool isDigit(char32_t c) {
    return c >= U'0' && c <= U'9';
}
// Letters beyond ASCII count as word characters, so "Café Bar" has two words, not three.
bool isWordCharacter(char32_t c) {
    return isAsciiUpper(c) || isAsciiLower(c) || isDigit(c) || c >= 0x80;
}
char32_t folded(char32_t c) {
    return isAsciiUpper(c) ? c + (U'a' - U'A') : c;
}

// The first character, one after a separator, the upper-case letter of "camelCase", the first
// digit after letters.
bool isWordStart(std::u32string_view text, std::size_t j) {
    if (j == 0) {
        return true;
    }
    const char32_t previous = text[j - 1];
    const char32_t current = text[j];
    if (!isWordCharacter(previous)) {
        return isWordCharacter(current);
    }
    return (isAsciiLower(previous) && isAsciiUpper(current)) ||
           (!isDigit(previous) && isDigit(current));
}

}  // namespace

std::u32string codePoints(std::string_view text) {
    std::u32string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const int length = lead < 0x80           ? 1
                           : (lead >> 5) == 0x6  ? 2
                           : (lead >> 4) == 0xE  ? 3
                           : (lead >> 3) == 0x1E ? 4
                                                 : 0;
        bool valid = length > 0 && i + static_cast<std::size_t>(length) <= text.size();
        char32_t c = length == 1   ? lead
                     : length == 2 ? (lead & 0x1F)
                     : length == 3 ? (lead & 0x0F)
                                   : (lead & 0x07);
        for (int k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
            valid = (next & 0xC0) == 0x80;
            c = (c << 6) | (next & 0x3F);
        }
        if (!valid) {
            result.push_back(lead);
            ++i;
            continue;
        }
        result.push_back(c);
        i += static_cast<std::size_t>(length);
    }
    return result;
}

std::string utf8(std::u32string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char32_t c : text) {
        if (c < 0x80) {
            result.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            result.push_back(static_cast<char>(0xC0 | (c >> 6)));
            result.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            result.push_back(static_cast<char>(0xE0 | (c >> 12)));
            result.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            result.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
            result.push_back(static_cast<char>(0xF0 | (c >> 18)));
            result.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            result.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            result.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return result;
}

FuzzyQuery::FuzzyQuery(std::string_view query) {
    const auto text = codePoints(query);
    std::u32string term;
    for (const char32_t c : text) {
        caseSensitive_ = caseSensitive_ || isAsciiUpper(c);
        if (c == U' ' || c == U'\t') {
            if (!term.empty()) {
                terms_.push_back(std::move(term));
                term.clear();
            }
        } else {
            term.push_back(c);
        }
    }
    if (!term.empty()) {
        terms_.push_back(std::move(term));
    }
    if (!caseSensitive_) {
        for (auto& t : terms_) {
            std::transform(t.begin(), t.end(), t.begin(), folded);
        }
    }
}

std::optional<FuzzyMatch> FuzzyQuery::match(std::u32string_view text) const {
    FuzzyMatch result;
    for (const auto& term : terms_) {
        // Terms may match overlapping characters: each is looked for in the whole text.
        const auto score = matchTerm(term, text, result.positions);
        if (!score) {
            return std::nullopt;
        }
        result.score += *score;
    }
    std::sort(result.positions.begin(), result.positions.end());
    result.positions.erase(std::unique(result.positions.begin(), result.positions.end()),
                           result.positions.end());
    return result;
}

std::optional<int> FuzzyQuery::matchTerm(std::u32string_view term, std::u32string_view text,
                                         std::vector<int>& positions) const {
    const std::size_t m = term.size();
    const std::size_t n = text.size();
    // Word starts are judged on the text as written (folding would hide "camelCase"), so the
    // text is folded character by character as it is compared.
    const auto same = [this](char32_t a, char32_t fromTerm) {
        return (caseSensitive_ ? a : folded(a)) == fromTerm;
    };
    // Cheap refusal first: most rows do not hold the term as a subsequence at all.
    std::size_t k = 0;
    for (std::size_t j = 0; j < n && k < m; ++j) {
        if (same(text[j], term[k])) {
            ++k;
        }
    }
    if (k < m) {
        return std::nullopt;
    }

    // best_[i*n+j]: the best score of the term's first i+1 characters with the last at j;
    // from_ holds where the one before it matched, to walk the alignment back.
    best_.assign(m * n, kNone);
    from_.assign(m * n, -1);
    for (std::size_t i = 0; i < m; ++i) {
        int gap = kNone;
        int gapFrom = -1;
        for (std::size_t j = 0; j < n; ++j) {
            if (i > 0 && j >= 2) {
                // A gap of one more character costs the extension; a fresh gap starts after the
                // previous term character's match at j-2.
                const int extended = gap == kNone ? kNone : gap - kGapExtension;
                const int opened = best_[(i - 1) * n + j - 2];
                const int fresh = opened == kNone ? kNone : opened - kGapStart;
                if (fresh >= extended) {
                    gap = fresh;
                    gapFrom = static_cast<int>(j - 2);
                } else {
                    gap = extended;
                }
            }
            if (!same(text[j], term[i])) {
                continue;
            }
            const int own = kMatch + (isWordStart(text, j) ? kWordStart : 0);
            if (i == 0) {
                best_[j] = own;
                continue;
            }
            int previous = gap;
            int previousAt = gapFrom;
            if (j >= 1 && best_[(i - 1) * n + j - 1] != kNone) {
                const int consecutive = best_[(i - 1) * n + j - 1] + kConsecutive;
                if (consecutive >= previous) {
                    previous = consecutive;
                    previousAt = static_cast<int>(j - 1);
                }
            }
            if (previous != kNone) {
                best_[i * n + j] = own + previous;
                from_[i * n + j] = previousAt;
            }
        }
    }
    int bestScore = kNone;
    int bestEnd = -1;
    for (std::size_t j = 0; j < n; ++j) {
        if (best_[(m - 1) * n + j] > bestScore) {
            bestScore = best_[(m - 1) * n + j];
            bestEnd = static_cast<int>(j);
        }
    }
    if (bestEnd < 0) {
        return std::nullopt;
    }
    for (std::size_t i = m; i-- > 0;) {
        positions.push_back(bestEnd);
        bestEnd = from_[i * n + static_cast<std::size_t>(bestEnd)];
    }
    return bestScore;
}

}  // namespace corvetta
