// JSON is read key by key, and every complaint begins with the place in the file that it is about.

#include "Tools/Film/ShowFile.h"

#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Film/ShowWords.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

namespace Imaging::Tool {

using Json = nlohmann::ordered_json;
using Platform::NSData;

namespace {

constexpr std::size_t maximumBytes = std::size_t{16} << 20;
constexpr std::size_t maximumPictures = 100'000;
constexpr std::size_t maximumOperations = 100;
constexpr std::size_t maximumKeys = 100;

/// What can stand in an object, with what is done about it. UsageErrors in this file begin with the place of
/// what is wrong, and become Failures in the end.
using Keys = std::vector<std::pair<std::string, std::function<void(const Json&, const std::string& place)>>>;

std::string typeName(const Json& value) {
    if (value.is_null()) return "null";
    if (value.is_boolean()) return "true or false";
    if (value.is_number()) return "a number";
    if (value.is_string()) return "a string";
    return value.is_array() ? "a list" : "an object";
}

[[noreturn]] void refuseType(const Json& value, const std::string& place, const std::string& wanted) {
    throw UsageError(place + ": this is " + typeName(value) + "; it takes " + wanted);
}

std::string stringIn(const Json& value, const std::string& place) {
    if (!value.is_string()) refuseType(value, place, "a string");
    return value.get<std::string>();
}

/// As it would be written on a command line.
std::string numberIn(const Json& value, const std::string& place) {
    if (!value.is_number()) refuseType(value, place, "a number");
    return value.dump();
}

std::string stringOrNumberIn(const Json& value, const std::string& place) {
    if (value.is_number()) return value.dump();
    if (!value.is_string()) refuseType(value, place, "a string or a number");
    return value.get<std::string>();
}

bool boolIn(const Json& value, const std::string& place) {
    if (!value.is_boolean()) refuseType(value, place, "true or false");
    return value.get<bool>();
}

std::string within(const std::string& place, const std::string& key) {
    return place.empty() ? key : place + "." + key;
}

std::string within(const std::string& place, std::size_t index) {
    return place + "[" + std::to_string(index) + "]";
}

void readObject(const Json& object, const std::string& place, const Keys& keys) {
    for (const auto& item : object.items()) {
        const std::string& key = item.key();
        const auto found =
            std::find_if(keys.begin(), keys.end(), [&](const auto& entry) { return entry.first == key; });
        if (found == keys.end()) {
            std::vector<std::string> known;
            for (const auto& entry : keys) known.push_back(entry.first);
            throw UsageError(within(place, key) + ": there is no such key; known are " + enumeration(known) +
                             suggestion(key, known));
        }
        found->second(item.value(), within(place, key));
    }
}

/// A transition as it stands in a file. As an object its time and easing may stand in it too.
struct WrittenTransition {
    std::string text;
    std::optional<double> duration;
    std::optional<Easing> easing;
};

WrittenTransition transitionIn(const Json& value, const std::string& place) {
    if (value.is_string()) return {value.get<std::string>(), {}, {}};
    if (!value.is_object()) refuseType(value, place, "a string or an object");
    WrittenTransition written;
    if (!value.contains("name")) throw UsageError(within(place, "name") + " is missing");
    const std::string name = stringIn(value["name"], within(place, "name"));
    TransitionSettings settings;
    for (const auto& [key, parameter] : value.items()) {
        const std::string where = within(place, key);
        if (key == "duration") {
            written.duration = parseDuration(numberIn(parameter, where), where);
        } else if (key == "ease") {
            written.easing = parseEasing(stringIn(parameter, where), where);
        } else if (key != "name") {
            settings.emplace_back(key, stringOrNumberIn(parameter, where));
        }
    }
    // What was understood is written anew, so that nothing in a value can pass for something else.
    written.text = makeTransition(name, settings, place).text();
    return written;
}

/// Reads one show file.
class Reader {
public:
    explicit Reader(const std::string& name)
        : m_folder(isStandardInput(name) ? std::filesystem::path()
                                         : std::filesystem::path(name).parent_path()) {}

    ShowFile read(const Json& root);

private:
    Keys settingKeys();
    void readPictures(const Json& list, const std::string& place);
    ShowEntry entryIn(const Json& value, const std::string& place) const;
    std::vector<Step> stepsIn(const Json& list, const std::string& place) const;
    Step stepIn(const Json& object, const std::string& place) const;
    std::string operationValue(const Operation& operation, const Json& value, const std::string& place) const;
    std::string located(const std::string& name) const;

