#include "app/toast_announcer.h"

namespace corvetta {

namespace {

std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// A restoration that placed everything it saved succeeded; one that placed part of it is worth
// reading but is no failure.
ToastStyle restoreStyle(const RestoreReport& report) {
    if (!report.began) {
        return ToastStyle::error;
    }
    const bool complete =
        report.failedApplications.empty() && report.windowsPlaced >= report.windowsSaved;
    return complete ? ToastStyle::success : ToastStyle::info;
}

}  // namespace

ToastAnnouncer::ToastAnnouncer(WorkspaceRestorer& restorer, LayoutService& layouts,
                               ToastManager& toasts)
    : restorer_(restorer), layouts_(layouts), toasts_(toasts) {}

void ToastAnnouncer::applyLayout(const CustomLayoutTemplate& layout, LayoutCompletion done) {
    layouts_.applyCustomLayout(
        layout, [this, name = layout.name, done = std::move(done)](const LayoutResult& result) {
            layoutApplied(name, result);
            if (done) {
                done(result);
            }
        });
}

void ToastAnnouncer::restore(const Workspace& workspace, RestoreTrigger trigger,
                             RestoreCompletion done) {
    // A refused restoration must not end the loading notice of the one under way.
    const bool refused = restorer_.isRestoring();
    if (!refused) {
        toasts_.show("Restoring '" + workspace.name + "'…", ToastStyle::loading);
    }
    restorer_.restore(
        workspace, trigger, [this, refused, done = std::move(done)](const RestoreReport& report) {
            auto toast = ToastData::make(report.summary, restoreStyle(report));
            refused ? toasts_.show(std::move(toast)) : toasts_.finishLoading(std::move(toast));
            if (done) {
                done(report);
            }
        });
}

void ToastAnnouncer::layoutApplied(const std::string& layoutName, const LayoutResult& result) {
    if (!result) {
        // Nothing to place is a state of the desktop, not a fault.
        toasts_.show(std::string(description(result.error())),
                     result.error() == LayoutError::noEligibleWindows ? ToastStyle::info
                                                                      : ToastStyle::error);
        return;
    }
    toasts_.show("Applied '" + layoutName + "' to " +
                     counted(static_cast<std::size_t>(result->windowsPlaced), "window"),
                 ToastStyle::success);
}

void ToastAnnouncer::setupImported(const ResolvedImport& imported) {
    toasts_.show("Imported " + counted(imported.workspacesToAdd.size(), "workspace") + ", " +
                     counted(imported.layoutsToAdd.size(), "layout") + " and " +
                     counted(imported.spacesToCreate.size(), "space"),
                 ToastStyle::success);
}

void ToastAnnouncer::setupImportFailed(const std::string& reason) {
    toasts_.show("Import failed: " + reason, ToastStyle::error);
}

void ToastAnnouncer::themeImported(const Expected<ThemeDefinition, ThemeImportError>& result) {
    if (result) {
        toasts_.show("Theme '" + result->name + "' imported", ToastStyle::success);
    } else if (result.error().kind != ThemeImportError::Kind::userCancelled) {
        toasts_.show(result.error().message(), ToastStyle::error);
    }
}

}  // namespace corvetta
