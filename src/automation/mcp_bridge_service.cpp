#include "automation/mcp_bridge_service.h"

#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "automation/line_reader.h"
#include "automation/method_dispatcher.h"
#include "automation/pending_answer.h"
#include "automation/socket_request.h"
#include "automation/unix_socket.h"
#include "diagnostics/log_excerpt.h"

namespace corvetta {

namespace {
constexpr int kListenBacklog = 8;
constexpr std::size_t kReadChunkBytes = 4096;
constexpr const char* kEvictedMessage =
    "Connection closed: it was the longest idle when another client needed room";
// After the process ran out of descriptors, accepting again at once would only spin.
constexpr std::chrono::milliseconds kAcceptBackOff{100};

std::string failedCall(const char* call, int number) {
    return std::string("MCPBridgeService: ") + call + "() failed: " + std::to_string(number);
}
}  // namespace

struct MCPBridgeService::Connection {
    // Closed by the connection's thread under the service's mutex, so the accept thread may
    // shut it down without racing a reuse of the number.
    UniqueFd fd;
    std::thread thread;
    // Set by the connection's thread as its last act, so the accept thread may join it.
    std::atomic<bool> finished{false};
    // The rest is guarded by the service's mutex.
    // The answer the thread waits for, if any.
    std::shared_ptr<PendingAnswer> waiting;
    // When the client last sent bytes or was answered, on the service's activity count.
    std::uint64_t lastActivity = 0;
    // Between taking a request line and sending its answer.
    bool busy = false;
    // Closed to make room for a new client; no longer counted.
    bool evicted = false;
};

MCPBridgeService::MCPBridgeService(std::filesystem::path socketPath, MethodDispatcher& dispatcher,
                                   MainQueue& mainQueue, LoggingService& logging,
                                   MCPBridgeOptions options)
    : socketPath_(std::move(socketPath)),
      dispatcher_(dispatcher),
      mainQueue_(mainQueue),
      log_(logging, kServiceName, LogCategory::mcp()),
      options_(options) {}

MCPBridgeService::~MCPBridgeService() {
    stop();
}

MCPBridgeService::StartResult MCPBridgeService::start() {
    if (serverFD_ >= 0) {
        return StartResult::listening;
    }
    const Logger& logger = log_.logger();
    logger.info("MCPBridgeService starting on " + socketPath_.string());
    const auto address = unixSocketAddress(socketPath_);
    if (!address) {
        logger.error("MCPBridgeService: socket path is longer than " +
                     std::to_string(maxUnixSocketPathBytes()) + " bytes: " + socketPath_.string());
        return StartResult::failed;
    }
    if (const auto early = prepareFolderAndPath()) {
        return *early;
    }
    const auto result = listen();
    if (result != StartResult::listening) {
        releaseInstanceLock();
    }
    return result;
}

MCPBridgeService::StartResult MCPBridgeService::listen() {
    const Logger& logger = log_.logger();
    const auto address = unixSocketAddress(socketPath_);
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!fd.isValid()) {
        logger.error(failedCall("socket", errno));
        return StartResult::failed;
    }
    prepareServedSocket(fd.get());
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        logger.error(failedCall("bind", errno));
        return StartResult::failed;
    }
    // The folder already keeps others out; the file's own mode is the second lock.
    struct stat bound {};
    if (::chmod(socketPath_.c_str(), 0600) != 0 || ::stat(socketPath_.c_str(), &bound) != 0) {
        logger.error(failedCall("chmod", errno));
        ::unlink(socketPath_.c_str());
        return StartResult::failed;
    }
    if (::listen(fd.get(), kListenBacklog) != 0) {
        logger.error(failedCall("listen", errno));
        ::unlink(socketPath_.c_str());
        return StartResult::failed;
    }

    serverFD_ = fd.release();
    socketInode_ = bound.st_ino;
    stopSignal_ = std::make_unique<StopSignal>();
    {
        std::lock_guard lock(mutex_);
        stopping_ = false;
    }
    logger.info("MCPBridgeService listening");
    acceptThread_ = std::thread([this] { acceptLoop(); });
    return StartResult::listening;
}

std::optional<MCPBridgeService::StartResult> MCPBridgeService::prepareFolderAndPath() {
    const Logger& logger = log_.logger();
    const auto folder = socketPath_.parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        logger.error("MCPBridgeService: could not create " + folder.string() + ": " +
                     error.message());
        return StartResult::failed;
    }
    // A folder of this user's is closed to everyone else; a shared one (say /tmp, for a socket
    // path given on the command line) is left as it is, the socket file's mode guarding it.
    struct stat info {};
    if (::stat(folder.c_str(), &info) == 0 && info.st_uid == ::geteuid() &&
        (info.st_mode & 07777) != 0700 && ::chmod(folder.c_str(), 0700) != 0) {
        logger.error(failedCall("chmod", errno) + " for " + folder.string());
        return StartResult::failed;
    }
    if (const auto locked = takeInstanceLock()) {
        return locked;
    }

    if (::lstat(socketPath_.c_str(), &info) == 0 && S_ISSOCK(info.st_mode)) {
        if (isUnixSocketAnswering(socketPath_)) {
            logger.warning("MCPBridgeService: another instance is already listening on " +
                           socketPath_.string());
            releaseInstanceLock();
            return StartResult::alreadyRunning;
        }
        ::unlink(socketPath_.c_str());
        logger.info("MCPBridgeService: removed a stale socket file");
    }
    // Anything else at the path is not ours to remove: bind() reports the clash.
    return std::nullopt;
}

