// fuzzy_match.h: Scores how well a typed query matches a row's text, and where it matched.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvetta {

// Text as code points, so matched positions count characters, not UTF-8 bytes. Bytes that are not
// valid UTF-8 come through one by one, unchanged.
std::u32string codePoints(std::string_view utf8);
std::string utf8(std::u32string_view text);

struct FuzzyMatch {
    int score = 0;
    // Code-point indices into the matched text, ascending, without repeats.
    std::vector<int> positions;
};

// A query split into its space-separated terms. Every term must match the text as a subsequence;
// the best alignment of each is scored (consecutive characters and word starts score higher, gaps
// cost) and the scores add up. Smart case: a query with an upper-case letter matches case
// exactly, any other ignores case. docs/command-palette.md has the rule with worked examples.
class FuzzyQuery {
public:
    static constexpr int kMatch = 16;
    static constexpr int kWordStart = 12;
    static constexpr int kConsecutive = 10;
    static constexpr int kGapStart = 4;
    static constexpr int kGapExtension = 1;

    explicit FuzzyQuery(std::string_view query);

    // A query of only spaces has no terms and matches everything with score 0.
    bool isEmpty() const { return terms_.empty(); }
    bool isCaseSensitive() const { return caseSensitive_; }
    // None when some term does not match.
    std::optional<FuzzyMatch> match(std::u32string_view text) const;

private:
    std::optional<int> matchTerm(std::u32string_view term, std::u32string_view text,
                                 std::vector<int>& positions) const;

    std::vector<std::u32string> terms_;
    bool caseSensitive_ = false;
    // Scratch of the alignment, reused from row to row.
    mutable std::vector<int> best_;
    mutable std::vector<int> gapBest_;
    mutable std::vector<int> from_;
};

}  // namespace corvetta
