#include "Platform/Foundation/Data.h"

#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Imaging::Platform;
using testing::HasSubstr;
using TestSupport::TemporaryFolder;

namespace {

ByteView bytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string text(const std::optional<NSData>& data) {
    return data.has_value() ? std::string(data->begin(), data->end()) : "(nothing)";
}

/// The superuser may read and write everything, so permissions are tested as somebody else.
class OrdinaryUser {
public:
    OrdinaryUser() : m_user(geteuid()) {
        if (m_user == 0 && seteuid(65534) != 0) throw std::runtime_error("cannot become an ordinary user");
    }
    ~OrdinaryUser() {
        if (seteuid(m_user) != 0) std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    uid_t m_user;
};

/// The most that a file may hold, as on a disk with little room left.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit{bytes, m_old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        m_old_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_old_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_old{};
    void (*m_old_handler)(int) = nullptr;
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

std::string readSome(int descriptor) {
    std::array<char, 65536> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    return count <= 0 ? std::string() : std::string(buffer.data(), static_cast<std::size_t>(count));
}

} // namespace

TEST(ReadingFiles, GivesEveryByte) {
    const TemporaryFolder folder;
    std::string content;
    for (int i = 0; i < 300'000; ++i) content += static_cast<char>(i * 7 + i / 256);
    EXPECT_EQ(text(dataWithContentsOfFile(folder.write("a", content), 300'000)), content);
    EXPECT_EQ(text(dataWithContentsOfFile(folder.write("empty", ""), 0)), "");
}

TEST(ReadingFiles, TakesExactlyTheLimitAndNotAByteMore) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "12345");
    NSError error;
    EXPECT_EQ(text(dataWithContentsOfFile(path, 5, &error)), "12345");
    EXPECT_EQ(error.code, NSErrorCode::None);
    EXPECT_EQ(dataWithContentsOfFile(path, 4, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::TooLarge);
    EXPECT_EQ(error.message, "it holds more than the limit of 4 bytes");
}

TEST(ReadingFiles, SaysWhenThereIsNoFile) {
    const TemporaryFolder folder;
    NSError error;
    EXPECT_EQ(dataWithContentsOfFile(folder.path("missing"), 10, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::FileNotFound);
    EXPECT_EQ(error.message, "there is no such file");
    EXPECT_EQ(dataWithContentsOfFile("", 10, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::FileNotFound);
    const std::string path = folder.write("a", "x");
    EXPECT_EQ(dataWithContentsOfFile(path + "/b", 10, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::FileNotFound);
    EXPECT_EQ(dataWithContentsOfFile(path + '\0' + "b", 10, &error), std::nullopt);
}

TEST(ReadingFiles, RefusesFolders) {
    const TemporaryFolder folder;
    NSError error;
    EXPECT_EQ(dataWithContentsOfFile(folder.path(""), 10, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::FileUnreadable);
    EXPECT_EQ(error.message, "this is a folder, not a file");
}

TEST(ReadingFiles, SaysWhenReadingIsNotPermitted) {
    const TemporaryFolder folder;
    const std::string path = folder.write("secret", "x");
    chmod(path.c_str(), 0);
    chmod(folder.path("").c_str(), 0755);
    const OrdinaryUser user;
    NSError error;
    EXPECT_EQ(dataWithContentsOfFile(path, 10, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::FileUnreadable);
    EXPECT_EQ(error.message, "reading it is not permitted");
}

TEST(ReadingFiles, ReadsSpecialFilesUpToTheLimit) {
    NSError error;
    EXPECT_EQ(dataWithContentsOfFile("/dev/zero", 1'000'000, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::TooLarge);
    EXPECT_EQ(text(dataWithContentsOfFile("/dev/null", 10)), "");
    // A file that says it has 0 bytes.
    EXPECT_THAT(text(dataWithContentsOfFile("/proc/self/status", 1 << 20)), HasSubstr("Name:"));
}

TEST(ReadingFiles, ReadsAPipeUntilItEnds) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(write(ends[1], "through", 7), 7);
    close(ends[1]);
    EXPECT_EQ(text(dataWithContentsOfFile("/dev/fd/" + std::to_string(ends[0]), 10)), "through");
    close(ends[0]);
}

TEST(WritingFiles, MakesAFileWithEveryByteAndNothingElse) {
    const TemporaryFolder folder;
    const std::string content("a\0b\xFF", 4);
    ASSERT_TRUE(writeToFileAtomically(bytes(content), folder.path("new")));
    EXPECT_EQ(folder.read("new"), content);
    ASSERT_TRUE(writeToFileAtomically({}, folder.path("empty")));
    EXPECT_EQ(folder.read("empty"), "");
    EXPECT_EQ(folder.count(), 2);
}

TEST(WritingFiles, NewFilesHaveTheModeThatTheUmaskLeaves) {
    const TemporaryFolder folder;
    const mode_t old = umask(027);
    ASSERT_TRUE(writeToFileAtomically(bytes("x"), folder.path("new")));
    umask(old);
    EXPECT_EQ(modeOf(folder.path("new")), 0640u);
}

TEST(WritingFiles, ReplacedFilesKeepTheirMode) {
    const TemporaryFolder folder;
    const std::string path = folder.write("old", "a much longer content than the new one");
    chmod(path.c_str(), 0751);
    ASSERT_TRUE(writeToFileAtomically(bytes("new"), path));
    EXPECT_EQ(folder.read("old"), "new");
    EXPECT_EQ(modeOf(path), 0751u);
    EXPECT_EQ(folder.count(), 1);
}

TEST(WritingFiles, WhoeverHasTheOldFileOpenKeepsSeeingIt) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    const int reader = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_TRUE(writeToFileAtomically(bytes("new"), path));
    EXPECT_EQ(readSome(reader), "old");
    close(reader);
}

TEST(WritingFiles, SymbolicLinksStayAndTheirTargetIsReplaced) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("elsewhere"));
    const std::string target = folder.write("elsewhere/target", "old");
    std::filesystem::create_symlink("elsewhere/target", folder.path("second"));
    std::filesystem::create_symlink(folder.path("second"), folder.path("first"));
    ASSERT_TRUE(writeToFileAtomically(bytes("new"), folder.path("first")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("first")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("second")));
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    EXPECT_EQ(folder.read("elsewhere/target"), "new");
}

TEST(WritingFiles, ALinkToNothingGetsItsTarget) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("target", folder.path("link"));
    ASSERT_TRUE(writeToFileAtomically(bytes("new"), folder.path("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
    EXPECT_EQ(folder.read("target"), "new");
}

TEST(WritingFiles, RefusesLinksInACircle) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b", folder.path("a"));
    std::filesystem::create_symlink("a", folder.path("b"));
    NSError error;
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), folder.path("a"), &error));
    EXPECT_EQ(error.message, "the symbolic links lead in a circle");
    EXPECT_EQ(folder.count(), 2);
}

TEST(WritingFiles, SaysWhenTheFolderDoesNotExist) {
    const TemporaryFolder folder;
    NSError error;
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), folder.path("no/such/file"), &error));
    EXPECT_EQ(error.code, NSErrorCode::FileUnwritable);
    EXPECT_EQ(error.message, "the folder does not exist");
    const std::string path = folder.write("a", "");
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), path + "/b", &error));
    EXPECT_EQ(error.message, "a part of the path is not a folder");
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), "", &error));
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), folder.path(std::string(300, 'n')), &error));
    EXPECT_EQ(error.message, "the name is too long");
}

