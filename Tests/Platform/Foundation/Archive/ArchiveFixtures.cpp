#include "Tests/Platform/Foundation/Archive/ArchiveFixtures.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

namespace TestSupport {

namespace {

const NSArchivableClass<Everything> everythingRegistration("Everything");
const NSArchivableClass<Node> nodeRegistration("Node");

} // namespace

Everything::Everything(NSCoder& coder)
    : flag(coder.decodeBool("flag")),
      integer(coder.decodeInt("integer")),
      real(coder.decodeFloat("real")),
      text(coder.decodeString("text").value_or("(none)")),
      data(coder.decodeData("data").value_or(NSData{0xDE, 0xAD})),
      size(coder.decodeSize("size")),
      rect(coder.decodeRect("rect")),
      transform(coder.decodeTransform("transform").value_or(NSAffineTransform())),
      object(coder.decodeObject("object")),
      array(coder.decodeArray("array").value_or(std::vector<std::shared_ptr<NSCoding>>())) {}

void Everything::encodeWithCoder(NSCoder& coder) const {
    coder.encodeBool(flag, "flag");
    coder.encodeInt(integer, "integer");
    coder.encodeFloat(real, "real");
    coder.encodeString(text, "text");
    coder.encodeData(data, "data");
    coder.encodeSize(size, "size");
    coder.encodeRect(rect, "rect");
    coder.encodeTransform(transform, "transform");
    coder.encodeObject(object.get(), "object");
    std::vector<const NSCoding*> elements;
    for (const auto& element : array) elements.push_back(element.get());
    coder.encodeArray(elements, "array");
}

Node::Node(NSCoder& coder)
    : name(coder.decodeString("name").value_or("")),
      left(coder.decodeObjectOfClass<Node>("left")),
      right(coder.decodeObjectOfClass<Node>("right")) {}

/// Long chains are taken apart link by link: destructors that call one another would fill the stack.
Node::~Node() {
    std::shared_ptr<Node> next = std::move(left);
    while (next != nullptr && next.use_count() == 1) next = std::shared_ptr<Node>(std::move(next->left));
}

void Node::encodeWithCoder(NSCoder& coder) const {
    coder.encodeString(name, "name");
    coder.encodeObject(left.get(), "left");
    coder.encodeObject(right.get(), "right");
}

ScopedPropertyList::ScopedPropertyList(const NSData& data) : m_node(nullptr) {
    plist_from_memory(reinterpret_cast<const char*>(data.data()), static_cast<std::uint32_t>(data.size()),
                      &m_node);
}

NSData serialised(plist_t node, NSPropertyListFormat format) {
    char* text = nullptr;
    std::uint32_t size = 0;
    if (format == NSPropertyListFormat::XML) {
        plist_to_xml(node, &text, &size);
    } else {
        plist_to_bin(node, &text, &size);
    }
    const auto* first = reinterpret_cast<const std::uint8_t*>(text);
    NSData data(first, first + size);
    plist_to_xml_free(text);
    return data;
}

HandMadeArchive::HandMadeArchive()
    : m_list(plist_new_dict()), m_entries(plist_new_array()), m_top(plist_new_dict()) {
    plist_dict_set_item(m_list.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
    plist_dict_set_item(m_list.get(), "$version", plist_new_uint(100000));
    plist_dict_set_item(m_list.get(), "$objects", m_entries);
    plist_dict_set_item(m_list.get(), "$top", m_top);
    plist_array_append_item(m_entries, plist_new_string("$null"));
    setRoot(1);
}

std::uint64_t HandMadeArchive::add(plist_t node) {
    plist_array_append_item(m_entries, node);
    return m_count++;
}

std::uint64_t HandMadeArchive::addClass(const char* name) {
    const plist_t description = plist_new_dict();
    plist_dict_set_item(description, "$classname", plist_new_string(name));
    return add(description);
}

plist_t HandMadeArchive::object(std::uint64_t classNumber) {
    const plist_t dictionary = plist_new_dict();
    refer(dictionary, "$class", classNumber);
    return dictionary;
}

void HandMadeArchive::refer(plist_t object, const char* key, std::uint64_t number) {
    plist_dict_set_item(object, key, plist_new_uid(number));
}

std::string BinaryList::bigEndian(std::uint64_t value, int size) {
    std::string text;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        text += static_cast<char>((value >> shift) & 0xFF);
    return text;
}

std::string BinaryList::number(std::uint64_t value) { return "\x13" + bigEndian(value, 8); }

void BinaryList::add(std::string_view value) {
    m_offsets.push_back(m_bytes.size());
    m_bytes += value;
}

void BinaryList::addArray(const std::vector<std::uint32_t>& references) {
    std::string value = "\xAF" + number(references.size());
    for (const std::uint32_t reference : references) value += bigEndian(reference, 4);
    add(value);
}

NSData BinaryList::data() const {
    std::string text = m_bytes;
    for (const std::uint64_t offset : m_offsets) text += bigEndian(offset, 8);
    text += std::string(6, '\0') + "\x08\x04" + bigEndian(m_offsets.size(), 8) + bigEndian(0, 8) +
            bigEndian(m_bytes.size(), 8);
    return bytes(text);
}

NSData bytes(std::string_view text) { return {text.begin(), text.end()}; }

std::string refusal(const NSData& data) {
    try {
        unarchiveObjectWithData(data);
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSInvalidUnarchiveOperationException);
        EXPECT_EQ(exception.reason().find('\n'), std::string::npos);
        EXPECT_LT(exception.reason().size(), 250u);
        return exception.reason();
    }
    ADD_FAILURE() << "it was accepted";
    return {};
}

} // namespace TestSupport
