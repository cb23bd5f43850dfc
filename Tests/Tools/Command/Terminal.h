#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace TestSupport {

/// A pseudo terminal of 40 columns.
class Terminal {
public:
    Terminal() {
        m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
            throw std::runtime_error("no pseudo terminal");
        }
        m_slave = ::open(::ptsname(m_master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const winsize size{24, 40, 0, 0};
        ::ioctl(m_slave, TIOCSWINSZ, &size);
    }
    ~Terminal() {
        closeSlave();
        ::close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int slave() const { return m_slave; }
    void closeSlave() {
        if (m_slave >= 0) ::close(m_slave);
        m_slave = -1;
    }

    /// Reads until the text has appeared, or for "" until nobody has the terminal open any more.
    std::string readUntil(const std::string& text) {
        while (text.empty() || m_shown.find(text) == std::string::npos) {
            char buffer[4096];
            const ssize_t count = ::read(m_master, buffer, sizeof buffer);
            if (count <= 0) break;
            m_shown.append(buffer, static_cast<std::size_t>(count));
        }
        return m_shown;
    }

private:
    int m_master = -1;
    int m_slave = -1;
    std::string m_shown;
};

} // namespace TestSupport
