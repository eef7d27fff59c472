#include "tests/platform/model-store/FaultyServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace tessarune::testing {

namespace {

std::string readHead(int connection) {
    std::string head;
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = ::recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0)
            return {};
        head.append(buffer, static_cast<std::size_t>(count));
    }
    return head;
}

Request requestFrom(const std::string& head) {
    Request request;
    const std::size_t from = head.find(' ') + 1;
    request.path = head.substr(from, head.find(' ', from) - from);
    constexpr std::string_view range = "Range: bytes=";
    if (const std::size_t at = head.find(range); at != std::string::npos)
        request.rangeStart = std::stoul(head.substr(at + range.size()));
    return request;
}

void sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace

FaultyServer::FaultyServer() : listening_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listening_, generic, length) != 0 || ::listen(listening_, 16) != 0 ||
        ::getsockname(listening_, generic, &length) != 0)
        throw std::runtime_error("no port for a test server");
    port_ = ntohs(address.sin_port);
    accepting_ = std::thread([this] { accept(); });
}

FaultyServer::~FaultyServer() {
    {
        std::lock_guard lock(mutex_);
        isEnding_ = true;
        for (const int connection : connections_)
            ::shutdown(connection, SHUT_RDWR);
    }
    ::shutdown(listening_, SHUT_RDWR);
    accepting_.join();
    for (std::thread& thread : serving_)
        thread.join();
    ::close(listening_);
}

std::string FaultyServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void FaultyServer::on(const std::string& path, Answer answer) {
    std::lock_guard lock(mutex_);
    answers_[path] = std::move(answer);
}

void FaultyServer::on(const std::string& path, std::string body) {
    on(path, [body = std::move(body)](const Request&) { return Reply::whole(body); });
}

std::vector<Request> FaultyServer::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void FaultyServer::forget() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

std::size_t FaultyServer::mostAtATime() const {
    std::lock_guard lock(mutex_);
    return mostOpen_;
}

void FaultyServer::accept() {
    for (;;) {
        const int connection = ::accept(listening_, nullptr, nullptr);
        std::lock_guard lock(mutex_);
        if (connection < 0 || isEnding_) {
            if (connection >= 0)
                ::close(connection);
            return;
        }
        connections_.push_back(connection);
        mostOpen_ = std::max(mostOpen_, ++open_);
        serving_.emplace_back([this, connection] { serve(connection); });
    }
}

Reply FaultyServer::replyTo(Request& request) {
    Answer answer;
    {
        std::lock_guard lock(mutex_);
        for (const Request& earlier : requests_)
            request.number += earlier.path == request.path ? 1 : 0;
        requests_.push_back(request);
        if (const auto found = answers_.find(request.path); found != answers_.end())
            answer = found->second;
    }
    return answer ? answer(request) : Reply{.status = 404, .body = "not here"};
}

void FaultyServer::serve(int connection) {
    const std::string head = readHead(connection);
    if (!head.empty()) {
        Request request = requestFrom(head);
        Reply reply = replyTo(request);
        std::string range;
        if (reply.honoursRange && request.rangeStart && reply.status == 200) {
            const std::size_t size = reply.body.size();
            const std::size_t start = std::min(*request.rangeStart, size);
            reply.status = start < size ? 206 : 416;
            range = "Content-Range: bytes " + std::to_string(start) + "-" +
                    std::to_string(size - 1) + "/" + std::to_string(size) + "\r\n";
            reply.body.erase(0, start);
        }
        std::string answer = "HTTP/1.1 " + std::to_string(reply.status) + " So\r\n" + range;
        for (const std::string& header : reply.headers)
            answer += header + "\r\n";
        answer +=
            "Content-Length: " + std::to_string(reply.claimedLength.value_or(reply.body.size())) +
            "\r\nConnection: close\r\n\r\n";
        sendAll(connection, answer);
        sendAll(connection, std::string_view(reply.body).substr(0, reply.sendAtMost));
        char byte = 0;
        if (reply.stalls)
            ::recv(connection, &byte, 1, 0); // until the client closes the connection
    }
    std::lock_guard lock(mutex_);
    std::erase(connections_, connection);
    --open_;
    ::close(connection);
}

} // namespace tessarune::testing
