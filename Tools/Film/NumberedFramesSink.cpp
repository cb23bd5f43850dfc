// Frames are encoded by several threads and written under their numbers; until the end their names are kept,
// so that they can be taken away again.

#include "Tools/Film/NumberedFramesSink.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Foundation/Data.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Process.h"
#include "Tools/Command/Threads.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <deque>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Imaging::Tool {

namespace {

constexpr std::size_t leastDigits = 6;
constexpr std::size_t encoders = 2;

/// Names of frames, also in signal handlers: no memory is taken after the beginning.
class FrameNames {
public:
    FrameNames(const std::string& folder, std::string_view suffix, std::uint64_t lastFrame)
        : m_suffix(suffix), m_digits(std::max(leastDigits, std::to_string(lastFrame).size())) {
        m_prefix = folder + (folder.ends_with('/') ? "" : "/") + "frame-";
    }

    bool fits() const { return m_prefix.size() + m_digits + m_suffix.size() < PATH_MAX; }

    /// Of a frame that is counted from 0.
    std::array<char, PATH_MAX> operator()(std::uint64_t frame) const noexcept {
        std::array<char, PATH_MAX> name{};
        char* const digits = std::copy(m_prefix.begin(), m_prefix.end(), name.begin());
        std::uint64_t left = frame + 1;
        for (std::size_t i = m_digits; i-- > 0; left /= 10) digits[i] = static_cast<char>('0' + left % 10);
        std::copy(m_suffix.begin(), m_suffix.end(), digits + m_digits);
        return name;
    }

private:
    std::string m_prefix;
    std::string m_suffix;
    std::size_t m_digits;
};

class NumberedFramesSink final : public FilmSink, private Unfinished {
public:
    NumberedFramesSink(std::string folder, FrameFileType type, double quality, const FilmFormat& format,
                       std::uint64_t lastFrame);
    ~NumberedFramesSink() override;

    void write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void> owner) override;
    void finish() override;

private:
    struct Job {
        FrameView frame;
        std::uint64_t first = 0;
        std::uint64_t times = 0;
        std::shared_ptr<const void> owner;
    };

    /// The frames of the job that an encoder works on: those before `next` were begun. For signal handlers.
    struct Place {
        std::atomic<std::uint64_t> next = 0;
        std::atomic<std::uint64_t> end = 0;
    };

    void undo() noexcept override;
    void makeFolder();
    void encodeUntilTheEnd(Place& place);
    void begin(const Job& job, Place& place);
    void encode(const Job& job, Place& place);
    Platform::NSData encoded(const FrameView& frame) const;
    void stop();

    const std::string m_folder;
    const PixelSize m_size;
    const std::uint64_t m_first;
    const double m_quality;
    const FrameNames m_names;
    std::shared_ptr<const Platform::Codec> m_codec;
    bool m_made_folder = false;
    std::atomic<std::uint64_t> m_end; ///< no frame from this one on was begun
    std::array<Place, encoders> m_places;
    std::uint64_t m_next; ///< the frame after those that were given
    std::atomic<bool> m_done = false;
    std::atomic<bool> m_stopping = false; ///< what is begun is not wanted any more
    std::optional<UndoneOnInterrupt> m_undone;

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    std::size_t m_running = 0;
    std::exception_ptr m_failure;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

NumberedFramesSink::NumberedFramesSink(std::string folder, FrameFileType type, double quality,
                                       const FilmFormat& format, std::uint64_t lastFrame)
    : m_folder(std::move(folder)),
      m_size(format.size),
      m_first(format.firstFrame),
      m_quality(quality),
      m_names(m_folder, type == FrameFileType::PNG ? ".png" : ".jpg", lastFrame + 1),
      m_codec(Platform::codecForFormat(type == FrameFileType::PNG ? "PNG" : "JPEG")),
      m_end(format.firstFrame),
      m_next(format.firstFrame) {
    if (!m_names.fits()) throw Failure(m_folder, Platform::writeErrorInWords(ENAMETOOLONG));
    makeFolder();
    m_undone.emplace(static_cast<Unfinished&>(*this));
    for (Place& place : m_places) {
        m_threads.push_back(threadWithoutSignals([this, &place] { encodeUntilTheEnd(place); }));
    }
}

NumberedFramesSink::~NumberedFramesSink() {
    stop();
    if (!m_done) {
        const CreationScope withoutInterrupt;
        undo();
        m_done = true;
    }
}

void NumberedFramesSink::stop() {
    {
        const std::lock_guard guard(m_lock);
        m_ending = true;
        m_stopping = true;
        m_jobs.clear();
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) thread.join();
    m_threads.clear();
}

void NumberedFramesSink::makeFolder() {
    m_made_folder = ::mkdir(m_folder.c_str(), 0777) == 0;
    if (m_made_folder) return;
    const int number = errno;
    std::error_code failure;
    if (number == EEXIST && std::filesystem::is_directory(m_folder, failure)) return;
    if (number == ENOENT) throw Failure(m_folder, "the folder above it does not exist; make it first");
    throw Failure(m_folder, number == EEXIST ? "there is a file of this name; choose another folder"
                                             : Platform::writeErrorInWords(number));
}

void NumberedFramesSink::undo() noexcept {
    if (m_done) return;
    const std::uint64_t end = m_end;
    for (std::uint64_t frame = m_first; frame < end; ++frame) {
        // A picture may stand still for millions of frames that were not begun.
        for (const Place& place : m_places) {
            if (frame >= place.next && frame < place.end) frame = place.end;
        }
        if (frame < end) ::unlink(m_names(frame).data());
    }
    if (m_made_folder) ::rmdir(m_folder.c_str());
}

/// Takes a frame over where an encoder is free, so that no more frames wait here than are encoded.
void NumberedFramesSink::write(const FrameView& frame, std::uint64_t times,
                               std::shared_ptr<const void> owner) {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [&] { return m_jobs.size() + m_running < encoders || m_failure != nullptr; });
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
    m_jobs.push_back({frame, m_next, times, std::move(owner)});
    m_next += times;
    guard.unlock();
    m_changed.notify_all();
}

