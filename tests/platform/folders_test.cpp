#include "platform/folders.h"

#include "tests/support/file_text.h"
#include "tests/support/other_process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

const fs::path& Home() {
    static const fs::path home = std::getenv("HOME");
    return home;
}

void ChooseDocuments(std::string_view lines) {
    WriteText(fs::path(std::getenv("XDG_CONFIG_HOME")) / "user-dirs.dirs", lines);
}

} // namespace

TEST(DocumentsFolder, IsInTheHomeWhenNothingIsConfigured) {
    EXPECT_EQ(DocumentsFolder(), Home() / "Documents");
}

TEST(DocumentsFolder, IsTheOneThatTheUserHasConfigured) {
    ChooseDocuments(
        "# a comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    EXPECT_EQ(DocumentsFolder(), Home() / "Dokumente");
    ChooseDocuments("XDG_DOCUMENTS_DIR=\"/mnt/\xC3\x9C"
                    "bungen und Tests/\"");
    EXPECT_EQ(DocumentsFolder(), "/mnt/\xC3\x9C"
                                 "bungen und Tests");
    ChooseDocuments("XDG_DOCUMENTS_DIR=\"$HOME\"\n");
    EXPECT_EQ(DocumentsFolder(), Home());
    ChooseDocuments("XDG_DOCUMENTS_DIR=\"/a \\\"quoted\\\" \\$name\"\n");
    EXPECT_EQ(DocumentsFolder(), "/a \"quoted\" $name");
}

TEST(DocumentsFolder, TakesNamesOfThreeHundredCharacters) {
    const std::string deep = "/" + std::string(150, 'a') + "/" + std::string(150, 'b');
    ChooseDocuments("XDG_DOCUMENTS_DIR=\"$HOME" + deep + "\"\n");
    EXPECT_EQ(DocumentsFolder(), Home().string() + deep);
}

TEST(DocumentsFolder, IgnoresAConfigurationThatMakesNoSense) {
    for (const char* const line :
        {"XDG_DOCUMENTS_DIR=", "XDG_DOCUMENTS_DIR=\"relative\"", "XDG_DOCUMENTS_DIR=\"$HOMELESS/x\"",
            "XDG_DOCUMENTS_DIR=\"/open", "XDG_DOCUMENTS_DIR=\"$(rm x)\"", "XDG_DOCUMENTS_DIRECTORY=\"/x\""}) {
        ChooseDocuments(line);
        EXPECT_EQ(DocumentsFolder(), Home() / "Documents") << line;
    }
}

TEST(DocumentsFolder, IsEmptyWithoutAHome) {
    if (getuid() != 0) GTEST_SKIP() << "only root can become a user without a home";
    unsetenv("HOME");
    EXPECT_EQ(AsNobody([] { return DocumentsFolder().empty() ? 0 : 1; }), 0);
}

TEST(TemporaryFolder, IsTheUsersIfItIsAbsolute) {
    EXPECT_EQ(TemporaryFolder(), std::getenv("TMPDIR"));
    setenv("TMPDIR", "relative", 1);
    EXPECT_EQ(TemporaryFolder(), "/tmp");
    unsetenv("TMPDIR");
    EXPECT_EQ(TemporaryFolder(), "/tmp");
}
