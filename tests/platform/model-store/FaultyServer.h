#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tessarune::testing {

/// What the server does with one request.
struct Reply {
    int status = 200;
    std::vector<std::string> headers = {};         ///< "Name: value"
    std::string body = {};                         ///< of the whole file
    bool honoursRange = true;                      ///< answers a range with 206 and the remainder
    std::optional<std::size_t> claimedLength = {}; ///< replaces the true length
    std::size_t sendAtMost = std::string::npos; ///< bytes of the body, then the connection is cut
    bool stalls = false;                        ///< sends no more, but stays connected

    static Reply whole(std::string file) { return {.body = std::move(file)}; }
    static Reply cut(std::string file, std::size_t after) {
        return {.body = std::move(file), .sendAtMost = after};
    }
    static Reply failure(int status, std::vector<std::string> headers = {}) {
        return {.status = status, .headers = std::move(headers), .body = "no"};
    }
    Reply withoutRanges() const {
        Reply other = *this;
        other.honoursRange = false;
        return other;
    }
    Reply stalling() const {
        Reply other = *this;
        other.stalls = true;
        return other;
    }
};

struct Request {
    std::string path;
    std::optional<std::size_t> rangeStart;
    std::size_t number = 0; ///< how many requests for this path came before
};

/// An HTTP server on a local port that fails as instructed. It serves each connection on a thread,
/// one request per connection, and stops with the object.
class FaultyServer {
  public:
    using Answer = std::function<Reply(const Request&)>;

    FaultyServer();
    ~FaultyServer();
    FaultyServer(const FaultyServer&) = delete;
    FaultyServer& operator=(const FaultyServer&) = delete;

    std::string url(const std::string& path) const;
    /// Sets the answer for a path. Paths without an answer are not found.
    void on(const std::string& path, Answer answer);
    void on(const std::string& path, std::string body);

    std::vector<Request> requests() const;
    /// Forgets the requests so far.
    void forget();
    /// The maximum number of connections open at the same time.
    std::size_t mostAtATime() const;

  private:
    void accept();
    void serve(int connection);
    Reply replyTo(Request& request);

    int listening_ = -1;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, Answer> answers_;
    std::vector<Request> requests_;
    std::vector<int> connections_;
    std::size_t open_ = 0;
    std::size_t mostOpen_ = 0;
    bool isEnding_ = false;
    std::vector<std::thread> serving_;
    std::thread accepting_;
};

} // namespace tessarune::testing
