// json_file_preferences.h: The user defaults kept in one JSON file, written atomically.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "foundation/clock.h"
#include "foundation/preferences.h"

namespace corvetta {

// The user defaults on Linux: one JSON object in a file (preferences.json), rewritten atomically
// after every change. Plain values are plain JSON; data values are {"$data": "<base64>"}.
class JsonFilePreferences final : public Preferences {
public:
    // Loads the file. A missing file is an empty store. A file that is not a JSON object is moved
    // aside to "preferences-quarantine-<timestamp>.json" and the store starts empty; entries that
    // cannot be held as a value (null) are carried through writes untouched. A file that exists
    // but cannot be read (no permission, too large, a folder in its place) is never written
    // over: changes stay in memory until it is gone. Temporary files an interrupted save left
    // are removed. Each case leaves a warning in loadWarnings(), to be logged once logging is up.
    JsonFilePreferences(std::filesystem::path file, const Clock& clock);

    const std::vector<std::string>& loadWarnings() const { return loadWarnings_; }
    const std::filesystem::path& file() const { return file_; }

    bool synchronize() override;
    std::string lastWriteError() const override;

protected:
    void changed(const PropertyValue::Dictionary& values) override;
    bool forget(const std::string& key) override { return unreadable_.erase(key) > 0; }

private:
    void load(const Clock& clock);
    bool writeLocked();

    std::filesystem::path file_;
    std::vector<std::string> loadWarnings_;
    // Members we could not read, as their JSON text, so writing never drops them.
    std::map<std::string, std::string> unreadable_;
    // The file was there but could not be read.
    bool unreadableFile_ = false;
    bool dirty_ = false;
    std::string lastWriteError_;
};

}  // namespace corvetta
