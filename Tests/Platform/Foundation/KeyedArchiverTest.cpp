// Also tests: Platform/Foundation/Coder.cpp
// Also tests: Platform/Foundation/Archive/KeyedArchiveFormat.cpp

#include "Platform/Foundation/KeyedArchiver.h"

#include "Tests/Platform/Foundation/Archive/ArchiveFixtures.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <sys/mman.h>

using namespace Imaging::Platform;
using namespace TestSupport;
using testing::HasSubstr;

namespace {

using Format = NSPropertyListFormat;

/// An object whose parts a test chooses.
struct Scripted final : NSCoding {
    explicit Scripted(std::function<void(NSCoder&)> itsScript, std::string itsName = "Scripted")
        : script(std::move(itsScript)), name(std::move(itsName)) {}
    std::string archiveClassName() const override { return name; }
    void encodeWithCoder(NSCoder& coder) const override { script(coder); }
    std::function<void(NSCoder&)> script;
    std::string name;
};

/// What is read back is looked at while it is decoded.
std::function<void(NSCoder&)>& reader() {
    static std::function<void(NSCoder&)> function;
    return function;
}

struct Scanned final : NSCoding {
    explicit Scanned(NSCoder& coder) { reader()(coder); }
    std::string archiveClassName() const override { return "Scripted"; }
    void encodeWithCoder(NSCoder&) const override {}
};

const NSArchivableClass<Scanned> scannedRegistration("Scripted");

void thereAndBack(Format format, const std::function<void(NSCoder&)>& write,
                  const std::function<void(NSCoder&)>& read) {
    const NSData data = archivedDataWithRootObject(Scripted(write), format);
    bool hasRun = false;
    reader() = [&](NSCoder& coder) {
        read(coder);
        hasRun = true;
    };
    unarchiveObjectWithData(data);
    EXPECT_TRUE(hasRun);
}

/// The name and reason of the exception with which archiving fails.
std::string failure(const std::function<void(NSCoder&)>& write, Format format = Format::Binary) {
    try {
        archivedDataWithRootObject(Scripted(write), format);
    } catch (const NSException& exception) {
        return exception.what();
    }
    return "(none)";
}

std::string textOf(plist_t node) {
    EXPECT_EQ(plist_get_node_type(node), PLIST_STRING);
    const char* text = plist_get_string_ptr(node, nullptr);
    return text == nullptr ? "" : text;
}

/// The entry of an archive that a reference leads to.
plist_t follow(const ScopedPropertyList& archive, plist_t reference) {
    EXPECT_EQ(plist_get_node_type(reference), PLIST_UID);
    std::uint64_t number = 0;
    plist_get_uid_val(reference, &number);
    return plist_array_get_item(archive["$objects"], static_cast<std::uint32_t>(number));
}

class KeyedArchive : public testing::TestWithParam<Format> {};

INSTANTIATE_TEST_SUITE_P(Formats, KeyedArchive, testing::Values(Format::Binary, Format::XML),
                         [](const auto& format) { return format.param == Format::XML ? "XML" : "Binary"; });

} // namespace

TEST_P(KeyedArchive, KeepsAValueOfEachKind) {
    Everything whole;
    whole.flag = true;
    whole.integer = -42;
    whole.real = 0.1f;
    whole.text = " <\xC3\xA4 & \xF0\x9F\x98\x80>\n\t\"'";
    whole.data = {0, 255, 10, 128};
    whole.size = NSMakeSize(3.25f, -1e-7f);
    whole.rect = NSMakeRect(-1.5f, 2, 1e9f, 0.1f);
    whole.transform = NSAffineTransform({1.5f, -2, 0.1f, 4, -5e10f, 6});
    whole.object = std::make_shared<Node>("object");
    whole.array = {std::make_shared<Node>("first"), nullptr, std::make_shared<Node>("third")};
    const auto copy = unarchiveObjectOfClass<Everything>(archivedDataWithRootObject(whole, GetParam()));
    EXPECT_TRUE(copy->flag);
    EXPECT_EQ(copy->integer, -42);
    EXPECT_EQ(copy->real, 0.1f);
    EXPECT_EQ(copy->text, whole.text);
    EXPECT_EQ(copy->data, whole.data);
    EXPECT_TRUE(NSEqualSizes(copy->size, whole.size));
    EXPECT_TRUE(NSEqualRects(copy->rect, whole.rect));
    EXPECT_TRUE(copy->transform.isEqual(whole.transform));
    EXPECT_EQ(std::dynamic_pointer_cast<Node>(copy->object)->name, "object");
    ASSERT_EQ(copy->array.size(), 3u);
    EXPECT_EQ(std::dynamic_pointer_cast<Node>(copy->array[0])->name, "first");
    EXPECT_EQ(copy->array[1], nullptr);
    EXPECT_EQ(std::dynamic_pointer_cast<Node>(copy->array[2])->name, "third");
}

