// Colours are counted in a table of cells, boxes of cells are cut in two where that helps most, their means
// become the palette, and each pixel gets the nearest colour of it.

#include "Platform/Codecs/Support/ColorReduction.h"

#include "Platform/Codecs/Support/CodecSupport.h"
#include "Platform/Codecs/Support/StraightRows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace Imaging::Platform {

namespace {

using Color = std::array<std::uint8_t, 3>;

/// Similar colours are counted together: those with the same upper 6 bits of each sample.
constexpr std::uint32_t cellBits = 6;
constexpr std::size_t cellCount = std::size_t{1} << (3 * cellBits);

constexpr int opaqueFrom = 128;
constexpr int meanRounds = 3;

std::size_t cellOf(const std::uint8_t* rgb) {
    constexpr std::uint32_t shift = 8 - cellBits;
    const std::uint32_t red = std::uint32_t{rgb[0]} >> shift;
    const std::uint32_t green = std::uint32_t{rgb[1]} >> shift;
    return red << (2 * cellBits) | green << cellBits | std::uint32_t{rgb[2]} >> shift;
}

/// The pixels of one cell: how many, and the mean of their colours.
struct Cell {
    std::size_t number = 0;
    double weight = 0;
    std::array<double, 3> mean{};
};

/// Some of the cells, which lie together, and what the colours of their pixels deviate from the mean.
struct Box {
    std::size_t first = 0;
    std::size_t last = 0; ///< one behind
    std::size_t axis = 0; ///< the sample that deviates most
    double deviation = 0; ///< the sum of squares along all axes
};

Box measuredBox(const std::vector<Cell>& cells, std::size_t first, std::size_t last) {
    Box box{first, last, 0, 0};
    double largest = -1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double weight = 0;
        double sum = 0;
        double squares = 0;
        for (std::size_t i = first; i < last; ++i) {
            weight += cells[i].weight;
            sum += cells[i].weight * cells[i].mean[axis];
            squares += cells[i].weight * cells[i].mean[axis] * cells[i].mean[axis];
        }
        const double deviation = squares - sum * sum / weight;
        box.deviation += last - first > 1 ? std::max(deviation, 0.0) : 0;
        if (deviation > largest) box.axis = axis;
        largest = std::max(largest, deviation);
    }
    return box;
}

/// Where to cut sorted cells so that both parts together deviate least, which is where the sum of
/// (sum of the part)^2 / (weight of the part) is largest.
std::size_t bestCut(const std::vector<Cell>& cells, const Box& box) {
    double weight = 0;
    double sum = 0;
    for (std::size_t i = box.first; i < box.last; ++i) {
        weight += cells[i].weight;
        sum += cells[i].weight * cells[i].mean[box.axis];
    }
    std::size_t best = box.first + 1;
    double largest = -1;
    double lowerWeight = 0;
    double lowerSum = 0;
    for (std::size_t i = box.first; i + 1 < box.last; ++i) {
        lowerWeight += cells[i].weight;
        lowerSum += cells[i].weight * cells[i].mean[box.axis];
        const double upperSum = sum - lowerSum;
        const double gain = lowerSum * lowerSum / lowerWeight + upperSum * upperSum / (weight - lowerWeight);
        if (gain > largest) best = i + 1;
        largest = std::max(largest, gain);
    }
    return best;
}

std::vector<Box> cutBoxes(std::vector<Cell>& cells, std::size_t count) {
    std::vector<Box> boxes = {measuredBox(cells, 0, cells.size())};
    while (boxes.size() < count) {
        const auto widest = std::max_element(
            boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.deviation < b.deviation; });
        if (widest->deviation <= 0) break;
        const Box box = *widest;
        const auto begin = cells.begin() + static_cast<std::ptrdiff_t>(box.first);
        const auto end = cells.begin() + static_cast<std::ptrdiff_t>(box.last);
        std::sort(begin, end, [&](const Cell& a, const Cell& b) {
            const double left = a.mean[box.axis];
            const double right = b.mean[box.axis];
            return left != right ? left < right : a.number < b.number;
        });
        const std::size_t cut = bestCut(cells, box);
        *widest = measuredBox(cells, box.first, cut);
        boxes.push_back(measuredBox(cells, cut, box.last));
    }
    return boxes;
}

