// Lists the pictures in a folder, told by their first bytes, and compares names as people count.

#include "Tools/Files/PictureFiles.h"

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"

#include <algorithm>
#include <compare>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace Imaging::Tool {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

unsigned char folded(char c) { return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }

/// Takes the number off the beginning of a name, without zeros in front.
std::string_view takeNumber(std::string_view& name) {
    const auto end = std::find_if_not(name.begin(), name.end(), isDigit);
    std::string_view number = name.substr(0, static_cast<std::size_t>(end - name.begin()));
    name.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

std::strong_ordering compareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() <=> b.size();
    return a.compare(b) <=> 0;
}

std::strong_ordering compareNaturally(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        std::strong_ordering order = std::strong_ordering::equal;
        if (isDigit(a.front()) && isDigit(b.front())) {
            order = compareNumbers(takeNumber(a), takeNumber(b));
        } else {
            order = folded(a.front()) <=> folded(b.front());
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
        if (order != std::strong_ordering::equal) return order;
    }
    return a.size() <=> b.size();
}

/// Whether a file begins like a picture. One that cannot be opened counts as one, so that it is named later
/// instead of left out in silence.
bool beginsLikePicture(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return true;
    Platform::NSData start(4096);
    file.read(static_cast<char*>(static_cast<void*>(start.data())),
              static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    return Platform::codecForData(start) != nullptr;
}

} // namespace

bool comesBefore(std::string_view a, std::string_view b) {
    const std::strong_ordering order = compareNaturally(a, b);
    return order == std::strong_ordering::equal ? a < b : order == std::strong_ordering::less;
}

bool isFolder(const std::string& input) {
    std::error_code failure;
    return !isURL(input) && !isStandardInput(input) && std::filesystem::is_directory(input, failure);
}

std::vector<std::string> picturesInFolder(const std::string& folder, const std::string& except) {
    std::vector<std::string> pictures;
    try {
        for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder)) {
            std::error_code failure;
            const std::string path = entry.path().string();
            if (entry.path().filename().string().starts_with('.') || !entry.is_regular_file(failure))
                continue;
            if (!isSameFile(path, except) && beginsLikePicture(entry.path())) pictures.push_back(path);
        }
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(folder, "the folder cannot be read: " + error.code().message());
    }
    if (pictures.empty()) throw Failure(folder, "there are no pictures in this folder");
    std::sort(pictures.begin(), pictures.end(), comesBefore);
    return pictures;
}

} // namespace Imaging::Tool