TEST_P(KeyedArchive, KeepsEmptyValues) {
    const auto copy =
        unarchiveObjectOfClass<Everything>(archivedDataWithRootObject(Everything(), GetParam()));
    EXPECT_FALSE(copy->flag);
    EXPECT_EQ(copy->integer, 0);
    EXPECT_EQ(copy->text, "");
    EXPECT_EQ(copy->data, NSData());
    EXPECT_TRUE(copy->transform.isEqual(NSAffineTransform()));
    EXPECT_EQ(copy->object, nullptr);
    EXPECT_TRUE(copy->array.empty());
}

TEST_P(KeyedArchive, KeepsWholeNumbersToTheirEnds) {
    for (const std::int64_t number : {INT64_MIN, INT64_MIN + 1, std::int64_t{-1}, std::int64_t{0},
                                      std::int64_t{255}, std::int64_t{1} << 32, INT64_MAX}) {
        thereAndBack(
            GetParam(), [&](NSCoder& coder) { coder.encodeInt(number, "n"); },
            [&](NSCoder& coder) { EXPECT_EQ(coder.decodeInt("n"), number); });
    }
}

TEST_P(KeyedArchive, KeepsFloatsBitForBit) {
    using Limits = std::numeric_limits<float>;
    for (const float number : {0.1f, -1.0f / 3, Limits::max(), Limits::lowest(), Limits::min(),
                               Limits::denorm_min(), Limits::infinity(), -Limits::infinity(), 16777217.0f}) {
        thereAndBack(
            GetParam(),
            [&](NSCoder& coder) {
                coder.encodeFloat(number, "n");
                coder.encodeSize(NSMakeSize(number, -number), "s");
            },
            [&](NSCoder& coder) {
                EXPECT_EQ(coder.decodeFloat("n"), number);
                EXPECT_TRUE(NSEqualSizes(coder.decodeSize("s"), NSMakeSize(number, -number)));
            });
    }
    thereAndBack(
        GetParam(),
        [](NSCoder& coder) {
            coder.encodeFloat(Limits::quiet_NaN(), "n");
            coder.encodeRect(NSMakeRect(1, Limits::quiet_NaN(), 3, 4), "r");
        },
        [](NSCoder& coder) {
            EXPECT_TRUE(std::isnan(coder.decodeFloat("n")));
            EXPECT_TRUE(std::isnan(coder.decodeRect("r").origin.y));
            EXPECT_EQ(coder.decodeRect("r").size.height, 4);
        });
}

TEST(KeyedArchiver, BinaryArchivesKeepTheSignOfZero) {
    thereAndBack(
        Format::Binary,
        [](NSCoder& coder) {
            coder.encodeFloat(-0.0f, "n");
            coder.encodeSize(NSMakeSize(-0.0f, 0), "s");
        },
        [](NSCoder& coder) {
            EXPECT_TRUE(std::signbit(coder.decodeFloat("n")));
            EXPECT_TRUE(std::signbit(coder.decodeSize("s").width));
        });
}

TEST_P(KeyedArchive, KeepsTextsOfAllKinds) {
    for (const std::string text : {"", " ", "\n", "  both ends  ", "&amp; ]]> <![CDATA[", "\xC3\xA4",
                                   "\xE2\x82\xAC\xED\x9F\xBF\xEE\x80\x80", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF",
                                   "$null", "{1, 2}", "\x7F", "a\r\nb"}) {
        thereAndBack(
            GetParam(), [&](NSCoder& coder) { coder.encodeString(text, "t"); },
            [&](NSCoder& coder) { EXPECT_EQ(coder.decodeString("t"), text); });
    }
}

