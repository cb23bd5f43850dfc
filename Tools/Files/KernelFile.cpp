// Reads a text file of whole numbers line by line into the taps of a kernel.

#include "Tools/Files/KernelFile.h"

#include "Imaging/Kernel.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace Imaging::Tool {

namespace {

constexpr std::size_t longestSide = 999;

/// Reads one file and remembers where it is, for its messages.
class KernelReader {
public:
    KernelReader(std::string name, std::string option, std::string_view text)
        : m_name(std::move(name)), m_option(std::move(option)), m_text(text) {}

    std::shared_ptr<Imaging::IMGKernel> read() {
        while (!m_text.empty()) readLine();
        if (m_rows == 0) fail("there are no numbers in it");
        if (m_columns < 2) fail("a kernel needs two numbers in a row at least");
        return std::make_shared<Imaging::IMGKernel>(
            Platform::NSSize{static_cast<float>(m_columns), static_cast<float>(m_rows)}, m_taps.data(), "");
    }

private:
    [[noreturn]] void fail(const std::string& what) const {
        const std::string place = m_line > 0 ? "line " + std::to_string(m_line) + ": " : "";
        throw Failure(m_name,
                      m_option + ": " + place + what +
                          "; give rows of whole numbers, such as the three lines 0 1 0, 1 4 1 and 0 1 0");
    }

    void readLine() {
        ++m_line;
        const std::size_t end = std::min(m_text.find('\n'), m_text.size());
        std::string_view line = m_text.substr(0, end);
        m_text.remove_prefix(std::min(end + 1, m_text.size()));
        line = line.substr(0, line.find('#'));
        const std::size_t before = m_taps.size();
        while (skipSeparators(line)) m_taps.push_back(readNumber(line));
        addRow(m_taps.size() - before);
    }

    static bool skipSeparators(std::string_view& line) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t,\r"), line.size()));
        return !line.empty();
    }

    std::int32_t readNumber(std::string_view& line) const {
        std::int32_t number = 0;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        const std::size_t length = static_cast<std::size_t>(end - line.data());
        if (error != std::errc() ||
            line.substr(length, 1).find_first_not_of(" \t,\r") != std::string_view::npos) {
            fail("'" + escaped(line.substr(0, line.find_first_of(" \t,\r"))) +
                 "' is no whole number of 32 bits");
        }
        line.remove_prefix(length);
        return number;
    }

    void addRow(std::size_t length) {
        if (length == 0) return;
        if (m_rows > 0 && length != m_columns) {
            fail("there are " + std::to_string(length) + " numbers in this row and " +
                 std::to_string(m_columns) + " in the first");
        }
        m_columns = length;
        ++m_rows;
        if (m_columns > longestSide || m_rows > longestSide)
            fail("a kernel has 999 rows and columns at most");
    }

    std::string m_name;
    std::string m_option;
    std::string_view m_text;
    std::vector<std::int32_t> m_taps;
    std::size_t m_line = 0;
    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
};

} // namespace

std::shared_ptr<Imaging::IMGKernel> kernelOfFile(const std::string& path, const std::string& option) {
    const Platform::NSData bytes = readInput(path);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return KernelReader(shownName(path), option, text).read();
}

} // namespace Imaging::Tool
