#include "Tools/Film/PictureCheck.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Command/Threads.h"
#include "Tools/Files/Input.h"
#include "Tools/Pictures/Canvas.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <system_error>

namespace Imaging::Tool {

using Platform::NSData;

namespace {

constexpr std::size_t checkers = 2;

/// Formats that are checked by decoding them are so one at a time, since a picture takes much memory.
std::mutex g_decoding;

void checkPicture(const NSData& bytes, const std::string& name) {
    const std::shared_ptr<const Platform::Codec> codec = Platform::codecForData(bytes);
    try {
        if (codec == nullptr) {
            Platform::readPictureHeader(bytes); // which says why
        } else if (codec->checksWithoutPixels()) {
            codec->check(bytes, Platform::pictureLimits());
        } else {
            const std::lock_guard guard(g_decoding);
            codec->check(bytes, Platform::pictureLimits());
        }
    } catch (const Platform::NSException& exception) {
        throw Failure(shownName(name), exception.reason());
    }
}

void checkBytes(const NSData& bytes, const std::string& name) {
    if (Platform::looksLikePropertyList(bytes)) {
        const std::lock_guard guard(g_decoding);
        requireDrawable(nodeWithBytes(bytes, name), name);
    } else {
        checkPicture(bytes, name);
    }
}

std::string pathOf(std::FILE* file) { return "/proc/self/fd/" + std::to_string(::fileno(file)); }

} // namespace

PictureCheck::PictureCheck(const std::vector<ShowPicture>& pictures, bool quiet) {
    for (const ShowPicture& picture : pictures) {
        if (m_places.emplace(picture.name, m_inputs.size()).second) m_inputs.push_back({picture.name});
    }
    checkAll(quiet);
    for (const Input& input : m_inputs) {
        if (!input.why.empty()) m_bad.push_back({shownName(input.name), input.why});
    }
}

void PictureCheck::checkAll(bool quiet) {
    Progress progress(m_inputs.size(), quiet);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < m_inputs.size(); i = next++) {
            progress.beginStep("checking " + shownName(m_inputs[i].name));
            check(m_inputs[i]);
        }
    };
    std::vector<std::thread> others;
    for (std::size_t i = 1; i < std::min(checkers, m_inputs.size()); ++i)
        others.push_back(threadWithoutSignals(work));
    work();
    for (std::thread& other : others) other.join();
}

void PictureCheck::check(Input& input) {
    try {
        const NSData bytes = readInput(input.name);
        checkBytes(bytes, input.name);
        if (isURL(input.name) || isStandardInput(input.name)) keepCopy(input, bytes);
    } catch (const std::bad_alloc&) {
        input.why = "there is not enough memory for it";
    } catch (const std::exception& failure) {
        input.why = failure.what();
    }
}

void PictureCheck::keepCopy(Input& input, const NSData& bytes) {
    input.copy.reset(std::tmpfile());
    const bool isKept = input.copy != nullptr &&
                        std::fwrite(bytes.data(), 1, bytes.size(), input.copy.get()) == bytes.size() &&
                        std::fflush(input.copy.get()) == 0;
    if (!isKept) {
        throw Failure(input.name, "no copy of it can be kept in a temporary file: " +
                                      std::generic_category().message(errno));
    }
    ::fcntl(::fileno(input.copy.get()), F_SETFD, FD_CLOEXEC);
}

std::string PictureCheck::source(const std::string& name) const {
    const auto found = m_places.find(name);
    if (found == m_places.end() || m_inputs[found->second].copy == nullptr) return name;
    return pathOf(m_inputs[found->second].copy.get());
}

std::string PictureCheck::nameOf(const std::string& source) const {
    for (const Input& input : m_inputs) {
        if (input.copy != nullptr && pathOf(input.copy.get()) == source) return shownName(input.name);
    }
    return source;
}

bool PictureCheck::isBad(const std::string& name) const {
    const auto found = m_places.find(name);
    return found != m_places.end() && !m_inputs[found->second].why.empty();
}

} // namespace Imaging::Tool
