#include "layouts/custom_layout_store.h"

#include <algorithm>
#include <map>
#include <utility>

#include "foundation/files.h"
#include "foundation/names.h"
#include "foundation/property_value_json.h"
#include "layouts/custom_layout_template_json.h"

namespace corvetta {

namespace {

// The stored value as document text. The user defaults hold it as data; a hand-edited
// preferences file may hold the text, or the list itself.
std::string documentText(const PropertyValue& stored) {
    if (const auto* bytes = stored.ifData()) {
        return std::string(bytes->begin(), bytes->end());
    }
    if (const auto* text = stored.ifString()) {
        return *text;
    }
    return writeJson(propertyValueToJson(stored), JsonStyle::compact);
}

}  // namespace

CustomLayoutStore::CustomLayoutStore(Preferences& defaults, KeyboardShortcutsBridge& shortcuts,
                                     NotificationCenter& notifications, const Clock& clock,
                                     std::filesystem::path quarantineFolder,
                                     LoggingService& logging)
    : defaults_(defaults),
      shortcuts_(shortcuts),
      notifications_(notifications),
      clock_(clock),
      quarantineFolder_(std::move(quarantineFolder)),
      logger_(logging, "CustomLayoutStore") {
    load();
}

const CustomLayoutTemplate* CustomLayoutStore::find(const Uuid& id) const {
    const auto found = std::find_if(layouts_.begin(), layouts_.end(),
                                    [&](const auto& layout) { return layout.id == id; });
    return found == layouts_.end() ? nullptr : &*found;
}

void CustomLayoutStore::load() {
    layouts_.clear();
    const auto stored = defaults_.object(kKey);
    if (!stored) {
        return;
    }
    std::string document = documentText(*stored);
    auto decoded = decodeLayoutTemplates(document);
    if (!decoded) {
        logger_.warning("Stored layout templates could not be read (" + decoded.error() +
                        "); starting without them");
        damagedDocument_ = std::move(document);
        return;
    }
    layouts_ = std::move(*decoded);
}

bool CustomLayoutStore::save() {
    std::string document;
    try {
        document = encodeLayoutTemplates(layouts_);
    } catch (const std::exception& error) {
        logger_.error(std::string("Could not encode layout templates: ") + error.what());
        return false;
    }
    if (!keepDamagedDocumentAside()) {
        logger_.error(
            "Layout templates not saved: the damaged stored templates are not yet kept "
            "aside");
        return false;
    }
    defaults_.set(kKey, Bytes(document.begin(), document.end()));
    return true;
}

bool CustomLayoutStore::keepDamagedDocumentAside() {
    if (!damagedDocument_) {
        return true;
    }
    if (quarantineFolder_.empty()) {
        logger_.error("No folder to keep the damaged layout templates in");
        return false;
    }
    const auto kept =
        quarantineData(quarantineFolder_, kQuarantineStem, *damagedDocument_, clock_.now());
    if (!kept) {
        logger_.error("Could not keep the damaged layout templates aside: " +
                      kept.error().description());
        return false;
    }
    logger_.warning("Damaged layout templates kept aside in " + kept->string());
    damagedDocument_.reset();
    return true;
}

void CustomLayoutStore::changed() {
    save();
    notifications_.post(kDidChangeNotification);
}

void CustomLayoutStore::seedDefaultsIfNeeded() {
    // At start-up, so damaged data is safe even if nothing is saved during this run.
    keepDamagedDocumentAside();
    if (defaults_.boolValue(kSeededKey).value_or(false)) {
        return;
    }
    std::vector<CustomLayoutTemplate> seeded;
    for (const auto value : missingDefaultTemplates()) {
        auto layout = CustomLayoutTemplate::builtIn(value);
        const std::string legacyName(layoutTemplateRow(value).legacyShortcutName);
        const auto legacy = shortcuts_.shortcut(legacyName);
        if (legacy && legacy->keyCode >= 0 && legacy->keyCode <= kMaxVirtualKeyCode) {
            layout.shortcutKeyCode = static_cast<std::uint16_t>(legacy->keyCode);
            layout.shortcutModifiers = legacy->modifiers;
            shortcuts_.setShortcut(layout.shortcutName(), *legacy);
            shortcuts_.setShortcut(legacyName, std::nullopt);
            logger_.info("Moved shortcut '" + legacyName + "' to layout template '" + layout.name +
                         "'");
        }
        seeded.push_back(std::move(layout));
    }
    if (!seeded.empty()) {
        logger_.info("Seeded " + std::to_string(seeded.size()) + " built-in layout templates");
        layouts_.insert(layouts_.begin(), std::make_move_iterator(seeded.begin()),
                        std::make_move_iterator(seeded.end()));
        changed();
    }
    defaults_.set(kSeededKey, true);
}

std::vector<LayoutTemplate> CustomLayoutStore::missingDefaultTemplates() const {
    std::vector<LayoutTemplate> missing;
    for (const auto& row : layoutTemplateTable()) {
        const bool present = std::any_of(layouts_.begin(), layouts_.end(), [&](const auto& t) {
            return t.defaultTemplateKey == row.rawValue;
        });
        if (!present) {
            missing.push_back(row.value);
        }
    }
    return missing;
}

void CustomLayoutStore::restoreDefaults() {
    if (missingDefaultTemplates().empty()) {
        return;
    }
    // A later copy of one built-in replaces an earlier one. A key this version does not know
    // (written by a newer one) is kept with the user's own templates rather than dropped.
    std::map<std::string, CustomLayoutTemplate, std::less<>> builtIns;
    std::vector<CustomLayoutTemplate> own;
    for (auto& layout : layouts_) {
        if (layout.defaultTemplateKey && layoutTemplateFromRawValue(*layout.defaultTemplateKey)) {
            builtIns.insert_or_assign(*layout.defaultTemplateKey, std::move(layout));
        } else {
            own.push_back(std::move(layout));
        }
    }
    std::vector<CustomLayoutTemplate> restored;
    for (const auto& row : layoutTemplateTable()) {
        const auto found = builtIns.find(row.rawValue);
        restored.push_back(found != builtIns.end() ? std::move(found->second)
                                                   : CustomLayoutTemplate::builtIn(row.value));
    }
    restored.insert(restored.end(), std::make_move_iterator(own.begin()),
                    std::make_move_iterator(own.end()));
    layouts_ = std::move(restored);
    logger_.info("Restored the built-in layout templates");
    changed();
}

void CustomLayoutStore::add(CustomLayoutTemplate layout) {
    layouts_.push_back(std::move(layout));
    changed();
}

void CustomLayoutStore::add(std::vector<CustomLayoutTemplate> layouts) {
    if (layouts.empty()) {
        return;
    }
    for (auto& layout : layouts) {
        layouts_.push_back(std::move(layout));
    }
    changed();
}

bool CustomLayoutStore::update(const CustomLayoutTemplate& layout) {
    const auto found = std::find_if(layouts_.begin(), layouts_.end(),
                                    [&](const auto& t) { return t.id == layout.id; });
    if (found == layouts_.end()) {
        return false;
    }
    *found = layout;
    changed();
    return true;
}

bool CustomLayoutStore::remove(const Uuid& id) {
    const auto found =
        std::find_if(layouts_.begin(), layouts_.end(), [&](const auto& t) { return t.id == id; });
    if (found == layouts_.end()) {
        return false;
    }
    const auto shortcutName = found->shortcutName();
    layouts_.erase(found);
    shortcuts_.unregisterShortcut(shortcutName);
    shortcuts_.setShortcut(shortcutName, std::nullopt);
    changed();
    return true;
}

bool CustomLayoutStore::setSpace(const Uuid& templateId, std::optional<Uuid> spaceId) {
    const auto* layout = find(templateId);
    if (layout == nullptr) {
        return false;
    }
    auto moved = *layout;
    moved.spaceId = spaceId;
    return update(moved);
}

void CustomLayoutStore::renameFolder(const std::string& from, std::optional<std::string> to) {
    for (auto& layout : layouts_) {
        if (layout.folder == from) {
            layout.folder = to;
        }
    }
    changed();
}

void CustomLayoutStore::moveLayoutsToGlobal(const Uuid& spaceId) {
    for (auto& layout : layouts_) {
        if (layout.spaceId == spaceId) {
            layout.spaceId.reset();
        }
    }
    changed();
}

bool CustomLayoutStore::isNameTaken(std::string_view name, const std::optional<Uuid>& spaceId,
                                    const std::optional<Uuid>& excluding) const {
    const auto candidate = comparableName(name);
    return std::any_of(layouts_.begin(), layouts_.end(), [&](const auto& layout) {
        const bool inScope = !layout.spaceId || layout.spaceId == spaceId;
        return layout.id != excluding && inScope && comparableName(layout.name) == candidate;
    });
}

}  // namespace corvetta