TEST(WritingFiles, RefusesFolders) {
    const TemporaryFolder folder;
    NSError error;
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), folder.path(""), &error));
    EXPECT_EQ(error.message, "this is a folder, not a file");
    EXPECT_EQ(folder.count(), 0);
}

TEST(WritingFiles, WorksForTheLongestName) {
    const TemporaryFolder folder;
    const std::string name(255, 'n');
    ASSERT_TRUE(writeToFileAtomically(bytes("x"), folder.path(name)));
    EXPECT_EQ(folder.read(name), "x");
}

TEST(WritingFiles, ANameWithoutAFolderIsInTheCurrentOne) {
    const TemporaryFolder folder;
    const std::filesystem::path old = std::filesystem::current_path();
    std::filesystem::current_path(folder.path(""));
    const bool written = writeToFileAtomically(bytes("x"), "plain");
    std::filesystem::current_path(old);
    EXPECT_TRUE(written);
    EXPECT_EQ(folder.read("plain"), "x");
}

TEST(WritingFiles, SaysWhenWritingIsNotPermitted) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    chmod(path.c_str(), 0444);
    chmod(folder.path("").c_str(), 0777);
    const OrdinaryUser user;
    NSError error;
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), path, &error));
    EXPECT_EQ(error.code, NSErrorCode::FileUnwritable);
    EXPECT_EQ(error.message, "writing there is not permitted");
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), "/proc/new", &error));
    EXPECT_EQ(folder.count(), 1);
}

TEST(WritingFiles, AFailureLeavesTheOldFileAndNoTemporaryOne) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "old");
    const std::string large(100'000, 'x');
    NSError error;
    {
        const FileSizeLimit limit(4096);
        EXPECT_FALSE(writeToFileAtomically(bytes(large), path, &error));
        EXPECT_FALSE(writeToFileAtomically(bytes(large), folder.path("b")));
    }
    EXPECT_EQ(error.code, NSErrorCode::FileUnwritable);
    EXPECT_EQ(error.message, "the file would be larger than the system permits");
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(folder.count(), 1);
}

TEST(WritingFiles, SaysWhenTheDiskIsFull) {
    NSError error;
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), "/dev/full", &error));
    EXPECT_EQ(error.code, NSErrorCode::FileUnwritable);
    EXPECT_EQ(error.message, "the disk is full");
    struct stat status {};
    ASSERT_EQ(stat("/dev/full", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST(WritingFiles, WritesDevicesAndPipesInPlace) {
    const TemporaryFolder folder;
    EXPECT_TRUE(writeToFileAtomically(bytes("x"), "/dev/null"));
    const std::string path = folder.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_TRUE(writeToFileAtomically(bytes("through"), path));
    EXPECT_EQ(readSome(reader), "through");
    close(reader);
    EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST(WritingFiles, ContinuesAnOpenDescriptorWhereItStands) {
    const TemporaryFolder folder;
    const int descriptor = open(folder.path("log").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(write(descriptor, "first ", 6), 6);
    EXPECT_TRUE(writeToFileAtomically(bytes("second "), "/dev/fd/" + std::to_string(descriptor)));
    EXPECT_TRUE(writeToFileAtomically(bytes("third"), "/proc/self/fd/" + std::to_string(descriptor)));
    close(descriptor);
    EXPECT_EQ(folder.read("log"), "first second third");
    EXPECT_EQ(folder.count(), 1);
    EXPECT_FALSE(writeToFileAtomically(bytes("x"), "/dev/fd/" + std::to_string(descriptor)));
}

TEST(WritingFiles, WaitsForAPipeThatDoesNotBlock) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    const std::string content(1'000'000, 'p');
    std::string received;
    std::thread reader([&] {
        for (std::string part = readSome(ends[0]); !part.empty(); part = readSome(ends[0])) received += part;
    });
    EXPECT_TRUE(writeToFileAtomically(bytes(content), "/dev/fd/" + std::to_string(ends[1])));
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_EQ(received, content);
}