template<class Sample>
std::size_t nearest(const std::vector<std::array<Sample, 3>>& colors, const std::array<Sample, 3>& color) {
    std::size_t best = 0;
    auto least = std::numeric_limits<Sample>::max();
    for (std::size_t i = 0; i < colors.size(); ++i) {
        Sample distance = 0;
        for (std::size_t s = 0; s < 3; ++s) {
            distance += (colors[i][s] - color[s]) * (colors[i][s] - color[s]);
        }
        if (distance < least) best = i;
        least = std::min(least, distance);
    }
    return best;
}

using Mean = std::array<double, 3>;

/// The weighted means of the cells, which are told by `groupOf` apart.
template<class GroupOf>
void moveToMeans(const std::vector<Cell>& cells, std::vector<Mean>& means, GroupOf groupOf) {
    std::vector<Mean> sums(means.size(), Mean{});
    std::vector<double> weights(means.size(), 0);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t group = groupOf(i);
        weights[group] += cells[i].weight;
        for (std::size_t s = 0; s < 3; ++s) sums[group][s] += cells[i].weight * cells[i].mean[s];
    }
    for (std::size_t i = 0; i < means.size(); ++i) {
        for (std::size_t s = 0; s < 3 && weights[i] > 0; ++s) means[i][s] = sums[i][s] / weights[i];
    }
}

std::vector<Color> chosenColors(std::vector<Cell>& cells, std::size_t count) {
    std::vector<Mean> means;
    for (const Box& box : cutBoxes(cells, count)) {
        std::vector<Mean> mean(1);
        const auto offset = [&](std::size_t i) { return cells.begin() + static_cast<std::ptrdiff_t>(i); };
        moveToMeans({offset(box.first), offset(box.last)}, mean, [](std::size_t) { return std::size_t{0}; });
        means.push_back(mean[0]);
    }
    for (int round = 0; round < meanRounds; ++round) {
        const std::vector<Mean> before = means;
        moveToMeans(cells, means, [&](std::size_t i) { return nearest(before, cells[i].mean); });
    }
    std::vector<Color> colors;
    for (const Mean& mean : means) {
        Color color{};
        for (std::size_t s = 0; s < 3; ++s) color[s] = static_cast<std::uint8_t>(std::lround(mean[s]));
        colors.push_back(color);
    }
    return colors;
}

class ColorReducer {
public:
    explicit ColorReducer(const PictureView& picture)
        : m_rows(picture), m_width(picture.header.width), m_height(picture.header.height) {
        m_result.indices.resize(m_width * m_height);
    }

    IndexedPicture reduce(bool diffusesErrors);

private:
    bool keepAll();
    void choose();
    void mapToNearest();
    void mapAndDiffuse();
    std::uint8_t indexOf(const std::uint8_t* rgb);
    std::vector<Cell> countedCells();
    bool findTransparency();

    StraightRows m_rows;
    std::size_t m_width;
    std::size_t m_height;
    IndexedPicture m_result;
    std::vector<std::int16_t> m_index_of_cell; // -1 where it is not known yet
};

bool ColorReducer::findTransparency() {
    if (!m_rows.header().hasAlpha) return false;
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* rgba = m_rows.rgba(y);
        for (std::size_t x = 0; x < m_width; ++x) {
            if (rgba[x * 4 + 3] < opaqueFrom) return true;
        }
    }
    return false;
}

/// Keeps the colours as they are, if there are few enough.
bool ColorReducer::keepAll() {
    std::unordered_map<std::uint32_t, std::uint8_t> known;
    std::vector<Color> colors = m_result.colors;
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* rgba = m_rows.rgba(y);
        std::uint8_t* const to = m_result.indices.data() + y * m_width;
        for (std::size_t x = 0; x < m_width; ++x, rgba += 4) {
            if (rgba[3] < opaqueFrom) {
                to[x] = 0; // the transparent colour
                continue;
            }
            const std::uint32_t key = std::uint32_t{rgba[0]} << 16 | std::uint32_t{rgba[1]} << 8 | rgba[2];
            const auto [entry, isNew] = known.try_emplace(key, static_cast<std::uint8_t>(colors.size()));
            if (isNew) {
                if (colors.size() == 256) return false;
                colors.push_back({rgba[0], rgba[1], rgba[2]});
            }
            to[x] = entry->second;
        }
    }
    m_result.colors = std::move(colors);
    return true;
}

