// Also tests: Platform/Foundation/Archive/BinaryPropertyListGuard.cpp
// Also tests: Platform/Foundation/Archive/XMLPropertyListGuard.cpp

#include "Platform/Foundation/Archive/BinaryPropertyListGuard.h"
#include "Platform/Foundation/Archive/XMLPropertyListGuard.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Platform/Foundation/Archive/ArchiveFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace TestSupport;
using testing::HasSubstr;

namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

/// The reason for which a check refuses, or "" when it lets the data pass.
template<class Check>
std::string reasonOf(Check check, const NSData& data) {
    try {
        check(data);
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSInvalidUnarchiveOperationException);
        EXPECT_NE(exception.reason(), "");
        return exception.reason();
    }
    return {};
}

std::string xml(const std::string& text) { return reasonOf(checkXMLPropertyList, bytes(text)); }
std::string plist(const std::string& text) { return xml("<plist version=\"1.0\">" + text + "</plist>"); }
std::string binary(const NSData& data) { return reasonOf(checkBinaryPropertyList, data); }

std::string nested(std::size_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); }

constexpr std::size_t million = 1'000'000;

} // namespace

TEST(XMLPropertyListGuard, LetsUsualListsPass) {
    EXPECT_EQ(plist("<dict><key>a</key><string>b</string><key>c</key><array><true/><false /></array></dict>"),
              "");
    EXPECT_EQ(
        xml("<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD\" 'http://x/y.dtd'>\n<plist/>"), "");
    EXPECT_EQ(plist("<string><![CDATA[<array><array>]]></string><string>a<!-- <array> -->b</string>"), "");
    EXPECT_EQ(plist("<!-- <array> --><array/><?target <array> ?>"), "");
}

TEST(XMLPropertyListGuard, LimitsTheNesting) {
    // The element plist is one level.
    EXPECT_EQ(plist(nested(maximumPropertyListDepth - 1)), "");
    EXPECT_EQ(plist(nested(maximumPropertyListDepth)), "the property list nests too deeply");
    EXPECT_EQ(plist(nested(million)), "the property list nests too deeply");
    EXPECT_EQ(xml(repeated("<array>", million)), "the property list nests too deeply");
    EXPECT_EQ(plist(repeated("<dict><key>k</key>", million)), "the property list nests too deeply");
}