TEST(KeyedArchiver, RefusesTextsThatAPropertyListCannotHold) {
    for (const std::string& text :
         {std::string("a\0b", 3), std::string("\xFF"), std::string("\xC3"), std::string("\xC0\x80"),
          std::string("\xED\xA0\x80"), std::string("\xF4\x90\x80\x80"), std::string("\xE0\x80\x80")}) {
        EXPECT_THAT(failure([&](NSCoder& coder) { coder.encodeString(text, "t"); }),
                    HasSubstr("NSInvalidArchiveOperationException: a text is not UTF-8"));
    }
}

TEST(KeyedArchiver, RefusesControlCharactersInXMLOnly) {
    const auto write = [](NSCoder& coder) { coder.encodeString("a\x01z", "t"); };
    EXPECT_THAT(failure(write, Format::XML), HasSubstr("control characters"));
    thereAndBack(Format::Binary, write, [](NSCoder& coder) { EXPECT_EQ(coder.decodeString("t"), "a\x01z"); });
}

TEST_P(KeyedArchive, SharedObjectsStayShared) {
    const auto bottom = std::make_shared<Node>("bottom");
    const auto top = std::make_shared<Node>("top", std::make_shared<Node>("left", bottom),
                                            std::make_shared<Node>("right", nullptr, bottom));
    const auto copy = unarchiveObjectOfClass<Node>(archivedDataWithRootObject(*top, GetParam()));
    EXPECT_EQ(copy->left->name, "left");
    EXPECT_EQ(copy->right->name, "right");
    EXPECT_EQ(copy->left->left->name, "bottom");
    EXPECT_EQ(copy->left->left, copy->right->right);
    EXPECT_NE(copy->left, copy->right);
    EXPECT_EQ(copy->left->right, nullptr);
}

TEST_P(KeyedArchive, EqualObjectsThatAreNotTheSameStayApart) {
    const Node top("top", std::make_shared<Node>("same"), std::make_shared<Node>("same"));
    const auto copy = unarchiveObjectOfClass<Node>(archivedDataWithRootObject(top, GetParam()));
    EXPECT_EQ(copy->left->name, copy->right->name);
    EXPECT_NE(copy->left, copy->right);
}

TEST_P(KeyedArchive, TheSameObjectInAnArrayTwiceIsOneObject) {
    Everything whole;
    const auto node = std::make_shared<Node>("node");
    whole.array = {node, node};
    whole.object = node;
    const auto copy = unarchiveObjectOfClass<Everything>(archivedDataWithRootObject(whole, GetParam()));
    ASSERT_EQ(copy->array.size(), 2u);
    EXPECT_EQ(copy->array[0], copy->array[1]);
    EXPECT_EQ(copy->object, copy->array[0]);
}

TEST_P(KeyedArchive, AbsentKeysGiveNothingOrZero) {
    thereAndBack(
        GetParam(), [](NSCoder& coder) { coder.encodeInt(1, "present"); },
        [](NSCoder& coder) {
            EXPECT_TRUE(coder.containsValueForKey("present"));
            EXPECT_FALSE(coder.containsValueForKey("absent"));
            EXPECT_EQ(coder.decodeObject("absent"), nullptr);
            EXPECT_EQ(coder.decodeObjectOfClass<Node>("absent"), nullptr);
            EXPECT_EQ(coder.decodeArray("absent"), std::nullopt);
            EXPECT_EQ(coder.decodeArrayOfClass<Node>("absent"), std::nullopt);
            EXPECT_EQ(coder.decodeString("absent"), std::nullopt);
            EXPECT_EQ(coder.decodeData("absent"), std::nullopt);
            EXPECT_FALSE(coder.decodeBool("absent"));
            EXPECT_EQ(coder.decodeInt("absent"), 0);
            EXPECT_EQ(coder.decodeFloat("absent"), 0);
            EXPECT_TRUE(NSEqualSizes(coder.decodeSize("absent"), NSZeroSize));
            EXPECT_TRUE(NSEqualRects(coder.decodeRect("absent"), NSZeroRect));
            EXPECT_EQ(coder.decodeTransform("absent"), std::nullopt);
        });
}

