#include "Tools/Film/ShowFile.h"

#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Tools/Support/TestPictures.h"
#include "Tools/Command/Messages.h"
#include "Tools/Film/ShowWords.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

using namespace TestSupport;
using namespace Imaging;
using namespace Imaging::Tool;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

ShowFile parsed(const std::string& text, const std::string& name = "show.json") {
    return showFileWithBytes(Imaging::Platform::NSData(text.begin(), text.end()), name);
}

/// What is said about the contents of a show file.
std::string complaint(const std::string& text) {
    try {
        parsed(text);
        return "none";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.subject(), "show.json");
        return failure.what();
    }
}

/// The same with something beside the pictures, or in the first one.
std::string settingComplaint(const std::string& setting) {
    return complaint("{" + setting + R"(, "pictures": ["a.jpg"]})");
}
std::string pictureComplaint(const std::string& setting) {
    return complaint(R"({"pictures": [{"file": "a.jpg", )" + setting + "}]}");
}
std::string operationComplaint(const std::string& operation) {
    return pictureComplaint(R"("operations": [)" + operation + "]");
}

Show film(const ShowFile& file) { return makeShow(file.settings, file.pictures); }

} // namespace

TEST(ShowFile, ReadsItsDocumentsExample) {
    std::ifstream document(IMAGING_DOCUMENTS "/show-file.md");
    std::stringstream text;
    text << document.rdbuf();
    const std::string mark = "```json\n";
    const std::size_t begin = text.str().find(mark);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t end = text.str().find("```", begin + mark.size());
    const Show show = film(parsed(text.str().substr(begin + mark.size(), end - begin - mark.size())));

    EXPECT_EQ(show.size.width, 1280);
    EXPECT_EQ(show.size.height, 720);
    EXPECT_EQ(show.rateNumerator, 30000);
    EXPECT_EQ(show.rateDenominator, 1001);
    EXPECT_EQ(show.background.redComponent(), 16.0F / 255);
    EXPECT_EQ(show.background.blueComponent(), 32.0F / 255);
    EXPECT_TRUE(show.loop);
    EXPECT_FALSE(show.asStored);
    ASSERT_EQ(show.pictures.size(), 3U);

    const ShowPicture& arrival = show.pictures[0];
    EXPECT_EQ(arrival.name, "arrival.jpg");
    EXPECT_TRUE(arrival.steps.empty());
    EXPECT_EQ(arrival.hold, 4);
    EXPECT_EQ(arrival.fit, Fit::Contain);
    EXPECT_EQ(arrival.next.transition.text(), "dissolve");
    EXPECT_EQ(arrival.next.duration, 1.5);
    EXPECT_EQ(arrival.next.easing, Easing::InOut);

    const ShowPicture& harbour = show.pictures[1];
    EXPECT_EQ(harbour.name, "harbour/IMG_0042.jpg");
    EXPECT_EQ(harbour.steps.size(), 3U);
    EXPECT_EQ(harbour.hold, 6.5);
    EXPECT_EQ(harbour.fit, Fit::Cover);
    EXPECT_EQ(harbour.next.transition.text(), "slide:direction=left:inout=out");
    EXPECT_EQ(harbour.next.duration, 0.8);
    EXPECT_EQ(harbour.next.easing, Easing::Out);

    const ShowPicture& farewell = show.pictures[2];
    EXPECT_EQ(farewell.next.transition.text(), "color-fade:color=white:balance=0");
    EXPECT_EQ(farewell.next.duration, 1.5);
}

TEST(ShowFile, HasTheDocumentedDefaults) {
    const Show show = film(parsed(R"({"pictures": ["a.jpg", "b.jpg"]})"));
    EXPECT_EQ(show.size.width, 1920);
    EXPECT_EQ(show.size.height, 1080);
    EXPECT_EQ(show.rateNumerator, 25);
    EXPECT_EQ(show.rateDenominator, 1);
    EXPECT_TRUE(show.background.isEqual(Imaging::Platform::NSColor::blackColor()));
    EXPECT_FALSE(show.loop);
    EXPECT_FALSE(show.asStored);
    for (const ShowPicture& picture : show.pictures) {
        EXPECT_EQ(picture.hold, 3);
        EXPECT_EQ(picture.fit, Fit::Contain);
        EXPECT_EQ(picture.next.transition.text(), "dissolve");
        EXPECT_EQ(picture.next.duration, 1);
        EXPECT_EQ(picture.next.easing, Easing::InOut);
    }
}

