#include "app/automation_bridge.h"

#include "automation/automation_methods.h"
#include "automation/mcp_bridge_service.h"

namespace corvetta {

AutomationBridge::AutomationBridge(std::filesystem::path socketPath,
                                   const AutomationContext& context)
    : socketPath_(std::move(socketPath)),
      methods_(std::make_unique<AutomationMethods>(context)),
      server_(std::make_unique<MCPBridgeService>(socketPath_, *methods_, context.queue,
                                                 context.logging)) {}

// The server goes first: its threads may still be handing requests to the methods.
AutomationBridge::~AutomationBridge() {
    server_.reset();
}

AutomationBridge::StartResult AutomationBridge::start() {
    switch (server_->start()) {
        case MCPBridgeService::StartResult::listening:
            return StartResult::listening;
        case MCPBridgeService::StartResult::alreadyRunning:
            return StartResult::alreadyRunning;
        case MCPBridgeService::StartResult::failed:
            return StartResult::failed;
    }
    return StartResult::failed;
}

void AutomationBridge::stop() {
    server_->stop();
}

}  // namespace corvetta
