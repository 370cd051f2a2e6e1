#include "workspaces/display_migration.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_key.h"

namespace corvetta {

namespace {

// Identical monitors count as standing at the same place within this many points.
constexpr double kSamePlaceTolerance = 5;
// The fewest similarity points that make a display the same one.
constexpr int kSimilarEnough = 4;

// The model of a display: all it tells of itself except where it stands and who it is.
DisplayFingerprint modelOf(DisplayFingerprint fingerprint) {
    fingerprint.relativePosition = {};
    fingerprint.persistentUUID.reset();
    fingerprint.hardwareSerial.reset();
    fingerprint.edidFingerprint.reset();
    return fingerprint;
}

bool samePlace(const Point& a, const Point& b) {
    return std::abs(a.x - b.x) <= kSamePlaceTolerance && std::abs(a.y - b.y) <= kSamePlaceTolerance;
}

template <class T>
bool presentAndEqual(const std::optional<T>& a, const std::optional<T>& b) {
    return a && b && *a == *b;
}

int similarity(const DisplayFingerprint& saved, const DisplayFingerprint& current) {
    int points = 0;
    points += presentAndEqual(saved.hardwareSerial, current.hardwareSerial) ? 4 : 0;
    points += presentAndEqual(saved.edidFingerprint, current.edidFingerprint) ? 4 : 0;
    points += saved.isBuiltIn && current.isBuiltIn ? 3 : 0;
    points += presentAndEqual(saved.name, current.name) ? 2 : 0;
    points += presentAndEqual(saved.physicalSize, current.physicalSize) ? 1 : 0;
    points += saved.resolution == current.resolution ? 1 : 0;
    points += saved.scaleFactor == current.scaleFactor ? 1 : 0;
    return points;
}

Rect clampedInto(Rect frame, const Rect& area) {
    frame = frame.floored();
    const double width = std::min(frame.width(), area.width());
    const double height = std::min(frame.height(), area.height());
    const double x = std::clamp(frame.minX(), area.minX(), area.maxX() - width);
    const double y = std::clamp(frame.minY(), area.minY(), area.maxY() - height);
    return {x, y, width, height};
}

// `frame`'s place in `from`, carried over to `to` in proportion.
Rect proportionally(const Rect& frame, const Rect& from, const Rect& to) {
    const double sx = to.width() / from.width();
    const double sy = to.height() / from.height();
    return {to.minX() + (frame.minX() - from.minX()) * sx,
            to.minY() + (frame.minY() - from.minY()) * sy, frame.width() * sx, frame.height() * sy};
}

}  // namespace

const char* migrationRuleName(MigrationRule rule) {
    switch (rule) {
        case MigrationRule::sameDisplay:
            return "same_display";
        case MigrationRule::scaled:
            return "scaled";
        case MigrationRule::replacement:
            return "replacement";
        case MigrationRule::unknownDisplay:
            return "unknown_display";
    }
    return "unknown_display";
}

std::optional<std::size_t> displayHolding(const Rect& window, const std::vector<Rect>& displays) {
    const Point centre{window.midX(), window.midY()};
    for (std::size_t i = 0; i < displays.size(); ++i) {
        if (displays[i].contains(centre)) {
            return i;
        }
    }
    std::optional<std::size_t> best;
    double bestArea = 0;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        const Rect overlap = window.intersection(displays[i]);
        if (!overlap.isNull() && overlap.area() > bestArea) {
            bestArea = overlap.area();
            best = i;
        }
    }
    return best;
}

DisplayMigration::DisplayMigration(std::optional<DisplayArrangementInfo> saved,
                                   std::vector<Screen> current)
    : saved_(std::move(saved)) {
    for (const auto& screen : current) {
        const double pivot = current.front().frame.height();
        const auto toAccessibility = [pivot](const Rect& r) {
            return Rect(r.minX(), pivot - r.maxY(), r.width(), r.height());
        };
        current_.push_back({displayFingerprint(screen, current.front()),
                            toAccessibility(screen.frame), toAccessibility(screen.visibleFrame)});
    }
    if (saved_) {
        matches_.resize(saved_->displayFingerprints.size());
        matchDisplays();
    }
}

