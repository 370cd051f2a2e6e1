#include "ui/ui_shell.h"

#include <QApplication>
#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <filesystem>

#include "ui/about_window.h"
#include "ui/add_space_window.h"
#include "ui/command_palette_window.h"
#include "ui/cycle_hud_window.h"
#include "ui/drift_pill_window.h"
#include "ui/save_workspace_window.h"
#include "ui/status_item.h"
#include "ui/theme_view_colors.h"
#include "ui/toast_window_controller.h"

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

// The usable area of the display under the pointer, where the user is looking.
QRect displayUnderPointer() {
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
}

// The usable area of the display holding a frame given in accessibility space, whose origin is the
// primary display's top-left corner (Qt's primary is the same RandR primary the X11 desktop uses).
QRect displayHolding(const Rect& frame) {
    const QScreen* primary = QGuiApplication::primaryScreen();
    const QPoint origin = primary ? primary->geometry().topLeft() : QPoint();
    const QPoint centre(origin.x() + static_cast<int>(frame.midX()),
                        origin.y() + static_cast<int>(frame.midY()));
    const QScreen* screen = QGuiApplication::screenAt(centre);
    if (!screen) {
        screen = primary;
    }
    return screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
}

}  // namespace

UiShell::UiShell(AppDelegate& delegate)
    : delegate_(delegate),
      logger_(delegate.services().plumbing.logging, "UiShell", LogCategory::startup()),
      statusItem_(std::make_unique<StatusItem>(delegate)),
      // Built at start, so the first show costs no more than the next.
      paletteWindow_(std::make_unique<CommandPaletteWindow>(
          delegate.services().commandPalette, delegate.services().plumbing.notifications,
          ViewColors::fallback())),
      pillWindow_(std::make_unique<DriftPillWindow>(delegate.services().layoutLock,
                                                    delegate.services().plumbing.notifications,
                                                    ViewColors::fallback(), displayHolding)),
      cycleHudWindow_(std::make_unique<CycleHudWindow>(
          delegate.services().shortcutService.cycle(), delegate.services().plumbing.notifications,
          ViewColors::fallback(), displayUnderPointer)),
      toastDisplay_(delegate.services().toastManager.observe([this] {
          // A toast shows where the user is looking when it comes.
          if (toastWindow_ && delegate_.services().toastManager.isPresented()) {
              toastWindow_->presentOn(displayUnderPointer());
          }
      })),
      toastWindow_(std::make_unique<ToastWindowController>(delegate.services().toastManager,
                                                           ViewColors::fallback())) {
    auto& themes = delegate.services().themeManager;
    // Until the desktop says light or dark, the application palette does; it changes with it.
    followPaletteAppearance(themes);
    qApp->installEventFilter(this);
    themeObservation_ = themes.observe([this] { applyTheme(); });
    toastWindow_->presentOn(displayUnderPointer());
    applyTheme();
}

bool UiShell::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        followPaletteAppearance(delegate_.services().themeManager);
    }
    return false;
}

void UiShell::applyTheme() {
    const ViewColors colors = viewColorsOf(delegate_.services().themeManager);
    paletteWindow_->setColors(colors);
    pillWindow_->setColors(colors);
    cycleHudWindow_->setColors(colors);
    toastWindow_->setColors(colors);
    if (saveWorkspaceWindow_) {
        saveWorkspaceWindow_->setColors(colors);
    }
    if (addSpaceWindow_) {
        addSpaceWindow_->setColors(colors);
    }
}

UiShell::~UiShell() = default;

void UiShell::showSaveWorkspaceWindow() {
    if (!saveWorkspaceWindow_) {
        auto& services = delegate_.services();
        saveWorkspaceWindow_ = std::make_unique<SaveWorkspaceWindow>(
            services.saveWorkspaceForm, services.plumbing.notifications,
            viewColorsOf(services.themeManager));
        saveWorkspaceWindow_->setClosedHandler([this] { giveFocusBack(); });
    }
    saveWorkspaceWindow_->presentOn(displayUnderPointer());
}

void UiShell::showAddSpaceWindow() {
    if (!addSpaceWindow_) {
        auto& services = delegate_.services();
        addSpaceWindow_ =
            std::make_unique<AddSpaceWindow>(services.addSpaceForm, services.plumbing.notifications,
                                             viewColorsOf(services.themeManager));
        addSpaceWindow_->setClosedHandler([this] { giveFocusBack(); });
    }
    addSpaceWindow_->presentOn(displayUnderPointer());
}

void UiShell::giveFocusBack() {
    if (const auto& previous = delegate_.previousFrontmostApp()) {
        delegate_.services().plumbing.desktop.applicationsPort().activate(
            previous->processIdentifier);
    }
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
