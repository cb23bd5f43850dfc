#include "Platform/OpenGL/Contexts/ContextCommands.h"

#include "Platform/OpenGL/Compatibility/CompatibilityCommands.h"
#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

class ContextCommandsIn : public InEveryContext {};

} // namespace

TEST_P(ContextCommandsIn, AreFixedFunctionWhereThereIsAndShadersElsewhere) {
    OpenGLSurface surface(GetParam(), 2, 2);
    const std::shared_ptr<NativeCommands> commands = commandsOfCurrentContext();
    const bool isLegacy = GetParam() == NSOpenGLProfileVersionLegacy;
    EXPECT_EQ(dynamic_cast<CompatibilityCommands*>(commands.get()) != nullptr, isLegacy);
    EXPECT_EQ(dynamic_cast<ProgrammableCommands*>(commands.get()) != nullptr, !isLegacy);
    commands->releaseObjects();
}

INSTANTIATE_TEST_SUITE_P(Contexts, ContextCommandsIn, everyProfile(), profileName);
