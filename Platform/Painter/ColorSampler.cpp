// Rows of one colour.

#include "Platform/Painter/ColorSampler.h"

#include <algorithm>

namespace Imaging::Platform {

namespace {

class ColorReader : public RowReader {
public:
    explicit ColorReader(std::uint32_t word) : m_word(word) {}

    const std::uint32_t* read(int, int, int count, std::uint32_t* words) override {
        std::fill_n(words, count, m_word);
        return words;
    }

private:
    std::uint32_t m_word;
};

class ColorSampler : public RowSampler {
public:
    explicit ColorSampler(std::uint32_t word) : m_word(word) {}

    bool isOpaque() const override { return m_word >> 24 == 255; }
    std::unique_ptr<RowReader> reader() const override { return std::make_unique<ColorReader>(m_word); }

private:
    std::uint32_t m_word;
};

} // namespace

std::unique_ptr<RowSampler> makeColorSampler(std::uint32_t word) {
    return std::make_unique<ColorSampler>(word);
}

} // namespace Imaging::Platform
