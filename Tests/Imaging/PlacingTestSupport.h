#pragma once

// What the tests of nodes that place pictures share: an observer that counts, and a coder that shows what a
// node writes and feeds what it reads.

#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace ImagingTests {

/// Counts the changes that a node announces, for its lifetime.
class ChangeCounter {
public:
    explicit ChangeCounter(std::shared_ptr<IMGImage> node) : m_node(std::move(node)) {
        m_node->addImageDidChangeObserver(this, &ChangeCounter::told);
    }
    ~ChangeCounter() { m_node->removeImageDidChangeObserver(this); }
    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;

    int count() const { return m_count; }

private:
    void told(IMGImage&) { ++m_count; }

    std::shared_ptr<IMGImage> m_node;
    int m_count = 0;
};

/// A coder over the plain values of one object.
class PlainValues : public Imaging::Platform::NSCoder {
public:
    std::set<std::string> keys;
    std::map<std::string, std::int64_t, std::less<>> numbers;
    std::map<std::string, float, std::less<>> floats;
    std::map<std::string, bool, std::less<>> flags;
    std::map<std::string, NSSize, std::less<>> sizes;
    std::map<std::string, NSRect, std::less<>> rects;
    std::map<std::string, NSAffineTransform, std::less<>> transforms;

    PlainValues() = default;
    explicit PlainValues(const IMGImage& node) { node.encodeWithCoder(*this); }

    void encodeArray(const std::vector<const Imaging::Platform::NSCoding*>&, std::string_view key) override {
        keys.emplace(key);
    }
    void encodeInt(std::int64_t v, std::string_view key) override { keep(numbers, v, key); }
    void encodeFloat(float v, std::string_view key) override { keep(floats, v, key); }
    void encodeBool(bool v, std::string_view key) override { keep(flags, v, key); }
    void encodeSize(NSSize v, std::string_view key) override { keep(sizes, v, key); }
    void encodeRect(NSRect v, std::string_view key) override { keep(rects, v, key); }
    void encodeTransform(const NSAffineTransform& v, std::string_view key) override {
        keep(transforms, v, key);
    }

    std::optional<std::vector<std::shared_ptr<Imaging::Platform::NSCoding>>>
    decodeArray(std::string_view) override {
        return std::nullopt;
    }
    std::int64_t decodeInt(std::string_view key) override { return kept(numbers, key).value_or(0); }
    float decodeFloat(std::string_view key) override { return kept(floats, key).value_or(0); }
    bool decodeBool(std::string_view key) override { return kept(flags, key).value_or(false); }
    NSSize decodeSize(std::string_view key) override { return kept(sizes, key).value_or(NSSize{}); }
    NSRect decodeRect(std::string_view key) override { return kept(rects, key).value_or(NSRect{}); }
    std::optional<NSAffineTransform> decodeTransform(std::string_view key) override {
        return kept(transforms, key);
    }

private:
    template<class Value>
    void keep(std::map<std::string, Value, std::less<>>& values, const Value& value, std::string_view key) {
        keys.emplace(key);
        values.emplace(key, value);
    }

    template<class Value>
    static std::optional<Value> kept(const std::map<std::string, Value, std::less<>>& values,
                                     std::string_view key) {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
};

/// The node as it comes back from an archive of either format.
template<class Node>
std::shared_ptr<Node> archivedAndBack(const Node& node, Imaging::Platform::NSPropertyListFormat format) {
    return Imaging::Platform::unarchiveObjectOfClass<Node>(
        Imaging::Platform::archivedDataWithRootObject(node, format));
}

inline constexpr Imaging::Platform::NSPropertyListFormat bothFormats[] = {
    Imaging::Platform::NSPropertyListFormat::Binary, Imaging::Platform::NSPropertyListFormat::XML};

/// What a graph shows in the lower left part of its space, drawn by walking it.
inline Grid walked(IMGImage& node, int width, int height, const NSAffineTransform& transform = {}) {
    return drawnOn(width, height, [&] { node.drawWithTransform(transform, 2, 1); });
}

inline testing::AssertionResult isNearPoint(NSPoint p, double x, double y, double tolerance) {
    const double distance = std::hypot(static_cast<double>(p.x) - x, static_cast<double>(p.y) - y);
    if (distance <= tolerance) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the point is (" << p.x << ", " << p.y << "), " << distance
                                       << " away from (" << x << ", " << y << ")";
}

} // namespace ImagingTests