    std::filesystem::path m_folder;
    ShowFile m_file;
};

ShowFile Reader::read(const Json& root) {
    if (!root.contains("pictures")) throw UsageError("pictures is missing: a list of what is to be shown");
    readObject(root, "", settingKeys());
    return std::move(m_file);
}

Keys Reader::settingKeys() {
    ShowSettings& all = m_file.settings;
    const auto transition = [&all](const Json& value, const std::string& place) {
        const WrittenTransition written = transitionIn(value, place);
        static_cast<void>(parseTransitionChoice(written.text, place, 0)); // only to see that it can be
        all.transition = written.text;
        if (written.duration.has_value()) all.duration = written.duration;
        if (written.easing.has_value()) all.easing = written.easing;
    };
    return {
        {"size", [&](const Json& v, const auto& p) { all.size = parseFrameSize(stringIn(v, p), p); }},
        {"fps", [&](const Json& v, const auto& p) { all.rate = parseFrameRate(stringOrNumberIn(v, p), p); }},
        {"background",
         [&](const Json& v, const auto& p) { all.background = parseOpaqueColor(stringIn(v, p), p); }},
        {"fit", [&](const Json& v, const auto& p) { all.fit = parseFit(stringIn(v, p), p); }},
        {"hold", [&](const Json& v, const auto& p) { all.hold = parseDuration(numberIn(v, p), p); }},
        {"transition", transition},
        {"duration", [&](const Json& v, const auto& p) { all.duration = parseDuration(numberIn(v, p), p); }},
        {"ease", [&](const Json& v, const auto& p) { all.easing = parseEasing(stringIn(v, p), p); }},
        {"seed", [&](const Json& v, const auto& p) { all.seed = parseSeed(numberIn(v, p), p); }},
        {"loop", [&](const Json& v, const auto& p) { all.loop = boolIn(v, p); }},
        {"orient", [&](const Json& v, const auto& p) { all.asStored = !boolIn(v, p); }},
        {"pictures", [this](const Json& v, const auto& p) { readPictures(v, p); }},
    };
}

void Reader::readPictures(const Json& list, const std::string& place) {
    if (!list.is_array()) refuseType(list, place, "a list");
    if (list.empty()) throw UsageError(place + ": the list is empty; a film takes at least one picture");
    if (list.size() > maximumPictures) {
        throw UsageError(place + ": there are " + std::to_string(list.size()) +
                         " pictures, and a film takes at most " + std::to_string(maximumPictures));
    }
    for (std::size_t i = 0; i < list.size(); ++i)
        m_file.pictures.push_back(entryIn(list[i], within(place, i)));
}

ShowEntry Reader::entryIn(const Json& value, const std::string& place) const {
    ShowEntry entry;
    if (value.is_string()) {
        entry.name = located(stringIn(value, place));
    } else if (!value.is_object()) {
        refuseType(value, place, "a string or an object");
    } else {
        const auto transition = [&entry](const Json& v, const std::string& p) {
            const WrittenTransition written = transitionIn(v, p);
            entry.transition = parseTransition(written.text, p);
            if (written.duration.has_value()) entry.duration = written.duration;
            if (written.easing.has_value()) entry.easing = written.easing;
        };
        readObject(
            value, place,
            {{"file", [&](const Json& v, const auto& p) { entry.name = located(stringIn(v, p)); }},
             {"operations", [&](const Json& v, const auto& p) { entry.steps = stepsIn(v, p); }},
             {"hold", [&](const Json& v, const auto& p) { entry.hold = parseDuration(numberIn(v, p), p); }},
             {"fit", [&](const Json& v, const auto& p) { entry.fit = parseFit(stringIn(v, p), p); }},
             {"transition", transition}});
    }
    if (entry.name.empty()) throw UsageError(within(place, "file") + " is missing or empty");
    if (isStandardInput(entry.name)) throw UsageError(place + ": standard input cannot be a picture here");
    return entry;
}

std::vector<Step> Reader::stepsIn(const Json& list, const std::string& place) const {
    if (!list.is_array()) refuseType(list, place, "a list");
    if (list.size() > maximumOperations) {
        throw UsageError(place + ": there are " + std::to_string(list.size()) +
                         " operations, and a picture takes at most " + std::to_string(maximumOperations));
    }
    std::vector<Step> steps;
    for (std::size_t i = 0; i < list.size(); ++i) steps.push_back(stepIn(list[i], within(place, i)));
    return steps;
}

/// The name of an option in a file.
std::string keyOf(const std::string& option) { return option.substr(std::string_view("--").size()); }

/// The one operation that an object is about.
const Operation& operationIn(const Json& object, const std::string& place) {
    if (!object.is_object()) refuseType(object, place, R"(an object such as {"rotate": -1.5})");
    const Operation* chosen = nullptr;
    std::vector<std::string> known;
    for (const Operation* operation : allOperations()) {
        known.push_back(keyOf(operation->name));
        if (!object.contains(known.back())) continue;
        if (chosen != nullptr) {
            throw UsageError(place + ": there are two operations, " + keyOf(chosen->name) + " and " +
                             known.back() + "; make each an object of its own, so that their order is told");
        }
        chosen = operation;
    }
    if (chosen != nullptr) return *chosen;
    if (object.empty()) throw UsageError(place + ": there is no operation; known are " + enumeration(known));
    const std::string first = object.begin().key();
    throw UsageError(within(place, first) + ": there is no such operation; known are " + enumeration(known) +
                     suggestion(first, known));
}

std::string Reader::operationValue(const Operation& operation, const Json& value,
                                   const std::string& place) const {
    if (operation.typeName.empty()) {
        if (!boolIn(value, place)) throw UsageError(place + ": leave the operation out instead");
        return {};
    }
    if (value.is_array()) {
        std::string list;
        for (std::size_t i = 0; i < value.size(); ++i)
            list += (i > 0 ? "," : "") + numberIn(value[i], within(place, i));
        return list;
    }
    const std::string text = stringOrNumberIn(value, place);
    return operation.valueIsFile ? located(text) : text;
}

Step Reader::stepIn(const Json& object, const std::string& place) const {
    const Operation& operation = operationIn(object, place);
    std::string value;
    std::string modifier;
    Keys keys = {{keyOf(operation.name),
                  [&](const Json& v, const std::string& p) { value = operationValue(operation, v, p); }}};
    if (!operation.modifier.empty()) {
        keys.emplace_back(keyOf(operation.modifier),
                          [&](const Json& v, const std::string& p) { modifier = stringOrNumberIn(v, p); });
    }
    readObject(object, place, keys);
    try {
        return operation.parse(value, modifier);
    } catch (const UsageError& error) { // which begins with the name of the option
        const std::string_view what = error.what();
        const bool isOption = what.starts_with("--");
        throw UsageError(place + (isOption ? "." : ": ") + std::string(what.substr(isOption ? 2 : 0)));
    }
}

std::string Reader::located(const std::string& name) const {
    if (name.empty() || isURL(name) || isStandardInput(name) || m_folder.empty()) return name;
    return (m_folder / name).string(); // the name itself where it is absolute
}

/// Refuses objects in which a key stands twice, of which one would be lost without a word.
class DuplicateKeys {
public:
    bool operator()(int, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) m_open.emplace_back();
        if (event == Json::parse_event_t::object_end) m_open.pop_back();
        if (event == Json::parse_event_t::key) {
            const auto& key = parsed.get_ref<const std::string&>();
            // Far more than are known; a million of them would take an hour to be looked through.
            if (m_open.back().size() == maximumKeys)
                throw UsageError("an object holds more than " + std::to_string(maximumKeys) + " keys");
            if (!m_open.back().insert(key).second)
                throw UsageError("the key '" + key + "' stands twice in one object");
        }
        return true;
    }

private:
    std::vector<std::set<std::string>> m_open;
};

/// "line 3, column 7: unexpected '}'; expected …"
std::string inWords(const Json::parse_error& error, const NSData& bytes) {
    // The position counts from 1 and is that of the byte behind which something else was expected.
    const std::size_t end = std::min(error.byte == 0 ? 0 : error.byte - 1, bytes.size());
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t i = 0; i < end; ++i) {
        line += bytes[i] == '\n' ? 1 : 0;
        // Of a letter in UTF-8 only the first byte counts.
        column = bytes[i] == '\n' ? 1 : column + ((bytes[i] & 0xC0) == 0x80 ? 0 : 1);
    }
    std::string what = error.what();
    const std::size_t dash = what.find(" - ");
    what = dash == std::string::npos ? "this is not JSON" : what.substr(dash + 3);
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + what;
}

