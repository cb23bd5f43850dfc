// Data goes past the guard, then to the parser; from then on every reference is checked when it is followed,
// and every object is made once.

#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/Archive/BinaryPropertyListGuard.h"
#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"
#include "Platform/Foundation/Archive/XMLPropertyListGuard.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace Imaging::Platform {

namespace {

using EntryNumber = std::uint64_t;

/// The text of a string node; empty for one without text.
std::string_view textOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text == nullptr ? std::string_view() : std::string_view(text, length);
}

std::string_view bytesOf(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, length);
}

bool isOfType(plist_t node, plist_type type) { return node != nullptr && plist_get_node_type(node) == type; }

/// The number in a reference to an entry, or nullopt when the node is none. In XML such a reference is a
/// dictionary with the one key "CF$UID".
std::optional<EntryNumber> referenceIn(plist_t node) {
    EntryNumber number = 0;
    if (isOfType(node, PLIST_UID)) {
        plist_get_uid_val(node, &number);
        return number;
    }
    if (!isOfType(node, PLIST_DICT) || plist_dict_get_size(node) != 1) return std::nullopt;
    const plist_t value = plist_dict_get_item(node, "CF$UID");
    if (!isOfType(value, PLIST_UINT)) return std::nullopt;
    plist_get_uint_val(value, &number);
    return number;
}

/// The items of an array node in their order. Asking for them by number takes time in proportion to it.
std::vector<plist_t> itemsOf(plist_t array) {
    std::vector<plist_t> items;
    items.reserve(plist_array_get_size(array));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> owner(iterator, &std::free);
    plist_t item = nullptr;
    for (plist_array_next_item(array, iterator, &item); item != nullptr;
         plist_array_next_item(array, iterator, &item)) {
        items.push_back(item);
    }
    return items;
}

/// The entries of an archive and the objects that were made of them so far.
class Archive {
public:
    Archive(plist_t root, std::uint64_t length);

    std::shared_ptr<NSCoding> rootObject();
    std::shared_ptr<NSCoding> objectAt(EntryNumber number);

    /// The entry itself. Throws when there is none of the number.
    plist_t entryAt(EntryNumber number) const;

    std::string classNameOf(plist_t object) const;

    /// Counts bytes that are handed out. Entries may be referred to any number of times, so their sizes
    /// alone bound nothing.
    void countBytes(std::uint64_t bytes);

private:
    struct Entry {
        plist_t node = nullptr;
        bool isBeingDecoded = false;
        std::shared_ptr<NSCoding> object;
    };

    std::shared_ptr<NSCoding> decode(plist_t node);

    plist_t m_root;
    std::uint64_t m_bytes_left;
    std::vector<Entry> m_entries;
    NestingGuard m_nesting{maximumArchiveDepth};
};

/// Reads the parts of one object from its dictionary.
class ObjectDecoder final : public NSCoder {
public:
    ObjectDecoder(Archive& archive, plist_t dictionary) : m_archive(archive), m_dictionary(dictionary) {}

    bool containsValueForKey(std::string_view key) const override { return valueFor(key) != nullptr; }
    std::shared_ptr<NSCoding> decodeObject(std::string_view key) override;
    std::optional<std::vector<std::shared_ptr<NSCoding>>> decodeArray(std::string_view key) override;
    std::optional<std::string> decodeString(std::string_view key) override;
    std::optional<NSData> decodeData(std::string_view key) override;
    bool decodeBool(std::string_view key) override;
    std::int64_t decodeInt(std::string_view key) override;
    float decodeFloat(std::string_view key) override;
    NSSize decodeSize(std::string_view key) override;
    NSRect decodeRect(std::string_view key) override;
    std::optional<NSAffineTransform> decodeTransform(std::string_view key) override;

private:
    plist_t valueFor(std::string_view key) const {
        return plist_dict_get_item(m_dictionary, archiveKey(key).c_str());
    }

    /// The value, or null when it is absent. Throws when it is of another type.
    plist_t plainValueFor(std::string_view key, plist_type type) const;

    /// The entry that the value refers to, or null when the value is absent or a null object.
    plist_t entryFor(std::string_view key) const;

    /// The same for an object that the archiver knows of itself.
    plist_t entryOfClass(std::string_view key, const char* className) const;

    Archive& m_archive;
    plist_t m_dictionary;
};

plist_t ObjectDecoder::plainValueFor(std::string_view key, plist_type type) const {
    const plist_t value = valueFor(key);
    if (value != nullptr && !isOfType(value, type)) throwWrongType(key);
    return value;
}

plist_t ObjectDecoder::entryFor(std::string_view key) const {
    const plist_t value = valueFor(key);
    if (value == nullptr) return nullptr;
    const std::optional<EntryNumber> number = referenceIn(value);
    if (!number.has_value()) throwWrongType(key);
    return *number == 0 ? nullptr : m_archive.entryAt(*number);
}

