#include "Platform/Foundation/KeyedArchiver.h"

#include "Tests/Platform/Foundation/Archive/ArchiveFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <thread>

using namespace Imaging::Platform;
using namespace TestSupport;
using testing::HasSubstr;

namespace {

using Format = NSPropertyListFormat;

/// Fails when it is decoded for the first time.
struct Hesitant final : NSCoding {
    explicit Hesitant(NSCoder&) {
        if (++attempts == 1) throw NSException(NSGenericException, "not yet");
    }
    std::string archiveClassName() const override { return "Hesitant"; }
    void encodeWithCoder(NSCoder&) const override {}
    static inline int attempts = 0;
};

/// Asks for its part until it gets it, and twice more.
struct Patient final : NSCoding {
    explicit Patient(NSCoder& coder) {
        EXPECT_THROW(coder.decodeObject("part"), NSException);
        first = coder.decodeObject("part");
        second = coder.decodeObject("part");
    }
    std::string archiveClassName() const override { return "Patient"; }
    void encodeWithCoder(NSCoder&) const override {}
    std::shared_ptr<NSCoding> first;
    std::shared_ptr<NSCoding> second;
};

/// Reads its data or list and forgets it.
struct Reader final : NSCoding {
    explicit Reader(NSCoder& coder) {
        if (coder.containsValueForKey("data")) coder.decodeData("data");
        if (coder.containsValueForKey("text")) coder.decodeString("text");
        if (coder.containsValueForKey("list")) coder.decodeArray("list");
        next = coder.decodeObject("next");
    }
    std::string archiveClassName() const override { return "Reader"; }
    void encodeWithCoder(NSCoder&) const override {}
    std::shared_ptr<NSCoding> next;
};

/// Asks for more and more of the stack before it goes on to the next.
struct Hungry final : NSCoding {
    explicit Hungry(NSCoder& coder) {
        volatile char room[32 * 1024];
        room[0] = 1;
        next = coder.decodeObject("next");
        EXPECT_EQ(room[0], 1);
    }
    std::string archiveClassName() const override { return "Hungry"; }
    void encodeWithCoder(NSCoder&) const override {}
    std::shared_ptr<NSCoding> next;
};

const NSArchivableClass<Hesitant> hesitantRegistration("Hesitant");
const NSArchivableClass<Patient> patientRegistration("Patient");
const NSArchivableClass<Reader> readerRegistration("Reader");
const NSArchivableClass<Hungry> hungryRegistration("Hungry");

/// A graph with a value of each kind, the same every time.
NSData sampleArchive(Format format) {
    Everything whole;
    const auto shared = std::make_shared<Node>("shared \xC3\xA4");
    whole.flag = true;
    whole.integer = -1234567;
    whole.real = 2.5f;
    whole.text = "text & more";
    whole.data = {1, 2, 3, 4, 5};
    whole.size = NSMakeSize(3, 4);
    whole.rect = NSMakeRect(1, 2, 3, 4);
    whole.transform.rotateByDegrees(30);
    whole.object = std::make_shared<Node>("object", shared, shared);
    whole.array = {shared, nullptr, std::make_shared<Node>("last")};
    return archivedDataWithRootObject(whole, format);
}

/// Either an object comes back or an exception with one line; everything else is a failure.
void survive(const NSData& data) {
    try {
        EXPECT_NE(unarchiveObjectWithData(data), nullptr);
    } catch (const NSException& exception) {
        EXPECT_NE(exception.reason(), "");
        EXPECT_EQ(exception.reason().find('\n'), std::string::npos);
    }
}

/// An archive of a chain: object number i + 1 refers to the next under "next". Written value by value, since
/// a tree of this size takes much memory.
NSData chain(std::uint32_t length, const std::string& className) {
    // 0 root, 1..14 the fixed parts, then the objects with a reference each.
    enum : std::uint32_t {
        Archiver = 1,
        ArchiverName,
        Version,
        Number,
        Top,
        TopValue,
        RootKey,
        RootUID,
        Objects,
        Entries,
        Null,
        ClassKey,
        ClassUID,
        NextKey,
        Class,
        ClassNameKey,
        ClassName,
        First
    };
    const auto at = [](std::uint32_t number) { return BinaryList::bigEndian(number, 4); };
    const auto ascii = [](const std::string& text) {
        return "\x5F\x10" + std::string(1, static_cast<char>(text.size())) + text;
    };
    const auto uid = [](std::uint32_t number) { return "\x83" + BinaryList::bigEndian(number, 4); };
    BinaryList list;
    list.add("\xD4" + at(Archiver) + at(Version) + at(Top) + at(Objects) + at(ArchiverName) + at(Number) +
             at(TopValue) + at(Entries));
    list.add(ascii("$archiver"));
    list.add(ascii("NSKeyedArchiver"));
    list.add(ascii("$version"));
    list.add("\x12" + at(100000));
    list.add(ascii("$top"));
    list.add("\xD1" + at(RootKey) + at(RootUID));
    list.add(ascii("root"));
    list.add(uid(2));
    list.add(ascii("$objects"));
    std::vector<std::uint32_t> entries = {Null, Class};
    for (std::uint32_t i = 0; i < length; ++i) entries.push_back(First + 2 * i);
    list.addArray(entries);
    list.add(ascii("$null"));
    list.add(ascii("$class"));
    list.add(uid(1));
    list.add(ascii("next"));
    list.add("\xD1" + at(ClassNameKey) + at(ClassName));
    list.add(ascii("$classname"));
    list.add(ascii(className));
    for (std::uint32_t i = 0; i < length; ++i) {
        list.add("\xD2" + at(ClassKey) + at(NextKey) + at(ClassUID) + at(First + 2 * i + 1));
        list.add(uid(i + 1 == length ? 0 : i + 3));
    }
    return list.data();
}

} // namespace

