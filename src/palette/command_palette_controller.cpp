#include "palette/command_palette_controller.h"

namespace corvetta {

CommandPaletteController::CommandPaletteController(CommandPaletteModel::Services services)
    : model_(services),
      logger_(services.logging, CommandPaletteModel::kServiceName, LogCategory::shortcut()) {
    model_.onDismiss = [this] { dismiss(); };
}

Registration CommandPaletteController::attach(PaletteSurface& surface) {
    surface_ = &surface;
    presented_ = false;
    return Registration([this, attached = &surface] {
        if (surface_ == attached) {
            surface_ = nullptr;
            model_.didHide();
        }
    });
}

void CommandPaletteController::toggle() {
    logger_.info(kShowRequested);
    if (surface_ && surface_->isPaletteVisible()) {
        logger_.info(kTogglingClosed);
        dismiss();
        return;
    }
    if (stopped_) {
        logger_.warning(kAborted);
        return;
    }
    if (!surface_) {
        logger_.warning(kNoWindow);
        return;
    }
    if (presented_) {
        logger_.info(kReshowing);
    }
    model_.willShow();
    surface_->presentPalette();
    presented_ = true;
}

void CommandPaletteController::dismiss() {
    model_.didHide();
    if (surface_ && surface_->isPaletteVisible()) {
        surface_->hidePalette();
    }
}

void CommandPaletteController::servicesStopped() {
    dismiss();
    stopped_ = true;
}

}  // namespace corvetta
