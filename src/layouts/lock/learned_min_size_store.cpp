#include "layouts/lock/learned_min_size_store.h"

#include <algorithm>

namespace corvetta {

LearnedMinSizeStore::LearnedMinSizeStore(Preferences& defaults, LoggingService& logging)
    : defaults_(defaults), logger_(logging, "LearnedMinSizeStore") {}

std::optional<Size> LearnedMinSizeStore::minSize(const std::string& bundleID) const {
    const auto all = defaults_.dictionary(kKey);
    if (!all) {
        return std::nullopt;
    }
    const auto found = all->find(bundleID);
    const auto* pair = found == all->end() ? nullptr : found->second.ifArray();
    if (pair == nullptr || pair->size() != 2) {
        return std::nullopt;
    }
    const auto width = (*pair)[0].toDouble();
    const auto height = (*pair)[1].toDouble();
    if (!width || !height || *width < 0 || *height < 0 || (*width == 0 && *height == 0)) {
        return std::nullopt;
    }
    return Size{*width, *height};
}

void LearnedMinSizeStore::record(const std::string& bundleID, double width, double height) {
    if (width <= 0 && height <= 0) {
        return;
    }
    const Size old = minSize(bundleID).value_or(Size{});
    const Size learned{std::max(old.width, width), std::max(old.height, height)};
    if (learned != old) {
        store(bundleID, learned);
    }
}

void LearnedMinSizeStore::lower(const std::string& bundleID, double width, double height) {
    const auto old = minSize(bundleID);
    if (!old) {
        return;
    }
    const auto lowered = [](double stored, double seen) {
        return stored > 0 && seen > 0 && seen < stored ? seen : stored;
    };
    const Size learned{lowered(old->width, width), lowered(old->height, height)};
    if (learned != *old) {
        store(bundleID, learned);
        logger_.info("Lowered learned minimum size for " + bundleID);
    }
}

void LearnedMinSizeStore::resetAll() {
    defaults_.remove(kKey);
}

void LearnedMinSizeStore::store(const std::string& bundleID, Size size) {
    auto all = defaults_.dictionary(kKey).value_or(PropertyValue::Dictionary{});
    all[bundleID] = PropertyValue::Array{size.width, size.height};
    defaults_.set(kKey, std::move(all));
}

}  // namespace corvetta
