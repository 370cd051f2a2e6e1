// command_palette_controller.h: Opens and closes the command palette's window on request.
#pragma once

#include "diagnostics/logger.h"
#include "foundation/registration.h"
#include "palette/command_palette_model.h"

namespace corvetta {

// The palette's window as the controller sees it. The user interface implements it; the window
// is built once and only hidden between uses, so opening it again is quick.
class PaletteSurface {
public:
    virtual ~PaletteSurface() = default;
    virtual bool isPaletteVisible() const = 0;
    // Shows the window on the display under the pointer, focused on its search field.
    virtual void presentPalette() = 0;
    // Hides it, keeping it built.
    virtual void hidePalette() = 0;
};

// Owns the palette's model and decides what a request to show it does: open it, reuse the
// hidden window, close it when it is open already, or refuse once the services have stopped.
// What the "commandPalette" shortcut and the status menu reach, through the window presenter.
// Main thread only.
class CommandPaletteController {
public:
    static constexpr const char* kShowRequested = "Command palette: show requested";
    static constexpr const char* kTogglingClosed =
        "Command palette: already visible — toggling closed";
    static constexpr const char* kReshowing = "Command palette: re-showing preserved window";
    static constexpr const char* kAborted = "Command palette: aborted — spaceManager unavailable";
    static constexpr const char* kNoWindow = "Command palette: no window to show it in";

    explicit CommandPaletteController(CommandPaletteModel::Services services);
    CommandPaletteController(const CommandPaletteController&) = delete;
    CommandPaletteController& operator=(const CommandPaletteController&) = delete;

    CommandPaletteModel& model() { return model_; }

    // The window the palette is drawn in, for as long as the registration lives.
    [[nodiscard]] Registration attach(PaletteSurface& surface);

    // Opens the palette, or closes it when it is open.
    void toggle();
    // Closes it if it is open.
    void dismiss();

    // The program is quitting: the stores are going, so the palette closes and later requests
    // are refused.
    void servicesStopped();

private:
    CommandPaletteModel model_;
    Logger logger_;
    PaletteSurface* surface_ = nullptr;
    // Whether the attached window has been shown before: the next show only refreshes it.
    bool presented_ = false;
    bool stopped_ = false;
};

}  // namespace corvetta
