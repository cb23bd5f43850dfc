// Each input is a job of a queue with two threads. What has to be decoded to be checked is so one at a time,
// since a picture takes much memory.

#include "Tools/Film/PictureCheck.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Foundation/JobQueue.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Show/StepCheck.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Files/Input.h"
#include "Tools/Pictures/Canvas.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <set>
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

PictureCheck::PictureCheck(const Show& show, bool quiet, Extent extent)
    : m_show(show), m_is_bad(show.pictures.size()) {
    for (std::size_t i = 0; i < show.pictures.size(); ++i) {
        const ShowPicture& picture = show.pictures[i];
        if (extent == Extent::ThoseWithOperations && picture.steps.empty()) continue;
        const auto [place, isNew] = m_places.emplace(picture.name, m_inputs.size());
        if (isNew) m_inputs.push_back({.name = picture.name});
        m_inputs[place->second].uses.push_back({.picture = i});
    }
    checkAll(quiet);
    noteBadPictures();
}

void PictureCheck::checkAll(bool quiet) {
    Progress progress(m_inputs.size(), quiet);
    Platform::JobQueue jobs(checkers);
    for (Input& input : m_inputs) {
        jobs.add([this, &progress, &input] {
            progress.beginStep("checking " + shownName(input.name));
            check(input);
        });
    }
    jobs.wait();
}

/// In the order in which the film has the pictures that they are first found with.
void PictureCheck::noteBadPictures() {
    std::map<std::size_t, BadPicture> found;
    for (const Input& input : m_inputs) {
        if (!input.why.empty()) found[input.uses.front().picture] = {shownName(input.name), input.why};
        std::set<std::pair<std::string, std::string>> told;
        for (const Use& use : input.uses) {
            m_is_bad[use.picture] = !input.why.empty() || !use.found.why.empty();
            const bool isNew = !use.found.why.empty() && told.emplace(use.found.name, use.found.why).second;
            if (isNew) found[use.picture] = use.found;
        }
    }
    for (auto& [picture, bad] : found) m_bad.push_back(std::move(bad));
}

void PictureCheck::check(Input& input) const {
    try {
        const NSData bytes = readInput(input.name);
        checkBytes(bytes, input.name);
        checkOperations(input, bytes);
        if (isURL(input.name) || isStandardInput(input.name)) keepCopy(input, bytes);
    } catch (const std::bad_alloc&) {
        input.why = "there is not enough memory for it";
    } catch (const std::exception& failure) {
        input.why = failure.what();
    }
}

/// One picture at a time, since operations may need pixels, and masks are pictures too.
void PictureCheck::checkOperations(Input& input, const NSData& bytes) const {
    for (Use& use : input.uses) {
        const ShowPicture& picture = m_show.pictures[use.picture];
        if (picture.steps.empty()) continue;
        const std::lock_guard guard(g_decoding);
        try {
            naming(input.name, [&] { checkSteps(picture, m_show.asStored, bytes, makeItSmaller); });
        } catch (const Failure& failure) {
            use.found = {failure.subject(), failure.what()};
        }
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

} // namespace Imaging::Tool
