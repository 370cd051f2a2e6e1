// outcome_announcer.h: Where operations report how they ended, so the user can be told.
#pragma once

#include <string>

#include "appearance/theme_definition.h"
#include "import_export/import_export_errors.h"
#include "import_export/import_resolution.h"
#include "layouts/layout_service.h"

namespace corvetta {

// Told how the operations a user started ended (layouts applied, set-ups and themes imported);
// the program turns each into a notice on screen. Restorations are not reported here: whoever
// restores goes through a restorer that announces them itself. Main thread only.
class OutcomeAnnouncer {
public:
    virtual ~OutcomeAnnouncer() = default;

    virtual void layoutApplied(const std::string& layoutName, const LayoutResult& result) = 0;
    virtual void setupImported(const ResolvedImport& imported) = 0;
    virtual void setupImportFailed(const std::string& reason) = 0;
    virtual void themeImported(const Expected<ThemeDefinition, ThemeImportError>& result) = 0;
};

}  // namespace corvetta
