#include "app/application.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#include <unistd.h>

#include "app/app_delegate.h"
#include "app/command_line.h"
#include "app/desktop_opening.h"
#include "app/termination_signals.h"
#include "automation/bundle_identifier.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logger.h"
#include "diagnostics/logging_service.h"
#include "diagnostics/stderr_log.h"
#include "foundation/json_file_preferences.h"
#include "foundation/notification_center.h"

namespace corvetta {

int runApplication(const CommandLineOptions& options, const Paths& paths, const Clock& clock,
                   const FrontendFactory& makeFrontend) {
    ignoreBrokenPipes();
    StderrLog platformLog;
    JsonFilePreferences preferences(paths.preferencesFile(), clock);
    NotificationCenter notifications;
    Logbook logbook(preferences, notifications, clock, &platformLog);
    LoggingService loggingService(preferences, logbook);
    Logger logger(loggingService, "AppDelegate", LogCategory::startup());

    for (const auto& warning : preferences.loadWarnings()) {
        logger.warning(warning);
    }

    const auto frontend = makeFrontend(
        clock,
        [&logger](std::exception_ptr failure) {
            try {
                std::rethrow_exception(failure);
            } catch (const std::exception& e) {
                logger.error(std::string("Unhandled error in main-queue work: ") + e.what());
            } catch (...) {
                logger.error("Unhandled error in main-queue work");
            }
        },
        logger);
    MainQueue& loop = frontend->queue();

    // Before the socket exists: a signal during start-up is served once the loop runs, so it
    // too ends the program the clean way, removing the socket.
    TerminationSignals signals(loop, [&](int signal) {
        logger.info(std::string("Received ") + TerminationSignals::name(signal) +
                    ", shutting down");
        frontend->stop();
    });

    std::unique_ptr<Desktop> desktop;
    if (options.desktop) {
        auto opened = openDesktop(*options.desktop, loop);
        if (!opened) {
            // Straight to standard error: the user's logging switches must not hide why the
            // program would not start.
            platformLog.flush();
            std::fprintf(stderr, "corvetta: %s\n", opened.error().c_str());
            return 2;
        }
        desktop = std::move(*opened);
    } else {
        desktop = openEmptyDesktop(loop);
        logger.warning(
            "No desktop chosen and no DISPLAY; running on an empty simulated desktop (pass "
            "--desktop=x11:DISPLAY or --desktop=sim:FILE)");
    }

    const auto desktopDescription = describeDesktop(*desktop, options.desktop);
    logger.info("Desktop: " + desktopDescription);

    AppDelegate delegate(
        ProcessPlumbing{
            .desktop = *desktop,
            .queue = loop,
            .defaults = preferences,
            .notifications = notifications,
            .logbook = logbook,
            .logging = loggingService,
            .socketPath = options.socketPath.value_or(defaultAutomationSocketPath(paths)),
            .version = versionText(),
            .desktopDescription = desktopDescription,
            .configFolder = paths.configFolder,
            .windowPresenter = frontend->windowPresenter(),
        },
        [&frontend] { frontend->stop(); });
    if (delegate.applicationDidFinishLaunching() == AppDelegate::LaunchResult::alreadyRunning) {
        platformLog.flush();
        std::fprintf(stderr, "corvetta: Corvetta is already running (socket %s)\n",
                     options.socketPath.value_or(defaultAutomationSocketPath(paths)).c_str());
        return 1;
    }

    loop.post(
        [&] { logger.info(versionText() + " ready (pid " + std::to_string(getpid()) + ")"); });
    frontend->servicesDidLaunch(delegate);
    frontend->run();
    frontend->servicesWillStop();
    delegate.applicationWillTerminate();

    if (!preferences.synchronize()) {
        logger.error("Could not save preferences: " + preferences.lastWriteError());
    }
    logger.info("Stopped cleanly");
    platformLog.flush();
    return 0;
}

}  // namespace corvetta