TEST(KeyedUnarchiver, ReadsArchivesThatAreMadeByHand) {
    HandMadeArchive archive;
    const plist_t node = HandMadeArchive::object(2);
    HandMadeArchive::refer(node, "name", 3);
    HandMadeArchive::refer(node, "left", 4);
    archive.add(node);
    archive.addClass("Node");
    archive.add(plist_new_string("made by hand"));
    const plist_t leaf = HandMadeArchive::object(2);
    archive.add(leaf);
    for (const Format format : {Format::Binary, Format::XML}) {
        const auto read = unarchiveObjectOfClass<Node>(archive.data(format));
        EXPECT_EQ(read->name, "made by hand");
        EXPECT_EQ(read->left->name, "");
        EXPECT_EQ(read->right, nullptr);
    }
}

TEST(KeyedUnarchiver, ReadsXMLAsPeopleWriteIt) {
    const std::string text =
        "\xEF\xBB\xBF\n<!-- by hand --><?xml version='1.0'?>\n<!DOCTYPE plist>\n"
        "<plist version=\"1.0\"><dict>\n"
        "<key>$archiver</key><string>NSKeyed<![CDATA[Archiver]]></string>\n"
        "<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>\n"
        "<key>$objects</key><array><string>$null</string>\n"
        "<dict><key>$class</key><dict><key>CF$UID</key><integer>2</integer></dict>\n"
        "<key>name</key><dict><key>CF$UID</key><integer>3</integer></dict></dict>\n"
        "<dict><key>$classname</key><string>Node</string></dict>\n"
        "<!-- <array> --><string>a &lt; &#98;<!-- no --></string></array>\n"
        "</dict></plist>\n";
    EXPECT_EQ(unarchiveObjectOfClass<Node>(bytes(text.substr(3)))->name, "a < b");
    EXPECT_EQ(unarchiveObjectOfClass<Node>(bytes(text))->name, "a < b");
}

TEST(KeyedUnarchiver, TellsPropertyListsFromOtherData) {
    EXPECT_TRUE(looksLikePropertyList(sampleArchive(Format::Binary)));
    EXPECT_TRUE(looksLikePropertyList(sampleArchive(Format::XML)));
    EXPECT_TRUE(looksLikePropertyList(bytes("\xEF\xBB\xBF <?xml ?> <!-- --> <!DOCTYPE plist PUBLIC ''>")));
    EXPECT_TRUE(looksLikePropertyList(bytes("<plist>")));
    EXPECT_FALSE(looksLikePropertyList({}));
    EXPECT_FALSE(looksLikePropertyList(bytes("\x89PNG\r\n")));
    EXPECT_FALSE(looksLikePropertyList(bytes("bplist")));
    EXPECT_FALSE(looksLikePropertyList(bytes("<?xml version='1.0'?><svg/>")));
    EXPECT_FALSE(looksLikePropertyList(bytes("<!DOCTYPE html>")));
    EXPECT_FALSE(looksLikePropertyList(bytes("<plistless/>")));
    EXPECT_FALSE(looksLikePropertyList(bytes("<!-- <plist>")));
}

