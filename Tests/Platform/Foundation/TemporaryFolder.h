#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace TestSupport {

/// A folder for one test, removed with all in it when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "imaging-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        m_path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(std::string_view name) const { return (m_path / name).string(); }

    std::string write(std::string_view name, std::string_view content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string read(std::string_view name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// How many entries the folder has, temporary ones included.
    std::ptrdiff_t count() const {
        return std::distance(std::filesystem::directory_iterator(m_path),
                             std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_path;
};

/// Sets an environment variable, or unsets it for null, until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        const char* old = std::getenv(name);
        m_was_set = old != nullptr;
        if (m_was_set) m_old = old;
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    }
    ~ScopedVariable() { m_was_set ? setenv(m_name, m_old.c_str(), 1) : unsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    bool m_was_set = false;
    std::string m_old;
};

} // namespace TestSupport
