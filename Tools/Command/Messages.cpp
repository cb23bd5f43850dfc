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

} // namespace Imaging::Tool
