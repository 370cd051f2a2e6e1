// mcp_bridge_service.h: The automation socket server: accepts clients and answers their requests.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <sys/types.h>
#include <unistd.h>

#include "diagnostics/deferred_logger.h"
#include "foundation/main_queue.h"

namespace corvetta {

class LineReader;
class MethodDispatcher;
class StopSignal;

struct MCPBridgeOptions {
    // Connections from processes of any other user are refused.
    uid_t ownerUid = ::getuid();
    // When this many are open, a new client takes the place of the one idle the longest (see
    // docs/automation.md); only when every one is in the middle of a request is it refused.
    std::size_t maxConnections = 64;
    // A longer request line is answered with an error and its connection closed.
    std::size_t maxLineBytes = std::size_t{1} << 20;
};

// The automation socket: a Unix-domain stream socket in the application-support folder that takes
// one JSON request per line and answers each with one JSON line, in order.
//
// Threads: one accepts connections (standing for the "com.corvetta.mcp.accept" queue), one serves
// each connection; every method runs on the main queue, and the connection's thread waits for its
// answer before reading the next request. Only connection threads write to sockets, so a client
// that stops reading holds up nothing but its own connection.
class MCPBridgeService {
public:
    static constexpr const char* kServiceName = "MCPBridgeService";

    enum class StartResult { listening, alreadyRunning, failed };

    MCPBridgeService(std::filesystem::path socketPath, MethodDispatcher& dispatcher,
                     MainQueue& mainQueue, LoggingService& logging, MCPBridgeOptions options = {});
    // Stops first.
    ~MCPBridgeService();
    MCPBridgeService(const MCPBridgeService&) = delete;
    MCPBridgeService& operator=(const MCPBridgeService&) = delete;

    // Creates the folder (owner only), replaces a stale socket file, binds and listens. A socket
    // file another live server answers on is left alone: alreadyRunning. Calling it again while
    // listening changes nothing.
    StartResult start();
    // Closes the listening socket and every connection, releases connection threads waiting for
    // an answer, joins every thread and removes the socket file. Safe to call more than once and
    // from any thread but a connection's own.
    void stop();

    // The listening descriptor; -1 when not listening.
    int serverFD() const { return serverFD_; }
    const std::filesystem::path& socketPath() const { return socketPath_; }

private:
    struct Connection;

    std::optional<StartResult> prepareFolderAndPath();
    // Takes the lock beside the socket file; none when taken.
    std::optional<StartResult> takeInstanceLock();
    StartResult listen();
    void releaseInstanceLock();
    void acceptLoop();
    void admit(int fd);
    void serve(Connection& connection);
    // Reads what the client sent; false when the connection ended or the server is stopping.
    bool receive(int fd, LineReader& reader);
    // False when the connection must end.
    bool answer(Connection& connection, const std::string& line);
    // With the table full, closes the connection idle the longest; false when all are busy.
    // Called with the mutex held.
    bool makeRoomLocked();
    // The client sent bytes or was answered; `busy` marks a request taken or answered.
    void noteActivity(Connection& connection, std::optional<bool> busy = std::nullopt);

    const std::filesystem::path socketPath_;
    MethodDispatcher& dispatcher_;
    MainQueue& mainQueue_;
    DeferredLogger log_;
    const MCPBridgeOptions options_;

    int serverFD_ = -1;
    // flock'ed "<socket>.lock", held while listening. The system lets it go when the process ends
    // however it ends, so two copies starting at the same moment cannot both pass the check for a
    // live socket.
    int instanceLockFd_ = -1;
    // Identifies the socket file this server bound, so stop() never removes another's.
    ino_t socketInode_ = 0;
    std::unique_ptr<StopSignal> stopSignal_;
    std::thread acceptThread_;

    std::mutex mutex_;
    bool stopping_ = false;
    std::list<std::unique_ptr<Connection>> connections_;
    // Orders connections by their last activity; counts events, not time, so nothing waits on a
    // clock and tests need none.
    std::uint64_t activityCount_ = 0;
};

}  // namespace corvetta