std::optional<MCPBridgeService::StartResult> MCPBridgeService::takeInstanceLock() {
    const Logger& logger = log_.logger();
    const std::string lockPath = socketPath_.string() + ".lock";
    UniqueFd lock(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.isValid()) {
        logger.error(failedCall("open", errno) + " for " + lockPath);
        return StartResult::failed;
    }
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            logger.warning("MCPBridgeService: another instance is already listening on " +
                           socketPath_.string());
            return StartResult::alreadyRunning;
        }
        logger.error(failedCall("flock", errno) + " for " + lockPath);
        return StartResult::failed;
    }
    instanceLockFd_ = lock.release();
    return std::nullopt;
}

void MCPBridgeService::releaseInstanceLock() {
    if (instanceLockFd_ >= 0) {
        ::close(std::exchange(instanceLockFd_, -1));
    }
}

void MCPBridgeService::stop() {
    if (!acceptThread_.joinable()) {
        return;
    }
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        for (const auto& connection : connections_) {
            if (connection->waiting) {
                connection->waiting->abandon();
            }
        }
    }
    stopSignal_->raise();
    acceptThread_.join();
    // Nothing adds connections now that the accept thread has ended.
    std::list<std::unique_ptr<Connection>> connections;
    {
        std::lock_guard lock(mutex_);
        connections.swap(connections_);
    }
    for (const auto& connection : connections) {
        connection->thread.join();
    }
    ::close(std::exchange(serverFD_, -1));
    // Another server may have replaced the file meanwhile; only our own is removed.
    struct stat info {};
    if (::lstat(socketPath_.c_str(), &info) == 0 && info.st_ino == socketInode_) {
        ::unlink(socketPath_.c_str());
    }
    releaseInstanceLock();
    log_.info([] { return std::string("MCPBridgeService stopped"); });
}

void MCPBridgeService::acceptLoop() {
    for (;;) {
        const auto wait = waitForSocket(serverFD_, POLLIN, stopSignal_.get());
        if (wait == SocketWait::stopped) {
            return;
        }
        if (wait == SocketWait::failed) {
            log_.logger().error(failedCall("poll", errno));
            return;
        }
        const int fd = ::accept(serverFD_, nullptr, nullptr);
        if (fd >= 0) {
            admit(fd);
            continue;
        }
        const int error = errno;
        if (error == EINTR || error == EAGAIN || error == EWOULDBLOCK || error == ECONNABORTED) {
            continue;
        }
        log_.logger().error(failedCall("accept", error));
        if (error != EMFILE && error != ENFILE && error != ENOBUFS && error != ENOMEM) {
            return;
        }
        if (waitForSocket(stopSignal_->fd(), POLLIN, nullptr, kAcceptBackOff) !=
            SocketWait::timedOut) {
            return;
        }
    }
}

void MCPBridgeService::admit(int fd) {
    UniqueFd socket(fd);
    prepareServedSocket(fd);
    const auto peer = peerUserId(fd);
    if (!peer || *peer != options_.ownerUid) {
        log_.logger().warning("MCPBridgeService: refused a connection from " +
                              (peer ? "uid " + std::to_string(*peer) : "an unknown user"));
        return;
    }
    std::list<std::unique_ptr<Connection>> finished;
    std::lock_guard lock(mutex_);
    for (auto it = connections_.begin(); it != connections_.end();) {
        const auto current = it++;
        if ((*current)->finished) {
            finished.splice(finished.end(), connections_, current);
        }
    }
    for (const auto& connection : finished) {
        connection->thread.join();
    }
    if (!makeRoomLocked()) {
        const auto limit = std::to_string(options_.maxConnections);
        log_.logger().warning("MCPBridgeService: refused a connection: " + limit +
                              " connections are busy with requests");
        sendWithoutWaiting(fd, errorResponseLine(kUnknownRequestId,
                                                 "Too many connections (at most " + limit + ")"));
        return;
    }
    auto& connection = *connections_.emplace_back(std::make_unique<Connection>());
    connection.fd = std::move(socket);
    connection.lastActivity = ++activityCount_;
    connection.thread = std::thread([this, &connection] { serve(connection); });
}

