#include "app/service_root.h"

#include "app/app_notifications.h"
#include "app/simulate_method.h"
#include "automation/automation_methods.h"
#include "automation/mcp_bridge_service.h"
#include "foundation/paths.h"
#include "platform/sim/simulated_desktop.h"

namespace corvetta {

namespace {
std::filesystem::path configFolderOf(const ProcessPlumbing& plumbing) {
    return plumbing.configFolder.value_or(Paths::resolve(processEnvironment()).configFolder);
}

std::filesystem::path themesFolderOf(const ProcessPlumbing&) {
    return Paths::resolve(processEnvironment()).applicationSupportFolder / "Themes";
}
}  // namespace

ServiceRoot::ServiceRoot(const ProcessPlumbing& p, ServiceCallbacks c)
    : plumbing(p),
      callbacks(std::move(c)),
      screenDetection(p.desktop.screenPort(), p.logging),
      calculationService(screenDetection, p.defaults, p.logging),
      accessibilityElement(p.desktop.accessibilityPort(), p.desktop.screenPort(),
                           p.desktop.windowListPort(), p.desktop.applicationsPort(),
                           p.desktop.pointerPort(), p.logging),
      windowMover(accessibilityElement, calculationService, screenDetection, p.desktop.screenPort(),
                  p.queue, p.logging),
      windowSnappingService(windowMover, screenDetection, accessibilityElement, calculationService,
                            p.desktop.applicationsPort(), p.defaults, p.logging,
                            // Built before the lock, which it reaches only once a snap runs.
                            [this](const AXElement& window) {
                                if (callbacks.willSnap) {
                                    callbacks.willSnap(window);
                                }
                                layoutLock.windowWillSnap(window);
                            }),
      hotKeyCenter(p.desktop.hotKeyPort(), p.logging),
      hotKeyStore(p.defaults, p.notifications, p.logging),
      keyboardShortcuts(hotKeyStore, hotKeyCenter, p.notifications),
      masShortcutManager(p.defaults, p.notifications, hotKeyCenter, p.logging),
      shortcutManager(masShortcutManager),
      shortcutBridge(shortcutManager, keyboardShortcuts, p.notifications, p.logging),
      shortcutStartup(p.defaults, shortcutManager, hotKeyStore, keyboardShortcuts, p.logging),
      customLayoutStore(p.defaults, shortcutBridge, p.notifications, p.queue.clock(),
                        configFolderOf(p), p.logging),
      learnedMinSizes(p.defaults, p.logging),
      layoutLock({.accessibility = p.desktop.accessibilityPort(),
                  .applications = p.desktop.applicationsPort(),
                  .screens = p.desktop.screenPort(),
                  .events = p.desktop.eventMonitorPort(),
                  .queue = p.queue,
                  .defaults = p.defaults,
                  .learnedMinSizes = learnedMinSizes,
                  .logging = p.logging,
                  .notifications = p.notifications}),
      permissionManager(p.desktop.accessibilityPort(), p.desktop.alertPort(), p.defaults,
                        p.notifications, p.queue, p.logging),
      themeColors(p.defaults, p.logging),
      themeManager({.defaults = p.defaults,
                    .accentColors = themeColors,
                    .appearance = p.desktop.systemAppearancePort(),
                    .clock = p.queue.clock(),
                    .logging = p.logging,
                    .themesFolder = themesFolderOf(p)}),
      toastManager(p.defaults, p.queue, p.logging),
      workspaceService(p.defaults, p.notifications, p.queue.clock(), p.logging, configFolderOf(p)),
      spaceManager(workspaceService, p.defaults, p.notifications, p.queue.clock(), p.logging,
                   configFolderOf(p),
                   [this](const Uuid& spaceId) { customLayoutStore.moveLayoutsToGlobal(spaceId); }),
      importExport(workspaceService, spaceManager, customLayoutStore, p.defaults, hotKeyStore,
                   p.logging, p.queue.clock(),
                   [this](const std::vector<std::string>& keys) { announceSettingChanges(keys); }),
      displayStability(p.queue.clock(), p.logging),
      displayChangeMonitor(p.desktop.screenPort(), p.notifications, p.queue.clock(), p.logging),
      workspaceCapture(p.desktop.accessibilityPort(), p.desktop.windowListPort(),
                       p.desktop.applicationsPort(), p.desktop.screenPort(), p.defaults,
                       workspaceService, p.queue.clock(), p.logging),
      saveWorkspaceForm({workspaceCapture, workspaceService, spaceManager, p.notifications}),
      addSpaceForm(spaceManager, p.notifications),
      deeplinkOpener(p.desktop.accessibilityPort(), p.desktop.applicationsPort(),
                     p.desktop.openingPort(), p.queue, p.logging,
                     Paths::resolve(processEnvironment()).home),
      workspaceRestoration({p.desktop.accessibilityPort(), p.desktop.applicationsPort(),
                            p.desktop.screenPort(), p.desktop.windowListPort()},
                           accessibilityElement, windowMover, deeplinkOpener, workspaceService,
                           workspaceCapture, p.defaults, p.queue, p.logging),
      layoutService({p.desktop.accessibilityPort(), p.desktop.windowListPort(),
                     p.desktop.applicationsPort(), p.desktop.screenPort(), p.desktop.pointerPort()},
                    accessibilityElement, windowMover, layoutLock, p.defaults, p.queue, p.logging),
      toastAnnouncer(workspaceRestoration, layoutService, toastManager),
      autoRestoreOnWake({.workspaces = workspaceService,
                         .restorer = toastAnnouncer,
                         .displayMonitor = displayChangeMonitor,
                         .displayStability = displayStability,
                         .sleepWake = p.desktop.sleepWakePort(),
                         .accessibility = p.desktop.accessibilityPort(),
                         .applications = p.desktop.applicationsPort(),
                         .notifications = p.notifications,
                         .defaults = p.defaults,
                         .queue = p.queue,
                         .logging = p.logging}),
      commandPalette(
          {spaceManager, workspaceService, customLayoutStore, layoutService, toastAnnouncer,
           shortcutBridge, p.desktop.applicationsPort(), p.defaults, p.notifications, p.logging,
           callbacks.previousFrontmostApp, callbacks.quit,
           [this](const CustomLayoutTemplate& layout) { toastAnnouncer.applyLayout(layout); }}),
      loggingWindowPresenter(p.logging),
      windowPresenter(p.windowPresenter ? *p.windowPresenter : loggingWindowPresenter),
      shortcutService({.shortcutBridge = shortcutBridge,
                       .hotKeyStore = hotKeyStore,
                       .snappingService = windowSnappingService,
                       .workspaceService = workspaceService,
                       .spaceManager = spaceManager,
                       .layoutStore = customLayoutStore,
                       .restorer = toastAnnouncer,
                       .windowPresenter = windowPresenter,
                       .events = p.desktop.eventMonitorPort(),
                       .defaults = p.defaults,
                       .notifications = p.notifications,
                       .logging = p.logging},
                      {.quit = callbacks.quit,
                       .applyLayout =
                           [this](const Uuid& templateId) {
                               if (const auto* layout = customLayoutStore.find(templateId)) {
                                   toastAnnouncer.applyLayout(*layout);
                               }
                           }}),
      automationMethods(std::make_unique<AutomationMethods>(automationContext())) {
    if (auto* simulated = dynamic_cast<SimulatedDesktop*>(&p.desktop)) {
        addSimulateMethod(*automationMethods, *simulated);
    }
}

ServiceRoot::~ServiceRoot() = default;

MCPBridgeService* ServiceRoot::automationServer() {
    if (!mcpBridgeService_ && plumbing.socketPath) {
        mcpBridgeService_ = std::make_unique<MCPBridgeService>(
            *plumbing.socketPath, *automationMethods, plumbing.queue, plumbing.logging);
    }
    return mcpBridgeService_.get();
}

AutomationContext ServiceRoot::automationContext() {
    return AutomationContext{
        .desktop = plumbing.desktop,
        .queue = plumbing.queue,
        .screenDetection = screenDetection,
        .snappingService = windowSnappingService,
        .windowMover = windowMover,
        .layoutStore = customLayoutStore,
        .layoutService = layoutService,
        .layoutLock = layoutLock,
        .workspaceService = workspaceService,
        .workspaceCapture = workspaceCapture,
        .restorer = toastAnnouncer,
        .spaceManager = spaceManager,
        .shortcuts = shortcutService,
        .importExport = importExport,
        .themes = themeManager,
        .announcer = toastAnnouncer,
        .logbook = plumbing.logbook,
        .logging = plumbing.logging,
        .version = plumbing.version,
        .desktopDescription = plumbing.desktopDescription,
        .statusMessage = callbacks.statusMessage,
        .shortcutsNotRegistered = callbacks.shortcutsNotRegistered,
    };
}

void ServiceRoot::announceSettingChanges(const std::vector<std::string>& keys) {
    for (const auto& key : keys) {
        for (const auto& row : kSettingChangeNotifications) {
            if (key == row.setting) {
                plumbing.notifications.post(row.notification);
            }
        }
    }
}

}  // namespace corvetta
