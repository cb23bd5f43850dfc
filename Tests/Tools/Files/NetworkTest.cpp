#include "Tests/Support/LoopbackServer.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

using namespace TestSupport;

namespace {

/// Every subcommand refuses the URL with this line and leaves nothing.
void expectRefusal(const std::string& url, const std::string& message,
                   std::vector<std::string> options = {}) {
    const TemporaryFolder folder;
    for (const std::vector<std::string>& beginning :
         std::vector<std::vector<std::string>>{{"info", url},
                                               {"draw", url, "-o", folder.path("a.png")},
                                               {"archive", url, "-o", folder.path("a.graph")},
                                               {"sheet", url, "-o", folder.path("a.png")}}) {
        std::vector<std::string> arguments = beginning;
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "imaging: " + url + ": " + message + "\n");
        EXPECT_EQ(folder.count(), 0);
    }
}

} // namespace

TEST(CommandNetwork, ReadsPicturesFromURLs) {
    LoopbackServer server;
    const Picture picture = randomPicture(6, 5, 12);
    server.route("/a.png", LoopbackServer::answer(200, pngOf(picture), "image/png"));
    server.route("/elsewhere", LoopbackServer::redirect("/a.png"));
    const TemporaryFolder folder;
    for (const char* target : {"/a.png", "/a.png?size=large", "/elsewhere"}) {
        const Result result = run({"draw", server.url(target), "-o", folder.path("a.png")});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(pictureOfPNG(folder.read("a.png")).pixels, picture.pixels);
    }
    const Result info = run({"info", server.url("/a.png")});
    EXPECT_EQ(info.status, 0);
    EXPECT_THAT(info.out, testing::HasSubstr("  PNG     6 x 5 "));
}

TEST(CommandNetwork, PutsThePictureOfAURLIntoTheArchive) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(6, 5, 13);
    {
        LoopbackServer server;
        server.route("/a.png", LoopbackServer::answer(200, pngOf(picture), "image/png"));
        ASSERT_EQ(run({"archive", server.url("/a.png"), "-o", folder.path("a.graph")}).status, 0);
    }
    ASSERT_EQ(run({"draw", folder.path("a.graph"), "-o", folder.path("a.png")}).status, 0);
    EXPECT_EQ(pictureOfPNG(folder.read("a.png")).pixels, picture.pixels);
}

TEST(CommandNetwork, NamesTheAnswerOfTheServer) {
    LoopbackServer server;
    expectRefusal(server.url("/missing.png"), "the server answered 404 (not found)");
}

TEST(CommandNetwork, GivesUpOnAServerThatStalls) {
    LoopbackServer server;
    server.route("/slow.png", [](const auto&, LoopbackServer::Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nabc");
        connection.waitUntilClosed();
    });
    const std::string url = server.url("/slow.png");
    const Result result = run({"info", "--timeout", "0.3", url});
    EXPECT_EQ(result.status, 1);
    // Both limits are the same, and which of them is noticed first is chance.
    EXPECT_THAT(result.err, testing::AnyOf("imaging: " + url +
                                               ": nothing arrived for 0.3 s; the server may be down, "
                                               "try again later\n",
                                           "imaging: " + url +
                                               ": it did not arrive within 0.3 s; the network may be "
                                               "slow, try again later\n"));
}

TEST(CommandNetwork, GivesUpOnRedirectsThatNeverEnd) {
    LoopbackServer server;
    server.route("/round", LoopbackServer::redirect("/round"));
    expectRefusal(server.url("/round"), "redirected more than 8 times");
}

TEST(CommandNetwork, FollowsNoRedirectToFiles) {
    LoopbackServer server;
    server.route("/file", LoopbackServer::redirect("file:///etc/passwd"));
    expectRefusal(server.url("/file"), "it redirects to a URL that is not http or https");
}

TEST(CommandNetwork, GivesUpOnServersThatSendTooMuch) {
    LoopbackServer server;
    server.route("/announced", [](const auto&, LoopbackServer::Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4000000000000\r\n\r\nabc");
        connection.waitUntilClosed();
    });
    expectRefusal(server.url("/announced"), "it holds more than the limit of 1073741824 bytes");
    server.route("/endless", [](const auto&, LoopbackServer::Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        const std::string piece(65536, 'x');
        while (connection.send(piece)) {
        }
    });
    expectRefusal(server.url("/endless"), "it holds more than the limit of 2097152 bytes",
                  {"--max-download", "2"});
}

TEST(CommandNetwork, RefusesOtherSchemesAndWhatIsNoURL) {
    expectRefusal("ftp://localhost/a.png", "URLs must begin with file:, http: or https:");
    expectRefusal("http://local host/a.png",
                  "this is not a URL; spaces and special characters in one are written as "
                  "%20 and the like");
}

TEST(CommandNetwork, NamesServersThatAreNotThere) {
    std::string url;
    {
        LoopbackServer server; // its port is free again afterwards
        url = server.url("/a.png");
    }
    expectRefusal(url, "the server refused the connection or could not be reached");
}
