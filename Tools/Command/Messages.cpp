// Writes whole lines to standard error, so that those of several threads and processes do not mix, and finds
// the known word that is nearest to a mistyped one.

#include "Tools/Command/Messages.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace Imaging::Tool {

namespace {

std::mutex g_standard_error;
std::atomic<bool> g_status_shown = false;

constexpr std::string_view eraseLine = "\r\033[K";

/// As one write, so that lines of several processes do not mix. There is nobody to tell when it fails.
void writeToStandardError(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(STDERR_FILENO, text.data(), text.size());
        if (count <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// The number of insertions, deletions, changes and swaps of neighbours that make one word of the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[a.size()][b.size()];
}

} // namespace

Failure::Failure(std::string subject, const std::string& message)
    : std::runtime_error(message), m_subject(std::move(subject)) {}

Failure::~Failure() = default;

UsageError::~UsageError() = default;

std::string escaped(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // The control characters from U+0080 to U+009F are two bytes in UTF-8.
        const bool isSecondSet =
            byte == 0xC2 && i + 1 < text.size() && (static_cast<unsigned char>(text[i + 1]) & 0xE0) == 0x80;
        if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\t') {
            result += "\\t";
        } else if (byte < 0x20 || byte == 0x7F || isSecondSet) {
            const auto shown = isSecondSet ? static_cast<unsigned char>(text[++i]) : byte;
            result += {'\\', 'x', digits[shown >> 4], digits[shown & 15]};
        } else {
            result += text[i];
        }
    }
    return result;
}

void report(std::string_view subject, std::string_view message) {
    const std::lock_guard guard(g_standard_error);
    std::string line = g_status_shown.exchange(false) ? std::string(eraseLine) : std::string();
    line += "imaging: " + escaped(subject) + (subject.empty() ? "" : ": ") + escaped(message) + "\n";
    writeToStandardError(line);
}

void showStatus(const std::string& line) {
    const std::lock_guard guard(g_standard_error);
    g_status_shown = true;
    writeToStandardError(std::string(eraseLine) + line);
}

void eraseStatus() {
    const std::lock_guard guard(g_standard_error);
    eraseStatusInSignalHandler();
}

void eraseStatusInSignalHandler() {
    if (g_status_shown.exchange(false)) writeToStandardError(eraseLine);
}

std::string suggestion(std::string_view word, const std::vector<std::string>& known) {
    // A third of a word may be wrong; beyond that the two have little to do with one another.
    std::size_t allowed = std::max<std::size_t>(1, word.size() / 3);
    const std::string* nearest = nullptr;
    // Words of any length may come from outside, and the comparison takes time in proportion to them.
    if (word.size() > 64) return {};
    for (const std::string& candidate : known) {
        const std::size_t distance = editDistance(word, candidate);
        if (distance > allowed || (nearest != nullptr && distance == allowed)) continue;
        allowed = distance;
        nearest = &candidate;
    }
    return nearest != nullptr ? "; did you mean '" + *nearest + "'?" : std::string();
}

std::string enumeration(const std::vector<std::string>& words) {
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) result += i + 1 == words.size() ? " and " : ", ";
        result += words[i];
    }
    return result;
}

} // namespace Imaging::Tool