TEST(ShowFile, TakesNumbersAndWordsForTheWholeFilm) {
    const Show show = film(parsed(R"({"fps": 23.976, "orient": false, "fit": "stretch", "seed": 9,
        "transition": {"name": "push", "direction": "down", "duration": 0, "ease": "linear"},
        "pictures": ["a.jpg"]})"));
    EXPECT_EQ(show.rateNumerator, 24000);
    EXPECT_EQ(show.rateDenominator, 1001);
    EXPECT_TRUE(show.asStored);
    EXPECT_EQ(show.pictures[0].fit, Fit::Stretch);
    EXPECT_EQ(show.pictures[0].next.transition.text(), "push:direction=down");
    EXPECT_EQ(show.pictures[0].next.duration, 0);
    EXPECT_EQ(show.pictures[0].next.easing, Easing::Linear);
    EXPECT_EQ(parsed(R"({"seed": 9, "pictures": ["a"]})").settings.seed, 9U);
    EXPECT_EQ(film(parsed(R"({"fps": 24, "pictures": ["a"]})")).rateNumerator, 24);
    EXPECT_EQ(film(parsed("\xEF\xBB\xBF\n {\"fps\": 12.5, \"pictures\": [\"a\"]}")).rateNumerator, 25);
}

TEST(ShowFile, LooksForFilesInItsOwnFolder) {
    const ShowFile file = parsed(R"({"pictures": ["a.jpg", "../b.jpg", "/c.jpg", "http://h/d.jpg"]})",
                                 "films/summer/show.json");
    EXPECT_EQ(file.pictures[0].name, "films/summer/a.jpg");
    EXPECT_EQ(file.pictures[1].name, "films/summer/../b.jpg");
    EXPECT_EQ(file.pictures[2].name, "/c.jpg");
    EXPECT_EQ(file.pictures[3].name, "http://h/d.jpg");
    EXPECT_EQ(parsed(R"({"pictures": ["a.jpg"]})", "-").pictures[0].name, "a.jpg");
}

TEST(ShowFile, CarriesOutOperationsInTheirOrder) {
    const TemporaryFolder folder;
    folder.write("rgw.png", pngOf(Picture(3, 1, {red, green, white}), true));
    folder.write("mask.png", pngOf(Picture(1, 1, black)));
    // After the flip the leftmost pixel is white; the mask makes it transparent, so that blue shows.
    const std::string text = R"({"size": "1x1", "background": "blue", "pictures": [
        {"file": "rgw.png", "operations": [{"flip": "horizontal"}, {"crop": [0, 0, 1, 1]}]},
        {"file": "rgw.png", "operations": [{"crop": "0,0,1,1"}, {"flip": "horizontal"}]},
        {"file": "rgw.png", "operations": [{"crop": "0,0,1,1"}, {"mask": "mask.png"}]},
        {"file": "rgw.png", "operations": [{"scale": "1x1", "fit": "none"}, {"sharpen": true}]}]})";
    const std::string path = folder.write("show.json", text);
    const Show show = film(readShowFile(path));
    const std::vector<Pixel> expected = {white, red, blue, green};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        const auto data = framePicture(show.pictures[i], show)
                              ->representationUsingType(Imaging::Platform::NSPNGFileType, {});
        ASSERT_TRUE(data.has_value());
        EXPECT_EQ(pictureOfPNG(std::string(data->begin(), data->end())).at(0, 0), expected[i]);
    }
}

TEST(ShowFile, IsToldByItsContent) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isShowFile(folder.write("a.png", "{}")));
    EXPECT_TRUE(isShowFile(folder.write("b", "\n\t {")));
    EXPECT_TRUE(isShowFile(folder.write("c", "\xEF\xBB\xBF{")));
    EXPECT_TRUE(isShowFile("-"));
    EXPECT_FALSE(isShowFile(folder.write("d.json", "[]")));
    EXPECT_FALSE(isShowFile(folder.write("e.json", "")));
    EXPECT_FALSE(isShowFile(folder.write("f.json", pngOf(Picture(1, 1, red)))));
    EXPECT_FALSE(isShowFile(folder.path("")));
    EXPECT_FALSE(isShowFile("/nowhere"));
    EXPECT_FALSE(isShowFile("http://h/show.json"));
}

