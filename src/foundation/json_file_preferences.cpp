#include "foundation/json_file_preferences.h"

#include <cerrno>

#include <sys/stat.h>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/property_value_json.h"

namespace corvetta {

JsonFilePreferences::JsonFilePreferences(std::filesystem::path file, const Clock& clock)
    : file_(std::move(file)) {
    load(clock);
}

void JsonFilePreferences::load(const Clock& clock) {
    const auto leftovers = removeAbandonedTemporaryFiles(file_);
    if (!leftovers.empty()) {
        loadWarnings_.push_back("Removed " + std::to_string(leftovers.size()) +
                                " temporary file(s) an interrupted save left beside " +
                                file_.string());
    }
    auto contents = readFile(file_);
    if (!contents && contents.error().isMissing()) {
        return;
    }
    if (!contents) {
        // Unreadable is not damaged: the file stays where it is, and since the settings in it
        // are unknown, nothing may be written over it.
        unreadableFile_ = true;
        loadWarnings_.push_back(
            "Could not read preferences (" + contents.error().description() +
            "); starting on defaults, and changes stay in memory so the file is not overwritten");
        return;
    }
    auto parsed = parseJson(*contents);
    std::string problem;
    if (!parsed) {
        problem = parsed.error().message;
    } else if (!parsed->is_object()) {
        problem = "the document is not a JSON object";
    }
    if (!problem.empty()) {
        auto moved = quarantineFile(file_, "preferences", clock.now());
        if (moved) {
            loadWarnings_.push_back("Preferences file was damaged (" + problem + "); moved it to " +
                                    moved->string() + " and started on defaults");
        } else {
            loadWarnings_.push_back("Preferences file was damaged (" + problem +
                                    ") and could not be moved aside (" +
                                    moved.error().description() + "); started on defaults");
        }
        return;
    }
    std::lock_guard lock(mutex_);
    for (const auto& [key, member] : parsed->items()) {
        if (auto value = propertyValueFromJson(member)) {
            values_.emplace(key, std::move(*value));
        } else {
            unreadable_.emplace(key, member.dump());
            loadWarnings_.push_back("Preferences: kept the unreadable value of \"" + key +
                                    "\" as it was");
        }
    }
}

void JsonFilePreferences::changed(const PropertyValue::Dictionary&) {
    dirty_ = true;
    writeLocked();
}

bool JsonFilePreferences::writeLocked() {
    if (unreadableFile_) {
        // Once the unreadable file is gone, a new one loses nothing.
        struct stat info {};
        if (lstat(file_.c_str(), &info) == 0 || errno != ENOENT) {
            lastWriteError_ = "Not saved: " + file_.string() +
                              " could not be read at start, and saving would replace the "
                              "settings in it";
            return false;
        }
        unreadableFile_ = false;
    }
    Json document = Json::object();
    // Both maps are sorted; merge them so the file stays sorted by key.
    std::map<std::string, Json> members;
    for (const auto& [key, raw] : unreadable_) {
        if (!values_.count(key)) {
            members.emplace(key, Json::parse(raw));
        }
    }
    for (const auto& [key, value] : values_) {
        members.emplace(key, propertyValueToJson(value));
    }
    for (auto& [key, member] : members) {
        document[key] = std::move(member);
    }
    auto written = writeFileAtomically(file_, writeJson(document, JsonStyle::pretty) + "\n");
    if (!written) {
        lastWriteError_ = written.error().description();
        return false;
    }
    lastWriteError_.clear();
    dirty_ = false;
    return true;
}

bool JsonFilePreferences::synchronize() {
    std::lock_guard lock(mutex_);
    return !dirty_ || writeLocked();
}

std::string JsonFilePreferences::lastWriteError() const {
    std::lock_guard lock(mutex_);
    return lastWriteError_;
}

}  // namespace corvetta