void DisplayMigration::matchDisplays() {
    const auto& saved = saved_->displayFingerprints;
    std::vector<bool> taken(current_.size(), false);
    const auto round = [&](auto isMatch) {
        for (std::size_t s = 0; s < saved.size(); ++s) {
            for (std::size_t c = 0; c < current_.size() && !matches_[s]; ++c) {
                if (!taken[c] && isMatch(saved[s], current_[c].fingerprint, s)) {
                    matches_[s] = c;
                    taken[c] = true;
                }
            }
        }
    };
    const auto hasTwin = [&](std::size_t s) {
        return std::count_if(saved.begin(), saved.end(), [&](const DisplayFingerprint& other) {
                   return modelOf(other) == modelOf(saved[s]);
               }) > 1;
    };
    round([&](const DisplayFingerprint& a, const DisplayFingerprint& b, std::size_t s) {
        return hasTwin(s) && modelOf(a) == modelOf(b) &&
               samePlace(a.relativePosition, b.relativePosition);
    });
    round([](const DisplayFingerprint& a, const DisplayFingerprint& b, std::size_t) {
        return presentAndEqual(a.persistentUUID, b.persistentUUID) && !a.persistentUUID->empty();
    });
    round([](const DisplayFingerprint& a, const DisplayFingerprint& b, std::size_t) {
        return displayKey(a) == displayKey(b);
    });
    for (std::size_t s = 0; s < saved.size(); ++s) {
        int bestPoints = kSimilarEnough - 1;
        for (std::size_t c = 0; c < current_.size() && !matches_[s]; ++c) {
            const int points = taken[c] ? 0 : similarity(saved[s], current_[c].fingerprint);
            if (points > bestPoints) {
                bestPoints = points;
                matches_[s] = c;
            }
        }
        if (matches_[s]) {
            taken[*matches_[s]] = true;
        }
    }
}

std::optional<std::size_t> DisplayMigration::savedIndexOf(const std::string& monitorID) const {
    if (!saved_) {
        return std::nullopt;
    }
    const auto& saved = saved_->displayFingerprints;
    for (std::size_t s = 0; s < saved.size(); ++s) {
        if (monitorIdentifier(saved[s]) == monitorID) {
            return s;
        }
    }
    return std::nullopt;
}

Rect DisplayMigration::savedFrame(std::size_t savedIndex) const {
    const auto& display = saved_->displayFingerprints[savedIndex];
    const Size main = saved_->mainDisplayFingerprint
                          ? saved_->mainDisplayFingerprint->resolution
                          : saved_->displayFingerprints.front().resolution;
    // Screen space first: the main display's corner is the origin, centres are relative.
    const double midX = main.width / 2 + display.relativePosition.x;
    const double midY = main.height / 2 + display.relativePosition.y;
    const double minY = midY - display.resolution.height / 2;
    return {midX - display.resolution.width / 2, main.height - (minY + display.resolution.height),
            display.resolution.width, display.resolution.height};
}

std::size_t DisplayMigration::replacementFor(std::size_t savedIndex) const {
    const auto& gone = saved_->displayFingerprints[savedIndex];
    if (gone == saved_->mainDisplayFingerprint) {
        return 0;
    }
    std::size_t nearest = 0;
    double nearestDistance = std::numeric_limits<double>::infinity();
    for (std::size_t c = 0; c < current_.size(); ++c) {
        const Point& at = current_[c].fingerprint.relativePosition;
        const double distance =
            std::hypot(at.x - gone.relativePosition.x, at.y - gone.relativePosition.y);
        if (distance < nearestDistance) {
            nearestDistance = distance;
            nearest = c;
        }
    }
    return nearest;
}

MigratedFrame DisplayMigration::placed(Rect frame, std::size_t screenIndex,
                                       MigrationRule rule) const {
    return {clampedInto(frame, current_[screenIndex].visibleFrame), screenIndex, rule};
}

MigratedFrame DisplayMigration::unknownDisplay(const Rect& frame) const {
    std::vector<Rect> frames;
    for (const auto& display : current_) {
        frames.push_back(display.frame);
    }
    return placed(frame, displayHolding(frame, frames).value_or(0), MigrationRule::unknownDisplay);
}

std::optional<MigratedFrame> DisplayMigration::migrate(const WindowInfo& window) const {
    if (current_.empty()) {
        return std::nullopt;
    }
    const auto savedIndex = window.monitorID ? savedIndexOf(*window.monitorID) : std::nullopt;
    if (!savedIndex) {
        return unknownDisplay(window.frame);
    }
    const Rect from = savedFrame(*savedIndex);
    if (const auto match = matches_[*savedIndex]) {
        const Rect& to = current_[*match].frame;
        if (to.size == from.size) {
            return placed(window.frame.offsetBy(to.minX() - from.minX(), to.minY() - from.minY()),
                          *match, MigrationRule::sameDisplay);
        }
        return placed(proportionally(window.frame, from, to), *match, MigrationRule::scaled);
    }
    const std::size_t replacement = replacementFor(*savedIndex);
    return placed(proportionally(window.frame, from, current_[replacement].visibleFrame),
                  replacement, MigrationRule::replacement);
}

}  // namespace corvetta