TEST_P(KeyedArchive, ANullObjectIsPresentAndNull) {
    thereAndBack(
        GetParam(), [](NSCoder& coder) { coder.encodeObject(nullptr, "null"); },
        [](NSCoder& coder) {
            EXPECT_TRUE(coder.containsValueForKey("null"));
            EXPECT_EQ(coder.decodeObject("null"), nullptr);
            EXPECT_EQ(coder.decodeArray("null"), std::nullopt);
            EXPECT_EQ(coder.decodeString("null"), std::nullopt);
        });
}

TEST_P(KeyedArchive, KeysMayBeginWithTheArchivesOwnSign) {
    thereAndBack(
        GetParam(),
        [](NSCoder& coder) {
            coder.encodeInt(1, "$class");
            coder.encodeInt(2, "$$class");
            coder.encodeInt(3, "");
            coder.encodeInt(4, "<\xC3\xA4&>");
        },
        [](NSCoder& coder) {
            EXPECT_EQ(coder.decodeInt("$class"), 1);
            EXPECT_EQ(coder.decodeInt("$$class"), 2);
            EXPECT_EQ(coder.decodeInt(""), 3);
            EXPECT_EQ(coder.decodeInt("<\xC3\xA4&>"), 4);
        });
}

TEST_P(KeyedArchive, ValuesOfAnotherTypeAreRefusedWithTheKey) {
    const Node node("node");
    const auto write = [&](NSCoder& coder) {
        coder.encodeObject(&node, "object");
        coder.encodeArray({&node, nullptr}, "array");
        coder.encodeString("text", "text");
        coder.encodeData(bytes("data"), "data");
        coder.encodeBool(true, "bool");
        coder.encodeInt(7, "int");
        coder.encodeFloat(0.5f, "float");
        coder.encodeTransform(NSAffineTransform(), "transform");
    };
    using Read = std::function<void(NSCoder&, const char*)>;
    const std::vector<std::pair<std::string, Read>> readers = {
        {"object", [](NSCoder& c, const char* key) { c.decodeObject(key); }},
        {"array", [](NSCoder& c, const char* key) { c.decodeArray(key); }},
        {"text", [](NSCoder& c, const char* key) { c.decodeString(key); }},
        {"data", [](NSCoder& c, const char* key) { c.decodeData(key); }},
        {"bool", [](NSCoder& c, const char* key) { c.decodeBool(key); }},
        {"int", [](NSCoder& c, const char* key) { c.decodeInt(key); }},
        {"float int", [](NSCoder& c, const char* key) { c.decodeFloat(key); }},
        {"size", [](NSCoder& c, const char* key) { c.decodeSize(key); }},
        {"rect", [](NSCoder& c, const char* key) { c.decodeRect(key); }},
        {"transform", [](NSCoder& c, const char* key) { c.decodeTransform(key); }},
        {"object", [](NSCoder& c, const char* key) { c.decodeObjectOfClass<Node>(key); }},
        {"", [](NSCoder& c, const char* key) { c.decodeObjectOfClass<Everything>(key); }},
        {"", [](NSCoder& c, const char* key) { c.decodeArrayOfClass<Everything>(key); }},
        {"", [](NSCoder& c, const char* key) { c.decodeArrayOfClass<Node>(key); }},
    };
    thereAndBack(GetParam(), write, [&](NSCoder& coder) {
        for (const auto& [fitting, read] : readers) {
            for (const std::string key :
                 {"object", "array", "text", "data", "bool", "int", "float", "transform"}) {
                // An array or transform is an object too, but of no class that a program registers.
                const bool fits = fitting == key || fitting.find(" " + key) != std::string::npos ||
                                  (fitting == "float int" && key == "float");
                try {
                    read(coder, key.c_str());
                    EXPECT_TRUE(fits) << fitting << " " << key;
                } catch (const NSException& exception) {
                    EXPECT_FALSE(fits) << fitting << " " << key;
                    EXPECT_EQ(exception.name(), NSInvalidUnarchiveOperationException);
                    if (fitting != "object" || (key != "array" && key != "transform")) {
                        EXPECT_THAT(exception.reason(), testing::AnyOf(HasSubstr("\"" + key + "\""),
                                                                       HasSubstr("did not register")));
                    }
                }
            }
        }
    });
}