void NumberedFramesSink::begin(const Job& job, Place& place) {
    const CreationScope withoutInterrupt;
    place.end = 0;
    place.next = job.first;
    place.end = job.first + job.times;
    m_end = std::max<std::uint64_t>(m_end, job.first + job.times);
}

void NumberedFramesSink::encodeUntilTheEnd(Place& place) {
    std::unique_lock guard(m_lock);
    while (true) {
        m_changed.wait(guard, [&] { return m_ending || !m_jobs.empty(); });
        if (m_ending) return;
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        begin(job, place);
        ++m_running;
        guard.unlock();
        std::exception_ptr failure;
        try {
            encode(job, place);
        } catch (...) {
            failure = std::current_exception();
        }
        job = {};
        guard.lock();
        --m_running;
        if (m_failure == nullptr) m_failure = failure;
        m_changed.notify_all();
    }
}

Platform::NSData NumberedFramesSink::encoded(const FrameView& frame) const {
    Platform::PictureHeader header;
    header.width = static_cast<std::uint32_t>(m_size.width);
    header.height = static_cast<std::uint32_t>(m_size.height);
    const std::size_t bytesPerRow = std::size_t{header.width} * 3;
    auto pixels = Platform::PixelBuffer::uninitialised(bytesPerRow * header.height);
    for (std::size_t y = 0; y < header.height; ++y) {
        const std::uint32_t* from = frame.words + y * frame.wordsPerRow;
        std::uint8_t* to = pixels.data() + y * bytesPerRow;
        for (std::size_t x = 0; x < header.width; ++x, to += 3) {
            to[0] = static_cast<std::uint8_t>(from[x] >> 16);
            to[1] = static_cast<std::uint8_t>(from[x] >> 8);
            to[2] = static_cast<std::uint8_t>(from[x]);
        }
    }
    return m_codec->encode({header, pixels.data(), bytesPerRow, true}, {m_quality, false});
}

/// A picture that stands still is encoded once.
void NumberedFramesSink::encode(const Job& job, Place& place) {
    const Platform::NSData data = encoded(job.frame);
    for (std::uint64_t frame = job.first; frame < job.first + job.times && !m_stopping; ++frame) {
        const std::string path = m_names(frame).data();
        Platform::NSError error;
        const CreationScope created;
        place.next = frame + 1;
        if (!Platform::writeToFileAtomically(data, path, &error)) throw Failure(path, error.message);
    }
}

void NumberedFramesSink::finish() {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [&] { return (m_jobs.empty() && m_running == 0) || m_failure != nullptr; });
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
    m_done = true;
}

} // namespace

std::unique_ptr<FilmSink> makeNumberedFramesSink(const std::string& folder, FrameFileType type,
                                                 double quality, const FilmFormat& format,
                                                 std::uint64_t lastFrame) {
    const CreationScope created;
    return std::make_unique<NumberedFramesSink>(folder, type, quality, format, lastFrame);
}

} // namespace Imaging::Tool
