#include "Tests/Tools/Support/Command.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace TestSupport {

namespace {

constexpr unsigned patience = 120; // seconds of processor time and of the clock

// Numbers of Linux's capabilities, which let root read what it may not.
constexpr unsigned long overridePermissions = 1;
constexpr unsigned long overrideReadPermissions = 2;

void check(bool worked, const char* what) {
    if (!worked) throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
    Pipe() { check(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe"); }
    std::array<int, 2> ends{};
};

/// In the new process: nothing but system calls from here on.
[[noreturn]] void becomeCommand(char* const* arguments, char* const* environment, const Surroundings& s,
                                int in, int out, int err) {
    if (!s.folder.empty() && ::chdir(s.folder.c_str()) != 0) _exit(126);
    if (!s.outputPath.empty()) out = ::open(s.outputPath.c_str(), O_WRONLY | O_CLOEXEC);
    ::dup2(in, STDIN_FILENO);
    s.closeOutput ? ::close(STDOUT_FILENO) : ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    if (s.fileSize.has_value()) {
        const rlimit limit{*s.fileSize, *s.fileSize};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    const rlimit time{patience, patience};
    ::setrlimit(RLIMIT_CPU, &time);
    if (s.withoutPrivileges) {
        // Refused where there are no such privileges to give up, and then permissions count anyway.
        ::prctl(PR_CAPBSET_DROP, overridePermissions);
        ::prctl(PR_CAPBSET_DROP, overrideReadPermissions);
    }
    ::alarm(patience); // goes on counting in the program
    ::execvpe(s.program.empty() ? IMAGING_COMMAND : s.program.c_str(), arguments, environment);
    _exit(127);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const Surroundings& surroundings) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
    for (const auto& [name, value] : surroundings.environment) {
        std::erase_if(all,
                      [&name = name](const std::string& entry) { return entry.starts_with(name + "="); });
        all.push_back(name + "=" + value);
    }
    return all;
}

/// Reads both to their ends at the same time, so that neither fills up.
void readAll(int out, int err, Result& result) {
    std::array<pollfd, 2> waiting{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    const std::array<std::string*, 2> texts{&result.out, &result.err};
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        ::poll(waiting.data(), waiting.size(), -1);
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i].fd < 0 || waiting[i].revents == 0) continue;
            std::array<char, 65536> buffer{};
            const ssize_t count = ::read(waiting[i].fd, buffer.data(), buffer.size());
            if (count > 0) texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
            if (count == 0 || (count < 0 && errno != EINTR)) waiting[i].fd = -1;
        }
    }
}

} // namespace

Command::Command(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
    std::vector<std::string> texts = {"imaging"};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = environmentWith(surroundings);
    const std::vector<char*> argumentPointers = pointersTo(texts);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const Pipe in;
    const Pipe out;
    const Pipe err;
    const auto written = ::write(in.ends[1], surroundings.input.data(), surroundings.input.size());
    check(written == static_cast<ssize_t>(surroundings.input.size()), "standard input");
    ::close(in.ends[1]);
    if (surroundings.outputNobodyReads) ::close(out.ends[0]);
    const int errorEnd = surroundings.errorDescriptor >= 0 ? surroundings.errorDescriptor : err.ends[1];
    m_process = ::fork();
    check(m_process >= 0, "fork");
    if (m_process == 0) {
        becomeCommand(argumentPointers.data(), environmentPointers.data(), surroundings, in.ends[0],
                      out.ends[1], errorEnd);
    }
    for (const int descriptor : {in.ends[0], out.ends[1], err.ends[1]}) ::close(descriptor);
    m_out = surroundings.outputNobodyReads ? -1 : out.ends[0];
    m_err = err.ends[0];
}

Command::~Command() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    for (const int descriptor : {m_out, m_err}) {
        if (descriptor >= 0) ::close(descriptor);
    }
}

Result Command::wait() {
    Result result;
    readAll(m_out, m_err, result);
    int status = 0;
    rusage usage{};
    while (::wait4(m_process, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    m_process = -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result.peakMemory = usage.ru_maxrss;
    return result;
}

Result run(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
    return Command(arguments, surroundings).wait();
}

std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

} // namespace TestSupport
