// toast_announcer.h: Turns how restorations, layouts and imports ended into toasts.
#pragma once

#include <string>

#include "appearance/toast_manager.h"
#include "automation/outcome_announcer.h"
#include "workspaces/workspace_restorer.h"

namespace corvetta {

// The one place that decides what the user is told, and how, about operations that end out of
// sight. It stands in for the restorer (every restoration goes through it, from shortcuts, the
// menu, the palette, the socket or after a wake): a loading toast "Restoring '<name>'…" while it
// runs, replaced by the report's summary, so a quick restoration shows only its result. Layouts
// are applied through it too; the socket reports its layouts and imports here. docs/appearance.md
// lists the texts and styles. Main thread only.
class ToastAnnouncer final : public WorkspaceRestorer, public OutcomeAnnouncer {
public:
    ToastAnnouncer(WorkspaceRestorer& restorer, LayoutService& layouts, ToastManager& toasts);

    bool isRestoring() const override { return restorer_.isRestoring(); }
    const std::string& restorationStatusMessage() const override {
        return restorer_.restorationStatusMessage();
    }
    void restore(const Workspace& workspace, RestoreTrigger trigger,
                 RestoreCompletion done) override;

    // Applies the template through the layout service and announces how it ended.
    void applyLayout(const CustomLayoutTemplate& layout, LayoutCompletion done = {});
    void layoutApplied(const std::string& layoutName, const LayoutResult& result) override;
    void setupImported(const ResolvedImport& imported) override;
    void setupImportFailed(const std::string& reason) override;
    void themeImported(const Expected<ThemeDefinition, ThemeImportError>& result) override;

private:
    WorkspaceRestorer& restorer_;
    LayoutService& layouts_;
    ToastManager& toasts_;
};

}  // namespace corvetta
