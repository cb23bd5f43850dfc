// Objects become entries of one list and are known again by their addresses; equal texts and data are
// written once. What would not be decodable is refused before it is written.

#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/Archive/BinaryPropertyListGuard.h"
#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"
#include "Platform/Foundation/Archive/XMLPropertyListGuard.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace Imaging::Platform {

namespace {

using EntryNumber = std::uint64_t;

/// What the property list library can surely write, with room for what the estimate misses.
constexpr std::uint64_t maximumArchiveBytes = 2ULL << 30;

[[noreturn]] void cannotArchive(const std::string& reason) {
    throw NSException(NSInvalidArchiveOperationException, reason);
}

std::string_view textOf(ByteView data) { return {reinterpret_cast<const char*>(data.data()), data.size()}; }

/// The entries of an archive while it grows, and which object, text or class stands where.
class Archive {
public:
    explicit Archive(NSPropertyListFormat format) : m_format(format) {
        newEntry(plist_new_string(nullEntry));
    }

    EntryNumber entryForObject(const NSCoding* object);
    EntryNumber entryForArray(const std::vector<const NSCoding*>& objects);
    EntryNumber entryForTransform(const NSAffineTransform& transform);
    EntryNumber entryForString(const std::string& text);
    EntryNumber entryForData(ByteView data);

    void requireText(std::string_view text) const;

    /// The whole as a property list; the archive is empty afterwards.
    PropertyList finish(EntryNumber root);

    /// Throws when so much is shared that decoding would go beyond what is allowed for the archive's size.
    void requireDecodable(std::uint64_t archiveBytes) const;

    /// Adds to the size that the property list will have about; its library cannot write 4 GiB.
    void grow(std::uint64_t bytes);

private:
    struct Object {
        EntryNumber entry = 0;
        bool isComplete = false;
    };

    EntryNumber newEntry(plist_t node);
    EntryNumber entryForClass(const std::string& name);
    PropertyList newObject(const std::string& className);
    void encode(const NSCoding& object, EntryNumber entry);

    NSPropertyListFormat m_format;
    std::vector<PropertyList> m_entries;
    std::map<const void*, Object> m_objects;
    std::unordered_map<std::string, EntryNumber> m_strings;
    std::unordered_multimap<std::size_t, EntryNumber> m_data; ///< by hash
    std::map<std::string, EntryNumber> m_classes;
    NestingGuard m_nesting{maximumArchiveDepth};
    std::uint64_t m_size = 0;
    std::uint64_t m_decoded_bytes = 0;
};

/// Writes the parts of one object into its dictionary.
class ObjectEncoder final : public NSCoder {
public:
    ObjectEncoder(Archive& archive, plist_t dictionary) : m_archive(archive), m_dictionary(dictionary) {}

    void encodeObject(const NSCoding* object, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_uid(m_archive.entryForObject(object)));
    }

    void encodeArray(const std::vector<const NSCoding*>& objects, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_uid(m_archive.entryForArray(objects)));
    }

    void encodeString(const std::string& value, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_uid(m_archive.entryForString(value)));
    }

    void encodeData(ByteView value, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_uid(m_archive.entryForData(value)));
    }

    void encodeBool(bool value, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_bool(value ? 1 : 0));
    }

    void encodeInt(std::int64_t value, std::string_view key) override {
        const std::string name = newKey(key);
        // The library stores 64 bits and writes and reads them as signed ones.
        set(name, plist_new_uint(static_cast<std::uint64_t>(value)));
    }

    void encodeFloat(float value, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_real(value));
    }

    void encodeSize(NSSize value, std::string_view key) override { encodeString(stringFromSize(value), key); }
    void encodeRect(NSRect value, std::string_view key) override { encodeString(stringFromRect(value), key); }

    void encodeTransform(const NSAffineTransform& value, std::string_view key) override {
        const std::string name = newKey(key);
        set(name, plist_new_uid(m_archive.entryForTransform(value)));
    }

