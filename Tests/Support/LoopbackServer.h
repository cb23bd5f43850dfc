#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A small HTTP server for tests, reachable on this machine only.
namespace TestSupport {

/// Listens on a free port of 127.0.0.1 from construction to destruction. Each connection carries one request
/// and has a thread of its own; a handler runs on that. The destructor wakes handlers that wait, closes all
/// connections and ends all threads.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string target;                         ///< as it was sent: "/a.png?x=1"
        std::map<std::string, std::string> headers; ///< names in lower case
    };

    /// The client's side of the line, for handlers.
    class Connection {
    public:
        /// Sends everything; false when the client has left or the server ends.
        bool send(std::string_view bytes);

        /// Returns when the client has left or the server ends.
        void waitUntilClosed();

    private:
        friend class LoopbackServer;
        Connection(int client, int stop) : m_client(client), m_stop(stop) {}
        bool waitFor(short events);
        bool receive(std::string& bytes);

        int m_client;
        int m_stop;
    };

    using Handler = std::function<void(const Request&, Connection&)>;

    /// Throws std::system_error when no port can be had.
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// What a target answers; a query is not part of it. Others answer 404. May be called at any time.
    void route(const std::string& target, Handler handler);

    std::uint16_t port() const { return m_port; }

    /// "http://127.0.0.1:PORT" and the target.
    std::string url(std::string_view target) const;

    /// The requests so far, in the order in which they came.
    std::vector<Request> requests() const;

    /// Handlers for usual answers. `answer` closes with a Content-Length.
    static Handler answer(int status, std::string body, std::string contentType = "text/plain");
    static Handler redirect(std::string location);

private:
    void acceptConnections();
    void serve(int client);
    Handler handlerFor(const Request& request);

    int m_listener = -1;
    int m_stop = -1; ///< an eventfd that is readable from the end on
    std::uint16_t m_port = 0;
    mutable std::mutex m_lock;
    std::map<std::string, Handler> m_routes;
    std::vector<Request> m_requests;
    std::vector<std::thread> m_workers; ///< grows on the accepting thread only
    std::thread m_acceptor;
};

} // namespace TestSupport
