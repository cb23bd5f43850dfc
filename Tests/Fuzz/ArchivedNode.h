#pragma once

#include "Platform/Foundation/KeyedArchiver.h"

namespace Fuzz {

/// An object that decodes every kind of value that coders know.
class ArchivedNode : public Imaging::Platform::NSCoding {
public:
    ArchivedNode() = default;
    explicit ArchivedNode(Imaging::Platform::NSCoder& coder) {
        child = coder.decodeObjectOfClass<ArchivedNode>("child");
        if (auto decoded = coder.decodeArrayOfClass<ArchivedNode>("children")) children = std::move(*decoded);
        if (auto decoded = coder.decodeString("name")) name = std::move(*decoded);
        if (auto decoded = coder.decodeData("data")) data = std::move(*decoded);
        isOpen = coder.decodeBool("open");
        count = coder.decodeInt("count");
        weight = coder.decodeFloat("weight");
        size = coder.decodeSize("size");
        rect = coder.decodeRect("rect");
        if (auto decoded = coder.decodeTransform("transform")) transform = *decoded;
    }

    std::string archiveClassName() const override { return "FuzzedNode"; }
    void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override {
        std::vector<const Imaging::Platform::NSCoding*> pointers;
        for (const auto& one : children) pointers.push_back(one.get());
        coder.encodeObject(child.get(), "child");
        coder.encodeArray(pointers, "children");
        coder.encodeString(name, "name");
        coder.encodeData(data, "data");
        coder.encodeBool(isOpen, "open");
        coder.encodeInt(count, "count");
        coder.encodeFloat(weight, "weight");
        coder.encodeSize(size, "size");
        coder.encodeRect(rect, "rect");
        coder.encodeTransform(transform, "transform");
    }

    std::shared_ptr<ArchivedNode> child;
    std::vector<std::shared_ptr<ArchivedNode>> children;
    std::string name;
    Imaging::Platform::NSData data;
    bool isOpen = false;
    std::int64_t count = 0;
    float weight = 0;
    Imaging::Platform::NSSize size;
    Imaging::Platform::NSRect rect;
    Imaging::Platform::NSAffineTransform transform;
};

} // namespace Fuzz
