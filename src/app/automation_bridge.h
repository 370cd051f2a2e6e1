// automation_bridge.h: Runs the automation socket for the delegate, keeping JSON out of its header.
#pragma once

#include <filesystem>
#include <memory>

namespace corvetta {

class AutomationMethods;
struct AutomationContext;
class MCPBridgeService;

// The automation socket with the methods it serves, kept out of the delegate's header so the JSON
// library stays in the files that need it.
class AutomationBridge {
public:
    enum class StartResult { listening, alreadyRunning, failed };

    AutomationBridge(std::filesystem::path socketPath, const AutomationContext& context);
    ~AutomationBridge();
    AutomationBridge(const AutomationBridge&) = delete;
    AutomationBridge& operator=(const AutomationBridge&) = delete;

    StartResult start();
    // Closes every connection and removes the socket file.
    void stop();
    const std::filesystem::path& socketPath() const { return socketPath_; }

private:
    std::filesystem::path socketPath_;
    std::unique_ptr<AutomationMethods> methods_;
    std::unique_ptr<MCPBridgeService> server_;
};

}  // namespace corvetta