bool MCPBridgeService::makeRoomLocked() {
    std::size_t counted = 0;
    Connection* longestIdle = nullptr;
    for (const auto& connection : connections_) {
        if (connection->evicted || connection->finished) {
            continue;
        }
        ++counted;
        if (!connection->busy &&
            (longestIdle == nullptr || connection->lastActivity < longestIdle->lastActivity)) {
            longestIdle = connection.get();
        }
    }
    if (counted < options_.maxConnections) {
        return true;
    }
    if (longestIdle == nullptr) {
        return false;
    }
    // Its thread sees the end of the stream, answers what it already holds, says why and ends.
    longestIdle->evicted = true;
    if (longestIdle->fd.isValid()) {
        ::shutdown(longestIdle->fd.get(), SHUT_RD);
    }
    log_.logger().info(
        "MCPBridgeService: closing the longest idle connection to make room for "
        "a new client");
    return true;
}

void MCPBridgeService::noteActivity(Connection& connection, std::optional<bool> busy) {
    std::lock_guard lock(mutex_);
    connection.lastActivity = ++activityCount_;
    if (busy) {
        connection.busy = *busy;
    }
}

void MCPBridgeService::serve(Connection& connection) {
    log_.debug([] { return std::string("MCPBridgeService: client connected"); });
    const int fd = connection.fd.get();
    LineReader reader(options_.maxLineBytes);
    for (bool open = true; open;) {
        auto next = reader.next();
        switch (next.kind) {
            case LineReader::Next::Kind::line:
                noteActivity(connection, true);
                open = answer(connection, next.text);
                break;
            case LineReader::Next::Kind::needMoreBytes:
                open = receive(fd, reader);
                if (open) {
                    noteActivity(connection);
                }
                break;
            case LineReader::Next::Kind::lineTooLong: {
                const auto limit = std::to_string(options_.maxLineBytes);
                log_.logger().warning("MCPBridgeService: request line longer than " + limit +
                                      " bytes; closing the connection");
                sendAll(fd,
                        errorResponseLine(kUnknownRequestId,
                                          "Request line longer than " + limit + " bytes"),
                        stopSignal_.get());
                open = false;
                break;
            }
        }
    }
    {
        std::lock_guard lock(mutex_);
        if (connection.evicted) {
            sendWithoutWaiting(fd, errorResponseLine(kUnknownRequestId, kEvictedMessage));
        }
        connection.fd.reset();
    }
    log_.debug([] { return std::string("MCPBridgeService: client disconnected"); });
    connection.finished = true;
}

bool MCPBridgeService::receive(int fd, LineReader& reader) {
    if (waitForSocket(fd, POLLIN, stopSignal_.get()) != SocketWait::ready) {
        return false;
    }
    char chunk[kReadChunkBytes];
    const ssize_t received = ::recv(fd, chunk, sizeof chunk, 0);
    if (received > 0) {
        reader.append(std::string_view(chunk, static_cast<std::size_t>(received)));
        return true;
    }
    return received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
}

bool MCPBridgeService::answer(Connection& connection, const std::string& line) {
    const int fd = connection.fd.get();
    auto request = parseSocketRequest(line);
    if (!request) {
        log_.debug([&] {
            return "MCPBridgeService: " + request.error().message + " (id " +
                   logExcerpt(request.error().id) + ")";
        });
        // Idle again before the client can see the answer, so its next move finds it idle.
        noteActivity(connection, false);
        return sendAll(fd, refusalResponseLine(request.error()), stopSignal_.get());
    }
    // Clients choose these texts, up to a megabyte each: only an excerpt goes to the log book.
    log_.debug([&] {
        return "MCPBridgeService: " + logExcerpt(request->method) + " (id " +
               logExcerpt(request->id) + ")";
    });

    auto pending = std::make_shared<PendingAnswer>();
    {
        std::lock_guard lock(mutex_);
        if (stopping_) {
            return false;
        }
        connection.waiting = pending;
    }
    // The work must not touch this service: it may run after the service is gone, and then the
    // abandoned answer tells it to do nothing.
    mainQueue_.post([pending, &dispatcher = dispatcher_, method = request->method,
                     params = std::move(request->params)] {
        if (pending->isAbandoned()) {
            return;
        }
        // Kept here as well, so an exception's text is delivered before the reply's guard
        // would answer that nothing was said.
        const MethodReply reply = makeMethodReply(pending);
        try {
            dispatcher.dispatch(method, params, reply);
        } catch (const std::exception& e) {
            pending->deliver(unexpected(std::string(e.what())));
        } catch (...) {
            pending->deliver(unexpected(std::string("Unknown error")));
        }
    });
    auto outcome = pending->wait();
    {
        std::lock_guard lock(mutex_);
        connection.waiting.reset();
    }
    noteActivity(connection, false);
    return outcome && sendAll(fd, outcomeResponseLine(request->id, *outcome), stopSignal_.get());
}

}  // namespace corvetta