std::vector<Cell> ColorReducer::countedCells() {
    std::vector<std::array<std::uint64_t, 4>> sums(cellCount);
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* rgba = m_rows.rgba(y);
        for (std::size_t x = 0; x < m_width; ++x, rgba += 4) {
            if (rgba[3] < opaqueFrom) continue;
            auto& sum = sums[cellOf(rgba)];
            for (std::size_t s = 0; s < 3; ++s) sum[s] += rgba[s];
            ++sum[3];
        }
    }
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < cellCount; ++i) {
        if (sums[i][3] == 0) continue;
        Cell cell{i, static_cast<double>(sums[i][3]), {}};
        for (std::size_t s = 0; s < 3; ++s) cell.mean[s] = static_cast<double>(sums[i][s]) / cell.weight;
        cells.push_back(cell);
    }
    return cells;
}

void ColorReducer::choose() {
    std::vector<Cell> cells = countedCells();
    const std::vector<Color> chosen = chosenColors(cells, 256 - m_result.colors.size());
    m_result.colors.insert(m_result.colors.end(), chosen.begin(), chosen.end());
    m_index_of_cell.assign(cellCount, -1);
}

/// The colour nearest to the middle of the cell.
std::uint8_t ColorReducer::indexOf(const std::uint8_t* rgb) {
    std::int16_t& known = m_index_of_cell[cellOf(rgb)];
    if (known >= 0) return static_cast<std::uint8_t>(known);
    constexpr std::uint8_t half = 1U << (7 - cellBits);
    constexpr auto mask = static_cast<std::uint8_t>(~(2 * half - 1));
    std::array<int, 3> middle{};
    for (std::size_t s = 0; s < 3; ++s) middle[s] = (rgb[s] & mask) + half;
    std::vector<std::array<int, 3>> colors;
    const std::size_t transparent = m_result.transparent >= 0 ? 1 : 0; // it comes first, and is not a choice
    for (std::size_t i = transparent; i < m_result.colors.size(); ++i) {
        colors.push_back({m_result.colors[i][0], m_result.colors[i][1], m_result.colors[i][2]});
    }
    known = static_cast<std::int16_t>(nearest(colors, middle) + transparent);
    return static_cast<std::uint8_t>(known);
}

void ColorReducer::mapToNearest() {
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* rgba = m_rows.rgba(y);
        std::uint8_t* const to = m_result.indices.data() + y * m_width;
        for (std::size_t x = 0; x < m_width; ++x, rgba += 4) {
            to[x] = rgba[3] < opaqueFrom ? std::uint8_t{0} : indexOf(rgba);
        }
    }
}

/// Errors are kept in sixteenths, with one pixel more on both sides.
void ColorReducer::mapAndDiffuse() {
    std::vector<int> here((m_width + 2) * 3);
    std::vector<int> below(here.size());
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* rgba = m_rows.rgba(y);
        std::uint8_t* const to = m_result.indices.data() + y * m_width;
        for (std::size_t x = 0; x < m_width; ++x, rgba += 4) {
            if (rgba[3] < opaqueFrom) {
                to[x] = 0;
                continue;
            }
            Color wanted{};
            for (std::size_t s = 0; s < 3; ++s) {
                const int error = here[(x + 1) * 3 + s];
                const int value = rgba[s] + (error >= 0 ? error + 8 : error - 8) / 16;
                wanted[s] = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
            }
            to[x] = indexOf(wanted.data());
            for (std::size_t s = 0; s < 3; ++s) {
                const int error = wanted[s] - m_result.colors[to[x]][s];
                here[(x + 2) * 3 + s] += error * 7;
                below[x * 3 + s] += error * 3;
                below[(x + 1) * 3 + s] += error * 5;
                below[(x + 2) * 3 + s] += error;
            }
        }
        here.swap(below);
        std::fill(below.begin(), below.end(), 0);
    }
}

IndexedPicture ColorReducer::reduce(bool diffusesErrors) {
    if (findTransparency()) {
        m_result.transparent = 0;
        m_result.colors.push_back({0, 0, 0});
    }
    if (!keepAll()) {
        choose();
        diffusesErrors ? mapAndDiffuse() : mapToNearest();
    }
    return std::move(m_result);
}

} // namespace

IndexedPicture reduceColors(const PictureView& picture, bool diffusesErrors) {
    try {
        return ColorReducer(picture).reduce(diffusesErrors);
    } catch (const std::bad_alloc&) {
        throw CodecException(NSErrorCode::TooLarge,
                             "there is not enough memory to reduce the picture's colours");
    }
}

} // namespace Imaging::Platform
