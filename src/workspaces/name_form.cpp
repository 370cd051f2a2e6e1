#include "workspaces/name_form.h"

#include <utility>

namespace corvetta {

NameForm::NameForm(NotificationCenter& notifications, const char* didChange)
    : notifications_(notifications), didChange_(didChange) {}

void NameForm::setName(std::string name) {
    if (phase_ != Phase::editing || name == name_) {
        return;
    }
    name_ = std::move(name);
    touched_ = true;
    failure_.clear();
    check();
    changed();
}

bool NameForm::canSave() const {
    switch (phase_) {
        case Phase::editing:
            return nameValid_ && ready();
        case Phase::notWritten:
            return true;
        case Phase::done:
            return false;
    }
    return false;
}

bool NameForm::save() {
    if (!canSave()) {
        return phase_ == Phase::done;
    }
    if (phase_ == Phase::editing) {
        if (auto added = add(); !added) {
            // Something changed under the form since the last check (a name taken meanwhile).
            check();
            // Shown once: under the name when it is the name's fault, else with the buttons.
            if (added.error() != nameMessage_) {
                failure_ = added.error();
            }
            changed();
            return false;
        }
        phase_ = Phase::notWritten;
        // The store's own change notice has just found the name taken: by the item itself.
        nameMessage_.clear();
        if (const auto error = writeError()) {
            failure_ = kNotWrittenPrefix + *error;
            changed();
            return false;
        }
    } else if (auto written = writeAgain(); !written) {
        failure_ = kNotWrittenPrefix + written.error();
        changed();
        return false;
    }
    phase_ = Phase::done;
    failure_.clear();
    changed();
    return true;
}

void NameForm::reset() {
    name_.clear();
    touched_ = false;
    failure_.clear();
    phase_ = Phase::editing;
    isOpen_ = true;
    check();
}

void NameForm::revalidate() {
    if (!isOpen_) {
        return;
    }
    if (phase_ == Phase::editing) {
        check();
    }
    changed();
}

void NameForm::changed() {
    notifications_.post(didChange_);
}

void NameForm::check() {
    const auto verdict = validate(name_);
    nameValid_ = verdict.has_value();
    nameMessage_ = nameValid_ || !touched_ ? std::string() : verdict.error();
}

}  // namespace corvetta
