#include "Platform/OpenGL/Native/TightRows.h"

#include "Tests/Platform/OpenGL/Application.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;
using namespace Pixels;

TEST(TightRows, AreForAWhileOnly) {
    const Application application(NSOpenGLProfileVersionES3_0);
    const auto value = [](GLenum name) {
        GLint number = -1;
        glGetIntegerv(name, &number);
        return number;
    };
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 17);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glPixelStorei(GL_PACK_ROW_LENGTH, 19);
    glPixelStorei(GL_PACK_ALIGNMENT, 2);
    {
        const TightRows scope;
        EXPECT_EQ(value(GL_UNPACK_ROW_LENGTH), 0);
        EXPECT_EQ(value(GL_UNPACK_ALIGNMENT), 4);
        EXPECT_EQ(value(GL_PACK_ROW_LENGTH), 0);
        EXPECT_EQ(value(GL_PACK_ALIGNMENT), 4);
    }
    EXPECT_EQ(value(GL_UNPACK_ROW_LENGTH), 17);
    EXPECT_EQ(value(GL_UNPACK_ALIGNMENT), 8);
    EXPECT_EQ(value(GL_PACK_ROW_LENGTH), 19);
    EXPECT_EQ(value(GL_PACK_ALIGNMENT), 2);
}
