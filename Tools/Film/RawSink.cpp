// Frames are written as they are in memory, a row after the other.

#include "Tools/Film/RawSink.h"

#include "Platform/Foundation/Data.h"
#include "Tools/Command/Process.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/FilmFile.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace Imaging::Tool {

namespace {

bool isDeviceOrPipe(const std::string& path) {
    std::error_code failure;
    const auto status = std::filesystem::status(path, failure);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

class RawSink final : public FilmSink, private Unfinished {
public:
    RawSink(std::string path, PixelSize size);
    ~RawSink() override;

    void write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void> owner) override;
    void finish() override;

private:
    void undo() noexcept override {
        if (m_file.has_value()) m_file->remove();
    }
    void open();
    void writeFrame(const FrameView& frame) const;
    void writeAll(const void* bytes, std::size_t count) const;
    [[noreturn]] void fail() const { throw Failure(shownPath(m_path), Platform::writeErrorInWords(errno)); }

    std::string m_path;
    PixelSize m_size;
    std::optional<FilmFile> m_file; ///< what takes the place of an ordinary file
    int m_descriptor = -1;
    std::optional<UndoneOnInterrupt> m_undone;
};

RawSink::RawSink(std::string path, PixelSize size) : m_path(std::move(path)), m_size(size) {
    const CreationScope created;
    open();
    if (m_descriptor < 0) fail();
    m_undone.emplace(static_cast<Unfinished&>(*this));
}

RawSink::~RawSink() {
    m_undone.reset();
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void RawSink::open() {
    if (m_path == "-") {
        m_descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    } else if (isDeviceOrPipe(m_path)) {
        m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    } else {
        m_file.emplace(m_path, ".tmp");
        m_descriptor = m_file->openTemporary();
    }
}

void RawSink::write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void>) {
    for (std::uint64_t i = 0; i < times; ++i) writeFrame(frame);
}

void RawSink::writeFrame(const FrameView& frame) const {
    const auto width = static_cast<std::size_t>(m_size.width);
    const auto height = static_cast<std::size_t>(m_size.height);
    if (frame.wordsPerRow == width) return writeAll(frame.words, width * height * 4);
    for (std::size_t y = 0; y < height; ++y) writeAll(frame.words + y * frame.wordsPerRow, width * 4);
}

void RawSink::writeAll(const void* bytes, std::size_t count) const {
    const auto* from = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::write(m_descriptor, from, count);
        if (written < 0 && errno == EAGAIN) {
            pollfd request{m_descriptor, POLLOUT, 0};
            ::poll(&request, 1, -1);
        } else if (written < 0 && errno != EINTR) {
            fail();
        }
        if (written <= 0) continue;
        from += written;
        count -= static_cast<std::size_t>(written);
    }
}

void RawSink::finish() {
    // Some file systems report a full disk only here.
    if (::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR) fail();
    if (m_file.has_value()) m_file->commit();
}

} // namespace

std::unique_ptr<FilmSink> makeRawSink(const std::string& path, const FilmFormat& format) {
    return std::make_unique<RawSink>(path, format.size);
}

} // namespace Imaging::Tool