Json parsedJson(const NSData& bytes, const std::string& name) {
    try {
        DuplicateKeys duplicates;
        Json root = Json::parse(bytes.begin(), bytes.end(), std::ref(duplicates));
        if (!root.is_object()) throw UsageError("this is no show file, which is a JSON object");
        return root;
    } catch (const Json::parse_error& error) {
        throw Failure(shownName(name), inWords(error, bytes));
    } catch (const Json::exception&) {
        throw Failure(shownName(name), "a number in it is beyond everything");
    } catch (const UsageError& error) {
        throw Failure(shownName(name), error.what());
    }
}

} // namespace

bool isShowFile(const std::string& name) {
    if (isStandardInput(name)) return true;
    std::error_code failure;
    if (isURL(name) || !std::filesystem::is_regular_file(name, failure)) return false;
    std::ifstream file(name, std::ios::binary);
    std::string start(4096, '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (start.starts_with(byteOrderMark)) start.erase(0, byteOrderMark.size());
    const std::size_t first = start.find_first_not_of(" \t\r\n");
    return first != std::string::npos && start[first] == '{';
}

ShowFile readShowFile(const std::string& name) {
    if (isStandardInput(name)) return showFileWithBytes(readInput(name), name);
    Platform::NSError error;
    const auto bytes = Platform::dataWithContentsOfFile(name, maximumBytes, &error);
    if (!bytes.has_value()) throw Failure(name, error.message);
    return showFileWithBytes(*bytes, name);
}

ShowFile showFileWithBytes(const NSData& bytes, const std::string& name) {
    if (bytes.size() > maximumBytes) {
        throw Failure(shownName(name),
                      "a show file holds at most " + std::to_string(maximumBytes) + " bytes");
    }
    const Json root = parsedJson(bytes, name);
    try {
        return Reader(name).read(root);
    } catch (const UsageError& error) {
        throw Failure(shownName(name), error.what());
    }
}

} // namespace Imaging::Tool
