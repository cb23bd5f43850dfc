#include "Tests/Support/LoopbackServer.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sstream>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace TestSupport {

namespace {

void check(bool worked, const char* what) {
    if (!worked) throw std::system_error(errno, std::generic_category(), what);
}

std::string lowerCase(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

LoopbackServer::Request parsed(const std::string& head) {
    LoopbackServer::Request request;
    std::istringstream lines(head);
    lines >> request.method >> request.target;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        const std::size_t colon = line.find(": ");
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (colon != std::string::npos)
            request.headers[lowerCase(line.substr(0, colon))] = line.substr(colon + 2);
    }
    return request;
}

} // namespace

/// False when the server ends.
bool LoopbackServer::Connection::waitFor(short events) {
    std::array<pollfd, 2> requests{pollfd{m_client, events, 0}, pollfd{m_stop, POLLIN, 0}};
    while (::poll(requests.data(), requests.size(), -1) < 0) {
        if (errno != EINTR) return false;
    }
    return requests[1].revents == 0;
}

bool LoopbackServer::Connection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!waitFor(POLLOUT)) return false;
        const ssize_t count = ::send(m_client, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool LoopbackServer::Connection::receive(std::string& bytes) {
    std::array<char, 4096> buffer{};
    if (!waitFor(POLLIN)) return false;
    const ssize_t count = ::recv(m_client, buffer.data(), buffer.size(), 0);
    if (count <= 0) return false;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

void LoopbackServer::Connection::waitUntilClosed() {
    std::string ignored;
    while (receive(ignored)) ignored.clear();
}

LoopbackServer::LoopbackServer() {
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    check(m_listener >= 0, "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    check(::bind(m_listener, generic, size) == 0, "bind");
    check(::listen(m_listener, 64) == 0, "listen");
    check(::getsockname(m_listener, generic, &size) == 0, "getsockname");
    m_port = ntohs(address.sin_port);
    m_stop = ::eventfd(0, EFD_CLOEXEC);
    check(m_stop >= 0, "eventfd");
    m_acceptor = std::thread([this] { acceptConnections(); });
}

LoopbackServer::~LoopbackServer() {
    eventfd_write(m_stop, 1);
    m_acceptor.join();
    for (std::thread& worker : m_workers) worker.join();
    ::close(m_listener);
    ::close(m_stop);
}

void LoopbackServer::acceptConnections() {
    Connection listener(m_listener, m_stop);
    while (listener.waitFor(POLLIN)) {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) m_workers.emplace_back([this, client] { serve(client); });
    }
}

void LoopbackServer::serve(int client) {
    Connection connection(client, m_stop);
    std::string head;
    while (head.find("\r\n\r\n") == std::string::npos && head.size() < 65536) {
        if (!connection.receive(head)) break;
    }
    if (head.find("\r\n\r\n") != std::string::npos) {
        const Request request = parsed(head);
        const Handler handler = handlerFor(request);
        handler(request, connection);
    }
    ::close(client);
}

LoopbackServer::Handler LoopbackServer::handlerFor(const Request& request) {
    const std::lock_guard guard(m_lock);
    m_requests.push_back(request);
    const auto found = m_routes.find(request.target.substr(0, request.target.find('?')));
    return found == m_routes.end() ? answer(404, "nothing here") : found->second;
}

void LoopbackServer::route(const std::string& target, Handler handler) {
    const std::lock_guard guard(m_lock);
    m_routes[target] = std::move(handler);
}

std::string LoopbackServer::url(std::string_view target) const {
    return "http://127.0.0.1:" + std::to_string(m_port) + std::string(target);
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard guard(m_lock);
    return m_requests;
}

LoopbackServer::Handler LoopbackServer::answer(int status, std::string body, std::string contentType) {
    return [=](const Request&, Connection& connection) {
        connection.send("HTTP/1.1 " + std::to_string(status) +
                        " Status\r\nConnection: close\r\nContent-Type: " + contentType +
                        "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    };
}

LoopbackServer::Handler LoopbackServer::redirect(std::string location) {
    return [=](const Request&, Connection& connection) {
        connection.send("HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " +
                        location + "\r\n\r\n");
    };
}

} // namespace TestSupport
