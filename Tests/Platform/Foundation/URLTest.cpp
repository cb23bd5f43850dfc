#include "Platform/Foundation/URL.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace Imaging::Platform;

namespace {

std::string pathOf(std::string_view text) {
    const std::optional<NSURL> url = NSURL::URLWithString(text);
    return url.has_value() ? url->path() : "(no URL)";
}

} // namespace

TEST(URL, KeepsItsTextAndGivesItsSchemeInLowerCase) {
    const std::optional<NSURL> url = NSURL::URLWithString("HTTPS://user@Example.org:81/a%20b.png?x=1#f");
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->absoluteString(), "HTTPS://user@Example.org:81/a%20b.png?x=1#f");
    EXPECT_EQ(url->scheme(), "https");
    EXPECT_EQ(url->path(), "/a b.png");
    EXPECT_FALSE(url->isFileURL());
}

TEST(URL, NeedsASchemeAndSomethingAfterIt) {
    for (const char* text : {"", "picture.png", "/tmp/a.png", "//host/a", ":", "://", "1http://host",
                             "ht tp://host/", "http:", "file:", "-x:y", "a/b:c"}) {
        EXPECT_FALSE(NSURL::URLWithString(text).has_value()) << text;
    }
}

TEST(URL, RefusesTextThatCannotBeOne) {
    for (const char* text : {"http://", "http:///a", "http:/a", "https:a", "http://host/a b",
                             "http://host/a\nb", "http://host:99999/", "http://host:port/", "http://[::1/a",
                             "http://ho<st/", "file://elsewhere/a"}) {
        EXPECT_FALSE(NSURL::URLWithString(text).has_value()) << text;
    }
    EXPECT_FALSE(NSURL::URLWithString(std::string_view("http://host/\0a", 14)).has_value());
}

TEST(URL, KnowsUsualForms) {
    EXPECT_EQ(pathOf("http://127.0.0.1:8080/a.png"), "/a.png");
    EXPECT_EQ(pathOf("http://[::1]:8080/a/../b.png?q=/z"), "/a/../b.png");
    EXPECT_EQ(pathOf("http://host"), "/");
    EXPECT_EQ(pathOf("http://host/\xC3\xA4.png"), "/\xC3\xA4.png");
    EXPECT_EQ(pathOf("ftp://host/a.png"), "/a.png");
    EXPECT_EQ(pathOf("mailto:somebody%40host"), "somebody@host");
    EXPECT_EQ(NSURL::URLWithString("data:image/png;base64,AAAA")->scheme(), "data");
}

TEST(URL, FileURLsNameAPathInTheFileSystem) {
    EXPECT_EQ(pathOf("file:///tmp/a%20b%23.png"), "/tmp/a b#.png");
    EXPECT_EQ(pathOf("FILE://localhost/tmp/a"), "/tmp/a");
    EXPECT_EQ(pathOf("file:/tmp/a"), "/tmp/a");
    EXPECT_EQ(pathOf("file:///tmp/link/../a"), "/tmp/link/../a");
    EXPECT_EQ(pathOf("file:///tmp/100%"), "/tmp/100%");
    EXPECT_EQ(pathOf("file:///tmp/%zz%4"), "/tmp/%zz%4");
    EXPECT_TRUE(NSURL::URLWithString("file:///tmp/a")->isFileURL());
}

TEST(URL, EncodesWhatAURLCannotHold) {
    EXPECT_EQ(NSURL::fileURLWithPath("/tmp/a b?c#d%e.png").absoluteString(),
              "file:///tmp/a%20b%3Fc%23d%25e.png");
    EXPECT_EQ(NSURL::fileURLWithPath("/tmp/\xC3\xA4").absoluteString(), "file:///tmp/%C3%A4");
    EXPECT_EQ(NSURL::fileURLWithPath("/tmp/a-b_c.d~e(1),2").absoluteString(), "file:///tmp/a-b_c.d~e(1),2");
}

TEST(URL, EveryPathGoesThereAndBack) {
    std::string path = "/";
    for (int c = 1; c < 256; ++c) path += static_cast<char>(c);
    for (const std::string& p :
         {path, std::string("/"), std::string("/a//b/./c/../d"), std::string("/x y/\n\t")}) {
        const NSURL url = NSURL::fileURLWithPath(p);
        EXPECT_EQ(url.path(), p);
        const std::optional<NSURL> again = NSURL::URLWithString(url.absoluteString());
        ASSERT_TRUE(again.has_value()) << url.absoluteString();
        EXPECT_EQ(again->path(), p);
    }
}

TEST(URL, RelativePathsAreTakenFromTheCurrentFolder) {
    const std::string folder = std::filesystem::current_path().string();
    EXPECT_EQ(NSURL::fileURLWithPath("a/b.png").path(), folder + "/a/b.png");
}
