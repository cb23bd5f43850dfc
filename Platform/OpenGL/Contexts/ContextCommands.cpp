// Chooses between fixed function and shaders by what a context says that it can do.

#include "Platform/OpenGL/Contexts/ContextCommands.h"

#include "Platform/OpenGL/Compatibility/CompatibilityCommands.h"
#include "Platform/OpenGL/Native/ContextFacts.h"
#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include <utility>

namespace Imaging::Platform {

std::shared_ptr<NativeCommands> commandsOfCurrentContext() {
    OpenGLFacts facts = factsOfCurrentContext();
    if (facts.profile == OpenGLProfile::Compatibility)
        return std::make_shared<CompatibilityCommands>(std::move(facts));
    return std::make_shared<ProgrammableCommands>(std::move(facts));
}

} // namespace Imaging::Platform