TEST_P(KeyedArchive, AWholeNumberIsAFloatToo) {
    thereAndBack(
        GetParam(), [](NSCoder& coder) { coder.encodeInt(-3, "n"); },
        [](NSCoder& coder) { EXPECT_EQ(coder.decodeFloat("n"), -3); });
}

TEST(KeyedArchiver, RefusesAKeyTwiceInOneObject) {
    const std::string reason = "NSInvalidArgumentException: the key \"n\" is encoded twice in one object";
    EXPECT_EQ(failure([](NSCoder& coder) {
                  coder.encodeInt(1, "n");
                  coder.encodeString("1", "n");
              }),
              reason);
    EXPECT_EQ(failure([](NSCoder& coder) {
                  coder.encodeObject(nullptr, "n");
                  coder.encodeBool(true, "n");
              }),
              reason);
}

TEST(KeyedArchiver, RefusesKeysThatAreNotText) {
    EXPECT_THAT(failure([](NSCoder& coder) { coder.encodeInt(1, std::string_view("a\0b", 3)); }),
                HasSubstr("NSInvalidArgumentException"));
    EXPECT_THAT(failure([](NSCoder& coder) { coder.encodeInt(1, "\xFF"); }),
                HasSubstr("NSInvalidArgumentException"));
}

TEST(KeyedArchiver, CodersDoOneOfTheTwo) {
    EXPECT_EQ(failure([](NSCoder& coder) { coder.decodeInt("n"); }),
              "NSInvalidArgumentException: this coder does not decode");
    thereAndBack(
        Format::Binary, [](NSCoder&) {},
        [](NSCoder& coder) {
            EXPECT_THROW(coder.encodeInt(1, "n"), NSException);
            EXPECT_THROW(coder.encodeObject(nullptr, "n"), NSException);
        });
}

TEST(KeyedArchiver, RefusesAnObjectThatContainsItself) {
    const auto first = std::make_shared<Node>("first");
    const auto second = std::make_shared<Node>("second", nullptr, first);
    first->right = second;
    EXPECT_THROW(
        {
            try {
                archivedDataWithRootObject(*first);
            } catch (const NSException& exception) {
                EXPECT_EQ(exception.name(), NSInvalidArchiveOperationException);
                EXPECT_EQ(exception.reason(), "an object contains itself");
                throw;
            }
        },
        NSException);
    first->right = nullptr;
}

TEST(KeyedArchiver, RefusesAnArchiveOfWhichAPartFailedUnnoticed) {
    const Node broken("\xFF");
    EXPECT_THAT(failure([&](NSCoder& coder) {
                    try {
                        coder.encodeObject(&broken, "part");
                    } catch (const NSException&) {
                    }
                }),
                HasSubstr("one of its objects could not be archived"));
}

TEST_P(KeyedArchive, ObjectsNestAsDeepAsIsDocumentedAndNoDeeper) {
    auto chain = std::make_shared<Node>("end");
    for (int depth = 1; depth < maximumArchiveDepth; ++depth) chain = std::make_shared<Node>("n", chain);
    const auto copy = unarchiveObjectOfClass<Node>(archivedDataWithRootObject(*chain, GetParam()));
    int depth = 1;
    for (const Node* node = copy.get(); node->left != nullptr; node = node->left.get()) ++depth;
    EXPECT_EQ(depth, maximumArchiveDepth);

    const Node deeper("one too many", chain);
    try {
        archivedDataWithRootObject(deeper, GetParam());
        FAIL() << "it was archived";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSInvalidArchiveOperationException);
        EXPECT_EQ(exception.reason(), "its objects nest too deeply");
    }
}

TEST(KeyedArchiver, RefusesMoreThanAPropertyListCanHold) {
    // Pages that nobody touches take no memory.
    const std::size_t size = (2ULL << 30) + 1;
    void* pages = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    const ByteView large(static_cast<const std::uint8_t*>(pages), size);
    EXPECT_EQ(failure([&](NSCoder& coder) { coder.encodeData(large, "data"); }),
              "NSInvalidArchiveOperationException: it would become larger than 2 GiB");
    munmap(pages, size);
}

