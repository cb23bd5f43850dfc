// Also tests: Platform/Foundation/Exception.cpp

#include "Platform/Foundation/AssertionHandler.h"

#include "Platform/Foundation/Exception.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

namespace {

struct Recorder final : NSAssertionHandler {
    void handleFailureInFile(const std::string& inFile, int atLine, const std::string& what) override {
        file = inFile;
        line = atLine;
        description = what;
        ++count;
    }
    std::string file;
    int line = 0;
    std::string description;
    int count = 0;
};

/// Puts the default handler back, however the test ends.
struct AssertionHandler : testing::Test {
    ~AssertionHandler() override { NSAssertionHandler::setCurrentHandler(nullptr); }
};

} // namespace

TEST_F(AssertionHandler, RaisesAnInternalInconsistencyByDefault) {
    try {
        parameterAssertionFailed("radius >= 0", "Blur.cpp", 17);
        FAIL() << "returned";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
        EXPECT_EQ(exception.reason(), "Invalid parameter not satisfying: radius >= 0");
        EXPECT_STREQ(exception.what(),
                     "NSInternalInconsistencyException: Invalid parameter not satisfying: radius >= 0");
    }
}

TEST_F(AssertionHandler, HandsFailuresToTheOneInForceAndGoesOn) {
    const auto recorder = std::make_shared<Recorder>();
    NSAssertionHandler::setCurrentHandler(recorder);
    EXPECT_EQ(NSAssertionHandler::currentHandler(), recorder);
    parameterAssertionFailed("source != nil && 100%s", "Image.cpp", 4);
    EXPECT_EQ(recorder->count, 1);
    EXPECT_EQ(recorder->file, "Image.cpp");
    EXPECT_EQ(recorder->line, 4);
    EXPECT_EQ(recorder->description, "Invalid parameter not satisfying: source != nil && 100%s");
}

TEST_F(AssertionHandler, NullRestoresTheDefaultOne) {
    const auto recorder = std::make_shared<Recorder>();
    NSAssertionHandler::setCurrentHandler(recorder);
    NSAssertionHandler::setCurrentHandler(nullptr);
    ASSERT_NE(NSAssertionHandler::currentHandler(), nullptr);
    EXPECT_THROW(parameterAssertionFailed("x", "f", 1), NSException);
    EXPECT_EQ(recorder->count, 0);
    EXPECT_EQ(recorder.use_count(), 1);
}

TEST_F(AssertionHandler, MayReplaceItselfWhileItHandles) {
    struct Replacing final : NSAssertionHandler {
        void handleFailureInFile(const std::string&, int, const std::string&) override {
            setCurrentHandler(nullptr);
            isDone = true;
        }
        bool isDone = false;
    };
    const auto handler = std::make_shared<Replacing>();
    NSAssertionHandler::setCurrentHandler(handler);
    parameterAssertionFailed("x", "f", 1);
    EXPECT_TRUE(handler->isDone);
    EXPECT_NE(NSAssertionHandler::currentHandler(), handler);
}
