#include "ui/ui_shell.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <filesystem>

#include "ui/about_window.h"
#include "ui/command_palette_window.h"
#include "ui/status_item.h"

namespace corvetta {

namespace {

// The installed documentation beside the program, else the source tree it was built from.
std::filesystem::path documentationEntry() {
    const std::filesystem::path program = QCoreApplication::applicationDirPath().toStdString();
    const auto installed = program / ".." / "share" / "doc" / "corvetta" / "README.md";
    if (std::filesystem::exists(installed)) {
        return std::filesystem::weakly_canonical(installed);
    }
    const std::filesystem::path source = CORVETTA_SOURCE_DIR "/README.md";
    return std::filesystem::exists(source) ? source : std::filesystem::path{};
}

}  // namespace

UiShell::UiShell(AppDelegate& delegate)
    : delegate_(delegate),
      logger_(delegate.services().plumbing.logging, "UiShell", LogCategory::startup()),
      statusItem_(std::make_unique<StatusItem>(delegate)),
      // Built at start, so the first show costs no more than the next.
      paletteWindow_(std::make_unique<CommandPaletteWindow>(
          delegate.services().commandPalette, delegate.services().plumbing.notifications,
          ViewColors::fallback())) {}

UiShell::~UiShell() = default;

void UiShell::showSaveWorkspaceWindow() {
    logger_.info("The save-workspace window is not built yet");
}

void UiShell::showAddSpaceWindow() {
    logger_.info("The add-space window is not built yet");
}

void UiShell::showNewLayoutWindow() {
    // The layout builder is a window of its own, still to come.
    logger_.info("No new-layout window yet: layouts are added through the socket");
}

void UiShell::toggleCommandPalette() {
    delegate_.services().commandPalette.toggle();
}

void UiShell::showAboutWindow() {
    if (!aboutWindow_) {
        aboutWindow_ = std::make_unique<AboutWindow>(
            QString::fromStdString(delegate_.services().plumbing.version));
    }
    aboutWindow_->show();
    aboutWindow_->raise();
    aboutWindow_->activateWindow();
}

void UiShell::showHelp() {
    const auto entry = documentationEntry();
    if (entry.empty()) {
        logger_.warning("No documentation found beside the program");
        return;
    }
    logger_.info("Opening the documentation: " + entry.string());
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(entry.string())))) {
        logger_.warning("No viewer opened " + entry.string());
    }
}

}  // namespace corvetta
