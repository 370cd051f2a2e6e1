// name_form.h: What the save-workspace and add-space forms share: a live-checked name and a save.
#pragma once

#include <optional>
#include <string>

#include "foundation/expected.h"
#include "foundation/notification_center.h"

namespace corvetta {

// A form whose one required field is a name the store checks. The name is checked as it is typed;
// its message stays empty until the user has typed, so a fresh form does not open on a complaint.
// Saving either is refused (the message shown, nothing stored, every field kept), or adds the item;
// when the disk would not take it, the item stays in memory, the form says so and offers to write
// again instead of adding it a second time. Each change posts the form's own notification.
// Main thread only.
class NameForm {
public:
    enum class Phase {
        editing,
        // Added, but the store could not write it: Save writes again.
        notWritten,
        // Added and written: the window can close.
        done,
    };

    static constexpr const char* kNotWrittenPrefix =
        "Kept for this session, but it could not be written to disk: ";

    virtual ~NameForm() = default;
    NameForm(const NameForm&) = delete;
    NameForm& operator=(const NameForm&) = delete;

    const std::string& name() const { return name_; }
    void setName(std::string name);
    // Why the name cannot be saved; empty while it can, or before the user typed.
    const std::string& nameMessage() const { return nameMessage_; }
    // Why the last Save did not finish; empty otherwise.
    const std::string& failure() const { return failure_; }
    Phase phase() const { return phase_; }
    bool canSave() const;
    // True once the item is added and written.
    bool save();
    // The window went away: the form stops following the stores until it is opened again.
    void close() { isOpen_ = false; }
    bool isOpen() const { return isOpen_; }

protected:
    NameForm(NotificationCenter& notifications, const char* didChange);

    // Back to an empty, open form, as when the window opens.
    void reset();
    // Checks the name again, after something it depends on changed; posts the change.
    void revalidate();
    void changed();

    // The store's verdict on a name.
    virtual Expected<void, std::string> validate(const std::string& name) const = 0;
    // Whatever else must hold before Save (a message for it is the subclass's to show).
    virtual bool ready() const { return true; }
    // Adds the item; an error means it was refused and nothing was stored.
    virtual Expected<void, std::string> add() = 0;
    // Why the store did not write the item just added.
    virtual std::optional<std::string> writeError() const = 0;
    virtual Expected<void, std::string> writeAgain() = 0;

private:
    void check();

    NotificationCenter& notifications_;
    const char* didChange_;
    std::string name_;
    bool touched_ = false;
    bool nameValid_ = false;
    std::string nameMessage_;
    std::string failure_;
    Phase phase_ = Phase::editing;
    bool isOpen_ = false;
};

}  // namespace corvetta
