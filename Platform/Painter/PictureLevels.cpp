// Makes the levels of pictures when they are needed, and keeps a list of all pictures, so that memory can be
// taken back from them.

#include "Platform/Painter/PictureLevels.h"

#include "Platform/Pixels/Rows/ParallelRows.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <set>
#include <utility>

namespace Imaging::Platform {

namespace {

/// All pictures that there are, so that memory can be taken back from them.
struct Pictures {
    std::mutex lock;
    std::set<PictureLevels*> all;
};

Pictures& pictures() {
    static auto* const instance = new Pictures; // never freed: pictures may outlive static objects
    return *instance;
}

/// Rows are read by all cores at once, each a band of its own.
std::shared_ptr<PixelImage> readWhole(const PictureRows& rows) {
    std::shared_ptr<PixelImage> image = PixelImage::uninitialised(rows.width(), rows.height());
    forEachRowBand(rows.height(), minimumRowsPerBand(rows.width()),
                   [&](std::int64_t first, std::int64_t end) {
                       for (int y = static_cast<int>(first); y < end; ++y) rows.read(y, image->row(y));
                   });
    return image;
}

/// Level 1 without a level 0: two rows at a time are read and halved while they are at hand.
std::shared_ptr<PixelImage> readHalved(const PictureRows& rows) {
    const int width = (rows.width() - 1) / 2 + 1;
    const int height = (rows.height() - 1) / 2 + 1;
    std::shared_ptr<PixelImage> image = PixelImage::uninitialised(width, height);
    forEachRowBand(height, minimumRowsPerBand(rows.width()), [&](std::int64_t first, std::int64_t end) {
        const auto length = static_cast<std::size_t>(rows.width());
        std::vector<std::uint32_t> above(length);
        std::vector<std::uint32_t> below(length);
        for (int y = static_cast<int>(first); y < end; ++y) {
            rows.read(2 * y, above.data());
            const bool last = 2 * y + 1 == rows.height();
            if (!last) rows.read(2 * y + 1, below.data());
            halveRows(above.data(), last ? above.data() : below.data(), rows.width(), true, image->row(y));
        }
    });
    return image;
}

} // namespace

PictureLevels::PictureLevels(std::shared_ptr<const PictureRows> rows)
    : m_rows(std::move(rows)),
      m_width(m_rows->width()),
      m_height(m_rows->height()),
      m_levels(static_cast<std::size_t>(levelCount())) {
    const std::lock_guard guard(pictures().lock);
    pictures().all.insert(this);
}

PictureLevels::PictureLevels(std::shared_ptr<PixelImage> pixels)
    : m_width(pixels->width()), m_height(pixels->height()), m_levels(static_cast<std::size_t>(levelCount())) {
    m_levels[0] = std::move(pixels);
    const std::lock_guard guard(pictures().lock);
    pictures().all.insert(this);
}

PictureLevels::~PictureLevels() {
    const std::lock_guard guard(pictures().lock);
    pictures().all.erase(this);
}

bool PictureLevels::isOpaque() const {
    const std::lock_guard guard(m_lock);
    return m_rows != nullptr && !m_changing && m_rows->isOpaque();
}

int PictureLevels::levelCount() const {
    return std::bit_width(static_cast<unsigned>(std::max(m_width, m_height) - 1)) + 1;
}

std::shared_ptr<PixelImage> PictureLevels::madeLevel(Levels& levels, int k) const {
    // From the next finer one; two levels up that recursion there is a picture or its rows.
    const auto index = static_cast<std::size_t>(k);
    if (levels[index] != nullptr) return levels[index];
    if (k == 0) {
        levels[0] = readWhole(*m_rows);
    } else if (k == 1 && levels[0] == nullptr) {
        levels[1] = readHalved(*m_rows);
    } else {
        levels[index] = halved(*madeLevel(levels, k - 1), true, true);
    }
    return levels[index];
}

// While somebody draws into the picture its halves change with every stroke, so they are made for this call
// alone.
std::shared_ptr<const PixelImage> PictureLevels::level(int k) {
    const std::lock_guard guard(m_lock);
    if (!m_changing) return madeLevel(m_levels, k);
    Levels passing(m_levels.size());
    passing[0] = m_levels[0];
    return madeLevel(passing, k);
}

std::shared_ptr<PixelImage> PictureLevels::pixels() {
    const std::lock_guard guard(m_lock);
    return madeLevel(m_levels, 0);
}

void PictureLevels::beginChanges() {
    const std::lock_guard guard(m_lock);
    madeLevel(m_levels, 0);
    m_changing = true;
}

void PictureLevels::endChanges(bool changed) {
    const std::lock_guard guard(m_lock);
    m_changing = false;
    if (!changed) return;
    std::fill(m_levels.begin() + 1, m_levels.end(), nullptr);
    m_rows = nullptr;
}

// The first word is enough to tell: pictures share pixels wholly or not at all.
bool PictureLevels::holds(const std::uint32_t* word) const {
    const std::lock_guard guard(m_lock);
    return m_levels[0] != nullptr && m_levels[0]->row(0) == word;
}

std::shared_ptr<PixelImage> PictureLevels::copiedPixels() {
    const std::shared_ptr<const PixelImage> from = level(0);
    std::shared_ptr<PixelImage> to = PixelImage::uninitialised(m_width, m_height);
    for (int y = 0; y < m_height; ++y) {
        std::memcpy(to->row(y), from->row(y), static_cast<std::size_t>(m_width) * sizeof(std::uint32_t));
    }
    return to;
}

// What was drawn into a picture exists nowhere else and stays; its halves can be made again.
void PictureLevels::letGo() {
    const std::lock_guard guard(m_lock);
    const bool keepsPixels = m_rows == nullptr || m_changing;
    std::fill(m_levels.begin() + (keepsPixels ? 1 : 0), m_levels.end(), nullptr);
}

void PictureLevels::letGoOfAll() {
    const std::lock_guard guard(pictures().lock);
    for (PictureLevels* const picture : pictures().all) picture->letGo();
}

} // namespace Imaging::Platform
