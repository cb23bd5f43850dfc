// Makes a context of each kind off the screen and tells what it finds: what a bug report or an installation
// needs.

#include "Imaging/OpenGLTexture.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLCommands.h"
#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Platform/OpenGL/View.h"
#include "Tools/Command/StandardOutput.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Json.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace Imaging::Tool {

namespace {

const SubcommandText doctorText = {
    "doctor", "Tell what OpenGL there is to draw with", "[OPTION...]",
    R"(A context of each kind is made off the screen, which needs no display: with
fixed function, core and ES. For each stand its version, who draws, and how
large textures may be, or what is missing and which package has it. Pictures
are drawn in 2-D without any of them.

The exit status is 1 when there is none at all.)",
    R"(  imaging doctor
  imaging doctor --extensions
  imaging doctor --json)"};

struct Kind {
    const char* name;
    Platform::NSOpenGLProfile profile;
};

constexpr std::array<Kind, 3> kinds = {{{"fixed function", Platform::NSOpenGLProfileVersionLegacy},
                                        {"core", Platform::NSOpenGLProfileVersion3_2Core},
                                        {"ES", Platform::NSOpenGLProfileVersionES3_0}}};

/// What was found of a kind: a context's facts, or why there is none.
struct Finding {
    std::string kind;
    std::optional<Platform::OpenGLFacts> facts;
    int tileSide = 0;
    std::string missing;
};

std::shared_ptr<Platform::NSOpenGLContext> contextOf(Platform::NSOpenGLProfile profile) {
    const std::array<std::uint32_t, 8> attributes = {Platform::NSOpenGLPFAOffScreen,
                                                     Platform::NSOpenGLPFAColorSize,
                                                     32,
                                                     Platform::NSOpenGLPFAAlphaSize,
                                                     8,
                                                     Platform::NSOpenGLPFAOpenGLProfile,
                                                     profile,
                                                     0};
    auto context = Platform::NSOpenGLContext::contextWithFormat(
        Platform::NSOpenGLPixelFormat::pixelFormatWithAttributes(attributes));
    context->setView(std::make_shared<Platform::NSView>(Platform::NSMakeRect(0, 0, 16, 16)));
    return context;
}

Finding findingOf(const Kind& kind) {
    Finding finding{kind.name, {}, 0, {}};
    try {
        const std::shared_ptr<Platform::NSOpenGLContext> context = contextOf(kind.profile);
        if (!context->makeCurrentContext()) {
            finding.missing = "the context was lost as soon as it was made; look at the system's log";
            return finding;
        }
        finding.facts = Platform::OpenGLCommands::current().facts();
        Imaging::OpenGLTexture::forgetHardwareAnswers();
        finding.tileSide = Imaging::OpenGLTexture::maxTextureRectangleSize();
        Imaging::OpenGLTexture::forgetHardwareAnswers();
    } catch (const Platform::NSException& exception) {
        finding.missing = exception.reason();
    }
    Platform::NSOpenGLContext::clearCurrentContext();
    return finding;
}

std::string yesOrNo(bool flag) { return flag ? "yes" : "no"; }

std::string textOf(const Finding& finding, bool withExtensions) {
    std::string text = "OpenGL, " + finding.kind + "\n";
    const auto line = [&](const std::string& name, const std::string& value) {
        text += "  " + name + std::string(20 - name.size(), ' ') + value + "\n";
    };
    if (!finding.facts.has_value()) {
        line("missing", finding.missing);
        return text;
    }
    const Platform::OpenGLFacts& facts = *finding.facts;
    line("context", Platform::describe(facts));
    line("version", facts.version);
    line("renderer", facts.renderer);
    line("vendor", facts.vendor);
    line("largest texture", std::to_string(facts.maximumTextureSize) + " pixels a side");
    line("rectangle textures",
         facts.rectangleTextures
             ? "up to " + std::to_string(facts.maximumRectangleTextureSize) + " pixels a side"
             : "no");
    line("tiles", "up to " + std::to_string(finding.tileSide) + " pixels a side");
    line("client storage", yesOrNo(facts.clientStorage));
    line("smooth lines", facts.smoothLines ? "yes" : "by the library");
    if (withExtensions) line("extensions", facts.extensions.empty() ? "none" : facts.extensions);
    return text;
}

Json jsonOf(const Finding& finding) {
    Json json = Json::object({{"kind", finding.kind}, {"available", finding.facts.has_value()}});
    if (!finding.facts.has_value()) {
        json.add("missing", finding.missing);
        return json;
    }
    const Platform::OpenGLFacts& facts = *finding.facts;
    json.add("context", Platform::describe(facts));
    json.add("version", facts.version);
    json.add("renderer", facts.renderer);
    json.add("vendor", facts.vendor);
    json.add("largestTexture", facts.maximumTextureSize);
    json.add("largestRectangleTexture", facts.maximumRectangleTextureSize);
    json.add("tileSide", finding.tileSide);
    json.add("clientStorage", facts.clientStorage);
    json.add("smoothLines", facts.smoothLines);
    json.add("extensions", facts.extensions);
    return json;
}

class DoctorCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return doctorText; }

protected:
    OptionTable options() override {
        return {{"--extensions", "", "List the names of the extensions too", raise(m_extensions)},
                {"--json", "", "Write a JSON array, extensions included", raise(m_json)}};
    }

    void checkOperands() const override { refuseOperands(); }

    ExitStatus run() override {
        std::string text;
        std::vector<Json> list;
        bool isAny = false;
        for (const Kind& kind : kinds) {
            const Finding finding = findingOf(kind);
            isAny = isAny || finding.facts.has_value();
            text += (text.empty() ? "" : "\n") + textOf(finding, m_extensions);
            list.push_back(jsonOf(finding));
        }
        writeStandardOutput(m_json ? Json::list(std::move(list)).indentedText() + "\n" : text);
        return isAny ? Done : BadInputOrOutput;
    }

private:
    bool m_extensions = false;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Subcommand> makeDoctorCommand() { return std::make_unique<DoctorCommand>(); }

} // namespace Imaging::Tool