TEST(XMLPropertyListGuard, ManyElementsSideBySideDoNotNest) {
    EXPECT_EQ(plist(repeated("<array></array>", 100'000)), "");
}

TEST(XMLPropertyListGuard, NothingCanBeHiddenFromIt) {
    const std::string deep = nested(2000);
    // What some parser could read as the end of a comment, tag or declaration is not let pass.
    EXPECT_NE(plist("<!-->" + deep + "-->"), "");
    EXPECT_NE(plist("<!--->" + deep + "-->"), "");
    EXPECT_NE(plist("<array a='>" + deep + "'></array>"), "");
    EXPECT_NE(plist("<array a=\"" + deep + "\"></array>"), "");
    EXPECT_NE(plist("<array><![CDATA[>" + deep + "]]></array>"), "");
    EXPECT_NE(xml("<!DOCTYPE plist [ <!-- ]><plist>" + deep + "--> ]><plist></plist>"), "");
    EXPECT_NE(xml("<!DOCTYPE plist \"><plist>" + deep + "\"><plist></plist>"), "");
    EXPECT_NE(xml("<?x \"?><plist>" + deep + "\"?><plist></plist>"), "");
    EXPECT_NE(plist("<!ELEMENT " + deep + ">"), "");
    EXPECT_NE(plist("<string>" + deep + "</string>"), "");
    EXPECT_NE(plist("<string><?x?></string>"), "");
}

TEST(XMLPropertyListGuard, RefusesEntityDeclarations) {
    const std::string reason =
        "the XML property list declares entities or elements of its own; property lists "
        "have none";
    EXPECT_EQ(xml("<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">]><plist><string>&a;&a;</string></plist>"),
              reason);
    EXPECT_EQ(xml("<!DOCTYPE plist SYSTEM \"x\" [ <!ENTITY % a SYSTEM 'file:///etc/passwd'> ]><plist/>"),
              reason);
    EXPECT_NE(xml("<plist><!ENTITY a 'b'></plist>"), "");
}

TEST(XMLPropertyListGuard, RefusesWhatIsCutShortOrUnbalanced) {
    for (const char* text :
         {"<plist>", "<plist", "<plist><!--", "<plist><string><![CDATA[", "<?xml ", "<!DOCTYPE plist",
          "<plist></plist></plist>", "<plist a='></plist>", "</plist>", "<plist><array>"}) {
        EXPECT_THAT(xml(text), HasSubstr("the XML property list is damaged")) << text;
    }
}

TEST(XMLPropertyListGuard, LimitsTheKeysOfADictionary) {
    const std::string entry = "<key>k</key><true/>";
    EXPECT_EQ(plist("<dict>" + repeated(entry, maximumPropertyListKeys) + "</dict>"), "");
    EXPECT_EQ(plist("<dict>" + repeated(entry, maximumPropertyListKeys + 1) + "</dict>"),
              "a dictionary has too many keys");
    EXPECT_EQ(plist(repeated("<dict>" + repeated(entry, 100) + "</dict>", 100)), "");
    EXPECT_THAT(xml("<key/>"), HasSubstr("outside"));
}

TEST(XMLPropertyListGuard, LimitsTheReferencesInOneText) {
    EXPECT_EQ(plist("<string>" + repeated("&amp;", 10'000) + "</string>"), "");
    EXPECT_EQ(plist("<string>" + repeated("&amp;", million) + "</string>"),
              "the XML property list has too many character references in one text");
    // As many in small texts take no time.
    EXPECT_EQ(plist(repeated("<string>&amp;&lt;</string>", 100'000)), "");
}

TEST(BinaryPropertyListGuard, LetsUsualListsPass) {
    BinaryList list;
    list.addArray({1, 2, 3, 4, 5, 6, 7, 8, 1, 1});
    list.add("\x53"
             "abc");
    list.add("\x4F\x10\x02"
             "xy");
    list.add(std::string_view("\x61\x00\xE4", 3));
    list.add("\x09");
    list.add("\x13"
             "12345678");
    list.add("\x23"
             "12345678");
    list.add("\x33"
             "12345678");
    list.add("\x80\x01");
    EXPECT_EQ(binary(list.data()), "");
}

TEST(BinaryPropertyListGuard, LimitsTheNesting) {
    const auto chain = [](std::uint32_t containers) {
        BinaryList list;
        for (std::uint32_t i = 0; i < containers; ++i) list.addArray({i + 1});
        list.add("\x08");
        return binary(list.data());
    };
    const char* reason = "the property list nests too deeply, or a part of it contains itself";
    EXPECT_EQ(chain(maximumPropertyListDepth), "");
    EXPECT_EQ(chain(maximumPropertyListDepth + 1), reason);
    EXPECT_EQ(chain(million), reason);
}

TEST(BinaryPropertyListGuard, RefusesPartsThatContainThemselves) {
    const char* reason = "the property list nests too deeply, or a part of it contains itself";
    BinaryList own;
    own.addArray({0});
    EXPECT_EQ(binary(own.data()), reason);
    BinaryList other;
    other.add("\xD1" + BinaryList::bigEndian(1, 4) + BinaryList::bigEndian(2, 4));
    other.add("\x51k");
    other.addArray({1, 0});
    EXPECT_EQ(binary(other.data()), reason);
}

TEST(BinaryPropertyListGuard, CountsSharedPartsAsOftenAsTheyStand) {
    // Each of 40 arrays holds the next one twice: 2^40 values in less than a kilobyte.
    BinaryList list;
    for (std::uint32_t i = 0; i < 40; ++i) list.addArray({i + 1, i + 1});
    list.add("\x08");
    EXPECT_EQ(binary(list.data()), "the property list repeats its parts too often");
}

TEST(BinaryPropertyListGuard, CountsSharedBytesAsOftenAsTheyStand) {
    const auto sharing = [](std::uint32_t times) {
        BinaryList list;
        list.addArray(std::vector<std::uint32_t>(times, 1));
        list.add("\x4F" + BinaryList::number(million) + std::string(million, 'd'));
        return binary(list.data());
    };
    // 64 MB for the length and 64 MiB besides are allowed.
    EXPECT_EQ(sharing(120), "");
    EXPECT_EQ(sharing(140), "the property list repeats its parts too often");
}

TEST(BinaryPropertyListGuard, RefusesOverlappingContainersThatMultiply) {
    // All of 2000 values are the same array of 2000 references.
    NSData data = [] {
        BinaryList list;
        std::vector<std::uint32_t> all;
        for (std::uint32_t i = 1; i <= 2000; ++i) all.push_back(i);
        list.addArray(all);
        for (int i = 0; i < 2000; ++i) list.add("\x08");
        return list.data();
    }();
    const std::size_t table = data.size() - 32 - 2001 * 8;
    for (std::size_t i = 1; i <= 2000; ++i) {
        for (std::size_t byte = 0; byte < 8; ++byte) data[table + 8 * i + byte] = data[table + byte];
    }
    EXPECT_NE(binary(data), "");
}

TEST(BinaryPropertyListGuard, RefusesTrailersThatLie) {
    BinaryList list;
    list.addArray({1, 1});
    list.add("\x08");
    const NSData good = list.data();
    ASSERT_EQ(binary(good), "");
    const auto with = [&good](std::size_t fromEnd, std::string_view value) {
        NSData changed = good;
        std::copy(value.begin(), value.end(), changed.end() - static_cast<std::ptrdiff_t>(fromEnd));
        return binary(changed);
    };
    const auto eight = [](std::uint64_t value) { return BinaryList::bigEndian(value, 8); };
    EXPECT_THAT(with(26, std::string_view("\0", 1)), HasSubstr("trailer"));
    EXPECT_THAT(with(26, "\x09"), HasSubstr("trailer"));
    EXPECT_THAT(with(25, std::string_view("\0", 1)), HasSubstr("trailer"));
    EXPECT_THAT(with(25, "\xFF"), HasSubstr("trailer"));
    EXPECT_THAT(with(24, eight(3)), HasSubstr("cut short"));
    EXPECT_THAT(with(24, eight(UINT64_MAX)), HasSubstr("cut short"));
    EXPECT_THAT(with(24, eight(1)), HasSubstr("nowhere"));
    EXPECT_THAT(with(16, eight(2)), HasSubstr("nowhere"));
    EXPECT_THAT(with(16, eight(UINT64_MAX)), HasSubstr("nowhere"));
    EXPECT_THAT(with(8, eight(0)), HasSubstr("offset table"));
    EXPECT_THAT(with(8, eight(good.size())), HasSubstr("offset table"));
    EXPECT_THAT(with(8, eight(UINT64_MAX)), HasSubstr("offset table"));
}

TEST(BinaryPropertyListGuard, RefusesValuesThatLieOutside) {
    const auto root = [](std::string_view value) {
        BinaryList list;
        list.add(value);
        return binary(list.data());
    };
    EXPECT_EQ(root("\x51x"), "");
    EXPECT_THAT(root("\x52x"), HasSubstr("cut short"));
    EXPECT_THAT(root("\x13"
                     "1234567"),
                HasSubstr("cut short"));
    EXPECT_THAT(root("\x61x"), HasSubstr("cut short"));
    EXPECT_THAT(root("\xA1xxx"), HasSubstr("cut short"));
    EXPECT_THAT(root("\xD1xxxxxxx"), HasSubstr("cut short"));
    EXPECT_THAT(root("\x4F" + BinaryList::number(UINT64_MAX)), HasSubstr("cut short"));
    EXPECT_THAT(root("\xAF" + BinaryList::number(UINT64_MAX / 4 + 2)), HasSubstr("cut short"));
    EXPECT_THAT(root("\x6F" + BinaryList::number(1ULL << 63)), HasSubstr("cut short"));
    EXPECT_THAT(root("\xDF" + BinaryList::number(1ULL << 62)), HasSubstr("too many keys"));
    EXPECT_THAT(root("\x5F\x51x"), HasSubstr("not a number"));
    EXPECT_THAT(root("\x5F"), HasSubstr("cut short"));
}

TEST(BinaryPropertyListGuard, RefusesKindsThatAreNotKnown) {
    for (const char* value : {"\x0F", "\x07", "\x15zzzz", "\x21zzzz", "\x30zzzzzzzz", "\x70", "\x88zzzzzzzzz",
                              "\x90", "\xB0", "\xC0", "\xE0", "\xF0"}) {
        BinaryList list;
        list.add(value);
        EXPECT_THAT(binary(list.data()), HasSubstr("unknown kind"));
    }
}

TEST(BinaryPropertyListGuard, RefusesOffsetsIntoHeaderAndTrailer) {
    BinaryList list;
    list.add("\x08");
    for (const std::uint64_t offset : {0, 7, 9, 1000}) {
        NSData data = list.data();
        const std::string bytesOfOffset = BinaryList::bigEndian(offset, 8);
        std::copy(bytesOfOffset.begin(), bytesOfOffset.end(), data.begin() + 9);
        EXPECT_THAT(binary(data), HasSubstr("outside"));
    }
}

TEST(BinaryPropertyListGuard, RefusesDataThatIsTooShort) {
    EXPECT_THAT(binary(bytes("bplist00")), HasSubstr("cut short"));
    EXPECT_THAT(binary(bytes("bplist00" + std::string(31, 'x'))), HasSubstr("cut short"));
}
