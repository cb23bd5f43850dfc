// An encoder is a child in a process group of its own, fed through a pipe; what it says on its standard error
// is kept for the message about its failure.

#include "Tools/Film/EncoderProcess.h"

#include "Tools/Command/Process.h"
#include "Tools/Command/Threads.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Imaging::Tool {

namespace {

constexpr std::size_t keptErrors = 16384;
constexpr std::size_t shownLines = 3;
constexpr int pipeBytes = 1 << 20; // what a process without privileges may ask for

void check(int number, const char* what) {
    if (number != 0) throw std::system_error(number, std::generic_category(), what);
}

struct Pipe {
    Pipe() { check(::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe"); }
    ~Pipe() {
        for (const int end : ends) {
            if (end >= 0) ::close(end);
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int take(std::size_t end) { return std::exchange(ends[end], -1); }
    std::array<int, 2> ends{-1, -1};
};

/// What a started program gets: its three descriptors, a process group of its own, and signals as usual. A
/// file that grows too large stays an error of the write, which it can report.
class SpawnSettings {
public:
    SpawnSettings(int input, int errors) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
        posix_spawnattr_init(&attributes);
        sigset_t usual;
        sigemptyset(&usual);
        posix_spawnattr_setsigmask(&attributes, &usual);
        sigaddset(&usual, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &usual);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                  static_cast<short>(POSIX_SPAWN_SETPGROUP));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

/// Without the addresses that programs put into their messages, which tell people nothing.
std::string withoutAddresses(std::string line) {
    const std::size_t at = line.find(" @ 0x");
    if (at == std::string::npos) return line;
    return line.erase(at, line.find_first_not_of("0123456789abcdef", at + 5) - at);
}

} // namespace

std::string foundProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (folder.empty()) continue; // would be the current folder, where nobody wants programs from
        const std::string file = (std::filesystem::path(folder) / name).string();
        std::error_code failure;
        if (std::filesystem::is_regular_file(file, failure) && ::access(file.c_str(), X_OK) == 0) return file;
    }
    return {};
}

std::string EncoderProcess::Ending::inWords() const {
    std::vector<std::string> lines;
    std::istringstream all(errors);
    for (std::string line; std::getline(all, line);) {
        line = withoutAddresses(line.substr(line.rfind('\r') + 1));
        const bool isNew = std::find(lines.begin(), lines.end(), line) == lines.end();
        if (line.find_first_not_of(" \t\r") != std::string::npos && isNew) lines.push_back(line);
    }
    std::string words;
    const std::size_t left = lines.size() - std::min(lines.size(), shownLines);
    for (std::size_t i = left; i < lines.size(); ++i) words += (words.empty() ? "" : "; ") + lines[i];
    if (signal != 0) return std::string("it was ended by a signal (") + ::strsignal(signal) + ")";
    return !words.empty() ? words : "it ended with status " + std::to_string(status) + " and said nothing";
}

EncoderProcess::EncoderProcess(const std::string& program, const std::vector<std::string>& arguments) {
    start(program, arguments);
    m_reader = threadWithoutSignals([this] { readErrors(); });
}

void EncoderProcess::start(const std::string& program, const std::vector<std::string>& arguments) {
    Pipe input;
    Pipe errors;
    // A larger pipe means fewer switches between the two; without it all goes as well.
    ::fcntl(input.ends[1], F_SETPIPE_SZ, pipeBytes);
    std::vector<std::string> texts = {program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    const SpawnSettings settings(input.ends[0], errors.ends[1]);
    const CreationScope started;
    pid_t process = 0;
    check(::posix_spawn(&process, program.c_str(), &settings.actions, &settings.attributes, pointers.data(),
                        environ),
          program.c_str());
    m_process = process;
    m_input = input.take(1);
    m_errors = errors.take(0);
}

EncoderProcess::~EncoderProcess() {
    {
        const CreationScope withoutInterrupt;
        kill();
    }
    closeInput();
    if (m_reader.joinable()) m_reader.join();
    ::close(m_errors);
}

void EncoderProcess::readErrors() {
    std::array<char, 4096> buffer{};
    while (true) {
        const ssize_t count = ::read(m_errors, buffer.data(), buffer.size());
        if (count == 0 || (count < 0 && errno != EINTR)) return;
        if (count > 0) m_said.append(buffer.data(), static_cast<std::size_t>(count));
        if (m_said.size() > 2 * keptErrors) m_said.erase(0, m_said.size() - keptErrors);
    }
}

void EncoderProcess::closeInput() {
    if (m_input >= 0) ::close(m_input);
    m_input = -1;
}

bool EncoderProcess::write(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(m_input, from, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        from += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

EncoderProcess::Ending EncoderProcess::finish() {
    closeInput();
    m_reader.join();
    siginfo_t ended{};
    const pid_t process = m_process;
    while (::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    {
        // From here on its number may be another process's, which an interrupt must not kill.
        const CreationScope withoutInterrupt;
        m_process = 0;
        ::waitpid(process, nullptr, 0);
    }
    Ending ending;
    ending.errors = m_said;
    (ended.si_code == CLD_EXITED ? ending.status : ending.signal) = ended.si_status;
    return ending;
}

void EncoderProcess::kill() noexcept {
    const pid_t process = m_process.exchange(0);
    if (process <= 0) return;
    ::kill(process, SIGKILL);
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace Imaging::Tool