private:
    /// The key as it is written. Two parts under one key are a mistake in the object's class.
    std::string newKey(std::string_view key) {
        std::string name = archiveKey(key);
        if (plist_dict_get_item(m_dictionary, name.c_str()) != nullptr) {
            throw NSException(NSInvalidArgumentException,
                              "the key \"" + textForMessage(key) + "\" is encoded twice in one object");
        }
        m_archive.requireText(name);
        m_archive.grow(name.size());
        return name;
    }

    void set(const std::string& name, plist_t value) {
        plist_dict_set_item(m_dictionary, name.c_str(), value);
    }

    Archive& m_archive;
    plist_t m_dictionary;
};

void Archive::grow(std::uint64_t bytes) {
    // Tags, tabs and the reference to it, or its offset.
    constexpr std::uint64_t overhead = 100;
    m_size += std::min(bytes, maximumArchiveBytes) + overhead;
    if (m_size > maximumArchiveBytes) cannotArchive("it would become larger than 2 GiB");
}

void Archive::requireText(std::string_view text) const {
    if (!isArchivableText(text)) {
        cannotArchive("a text is not UTF-8 or holds a zero byte: \"" + textForMessage(text) + "\"");
    }
    if (m_format == NSPropertyListFormat::XML && hasControlCharacters(text)) {
        cannotArchive("XML cannot hold the control characters in a text, the binary format can: \"" +
                      textForMessage(text) + "\"");
    }
}

EntryNumber Archive::newEntry(plist_t node) {
    m_entries.emplace_back(node);
    return m_entries.size() - 1;
}

PropertyList Archive::newObject(const std::string& className) {
    PropertyList object(plist_new_dict());
    plist_dict_set_item(object.get(), "$class", plist_new_uid(entryForClass(className)));
    return object;
}

EntryNumber Archive::entryForClass(const std::string& name) {
    if (const auto found = m_classes.find(name); found != m_classes.end()) return found->second;
    requireText(name);
    grow(2 * name.size());
    PropertyList description(plist_new_dict());
    plist_dict_set_item(description.get(), "$classname", plist_new_string(name.c_str()));
    const plist_t chain = plist_new_array();
    plist_array_append_item(chain, plist_new_string(name.c_str()));
    plist_array_append_item(chain, plist_new_string("NSObject"));
    plist_dict_set_item(description.get(), "$classes", chain);
    return m_classes[name] = newEntry(description.release());
}

EntryNumber Archive::entryForObject(const NSCoding* object) {
    if (object == nullptr) return 0;
    const void* identity = dynamic_cast<const void*>(object);
    if (const auto found = m_objects.find(identity); found != m_objects.end()) {
        if (!found->second.isComplete) cannotArchive("an object contains itself");
        return found->second.entry;
    }
    if (!m_nesting.enter()) cannotArchive("its objects nest too deeply");
    // The entry is taken first, so that an object stands before its parts and the root before all.
    const EntryNumber entry = newEntry(nullptr);
    m_objects[identity] = {entry, false};
    encode(*object, entry);
    m_objects[identity].isComplete = true;
    m_nesting.leave();
    return entry;
}

void Archive::encode(const NSCoding& object, EntryNumber entry) {
    grow(0);
    m_entries[entry] = newObject(object.archiveClassName());
    ObjectEncoder encoder(*this, m_entries[entry].get());
    object.encodeWithCoder(encoder);
}

EntryNumber Archive::entryForArray(const std::vector<const NSCoding*>& objects) {
    const plist_t elements = plist_new_array();
    PropertyList array = newObject(arrayClassName);
    plist_dict_set_item(array.get(), arrayElementsKey, elements);
    const EntryNumber entry = newEntry(array.release());
    for (const NSCoding* object : objects) {
        grow(0);
        plist_array_append_item(elements, plist_new_uid(entryForObject(object)));
    }
    m_decoded_bytes += objects.size() * sizeof(std::shared_ptr<NSCoding>);
    return entry;
}