TEST(ShowFile, SaysWhereItIsNoJson) {
    EXPECT_THAT(complaint("{\n  \"pictures\": [\"a.jpg\",]\n}"),
                StartsWith("line 2, column 24: unexpected ']'"));
    EXPECT_THAT(complaint("{"), StartsWith("line 1, column 2: unexpected end of input"));
    // Letters count, not bytes.
    EXPECT_THAT(complaint("{\"\xC3\xA4\xC3\xB6\": ]"), StartsWith("line 1, column 8: unexpected ']'"));
    EXPECT_THAT(complaint("{\"\xFF\": 1}"), StartsWith("line 1, column 3: invalid string: ill-formed UTF-8"));
    EXPECT_EQ(complaint("{\"hold\": 1e999}"), "a number in it is beyond everything");
    EXPECT_EQ(complaint("[]"), "this is no show file, which is a JSON object");
    EXPECT_EQ(complaint(R"({"hold": 1, "hold": 2})"), "the key 'hold' stands twice in one object");
}

TEST(ShowFile, NamesThePlaceOfUnknownKeys) {
    EXPECT_EQ(
        settingComplaint(R"("holds": 3)"),
        "holds: there is no such key; known are size, fps, background, fit, hold, transition, duration, "
        "ease, seed, loop, orient and pictures; did you mean 'hold'?");
    EXPECT_EQ(pictureComplaint(R"("time": 3)"), "pictures[0].time: there is no such key; known are file, "
                                                "operations, hold, fit and transition");
    EXPECT_THAT(
        operationComplaint(R"({"scale": 8}, {"rotat": 3})"),
        testing::AllOf(StartsWith("pictures[0].operations[1].rotat: there is no such operation; known "
                                  "are rotate, turn, flip, crop, scale, "),
                       testing::EndsWith("; did you mean 'rotate'?")));
    EXPECT_EQ(
        operationComplaint(R"({"scale": 8, "fits": "none"})"),
        "pictures[0].operations[0].fits: there is no such key; known are scale and fit; did you mean 'fit'?");
    EXPECT_EQ(operationComplaint(R"({"rotate": 8, "fit": "none"})"),
              "pictures[0].operations[0].fit: there is no such key; known are rotate");
    EXPECT_EQ(
        pictureComplaint(R"("transition": {"name": "push", "to": "left"})"),
        "pictures[0].transition: the transition 'push' has no parameter named 'to'; known is direction");
}

TEST(ShowFile, NamesThePlaceOfWrongTypes) {
    EXPECT_EQ(settingComplaint(R"("hold": "3")"), "hold: this is a string; it takes a number");
    EXPECT_EQ(settingComplaint(R"("size": 1280)"), "size: this is a number; it takes a string");
    EXPECT_EQ(settingComplaint(R"("fps": null)"), "fps: this is null; it takes a string or a number");
    EXPECT_EQ(settingComplaint(R"("loop": 1)"), "loop: this is a number; it takes true or false");
    EXPECT_EQ(settingComplaint(R"("transition": [])"),
              "transition: this is a list; it takes a string or an object");
    EXPECT_EQ(complaint(R"({"pictures": "a.jpg"})"), "pictures: this is a string; it takes a list");
    EXPECT_EQ(complaint(R"({"pictures": ["a.jpg", 3]})"),
              "pictures[1]: this is a number; it takes a string or an object");
    EXPECT_EQ(pictureComplaint(R"("hold": {})"), "pictures[0].hold: this is an object; it takes a number");
    EXPECT_EQ(pictureComplaint(R"("operations": {"rotate": 3})"),
              "pictures[0].operations: this is an object; it takes a list");
    EXPECT_EQ(operationComplaint("\"sharpen\""),
              R"(pictures[0].operations[0]: this is a string; it takes an object such as {"rotate": -1.5})");
    EXPECT_EQ(operationComplaint(R"({"crop": [1, "2"]})"),
              "pictures[0].operations[0].crop[1]: this is a string; it takes a number");
    EXPECT_EQ(operationComplaint(R"({"sharpen": 1})"),
              "pictures[0].operations[0].sharpen: this is a number; it takes true or false");
}

