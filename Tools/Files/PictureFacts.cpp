// Finds out what a file is by its header alone, or of a graph by all of it, and lays that out as a table or
// JSON.

#include "Tools/Files/PictureFacts.h"

#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Codecs/ColorProfileName.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Show/NodeGraph.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <new>
#include <utility>

namespace Imaging::Tool {

using Platform::NSData;
using Platform::PictureHeader;
using Platform::SampleColor;

namespace {

PictureHeader checkedHeader(const NSData& bytes) {
    PictureHeader header = Platform::readPictureHeader(bytes);
    if (header.width == 0 || header.height == 0) {
        throw Platform::CodecException(Platform::NSErrorCode::CorruptData, "the picture has no pixels");
    }
    return header;
}

/// The encoded bytes of a picture in a graph: from the file that it names, or from the archive.
NSData bytesOf(Imaging::IMGImageFromNSImage& node) {
    if (node.fileName().has_value()) return readFile(*node.fileName());
    const auto& encoded = node.untransformedImage()->nsImage()->encodedData();
    return encoded != nullptr ? *encoded : NSData();
}

PictureFacts factsOfPicture(Imaging::IMGImageFromNSImage& node) {
    PictureFacts facts;
    facts.name = node.fileName().value_or("");
    if (const auto why = node.whyPictureIsMissing()) {
        facts.error = *why;
    } else {
        facts.header = checkedHeader(bytesOf(node));
    }
    return facts;
}

void describeGraph(const NSData& bytes, PictureFacts& facts) {
    const auto root = Platform::unarchiveObjectOfClass<Imaging::IMGImage>(bytes);
    facts.isGraph = true;
    facts.rootClass = root->archiveClassName();
    facts.nodes = nodesOf(root).size();
    for (const auto& picture : picturesOf(root)) {
        facts.pictures.push_back(factsOfPicture(*picture));
        const PictureFacts& last = facts.pictures.back();
        if (last.error.empty() || !facts.error.empty()) continue;
        facts.error = (last.name.empty() ? "a picture in it" : "its picture " + last.name) +
                      " cannot be used: " + last.error;
    }
}

/// At most two places after the point, and no more than are needed.
std::string shortNumber(double number) {
    std::array<char, 64> digits{};
    const double rounded = std::round(std::clamp(number, 0.0, 1e15) * 100) / 100;
    const auto [end, failure] = std::to_chars(digits.data(), digits.data() + digits.size(), rounded);
    return failure == std::errc() ? std::string(digits.data(), end) : std::string("?");
}

std::string resolutionText(const PictureHeader& header) {
    if (header.resolutionX <= 0 || header.resolutionY <= 0) return "-";
    const std::string across = shortNumber(header.resolutionX);
    const std::string up = shortNumber(header.resolutionY);
    return (across == up ? across : across + " x " + up) + " dpi";
}

std::string samplesText(const PictureHeader& header) {
    const std::string color = header.color == SampleColor::RGB ? "RGB" : "gray";
    return color + ", " + std::to_string(header.samplesPerPixel()) + " x " +
           std::to_string(header.bitsPerSample) + " bits";
}

using Row = std::array<std::string, 8>;

Row rowOf(const std::string& name, const PictureHeader& header) {
    const std::string profile = Platform::colorProfileName(header.colorProfile);
    const std::string unnamed = header.colorProfile.empty() ? "-" : "without a name";
    return {escaped(name),
            escaped(header.formatName),
            std::to_string(header.width) + " x " + std::to_string(header.height),
            samplesText(header),
            header.hasAlpha ? "yes" : "no",
            std::to_string(header.orientation) + ", " + std::string(orientationInWords(header.orientation)),
            resolutionText(header),
            profile.empty() ? unnamed : escaped(profile)};
}

void addRows(const PictureFacts& facts, const std::string& indent, std::vector<Row>& rows) {
    if (facts.header.has_value()) {
        rows.push_back(rowOf(indent + (facts.name.empty() ? "(embedded)" : facts.name), *facts.header));
    } else if (facts.isGraph) {
        const auto counted = [](std::size_t count, const std::string& what) {
            return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
        };
        rows.push_back({escaped(facts.name), "graph",
                        counted(facts.nodes, "node") + ", " + counted(facts.pictures.size(), "picture")});
        for (const PictureFacts& picture : facts.pictures) addRows(picture, "  ", rows);
    } else if (!indent.empty()) {
        rows.push_back({indent + escaped(facts.name.empty() ? "(embedded)" : facts.name), "missing"});
    }
}

/// How many characters a UTF-8 text shows, those of double width counted as one.
std::size_t shownWidth(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void addHeader(const PictureHeader& header, Json& json) {
    json.add("format", header.formatName);
    json.add("width", header.width);
    json.add("height", header.height);
    json.add("color", header.color == SampleColor::RGB ? "RGB" : "gray");
    json.add("samplesPerPixel", header.samplesPerPixel());
    json.add("bitsPerSample", header.bitsPerSample);
    json.add("alpha", header.hasAlpha);
    json.add("orientation", header.orientation);
    json.add("orientationInWords", std::string(orientationInWords(header.orientation)));
    const bool hasResolution = header.resolutionX > 0 && header.resolutionY > 0;
    json.add("resolution",
             hasResolution ? Json::object({{"x", header.resolutionX}, {"y", header.resolutionY}}) : Json());
    const bool hasProfile = !header.colorProfile.empty();
    json.add("profile", hasProfile ? Json(Platform::colorProfileName(header.colorProfile)) : Json());
}

Json jsonFor(const PictureFacts& facts) {
    Json json = Json::object({{"file", facts.name.empty() ? Json() : Json(facts.name)}});
    if (facts.header.has_value()) addHeader(*facts.header, json);
    if (facts.isGraph) {
        std::vector<Json> pictures;
        for (const PictureFacts& picture : facts.pictures) pictures.push_back(jsonFor(picture));
        json.add("format", "graph");
        json.add("class", facts.rootClass);
        json.add("nodes", facts.nodes);
        json.add("pictures", Json::list(std::move(pictures)));
    }
    if (!facts.error.empty()) json.add("error", facts.error);
    return json;
}

} // namespace

PictureFacts factsOf(const NSData& bytes, const std::string& name) {
    PictureFacts facts;
    facts.name = name;
    try {
        if (Platform::looksLikePropertyList(bytes)) {
            describeGraph(bytes, facts);
        } else {
            facts.header = checkedHeader(bytes);
        }
    } catch (const Platform::NSException& exception) {
        facts.error = exception.reason();
    } catch (const Failure& failure) {
        facts.error = failure.subject() + ": " + failure.what();
    } catch (const std::bad_alloc&) {
        facts.error = "there is not enough memory for it";
    }
    return facts;
}

std::string tableOf(const std::vector<PictureFacts>& all) {
    std::vector<Row> rows = {
        {"FILE", "FORMAT", "PIXELS", "SAMPLES", "ALPHA", "ORIENTATION", "RESOLUTION", "PROFILE"}};
    for (const PictureFacts& facts : all) addRows(facts, "", rows);
    if (rows.size() == 1) return {};
    std::array<std::size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], shownWidth(row[i]));
    }
    std::string table;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - shownWidth(row[i]) + 2, ' ');
        }
        table += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return table;
}

std::string jsonOf(const std::vector<PictureFacts>& all) {
    std::vector<Json> list;
    for (const PictureFacts& facts : all) list.push_back(jsonFor(facts));
    return Json::list(std::move(list)).indentedText() + "\n";
}

std::string_view orientationInWords(int orientation) {
    static constexpr std::array<std::string_view, 8> words = {
        "upright",
        "mirror left to right",
        "turn upside down",
        "mirror top to bottom",
        "turn right and mirror left to right",
        "turn right",
        "turn left and mirror left to right",
        "turn left",
    };
    return orientation >= 1 && orientation <= 8 ? words[static_cast<std::size_t>(orientation - 1)]
                                                : "unknown";
}

} // namespace Imaging::Tool