plist_t ObjectDecoder::entryOfClass(std::string_view key, const char* className) const {
    const plist_t entry = entryFor(key);
    if (entry == nullptr) return nullptr;
    if (!isOfType(entry, PLIST_DICT) || m_archive.classNameOf(entry) != className) throwWrongType(key);
    return entry;
}

std::shared_ptr<NSCoding> ObjectDecoder::decodeObject(std::string_view key) {
    const plist_t value = valueFor(key);
    if (value == nullptr) return nullptr;
    const std::optional<EntryNumber> number = referenceIn(value);
    if (!number.has_value()) throwWrongType(key);
    if (*number != 0 && !isOfType(m_archive.entryAt(*number), PLIST_DICT)) throwWrongType(key);
    return m_archive.objectAt(*number);
}

std::optional<std::vector<std::shared_ptr<NSCoding>>> ObjectDecoder::decodeArray(std::string_view key) {
    const plist_t array = entryOfClass(key, arrayClassName);
    if (array == nullptr) return std::nullopt;
    const plist_t elements = plist_dict_get_item(array, arrayElementsKey);
    if (!isOfType(elements, PLIST_ARRAY)) throwWrongType(key);
    m_archive.countBytes(plist_array_get_size(elements) * sizeof(std::shared_ptr<NSCoding>));
    std::vector<std::shared_ptr<NSCoding>> objects;
    for (const plist_t element : itemsOf(elements)) {
        const std::optional<EntryNumber> number = referenceIn(element);
        if (!number.has_value()) throwWrongType(key);
        if (*number != 0 && !isOfType(m_archive.entryAt(*number), PLIST_DICT)) throwWrongType(key);
        objects.push_back(m_archive.objectAt(*number));
    }
    return objects;
}

std::optional<std::string> ObjectDecoder::decodeString(std::string_view key) {
    const plist_t entry = entryFor(key);
    if (entry == nullptr) return std::nullopt;
    if (!isOfType(entry, PLIST_STRING)) throwWrongType(key);
    const std::string_view text = textOf(entry);
    m_archive.countBytes(text.size());
    if (!isArchivableText(text)) {
        throwDamagedArchive("the text under the key \"" + textForMessage(key) + "\" is not UTF-8");
    }
    return std::string(text);
}

std::optional<NSData> ObjectDecoder::decodeData(std::string_view key) {
    const plist_t entry = entryFor(key);
    if (entry == nullptr) return std::nullopt;
    if (!isOfType(entry, PLIST_DATA)) throwWrongType(key);
    const std::string_view bytes = bytesOf(entry);
    m_archive.countBytes(bytes.size());
    return NSData(bytes.begin(), bytes.end());
}

bool ObjectDecoder::decodeBool(std::string_view key) {
    const plist_t value = plainValueFor(key, PLIST_BOOLEAN);
    std::uint8_t flag = 0;
    if (value != nullptr) plist_get_bool_val(value, &flag);
    return flag != 0;
}

std::int64_t ObjectDecoder::decodeInt(std::string_view key) {
    const plist_t value = plainValueFor(key, PLIST_UINT);
    std::uint64_t number = 0;
    if (value != nullptr) plist_get_uint_val(value, &number);
    return static_cast<std::int64_t>(number);
}

float ObjectDecoder::decodeFloat(std::string_view key) {
    if (isOfType(valueFor(key), PLIST_UINT)) return static_cast<float>(decodeInt(key));
    const plist_t value = plainValueFor(key, PLIST_REAL);
    double number = 0;
    if (value != nullptr) plist_get_real_val(value, &number);
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max()) throwWrongType(key);
    return static_cast<float>(number);
}

NSSize ObjectDecoder::decodeSize(std::string_view key) {
    const std::optional<std::string> text = decodeString(key);
    if (!text.has_value()) return NSZeroSize;
    const std::optional<NSSize> size = sizeFromString(*text);
    if (!size.has_value()) throwWrongType(key);
    return *size;
}

NSRect ObjectDecoder::decodeRect(std::string_view key) {
    const std::optional<std::string> text = decodeString(key);
    if (!text.has_value()) return NSZeroRect;
    const std::optional<NSRect> rect = rectFromString(*text);
    if (!rect.has_value()) throwWrongType(key);
    return *rect;
}

std::optional<NSAffineTransform> ObjectDecoder::decodeTransform(std::string_view key) {
    const plist_t object = entryOfClass(key, transformClassName);
    if (object == nullptr) return std::nullopt;
    plist_t data = plist_dict_get_item(object, transformKey);
    if (const auto number = referenceIn(data); number.has_value()) data = m_archive.entryAt(*number);
    if (!isOfType(data, PLIST_DATA)) throwWrongType(key);
    const std::optional<NSAffineTransform> transform = transformFromBytes(bytesOf(data));
    if (!transform.has_value()) throwWrongType(key);
    return transform;
}