TEST_P(KeyedArchive, RefusesMoreKeysThanItWouldReadBack) {
    const auto write = [](int keys) {
        return [keys](NSCoder& coder) {
            for (int i = 0; i < keys; ++i) coder.encodeInt(i, "k" + std::to_string(i));
        };
    };
    // The class takes one key of the 4096.
    EXPECT_THAT(failure(write(4096), GetParam()), HasSubstr("too many keys"));
    thereAndBack(GetParam(), write(4095), [](NSCoder& coder) { EXPECT_EQ(coder.decodeInt("k4094"), 4094); });
}

TEST(KeyedArchiver, RefusesSharingThatCouldNotBeReadBack) {
    const NSData large(4 << 20, 0x55);
    const Scripted part([&](NSCoder& coder) { coder.encodeData(large, "data"); });
    std::vector<Scripted> parts(100, part);
    std::vector<const NSCoding*> pointers;
    for (const Scripted& one : parts) pointers.push_back(&one);
    // 100 times 4 MiB of one entry of 4 MiB; up to 64 times and 64 MiB more is allowed.
    EXPECT_THAT(failure([&](NSCoder& coder) { coder.encodeArray(pointers, "parts"); }),
                HasSubstr("NSInvalidArchiveOperationException: too many of its objects"));
    pointers.resize(60);
    EXPECT_EQ(failure([&](NSCoder& coder) { coder.encodeArray(pointers, "parts"); }), "(none)");
}

TEST(KeyedArchiver, WritesTheUsualLayout) {
    const Node root("name", std::make_shared<Node>("name"));
    const ScopedPropertyList archive(archivedDataWithRootObject(root));
    std::uint64_t version = 0;
    plist_get_uint_val(archive["$version"], &version);
    EXPECT_EQ(version, 100000u);
    EXPECT_EQ(textOf(archive["$archiver"]), "NSKeyedArchiver");
    EXPECT_EQ(plist_dict_get_size(archive.get()), 4u);
    EXPECT_EQ(textOf(plist_array_get_item(archive["$objects"], 0)), "$null");

    const plist_t top = follow(archive, plist_dict_get_item(archive["$top"], "root"));
    EXPECT_EQ(plist_dict_get_size(top), 4u);
    EXPECT_EQ(textOf(follow(archive, plist_dict_get_item(top, "name"))), "name");
    EXPECT_EQ(textOf(follow(archive, plist_dict_get_item(top, "right"))), "$null");
    const plist_t left = follow(archive, plist_dict_get_item(top, "left"));
    // The text and the class stand there once: null, two objects, one class, one text.
    EXPECT_EQ(plist_array_get_size(archive["$objects"]), 5u);
    const plist_t itsClass = follow(archive, plist_dict_get_item(left, "$class"));
    EXPECT_EQ(itsClass, follow(archive, plist_dict_get_item(top, "$class")));
    EXPECT_EQ(textOf(plist_dict_get_item(itsClass, "$classname")), "Node");
    const plist_t chain = plist_dict_get_item(itsClass, "$classes");
    ASSERT_EQ(plist_array_get_size(chain), 2u);
    EXPECT_EQ(textOf(plist_array_get_item(chain, 0)), "Node");
    EXPECT_EQ(textOf(plist_array_get_item(chain, 1)), "NSObject");
}