EntryNumber Archive::entryForTransform(const NSAffineTransform& transform) {
    grow(0);
    const std::string bytes = bytesFromTransform(transform);
    PropertyList object = newObject(transformClassName);
    plist_dict_set_item(object.get(), transformKey, plist_new_data(bytes.data(), bytes.size()));
    return newEntry(object.release());
}

EntryNumber Archive::entryForString(const std::string& text) {
    m_decoded_bytes += text.size();
    if (const auto found = m_strings.find(text); found != m_strings.end()) return found->second;
    requireText(text);
    // In XML "&" becomes "&amp;".
    grow(m_format == NSPropertyListFormat::XML ? 5 * text.size() : 2 * text.size());
    return m_strings[text] = newEntry(plist_new_string(text.c_str()));
}

EntryNumber Archive::entryForData(ByteView data) {
    m_decoded_bytes += data.size();
    // Before anything of that length is looked at.
    if (data.size() > maximumArchiveBytes) grow(data.size());
    const std::string_view bytes = textOf(data);
    const std::size_t hash = std::hash<std::string_view>()(bytes);
    for (auto [found, end] = m_data.equal_range(hash); found != end; ++found) {
        std::uint64_t size = 0;
        const char* known = plist_get_data_ptr(m_entries[found->second].get(), &size);
        if (std::string_view(known, size) == bytes) return found->second;
    }
    grow(m_format == NSPropertyListFormat::XML ? 2 * bytes.size() : bytes.size());
    const EntryNumber entry = newEntry(plist_new_data(bytes.empty() ? "" : bytes.data(), bytes.size()));
    m_data.emplace(hash, entry);
    return entry;
}

PropertyList Archive::finish(EntryNumber root) {
    for (const auto& [identity, object] : m_objects) {
        // Somebody caught the exception of a part and went on.
        if (!object.isComplete) cannotArchive("one of its objects could not be archived");
    }
    PropertyList archive(plist_new_dict());
    plist_dict_set_item(archive.get(), "$version", plist_new_uint(archiveVersion));
    plist_dict_set_item(archive.get(), "$archiver", plist_new_string(archiverName));
    const plist_t top = plist_new_dict();
    plist_dict_set_item(archive.get(), "$top", top);
    plist_dict_set_item(top, "root", plist_new_uid(root));
    const plist_t entries = plist_new_array();
    plist_dict_set_item(archive.get(), "$objects", entries);
    for (PropertyList& entry : m_entries) plist_array_append_item(entries, entry.release());
    m_entries.clear();
    return archive;
}

void Archive::requireDecodable(std::uint64_t archiveBytes) const {
    if (m_decoded_bytes > maximumDecodedBytes(archiveBytes)) {
        cannotArchive("too many of its objects hold the same large text or data");
    }
}

/// What no unarchiver would accept is not written either.
void requireReadable(ByteView data, NSPropertyListFormat format) {
    try {
        if (format == NSPropertyListFormat::XML) {
            checkXMLPropertyList(data);
        } else {
            checkBinaryPropertyList(data);
        }
    } catch (const NSException& refusal) {
        cannotArchive("it could not be read again: " + refusal.reason());
    }
}

NSData serialised(plist_t archive, NSPropertyListFormat format) {
    const ScopedCLocale locale;
    const bool isXML = format == NSPropertyListFormat::XML;
    char* text = nullptr;
    std::uint32_t size = 0;
    isXML ? plist_to_xml(archive, &text, &size) : plist_to_bin(archive, &text, &size);
    if (text == nullptr) cannotArchive("the property list could not be written");
    const auto release = isXML ? plist_to_xml_free : plist_to_bin_free;
    const std::unique_ptr<char, void (*)(char*)> owner(text, release);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text);
    return {bytes, bytes + size};
}

} // namespace

NSData archivedDataWithRootObject(const NSCoding& root, NSPropertyListFormat format) {
    Archive archive(format);
    const PropertyList list = archive.finish(archive.entryForObject(&root));
    NSData data = serialised(list.get(), format);
    requireReadable(data, format);
    archive.requireDecodable(data.size());
    return data;
}

} // namespace Imaging::Platform
