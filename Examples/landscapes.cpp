// Draws four little landscapes with paths, colours and a picture node, and writes them as files to try the
// imaging command on:
//     landscapes FOLDER

#include <Imaging/Imaging.h>
#include <Platform/Graphics/BezierPath.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cmath>
#include <cstdio>
#include <string>

using namespace Imaging;
using namespace Imaging::Platform;

namespace {

constexpr NSSize pageSize = {960, 640};

struct Light {
    const char* fileName;
    NSBitmapImageFileType type;
    NSColor skyAbove, skyBelow, sun, land;
    NSPoint sunAt;
};

NSColor rgb(float red, float green, float blue) {
    return NSColor::colorWithCalibratedRed(red, green, blue, 1);
}

NSColor mix(const NSColor& a, const NSColor& b, float weight) {
    const auto between = [weight](float from, float to) { return from + (to - from) * weight; };
    return rgb(between(a.redComponent(), b.redComponent()), between(a.greenComponent(), b.greenComponent()),
               between(a.blueComponent(), b.blueComponent()));
}

void fillSky(const Light& light) {
    for (float y = 0; y < pageSize.height; ++y) {
        mix(light.skyBelow, light.skyAbove, y / pageSize.height).set();
        NSRectFill(NSMakeRect(0, y, pageSize.width, 1));
    }
}

void fillSun(const Light& light) {
    for (int ring = 6; ring >= 0; --ring) { // a glow of ever fainter discs around the solid one
        const float radius = 44.0F + static_cast<float>(ring * ring) * 5.0F;
        light.sun.colorWithAlphaComponent(ring == 0 ? 1.0F : 0.07F).set();
        NSBezierPath::bezierPathWithOvalInRect(
            NSMakeRect(light.sunAt.x - radius, light.sunAt.y - radius, 2 * radius, 2 * radius))
            .fill();
    }
}

/// A range of hills: smooth waves whose crests lie around `height`, farther ranges paler.
void fillHills(const Light& light, float height, float phase, float distance) {
    NSBezierPath hills;
    hills.moveToPoint({0, 0});
    for (float x = 0; x <= pageSize.width; x += 4) {
        const float wave = 34 * std::sin(x / 97 + phase) + 21 * std::sin(x / 41 + 2.3F * phase);
        hills.lineToPoint({x, height + wave});
    }
    hills.lineToPoint({pageSize.width, 0});
    hills.closePath();
    mix(light.land, light.skyBelow, distance).set();
    hills.fill();
}

std::shared_ptr<NSImage> landscape(const Light& light) {
    auto page = std::make_shared<NSImage>(pageSize);
    const NSImageFocus focus(*page);
    fillSky(light);
    fillSun(light);
    for (int range = 0; range < 4; ++range) {
        const auto nearness = static_cast<float>(range);
        fillHills(light, 290 - 72 * nearness, 1.7F * nearness + light.sunAt.x / 200, 0.6F - 0.18F * nearness);
    }
    return page;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: landscapes FOLDER\n"), 2;
    const Light lights[] = {
        {"dawn.png",
         NSPNGFileType,
         rgb(.36F, .48F, .72F),
         rgb(.99F, .78F, .62F),
         rgb(1, .9F, .7F),
         rgb(.16F, .17F, .27F),
         {230, 300}},
        {"noon.jpg",
         NSJPEGFileType,
         rgb(.16F, .45F, .83F),
         rgb(.78F, .9F, .98F),
         rgb(1, .99F, .9F),
         rgb(.1F, .34F, .2F),
         {610, 520}},
        {"dusk.png",
         NSPNGFileType,
         rgb(.2F, .14F, .36F),
         rgb(.96F, .45F, .28F),
         rgb(1, .74F, .4F),
         rgb(.14F, .08F, .16F),
         {720, 310}},
        {"night.tif",
         NSTIFFFileType,
         rgb(.02F, .04F, .12F),
         rgb(.1F, .16F, .3F),
         rgb(.93F, .94F, 1),
         rgb(.02F, .04F, .08F),
         {330, 470}},
    };
    for (const Light& light : lights) {
        NSError error;
        const auto node = imagingImage(landscape(light));
        const auto data = node->representationUsingType(light.type, {}, &error);
        if (!data || !writeToFileAtomically(*data, std::string(argv[1]) + "/" + light.fileName, &error)) {
            return std::fprintf(stderr, "%s: %s\n", light.fileName, error.message.c_str()), 1;
        }
    }
    return 0;
}
