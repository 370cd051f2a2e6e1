// preferences.h: The user defaults: typed, thread-safe settings that tell absent from zero.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "foundation/property_value.h"

namespace corvetta {

// The user defaults: settings under plain keys. Every typed read tells "absent" apart from zero or
// false, so callers apply their own fallbacks. Safe to use from any thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    std::optional<PropertyValue> object(const std::string& key) const;
    std::optional<bool> boolValue(const std::string& key) const;
    std::optional<std::int64_t> integer(const std::string& key) const;
    std::optional<double> doubleValue(const std::string& key) const;
    // Read through a 32-bit float and widened again, so 0.9 reads as 0.89999997615814209 exactly
    // as settings stored as floats read back on the platform.
    std::optional<double> floatValue(const std::string& key) const;
    std::optional<std::string> string(const std::string& key) const;
    std::optional<std::vector<std::string>> stringList(const std::string& key) const;
    std::optional<PropertyValue::Dictionary> dictionary(const std::string& key) const;
    std::optional<Bytes> data(const std::string& key) const;

    void set(const std::string& key, PropertyValue value);
    void remove(const std::string& key);
    PropertyValue::Dictionary snapshot() const;

    // Makes every change so far durable. False when the store could not be written; the changes
    // are kept in memory and written on the next change or call.
    virtual bool synchronize() = 0;
    // Why the last write failed, empty after a successful one.
    virtual std::string lastWriteError() const = 0;

protected:
    // Called with the lock held after each change.
    virtual void changed(const PropertyValue::Dictionary& values) = 0;
    // Called with the lock held when a key is removed; true if the store held it elsewhere.
    virtual bool forget(const std::string&) { return false; }

    mutable std::mutex mutex_;
    PropertyValue::Dictionary values_;
};

// Lives in memory only: for tests, and for runs that must leave no trace.
class InMemoryPreferences final : public Preferences {
public:
    InMemoryPreferences() = default;
    explicit InMemoryPreferences(PropertyValue::Dictionary initial) {
        values_ = std::move(initial);
    }

    bool synchronize() override { return true; }
    std::string lastWriteError() const override { return {}; }

protected:
    void changed(const PropertyValue::Dictionary&) override {}
};

}  // namespace corvetta
