// What all subcommands have in common: their operands, and the options that limit what is fetched from URLs.

#include "Tools/Command/Subcommand.h"

#include "Platform/Foundation/URLLoading.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Values.h"

#include <algorithm>
#include <utility>

namespace Imaging::Tool {

namespace {

/// Every single limit on time is at most the one that was asked for, so that the whole takes no longer.
void limitTransfers(double seconds) {
    Platform::URLLimits limits = Platform::urlLimits();
    limits.totalTimeout = std::chrono::milliseconds(std::max(1LL, static_cast<long long>(seconds * 1000)));
    limits.connectTimeout = std::min(limits.connectTimeout, limits.totalTimeout);
    limits.stallTimeout = std::min(limits.stallTimeout, limits.totalTimeout);
    Platform::setURLLimits(limits);
}

} // namespace

Subcommand::~Subcommand() = default;

OptionTable Subcommand::allOptions() {
    return joined({options(),
                   {{"--timeout", "SECONDS", "Give up on a URL after so many seconds (300)",
                     into(m_timeout, parseSeconds)},
                    {"--max-download", "MIB", "Give up on a URL that sends more than this (1024)",
                     into(m_max_download, wholeNumber(1, 1 << 20))},
                    {"-q,--quiet", "", "Show no progress, also on a terminal", raise(m_quiet)}}});
}

void Subcommand::setOperands(std::vector<std::string> operands) {
    m_operands = std::move(operands);
    checkOperands();
}

ExitStatus Subcommand::runWithLimits() {
    if (m_timeout.has_value()) limitTransfers(*m_timeout);
    if (m_max_download.has_value()) {
        Platform::URLLimits limits = Platform::urlLimits();
        limits.maximumBytes = static_cast<std::uint64_t>(*m_max_download) << 20;
        Platform::setURLLimits(limits);
    }
    return run();
}

void Subcommand::requireOperands(const std::string& what) const {
    if (m_operands.empty()) throw UsageError(what + " is missing");
    const bool hasEmpty =
        std::any_of(m_operands.begin(), m_operands.end(), [](const auto& o) { return o.empty(); });
    if (hasEmpty) throw UsageError("a name is empty");
}

void Subcommand::requireOneOperand(const std::string& what) const {
    requireOperands(what);
    if (m_operands.size() > 1)
        throw UsageError("'" + m_operands[1] + "' is one too many: this takes one input only");
}

void Subcommand::refuseOperands() const {
    if (!m_operands.empty()) throw UsageError("'" + m_operands[0] + "' is too many: this takes no input");
}

} // namespace Imaging::Tool