TEST(KeyedUnarchiver, SaysWhenTheDataIsNoArchive) {
    EXPECT_EQ(refusal({}), "the data is no property list");
    EXPECT_EQ(refusal(bytes("\xFF\xD8\xFF a picture")), "the data is no property list");
    EXPECT_EQ(refusal(bytes("<plist><array/></plist>")), "the property list is not a keyed archive");
    EXPECT_EQ(refusal(bytes("<plist><dict><key>a</key><true/></dict></plist>")),
              "the property list is not a keyed archive");
    HandMadeArchive archive;
    plist_dict_set_item(archive.root(), "$archiver", plist_new_string("another"));
    EXPECT_EQ(refusal(archive.data()), "the property list is not a keyed archive");
    plist_dict_set_item(archive.root(), "$archiver", plist_new_uint(1));
    EXPECT_EQ(refusal(archive.data()), "the property list is not a keyed archive");
}

TEST(KeyedUnarchiver, RefusesArchivesThatLackTheirParts) {
    HandMadeArchive archive;
    EXPECT_EQ(refusal(archive.data()), "the archive is damaged: it refers to object 1 of 1");
    archive.setRoot(0);
    EXPECT_EQ(refusal(archive.data()), "the archive is damaged: it has no root object");
    plist_dict_set_item(archive.root(), "$top", plist_new_bool(1));
    EXPECT_EQ(refusal(archive.data()), "the archive is damaged: it has no root object");
    plist_dict_remove_item(archive.root(), "$top");
    EXPECT_EQ(refusal(archive.data()), "the archive is damaged: it has no root object");
    plist_dict_remove_item(archive.root(), "$objects");
    EXPECT_EQ(refusal(archive.data()), "the archive is damaged: it has no objects");
}

TEST(KeyedUnarchiver, RefusesObjectsWithoutAProperClass) {
    const auto reasonFor = [](plist_t first, plist_t second) {
        HandMadeArchive archive;
        archive.add(first);
        archive.add(second);
        return refusal(archive.data());
    };
    const plist_t unnamed = plist_new_dict();
    EXPECT_EQ(reasonFor(plist_new_dict(), plist_new_bool(1)),
              "the archive is damaged: an object has no class");
    EXPECT_EQ(reasonFor(plist_new_string("x"), plist_new_bool(1)),
              "the archive is damaged: an object has no keys");
    EXPECT_EQ(reasonFor(HandMadeArchive::object(2), unnamed), "the archive is damaged: a class has no name");
    EXPECT_EQ(reasonFor(HandMadeArchive::object(2), plist_new_bool(1)),
              "the archive is damaged: a class has no name");
    EXPECT_EQ(reasonFor(HandMadeArchive::object(9), plist_new_bool(1)),
              "the archive is damaged: it refers to object 9 of 3");
    const plist_t plain = plist_new_dict();
    plist_dict_set_item(plain, "$class", plist_new_string("Node"));
    EXPECT_EQ(reasonFor(plain, plist_new_bool(1)), "the archive is damaged: an object has no class");
}

