// Has libexif find three entries of a record that may be damaged. Everything that is not as it should be
// counts as absent.

#include "Platform/Codecs/Support/ExifOrientation.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Imaging::Platform {

namespace {

constexpr std::size_t maximumRecord = 65536;
constexpr std::array<std::uint8_t, 6> prefix = {'E', 'x', 'i', 'f', 0, 0};

struct Release {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};
using Record = std::unique_ptr<ExifData, Release>;

Record loadRecord(ByteView bytes) {
    Record record(exif_data_new());
    if (record == nullptr) throw std::bad_alloc();
    // By default the library adds the entries that the standard demands, with values of its own making.
    exif_data_unset_option(record.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    NSData prefixed(prefix.begin(), prefix.end());
    const ByteView kept = bytes.first(std::min(bytes.size(), maximumRecord));
    prefixed.insert(prefixed.end(), kept.begin(), kept.end());
    exif_data_load_data(record.get(), prefixed.data(), static_cast<unsigned int>(prefixed.size()));
    return record;
}

/// The entry of the main picture, if it is of that type and complete.
const ExifEntry* entry(const Record& record, ExifTag tag, ExifFormat format) {
    const ExifEntry* found = exif_content_get_entry(record->ifd[EXIF_IFD_0], tag);
    if (found == nullptr || found->format != format || found->components < 1) return nullptr;
    return found->size >= exif_format_get_size(format) ? found : nullptr;
}

int shortValue(const Record& record, ExifTag tag, int absent) {
    const ExifEntry* found = entry(record, tag, EXIF_FORMAT_SHORT);
    if (found == nullptr) return absent;
    return exif_get_short(found->data, exif_data_get_byte_order(record.get()));
}

double rationalValue(const Record& record, ExifTag tag) {
    const ExifEntry* found = entry(record, tag, EXIF_FORMAT_RATIONAL);
    if (found == nullptr) return 0;
    const ExifRational value = exif_get_rational(found->data, exif_data_get_byte_order(record.get()));
    return value.denominator == 0 ? 0 : static_cast<double>(value.numerator) / value.denominator;
}

} // namespace

double pixelsPerInch(double value, int unit) {
    if (!std::isfinite(value) || value <= 0) return 0;
    if (unit == 2) return value;
    return unit == 3 ? value * 2.54 : 0;
}

ExifFacts readExif(ByteView bytes) {
    const Record record = loadRecord(bytes);
    ExifFacts facts;
    const int orientation = shortValue(record, EXIF_TAG_ORIENTATION, 1);
    if (orientation >= 1 && orientation <= 8) facts.orientation = orientation;
    const int unit = shortValue(record, EXIF_TAG_RESOLUTION_UNIT, 2); // inches unless it says otherwise
    facts.resolutionX = pixelsPerInch(rationalValue(record, EXIF_TAG_X_RESOLUTION), unit);
    facts.resolutionY = pixelsPerInch(rationalValue(record, EXIF_TAG_Y_RESOLUTION), unit);
    return facts;
}

} // namespace Imaging::Platform
