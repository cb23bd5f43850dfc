// Also tests: Tools/Command/Process.cpp
// Also tests: Tools/Command/Progress.cpp

#include "Tests/Support/LoopbackServer.h"
#include "Tests/Tools/Command/Terminal.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <condition_variable>
#include <csignal>
#include <mutex>

using namespace TestSupport;

namespace {

/// A door that one thread waits at until another opens it.
class Door {
public:
    void open() {
        const std::lock_guard guard(m_lock);
        m_open = true;
        m_opened.notify_all();
    }
    void wait() {
        std::unique_lock guard(m_lock);
        m_opened.wait(guard, [this] { return m_open; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_opened;
    bool m_open = false;
};

LoopbackServer::Handler answerBehind(Door& asked, Door& mayAnswer) {
    return
        [&asked, &mayAnswer](const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
            asked.open();
            mayAnswer.wait();
            LoopbackServer::answer(200, pngOf(Picture(2, 2, red)), "image/png")(request, connection);
        };
}

} // namespace

TEST(CommandInterruption, EndsByTheSignalAndLeavesNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const TemporaryFolder folder;
        Door asked;
        Door mayAnswer;
        LoopbackServer server;
        server.route("/a.png", answerBehind(asked, mayAnswer));
        Command command({"draw", server.url("/a.png"), "-o", folder.path("a.png")});
        asked.wait();
        ::kill(command.process(), number);
        const Result result = command.wait();
        mayAnswer.open();
        EXPECT_EQ(result.signal, number);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(folder.count(), 0);
    }
}

TEST(CommandProgress, ShowsALineOnATerminalOnceItTakesLong) {
    const TemporaryFolder folder;
    const std::string first = folder.write("first.png", pngOf(Picture(2, 2, red)));
    Door asked;
    Door mayAnswer;
    LoopbackServer server;
    server.route("/a-name-that-does-not-fit-into-forty-columns.png", answerBehind(asked, mayAnswer));
    const std::string url = server.url("/a-name-that-does-not-fit-into-forty-columns.png");
    Terminal terminal;
    Command command({"info", first, url}, {.errorDescriptor = terminal.slave()});
    terminal.closeSlave();
    const std::string before = terminal.readUntil(" left: ");
    EXPECT_THAT(before, testing::StartsWith("\r\x1b[K2 of 2, about "));
    mayAnswer.open();
    const Result result = command.wait();
    const std::string all = terminal.readUntil("");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(all.find('\n'), std::string::npos) << "only ever one line";
    EXPECT_THAT(all, testing::EndsWith("\r\x1b[K")) << "which is gone at the end";
    for (std::size_t i = 0; (i = all.find("\x1b[K", i)) != std::string::npos; i += 3) {
        const std::size_t end = all.find('\r', i);
        const std::size_t length = end == std::string::npos ? all.size() - i - 3 : end - i - 3;
        EXPECT_LT(length, 40U) << "a line never wraps";
    }
}

TEST(CommandProgress, ShowsNothingWhenItIsQuick) {
    const TemporaryFolder folder;
    Terminal terminal;
    Command command({"info", folder.path("missing.png")}, {.errorDescriptor = terminal.slave()});
    terminal.closeSlave();
    EXPECT_EQ(command.wait().status, 1);
    EXPECT_EQ(terminal.readUntil(""),
              "imaging: " + folder.path("missing.png") + ": there is no such file\r\n");
}

TEST(CommandProgress, ShowsNothingWhenItIsToBeQuietOrThereIsNoTerminal) {
    for (const bool onTerminal : {true, false}) {
        Door asked;
        Door mayAnswer;
        LoopbackServer server;
        server.route("/a.png", answerBehind(asked, mayAnswer));
        // It has to give up after longer than it takes for the line to show.
        std::vector<std::string> arguments = {"info", "--timeout", "1.2", server.url("/a.png")};
        if (onTerminal) arguments.emplace_back("--quiet");
        Terminal terminal;
        Command command(arguments, {.errorDescriptor = onTerminal ? terminal.slave() : -1});
        terminal.closeSlave();
        const Result result = command.wait();
        mayAnswer.open();
        EXPECT_EQ(result.status, 1);
        const std::string shown = onTerminal ? terminal.readUntil("") : result.err;
        EXPECT_THAT(shown, testing::StartsWith("imaging: http://127.0.0.1:"));
        EXPECT_EQ(shown.find('\x1b'), std::string::npos);
    }
}