TEST(KeyedUnarchiver, NamesTheClassThatTheProgramDidNotRegister) {
    HandMadeArchive archive;
    archive.add(HandMadeArchive::object(2));
    archive.addClass("Stran\nger");
    EXPECT_EQ(refusal(archive.data()),
              "the archive holds an object of the class \"Stran?ger\", which this program did not register");
    HandMadeArchive longNamed;
    longNamed.add(HandMadeArchive::object(2));
    longNamed.addClass(std::string(100'000, 'N').c_str());
    EXPECT_THAT(refusal(longNamed.data()), HasSubstr(std::string(80, 'N') + "...\""));
}

TEST(KeyedUnarchiver, ARegistrationReplacesTheOneBefore) {
    const auto named = [](const char* name) {
        return [name](NSCoder&) -> std::shared_ptr<NSCoding> { return std::make_shared<Node>(name); };
    };
    HandMadeArchive archive;
    archive.add(HandMadeArchive::object(2));
    archive.addClass("Replaced");
    registerArchivableClass("Replaced", named("first"));
    EXPECT_EQ(unarchiveObjectOfClass<Node>(archive.data())->name, "first");
    registerArchivableClass("Replaced", named("second"));
    EXPECT_EQ(unarchiveObjectOfClass<Node>(archive.data())->name, "second");
    registerArchivableClass("Replaced", [](NSCoder&) { return nullptr; });
    EXPECT_EQ(refusal(archive.data()), "an object of the class \"Replaced\" gave nothing");
}

TEST(KeyedUnarchiver, ARootOfAnotherKindIsRefused) {
    EXPECT_THROW(unarchiveObjectOfClass<Everything>(archivedDataWithRootObject(Node("node"))), NSException);
}

TEST(KeyedUnarchiver, RefusesObjectsThatContainThemselves) {
    for (const char* key : {"left", "right"}) {
        HandMadeArchive archive;
        const plist_t outer = HandMadeArchive::object(2);
        HandMadeArchive::refer(outer, "left", 3);
        archive.add(outer);
        archive.addClass("Node");
        const plist_t inner = HandMadeArchive::object(2);
        HandMadeArchive::refer(inner, key, 1);
        archive.add(inner);
        EXPECT_EQ(refusal(archive.data()), "an object in the archive contains itself");
    }
    HandMadeArchive own;
    const plist_t node = HandMadeArchive::object(2);
    HandMadeArchive::refer(node, "left", 1);
    own.add(node);
    own.addClass("Node");
    EXPECT_EQ(refusal(own.data()), "an object in the archive contains itself");
}

TEST(KeyedUnarchiver, RefusesObjectsThatContainThemselvesInAnArray) {
    HandMadeArchive archive;
    const plist_t root = HandMadeArchive::object(2);
    HandMadeArchive::refer(root, "array", 3);
    archive.add(root);
    archive.addClass("Everything");
    const plist_t array = HandMadeArchive::object(4);
    const plist_t elements = plist_new_array();
    plist_array_append_item(elements, plist_new_uid(1));
    plist_dict_set_item(array, "NS.objects", elements);
    archive.add(array);
    archive.addClass("NSArray");
    EXPECT_EQ(refusal(archive.data()), "an object in the archive contains itself");
}

TEST(KeyedUnarchiver, AnObjectThatFailedIsDecodedAgainAndThenShared) {
    Hesitant::attempts = 0;
    HandMadeArchive archive;
    const plist_t patient = HandMadeArchive::object(2);
    HandMadeArchive::refer(patient, "part", 3);
    archive.add(patient);
    archive.addClass("Patient");
    archive.add(HandMadeArchive::object(4));
    archive.addClass("Hesitant");
    const auto read = unarchiveObjectOfClass<Patient>(archive.data());
    EXPECT_NE(read->first, nullptr);
    EXPECT_EQ(read->first, read->second);
    EXPECT_EQ(Hesitant::attempts, 2);
}

TEST(KeyedUnarchiver, ExceptionsOfAClassPassThrough) {
    Hesitant::attempts = 0;
    HandMadeArchive archive;
    archive.add(HandMadeArchive::object(2));
    archive.addClass("Hesitant");
    try {
        unarchiveObjectWithData(archive.data());
        FAIL() << "it was accepted";
    } catch (const NSException& exception) {
        EXPECT_STREQ(exception.what(), "NSGenericException: not yet");
    }
}

TEST(KeyedUnarchiver, RefusesValuesThatMakeNoSense) {
    const auto reasonFor = [](const char* key, plist_t value) {
        HandMadeArchive archive;
        const plist_t root = HandMadeArchive::object(2);
        HandMadeArchive::refer(root, key, 3);
        archive.add(root);
        archive.addClass("Everything");
        archive.add(value);
        archive.addClass("NSArray");
        archive.addClass("NSAffineTransform");
        return refusal(archive.data());
    };
    for (const char* text : {"", "{1}", "{1, 2", "{1, 2}}", "{1; 2}", "{1, 2} x", "{a, b}", "{1,, 2}",
                             "{{1, 2}, {3, 4}}", "{1e999, 2}"}) {
        EXPECT_THAT(reasonFor("size", plist_new_string(text)), HasSubstr("\"size\"")) << text;
    }
    for (const char* text : {"{1, 2}", "{{1, 2}, {3}}", "{{1, 2} {3, 4}}", "{{1, 2}, {3, 4}"}) {
        EXPECT_THAT(reasonFor("rect", plist_new_string(text)), HasSubstr("\"rect\"")) << text;
    }
    EXPECT_THAT(reasonFor("array", HandMadeArchive::object(4)), HasSubstr("\"array\""));
    EXPECT_THAT(reasonFor("transform", HandMadeArchive::object(5)), HasSubstr("\"transform\""));
    const plist_t shortTransform = HandMadeArchive::object(5);
    plist_dict_set_item(shortTransform, "NSTransformStruct", plist_new_data("12345678901234567890123", 23));
    EXPECT_THAT(reasonFor("transform", shortTransform), HasSubstr("\"transform\""));
    const plist_t arrayOfTexts = HandMadeArchive::object(4);
    const plist_t elements = plist_new_array();
    plist_array_append_item(elements, plist_new_string("not a reference"));
    plist_dict_set_item(arrayOfTexts, "NS.objects", elements);
    EXPECT_THAT(reasonFor("array", arrayOfTexts), HasSubstr("\"array\""));
}

TEST(KeyedUnarchiver, RefusesFloatsThatAreTooLarge) {
    HandMadeArchive archive;
    const plist_t root = HandMadeArchive::object(2);
    plist_dict_set_item(root, "real", plist_new_real(1e39));
    archive.add(root);
    archive.addClass("Everything");
    EXPECT_THAT(refusal(archive.data()), HasSubstr("\"real\""));
}

TEST(KeyedUnarchiver, TakesSizesWithOrWithoutSpaces) {
    HandMadeArchive archive;
    const plist_t root = HandMadeArchive::object(2);
    HandMadeArchive::refer(root, "size", 3);
    HandMadeArchive::refer(root, "rect", 4);
    archive.add(root);
    archive.addClass("Everything");
    archive.add(plist_new_string("{ 1.5,-2 }"));
    archive.add(plist_new_string("{{1,2},{3,4}}"));
    const auto read = unarchiveObjectOfClass<Everything>(archive.data());
    EXPECT_TRUE(NSEqualSizes(read->size, NSMakeSize(1.5f, -2)));
    EXPECT_TRUE(NSEqualRects(read->rect, NSMakeRect(1, 2, 3, 4)));
}

TEST(KeyedUnarchiver, TextThatIsNotUTF8IsRefused) {
    HandMadeArchive archive;
    const plist_t root = HandMadeArchive::object(2);
    HandMadeArchive::refer(root, "text", 3);
    archive.add(root);
    archive.addClass("Everything");
    archive.add(plist_new_string("ABCD"));
    NSData data = archive.data();
    const std::string text(data.begin(), data.end());
    data[text.find("ABCD") + 1] = 0xC3;
    EXPECT_THAT(refusal(data), HasSubstr("not UTF-8"));
}

TEST(KeyedUnarchiver, RefusesChainsThatWouldFillTheStack) {
    const auto short_ = std::dynamic_pointer_cast<Reader>(unarchiveObjectWithData(chain(3, "Reader")));
    ASSERT_NE(short_, nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<Reader>(short_->next)->next, nullptr);
    EXPECT_NO_THROW(unarchiveObjectWithData(chain(maximumArchiveDepth, "Reader")));
    EXPECT_EQ(refusal(chain(maximumArchiveDepth + 1, "Reader")),
              "the objects in the archive nest too deeply");
    EXPECT_EQ(refusal(chain(200'000, "Reader")), "the objects in the archive nest too deeply");
}

TEST(KeyedUnarchiver, RefusesFewerLevelsWhereTheStackIsSmall) {
    // 2000 levels of 32 KiB are far beyond any thread's stack.
    EXPECT_EQ(refusal(chain(maximumArchiveDepth, "Hungry")), "the objects in the archive nest too deeply");
    std::string reason;
    std::thread([&] { reason = refusal(chain(maximumArchiveDepth, "Hungry")); }).join();
    EXPECT_EQ(reason, "the objects in the archive nest too deeply");
}

TEST(KeyedUnarchiver, ABigEntryIsNotHandedOutWithoutLimit) {
    for (const bool isText : {false, true}) {
        HandMadeArchive archive;
        const std::string large(4 << 20, 'x');
        std::vector<plist_t> readers;
        for (int i = 0; i < 100; ++i) {
            const plist_t reader = HandMadeArchive::object(101);
            HandMadeArchive::refer(reader, isText ? "text" : "data", 102);
            // The first is number 1, each refers to the one after it.
            if (i < 99) HandMadeArchive::refer(reader, "next", static_cast<std::uint64_t>(i) + 2);
            archive.add(reader);
        }
        archive.addClass("Reader");
        archive.add(isText ? plist_new_string(large.c_str()) : plist_new_data(large.data(), large.size()));
        EXPECT_EQ(refusal(archive.data()), "the archive repeats its texts and data too often");
    }
}

TEST(KeyedUnarchiver, ALongArrayIsNotHandedOutWithoutLimit) {
    HandMadeArchive archive;
    for (std::uint64_t i = 0; i < 1500; ++i) {
        const plist_t reader = HandMadeArchive::object(1501);
        HandMadeArchive::refer(reader, "list", 1502);
        if (i < 1499) HandMadeArchive::refer(reader, "next", i + 2);
        archive.add(reader);
    }
    archive.addClass("Reader");
    const plist_t array = HandMadeArchive::object(1503);
    const plist_t elements = plist_new_array();
    for (int i = 0; i < 50'000; ++i) plist_array_append_item(elements, plist_new_uid(0));
    plist_dict_set_item(array, "NS.objects", elements);
    archive.add(array);
    archive.addClass("NSArray");
    EXPECT_EQ(refusal(archive.data()), "the archive repeats its texts and data too often");
}

TEST(KeyedUnarchiver, RefusesArchivesCutShortAtEveryByte) {
    for (const Format format : {Format::Binary, Format::XML}) {
        const NSData whole = sampleArchive(format);
        const std::string text(whole.begin(), whole.end());
        // Behind the last tag of XML only a line break may be missing.
        const std::size_t end = format == Format::XML ? text.rfind('>') + 1 : whole.size();
        for (std::size_t length = 0; length < end; ++length) {
            SCOPED_TRACE(length);
            refusal(NSData(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        }
        EXPECT_NO_THROW(unarchiveObjectWithData(ByteView(whole).first(end)));
    }
}

TEST(KeyedUnarchiver, SurvivesChangedBytes) {
    const std::uint32_t seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const Format format : {Format::Binary, Format::XML}) {
        const NSData whole = sampleArchive(format);
        for (int round = 0; round < 6000; ++round) {
            NSData changed = whole;
            const unsigned changes = 1 + random() % 4;
            for (unsigned i = 0; i < changes; ++i) {
                std::uint8_t& byte = changed[random() % changed.size()];
                byte = random() % 2 == 0 ? static_cast<std::uint8_t>(random())
                                         : static_cast<std::uint8_t>(byte ^ (1U << random() % 8));
            }
            survive(changed);
        }
    }
}

TEST(KeyedUnarchiver, EveryByteOfABinaryArchiveMayBeAnything) {
    const NSData whole = sampleArchive(Format::Binary);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const std::uint8_t value : {0x00, 0x01, 0x0F, 0x7F, 0x80, 0xAF, 0xDF, 0xFF}) {
            NSData changed = whole;
            changed[i] = value;
            survive(changed);
        }
    }
}

TEST(KeyedUnarchiver, AKeyTwiceInABinaryDictionaryIsNoTrouble) {
    HandMadeArchive archive;
    const plist_t root = HandMadeArchive::object(2);
    plist_dict_set_item(root, "first_", plist_new_uint(1));
    plist_dict_set_item(root, "second", plist_new_uint(2));
    archive.add(root);
    archive.addClass("Everything");
    NSData data = archive.data();
    const std::string text(data.begin(), data.end());
    std::copy_n("second", 6, data.begin() + static_cast<std::ptrdiff_t>(text.find("first_")));
    survive(data);
}
