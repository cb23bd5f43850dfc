#pragma once

#include "Platform/Foundation/Coder.h"
#include "Platform/Foundation/KeyedArchiver.h"

#include <memory>
#include <plist/plist.h>
#include <string>
#include <vector>

/// Small archivable classes, and archives that are put together by hand.
namespace TestSupport {

/// Holds one value of each kind.
struct Everything final : Imaging::Platform::NSCoding {
    Everything() = default;
    explicit Everything(Imaging::Platform::NSCoder& coder);
    std::string archiveClassName() const override { return "Everything"; }
    void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override;

    bool flag = false;
    std::int64_t integer = 0;
    float real = 0;
    std::string text;
    Imaging::Platform::NSData data;
    Imaging::Platform::NSSize size;
    Imaging::Platform::NSRect rect;
    Imaging::Platform::NSAffineTransform transform;
    std::shared_ptr<Imaging::Platform::NSCoding> object;
    std::vector<std::shared_ptr<Imaging::Platform::NSCoding>> array;
};

/// A node of a graph: a name and up to two others.
struct Node final : Imaging::Platform::NSCoding {
    explicit Node(std::string itsName, std::shared_ptr<Node> itsLeft = nullptr,
                  std::shared_ptr<Node> itsRight = nullptr)
        : name(std::move(itsName)), left(std::move(itsLeft)), right(std::move(itsRight)) {}
    explicit Node(Imaging::Platform::NSCoder& coder);
    ~Node() override;
    std::string archiveClassName() const override { return "Node"; }
    void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override;

    std::string name;
    std::shared_ptr<Node> left;
    std::shared_ptr<Node> right;
};

/// A property list that is freed at the end of the scope.
class ScopedPropertyList {
public:
    explicit ScopedPropertyList(plist_t node) : m_node(node) {}
    explicit ScopedPropertyList(const Imaging::Platform::NSData& data);
    ~ScopedPropertyList() { plist_free(m_node); }
    ScopedPropertyList(const ScopedPropertyList&) = delete;
    ScopedPropertyList& operator=(const ScopedPropertyList&) = delete;

    plist_t get() const { return m_node; }
    plist_t operator[](const char* key) const { return plist_dict_get_item(m_node, key); }

private:
    plist_t m_node;
};

Imaging::Platform::NSData serialised(plist_t node, Imaging::Platform::NSPropertyListFormat format);

/// Entries are added one by one; the first is number 1, the root unless another is chosen.
class HandMadeArchive {
public:
    HandMadeArchive();

    /// Takes the node over and gives its number.
    std::uint64_t add(plist_t node);
    std::uint64_t addClass(const char* name);

    /// An object's dictionary with its class; still to be added.
    static plist_t object(std::uint64_t classNumber);
    static void refer(plist_t object, const char* key, std::uint64_t number);

    void setRoot(std::uint64_t number) { plist_dict_set_item(m_top, "root", plist_new_uid(number)); }
    plist_t root() const { return m_list.get(); }

    Imaging::Platform::NSData data(Imaging::Platform::NSPropertyListFormat format =
                                       Imaging::Platform::NSPropertyListFormat::Binary) const {
        return serialised(m_list.get(), format);
    }

private:
    ScopedPropertyList m_list;
    plist_t m_entries;
    plist_t m_top;
    std::uint64_t m_count = 1;
};

/// A binary property list of values that are given as bytes, with references of 4 bytes; the first is the
/// root.
class BinaryList {
public:
    void add(std::string_view value);
    void addArray(const std::vector<std::uint32_t>& references);
    Imaging::Platform::NSData data() const;

    /// A count or number as it follows a marker: 0x13 and eight bytes.
    static std::string number(std::uint64_t value);
    static std::string bigEndian(std::uint64_t value, int size);

private:
    std::string m_bytes = "bplist00";
    std::vector<std::uint64_t> m_offsets;
};

Imaging::Platform::NSData bytes(std::string_view text);

/// The reason of the exception with which unarchiving fails. A failure of the test when it does not, when
/// the exception is of another kind, or when the reason is not one line.
std::string refusal(const Imaging::Platform::NSData& data);

} // namespace TestSupport
