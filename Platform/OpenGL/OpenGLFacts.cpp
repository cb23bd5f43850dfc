// Words for what a context can do.

#include "Platform/OpenGL/OpenGLFacts.h"

namespace Imaging::Platform {

namespace {

const char* profileWord(OpenGLProfile profile) {
    switch (profile) {
    case OpenGLProfile::Core:
        return " core";
    case OpenGLProfile::Compatibility:
        return " compatibility";
    case OpenGLProfile::ES:
        break;
    }
    return "";
}

} // namespace

bool OpenGLFacts::hasExtension(const std::string& name) const {
    // A name may be the beginning of another, so whole words are compared.
    return !name.empty() && (" " + extensions + " ").find(" " + name + " ") != std::string::npos;
}

std::string describe(const OpenGLFacts& facts) {
    const std::string version = std::to_string(facts.majorVersion) + "." + std::to_string(facts.minorVersion);
    return (facts.profile == OpenGLProfile::ES ? "OpenGL ES " : "OpenGL ") + version +
           profileWord(facts.profile);
}

} // namespace Imaging::Platform