TEST(ShowFile, NamesThePlaceOfWrongValues) {
    EXPECT_EQ(settingComplaint(R"("hold": -1)"), "hold: '-1' is not a number of seconds from 0 to 86400");
    EXPECT_EQ(settingComplaint(R"("seed": 1.5)"),
              "seed: '1.5' is not a whole number from 0 to 9223372036854775807");
    EXPECT_EQ(settingComplaint(R"("size": "20000x2")"),
              "size: '20000x2' is too large for a frame; each side takes at most 16384 pixels");
    EXPECT_EQ(settingComplaint(R"("background": "transparent")"),
              "background: 'transparent' lets something through, which a film cannot; give an opaque colour");
    EXPECT_THAT(settingComplaint(R"("transition": "zom")"), HasSubstr("did you mean 'zoom'?"));
    EXPECT_THAT(settingComplaint(R"("transition": "cube")"), HasSubstr("needs OpenGL"));
    EXPECT_EQ(settingComplaint(R"("transition": {"direction": "left"})"), "transition.name is missing");
    EXPECT_THAT(pictureComplaint(R"("transition": "random")"),
                StartsWith("pictures[0].transition: there is no transition named 'random'; known are "));
    EXPECT_THAT(pictureComplaint(R"("transition": {"name": "push", "direction": "up:direction=down"})"),
                StartsWith("pictures[0].transition: push:direction: there is no direction named "
                           "'up:direction=down'"));
    EXPECT_EQ(pictureComplaint(R"("transition": {"name": "push", "duration": -2})"),
              "pictures[0].transition.duration: '-2' is not a number of seconds from 0 to 86400");
    EXPECT_EQ(
        operationComplaint(R"({"rotate": "far"})"),
        "pictures[0].operations[0].rotate: 'far' is no angle in degrees; give a number such as 30 or -12.5");
    EXPECT_EQ(
        operationComplaint(R"({"scale": 8, "crop": "0,0,1,1"})"),
        "pictures[0].operations[0]: there are two operations, crop and scale; make each an object of its "
        "own, so that their order is told");
    EXPECT_THAT(operationComplaint("{}"),
                StartsWith("pictures[0].operations[0]: there is no operation; known are rotate, "));
    EXPECT_EQ(operationComplaint(R"({"sharpen": false})"),
              "pictures[0].operations[0].sharpen: leave the operation out instead");
}

TEST(ShowFile, NeedsPictures) {
    EXPECT_EQ(complaint("{}"), "pictures is missing: a list of what is to be shown");
    EXPECT_EQ(complaint(R"({"pictures": []})"),
              "pictures: the list is empty; a film takes at least one picture");
    EXPECT_EQ(complaint(R"({"pictures": [{"hold": 3}]})"), "pictures[0].file is missing or empty");
    EXPECT_EQ(complaint(R"({"pictures": [""]})"), "pictures[0].file is missing or empty");
    EXPECT_EQ(complaint(R"({"pictures": ["-"]})"), "pictures[0]: standard input cannot be a picture here");
}

TEST(ShowFile, RefusesWhatIsFarTooMuch) {
    std::string pictures = R"({"pictures": ["a")";
    for (int i = 0; i < 100'000; ++i) pictures += R"(,"a")";
    EXPECT_EQ(complaint(pictures + "]}"),
              "pictures: there are 100001 pictures, and a film takes at most 100000");
    std::string operations = "{\"turn\": \"left\"}";
    for (int i = 0; i < 100; ++i) operations += ",{\"turn\": \"left\"}";
    EXPECT_EQ(operationComplaint(operations),
              "pictures[0].operations: there are 101 operations, and a picture takes at most 100");
    std::string keys = "{\"pictures\": []";
    for (int i = 0; i < 100; ++i) keys += ",\"k" + std::to_string(i) + "\": 0";
    EXPECT_EQ(complaint(keys + "}"), "an object holds more than 100 keys");
    EXPECT_EQ(complaint(std::string((16 << 20) + 1, ' ')), "a show file holds at most 16777216 bytes");
    // Nested deeper than any stack.
    EXPECT_THAT(complaint("{\"pictures\": " + std::string(1'000'000, '[')), StartsWith("line 1, column "));
    EXPECT_THAT(complaint("{\"hold\": " + std::string(1'000'000, '[') + std::string(1'000'000, ']') + "}"),
                StartsWith("pictures is missing"));
}