TEST(KeyedArchiver, WritesEachKindOfValueAsOthersDo) {
    const Node node("node");
    const Scripted root([&](NSCoder& coder) {
        coder.encodeBool(true, "bool");
        coder.encodeInt(-7, "int");
        coder.encodeFloat(0.25f, "float");
        coder.encodeData(bytes("abc"), "data");
        coder.encodeSize(NSMakeSize(0.1f, -2), "size");
        coder.encodeRect(NSMakeRect(1, 2.5f, 1e10f, 0), "rect");
        coder.encodeTransform(NSAffineTransform({1, 2, -1, 0.5f, 0, -2}), "transform");
        coder.encodeArray({&node, nullptr}, "array");
        coder.encodeInt(1, "$int");
    });
    const ScopedPropertyList archive(archivedDataWithRootObject(root));
    const plist_t top = follow(archive, plist_dict_get_item(archive["$top"], "root"));
    const auto item = [&](const char* key) { return plist_dict_get_item(top, key); };
    EXPECT_EQ(plist_get_node_type(item("bool")), PLIST_BOOLEAN);
    EXPECT_EQ(plist_get_node_type(item("int")), PLIST_UINT);
    EXPECT_EQ(plist_get_node_type(item("$$int")), PLIST_UINT);
    double real = 0;
    plist_get_real_val(item("float"), &real);
    EXPECT_EQ(real, 0.25);
    EXPECT_EQ(plist_data_val_compare(follow(archive, item("data")), bytes("abc").data(), 3), 0);
    EXPECT_EQ(textOf(follow(archive, item("size"))), "{0.100000001, -2}");
    EXPECT_EQ(textOf(follow(archive, item("rect"))), "{{1, 2.5}, {1e+10, 0}}");

    const plist_t transform = follow(archive, item("transform"));
    const plist_t transformClass = follow(archive, plist_dict_get_item(transform, "$class"));
    EXPECT_EQ(textOf(plist_dict_get_item(transformClass, "$classname")), "NSAffineTransform");
    const std::uint8_t expected[] = {0x3F, 0x80, 0, 0, 0x40, 0, 0, 0, 0xBF, 0x80, 0, 0,
                                     0x3F, 0,    0, 0, 0,    0, 0, 0, 0xC0, 0,    0, 0};
    EXPECT_EQ(plist_data_val_compare(plist_dict_get_item(transform, "NSTransformStruct"), expected, 24), 0);

    const plist_t array = follow(archive, item("array"));
    EXPECT_EQ(
        textOf(plist_dict_get_item(follow(archive, plist_dict_get_item(array, "$class")), "$classname")),
        "NSArray");
    const plist_t elements = plist_dict_get_item(array, "NS.objects");
    ASSERT_EQ(plist_array_get_size(elements), 2u);
    EXPECT_EQ(plist_get_node_type(follow(archive, plist_array_get_item(elements, 0))), PLIST_DICT);
    EXPECT_EQ(textOf(follow(archive, plist_array_get_item(elements, 1))), "$null");
}

TEST_P(KeyedArchive, CanBeLookedIntoWithAnotherProgram) {
    const TemporaryFolder folder;
    const NSData data = archivedDataWithRootObject(Node("looked at"), GetParam());
    ASSERT_TRUE(writeToFileAtomically(data, folder.path("archive.plist")));
    const std::string command =
        "plistutil -f xml -i '" + folder.path("archive.plist") + "' -o '" + folder.path("readable.xml") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_THAT(folder.read("readable.xml"), HasSubstr("<string>looked at</string>"));
    EXPECT_THAT(folder.read("readable.xml"), HasSubstr("<key>CF$UID</key>"));
}

TEST_P(KeyedArchive, DoesNotDependOnTheLocale) {
    const TemporaryFolder folder;
    std::string characters = "<code_set_name> ANSI_X3.4-1968\n<escape_char> /\nCHARMAP\n";
    for (unsigned c = 0; c < 128; ++c) {
        char line[40];
        std::snprintf(line, sizeof line, "<U%04X> /x%02x C%u\n", c, c, c);
        characters += line;
    }
    const std::string map = folder.write("map", characters + "END CHARMAP\n");
    const std::string source = folder.write("source", "LC_NUMERIC\ndecimal_point \"<U002C>\"\n"
                                                      "thousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    // It complains about the categories that are missing, and makes the locale all the same.
    const std::string command =
        "localedef -c -f '" + map + "' -i '" + source + "' '" + folder.path("xx_XX") + "' >/dev/null 2>&1";
    EXPECT_NE(std::system(command.c_str()), -1);
    const ScopedVariable path("LOCPATH", folder.path("").c_str());
    ASSERT_NE(std::setlocale(LC_NUMERIC, "xx_XX"), nullptr);
    char text[10];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    EXPECT_STREQ(text, "1,5");

    Everything whole;
    whole.real = 1.5f;
    whole.size = NSMakeSize(2.5f, 3.5f);
    const NSData data = archivedDataWithRootObject(whole, GetParam());
    const auto copy = unarchiveObjectOfClass<Everything>(data);
    EXPECT_EQ(std::string(std::localeconv()->decimal_point), ",");
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(copy->real, 1.5f);
    EXPECT_TRUE(NSEqualSizes(copy->size, whole.size));
    EXPECT_EQ(unarchiveObjectOfClass<Everything>(data)->real, 1.5f);
}