Archive::Archive(plist_t root, std::uint64_t length)
    : m_root(root), m_bytes_left(maximumDecodedBytes(length)) {
    if (!isOfType(root, PLIST_DICT)) throwDamagedArchive("the property list is not a keyed archive");
    const plist_t archiver = plist_dict_get_item(root, "$archiver");
    const plist_t entries = plist_dict_get_item(root, "$objects");
    if (!isOfType(archiver, PLIST_STRING) || textOf(archiver) != archiverName) {
        throwDamagedArchive("the property list is not a keyed archive");
    }
    if (!isOfType(entries, PLIST_ARRAY)) throwDamagedArchive("the archive is damaged: it has no objects");
    for (const plist_t node : itemsOf(entries)) m_entries.push_back({node, false, nullptr});
}

std::shared_ptr<NSCoding> Archive::rootObject() {
    const plist_t top = plist_dict_get_item(m_root, "$top");
    const auto number = referenceIn(isOfType(top, PLIST_DICT) ? plist_dict_get_item(top, "root") : nullptr);
    if (!number.has_value() || *number == 0) {
        throwDamagedArchive("the archive is damaged: it has no root object");
    }
    return objectAt(*number);
}

plist_t Archive::entryAt(EntryNumber number) const {
    if (number >= m_entries.size()) {
        throwDamagedArchive("the archive is damaged: it refers to object " + std::to_string(number) + " of " +
                            std::to_string(m_entries.size()));
    }
    return m_entries[number].node;
}

std::string Archive::classNameOf(plist_t object) const {
    const auto number = referenceIn(plist_dict_get_item(object, "$class"));
    if (!number.has_value()) throwDamagedArchive("the archive is damaged: an object has no class");
    const plist_t description = entryAt(*number);
    const plist_t name =
        isOfType(description, PLIST_DICT) ? plist_dict_get_item(description, "$classname") : nullptr;
    if (!isOfType(name, PLIST_STRING)) throwDamagedArchive("the archive is damaged: a class has no name");
    return std::string(textOf(name));
}

void Archive::countBytes(std::uint64_t bytes) {
    if (bytes > m_bytes_left) throwDamagedArchive("the archive repeats its texts and data too often");
    m_bytes_left -= bytes;
}

std::shared_ptr<NSCoding> Archive::objectAt(EntryNumber number) {
    if (number == 0) return nullptr;
    const plist_t node = entryAt(number);
    // Entries never move: their list does not grow.
    Entry& entry = m_entries[number];
    if (entry.object != nullptr) return entry.object;
    if (entry.isBeingDecoded) throwDamagedArchive("an object in the archive contains itself");
    if (!m_nesting.enter()) throwDamagedArchive("the objects in the archive nest too deeply");
    entry.isBeingDecoded = true;
    struct Leave {
        Archive& archive;
        Entry& entry;
        ~Leave() {
            entry.isBeingDecoded = false;
            archive.m_nesting.leave();
        }
    } const leave{*this, entry};
    entry.object = decode(node);
    return entry.object;
}

std::shared_ptr<NSCoding> Archive::decode(plist_t node) {
    if (!isOfType(node, PLIST_DICT)) throwDamagedArchive("the archive is damaged: an object has no keys");
    const std::string className = classNameOf(node);
    const auto decodeClass = archivableClassNamed(className);
    if (decodeClass == nullptr) {
        throwDamagedArchive("the archive holds an object of the class \"" + textForMessage(className) +
                            "\", which this program did not register");
    }
    ObjectDecoder decoder(*this, node);
    std::shared_ptr<NSCoding> object = decodeClass(decoder);
    if (object == nullptr) {
        throwDamagedArchive("an object of the class \"" + textForMessage(className) + "\" gave nothing");
    }
    return object;
}

/// The parser takes a byte order mark for a part of the document.
ByteView withoutByteOrderMark(ByteView data) {
    return data.size() >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF ? data.subspan(3) : data;
}

/// Throws when the data is no property list, is damaged or was made to hurt.
PropertyList parsed(ByteView data) {
    // The parser takes 32-bit lengths.
    if (data.size() > std::numeric_limits<std::uint32_t>::max()) {
        throwDamagedArchive("the data is too long for a property list");
    }
    const ScopedCLocale locale;
    const bool isBinary = looksLikeBinaryPropertyList(data);
    if (!isBinary && !looksLikeXMLPropertyList(data)) throwDamagedArchive("the data is no property list");
    isBinary ? checkBinaryPropertyList(data) : checkXMLPropertyList(data);
    if (!isBinary) data = withoutByteOrderMark(data);
    const auto* text = reinterpret_cast<const char*>(data.data());
    const auto length = static_cast<std::uint32_t>(data.size());
    plist_t root = nullptr;
    isBinary ? plist_from_bin(text, length, &root) : plist_from_xml(text, length, &root);
    if (root == nullptr) throwDamagedArchive("the property list is damaged");
    return PropertyList(root);
}

} // namespace

std::shared_ptr<NSCoding> unarchiveObjectWithData(ByteView data) {
    const PropertyList root = parsed(data);
    return Archive(root.get(), data.size()).rootObject();
}

bool looksLikePropertyList(ByteView data) {
    return looksLikeBinaryPropertyList(data) || looksLikeXMLPropertyList(data);
}

} // namespace Imaging::Platform
