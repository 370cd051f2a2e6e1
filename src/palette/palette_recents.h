// palette_recents.h: The rows the user picked last, kept in the preferences across runs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/preferences.h"

namespace corvetta {

// A short list of row identities, most recent first, stored as a list of strings under kKey. A
// stored value of another type reads as empty and is replaced at the next pick.
class PaletteRecents {
public:
    static constexpr const char* kKey = "commandPaletteRecentItems";
    static constexpr std::size_t kLimit = 8;

    explicit PaletteRecents(Preferences& defaults) : defaults_(defaults) {}

    std::vector<std::string> identities() const;
    // Moves the identity to the front, dropping the oldest beyond kLimit.
    void record(const std::string& identity);

private:
    Preferences& defaults_;
};

}  // namespace corvetta
