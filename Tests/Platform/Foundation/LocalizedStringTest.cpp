#include "Platform/Foundation/LocalizedString.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

using namespace Imaging::Platform;
using TestSupport::ScopedVariable;
using TestSupport::TemporaryFolder;

namespace {

/// A catalogue as a translator would make it, compiled with gettext's own tool.
class LocalizedString : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(m_folder.path("de/LC_MESSAGES"));
        m_folder.write("de.po", "msgid \"\"\n"
                                "msgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
                                "msgid \"Hue\"\n"
                                "msgstr \"Farbton\"\n"
                                "msgid \"Greenish\"\n"
                                "msgstr \"Gr\xC3\xBCnlich\"\n"
                                "msgid \"Untranslated\"\n"
                                "msgstr \"\"\n");
        const std::string command =
            "msgfmt -o '" + m_folder.path("de/LC_MESSAGES/testing.mo") + "' '" + m_folder.path("de.po") + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
        // In the locale "C" itself gettext never translates.
        ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
        setLocalizationDomain("testing", m_folder.path(""));
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }

    TemporaryFolder m_folder;
    ScopedVariable m_language{"LANGUAGE", "de"};
};

} // namespace

TEST_F(LocalizedString, ComesFromTheCatalogue) {
    EXPECT_EQ(localizedStringForKey("Hue"), "Farbton");
    EXPECT_EQ(localizedStringForKey("Hue", "Hue of the colour"), "Farbton");
}

TEST_F(LocalizedString, IsUTF8WhateverTheLocale) {
    EXPECT_EQ(localizedStringForKey("Greenish"), "Gr\xC3\xBCnlich");
}

TEST_F(LocalizedString, FallsBackToTheValueAndThenToTheKey) {
    EXPECT_EQ(localizedStringForKey("Saturation", "Strength"), "Strength");
    EXPECT_EQ(localizedStringForKey("Saturation"), "Saturation");
    EXPECT_EQ(localizedStringForKey("Untranslated", "Value"), "Value");
}

TEST_F(LocalizedString, NeverShowsTheHeaderOfTheCatalogue) {
    EXPECT_EQ(localizedStringForKey(""), "");
    EXPECT_EQ(localizedStringForKey("", "Value"), "Value");
}

TEST_F(LocalizedString, UsesTheDomainThatIsSet) {
    setLocalizationDomain("another", m_folder.path(""));
    EXPECT_EQ(localizedStringForKey("Hue"), "Hue");
    setLocalizationDomain("testing", m_folder.path(""));
    EXPECT_EQ(localizedStringForKey("Hue"), "Farbton");
}

TEST_F(LocalizedString, RefusesAnEmptyDomain) {
    EXPECT_THROW(setLocalizationDomain("", m_folder.path("")), NSException);
    EXPECT_EQ(localizedStringForKey("Hue"), "Farbton");
}

TEST(LocalizedStringWithoutACatalogue, IsTheValueOrTheKey) {
    EXPECT_EQ(localizedStringForKey("Hue"), "Hue");
    EXPECT_EQ(localizedStringForKey("Hue", "Colour"), "Colour");
}
