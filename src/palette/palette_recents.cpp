#include "palette/palette_recents.h"

#include <algorithm>

namespace corvetta {

std::vector<std::string> PaletteRecents::identities() const {
    auto stored = defaults_.stringList(kKey).value_or(std::vector<std::string>{});
    if (stored.size() > kLimit) {
        stored.resize(kLimit);
    }
    return stored;
}

void PaletteRecents::record(const std::string& identity) {
    auto list = identities();
    std::erase(list, identity);
    list.insert(list.begin(), identity);
    if (list.size() > kLimit) {
        list.resize(kLimit);
    }
    defaults_.set(kKey, PropertyValue(list));
}

}  // namespace corvetta
