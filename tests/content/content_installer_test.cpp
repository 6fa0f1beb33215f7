// Installs factory content into the user's documents and removes it again.

#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/content/content_manifest.h"
#include "tools/kavhost/content/factory_content.h"
#include "utils/path.h"

#include <map>
#include <sstream>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

using EFault = CFaultyFiles::EFault;

const std::string Patches = "Kavelin/KAV Sorrel Limiter/";
const std::string Routings = "Kavelin/Routings/";
const std::string Manifest = Patches + ".factory-content";

/// Every file below a folder with its content, by its path relative to the folder.
std::map<std::string, std::string> FilesBelow(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file())
            files[entry.path().lexically_relative(folder).generic_string()] = ReadText(entry.path());
    }
    return files;
}

class ContentInstaller : public testing::Test {
protected:
    void SetUp() override {
        WriteText(content / "Patches" / "A.kvp", "patch A");
        WriteText(content / "Patches" / "B.kvp", std::string("patch B\0", 8));
        WriteText(content / "Routings" / "5.1.kvt", "routing");
        WriteText(content / "Routings" / "Legacy" / "Mid" / "Side.kvt", "older routing");
        WriteText(content / "Routings" / "notes.txt", "no routing");
        fs::create_directories(documents);
    }
    ContentReport Install() { return InstallContent({content, guide}, documents); }
    ContentReport Uninstall() { return UninstallContent(documents); }
    ContentReport List() { return ListContent({content, guide}, documents); }

    static EContentFate FateOf(const ContentReport& report, const std::string& place) {
        for (const auto& line : report) {
            if (line.place == place) return line.fate;
        }
        ADD_FAILURE() << place << " is not in the report";
        return EContentFate::Failed;
    }
    /// All of the content is there, and nothing else but the list.
    void ExpectWhole() {
        auto files = FilesBelow(documents);
        files.erase(Manifest);
        EXPECT_EQ(files, whole);
    }

    /// Every file costs calls, and every call of the system is made to fail once. So only a few files remain.
    void MakeContentSmall() {
        fs::remove_all(content / "Routings" / "Legacy");
        fs::remove(content / "Patches" / "B.kvp");
        whole.erase(Routings + "Legacy/Mid/Side.kvt");
        whole.erase(Patches + "B.kvp");
    }

    std::map<std::string, std::string> whole{{Patches + "A.kvp", "patch A"},
        {Patches + "B.kvp", std::string("patch B\0", 8)}, {Routings + "5.1.kvt", "routing"},
        {Routings + "Legacy/Mid/Side.kvt", "older routing"}};
    fs::path content = NewFolder();
    fs::path guide; // none
    fs::path documents = NewFolder() / "documents";
};

} // namespace

TEST_F(ContentInstaller, CopiesPatchesAndRoutingsAndNothingElse) {
    const auto report = Install();
    EXPECT_EQ(report.size(), 4u);
    for (const auto& line : report) EXPECT_EQ(line.fate, EContentFate::Installed) << line.place;
    EXPECT_FALSE(HasFailed(report));
    ExpectWhole();
}

TEST_F(ContentInstaller, PutsTheUserGuideWhereTheEditorLooksForIt) {
    guide = NewFolder() / "KAV Sorrel Limiter User Guide.pdf";
    WriteText(guide, "guide");
    const auto place = Patches + "Tessel User Guide.pdf";
    whole[place] = "guide";
    EXPECT_EQ(FateOf(List(), place), EContentFate::Missing);
    EXPECT_EQ(FateOf(Install(), place), EContentFate::Installed);
    ExpectWhole();
    EXPECT_EQ(FateOf(List(), place), EContentFate::There);
    std::ostringstream listed;
    PrintContent(listed, List(), {documents, content});
    EXPECT_NE(listed.str().find("installed  " + place + "\n"), std::string::npos) << "no option names it\n"
                                                                                  << listed.str();
    WriteText(guide, "newer guide");
    EXPECT_EQ(FateOf(Install(), place), EContentFate::Renewed);
    EXPECT_EQ(FateOf(Uninstall(), place), EContentFate::Removed);
    EXPECT_TRUE(fs::is_empty(documents));
}

TEST_F(ContentInstaller, LeavesAGuideThatTheUserHasChanged) {
    guide = NewFolder() / "KAV Sorrel Limiter User Guide.pdf";
    WriteText(guide, "guide");
    Install();
    const auto place = Patches + "Tessel User Guide.pdf";
    WriteText(documents / place, "guide with notes");
    EXPECT_EQ(FateOf(Install(), place), EContentFate::Users);
    EXPECT_EQ(FateOf(Uninstall(), place), EContentFate::Users);
    EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{place, "guide with notes"}}));
}

TEST_F(ContentInstaller, NeedsNoGuide) {
    guide = NewFolder() / "missing.pdf";
    Install();
    ExpectWhole();
}

TEST_F(ContentInstaller, MakesADocumentsFolderThatIsMissing) {
    fs::remove(documents);
    Install();
    ExpectWhole();
}

TEST_F(ContentInstaller, LeavesNothingBehind) {
    WriteText(documents / "letter.txt", "dear");
    Install();
    for (const auto& line : Uninstall()) EXPECT_EQ(line.fate, EContentFate::Removed) << line.place;
    EXPECT_EQ(FilesIn(documents), std::vector<std::string>{"letter.txt"});
}

TEST_F(ContentInstaller, ASecondTimeChangesNothing) {
    Install();
    const auto before = FilesBelow(documents);
    for (const auto& line : Install()) EXPECT_EQ(line.fate, EContentFate::There) << line.place;
    EXPECT_EQ(FilesBelow(documents), before);
}

TEST_F(ContentInstaller, AnotherFileOfTheNameStaysForEver) {
    WriteText(documents / (Patches + "A.kvp"), "mine");
    EXPECT_EQ(FateOf(Install(), Patches + "A.kvp"), EContentFate::Users);
    EXPECT_EQ(ReadText(documents / (Patches + "A.kvp")), "mine");
    Install();
    Uninstall();
    EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{Patches + "A.kvp", "mine"}}));
}

TEST_F(ContentInstaller, TheSameFileOfTheUserStaysForEver) {
    WriteText(documents / (Patches + "A.kvp"), "patch A");
    EXPECT_EQ(FateOf(Install(), Patches + "A.kvp"), EContentFate::There);
    Uninstall();
    EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{Patches + "A.kvp", "patch A"}}));
}

TEST_F(ContentInstaller, AnEmptyFileOfTheUserStays) {
    WriteText(documents / (Patches + "A.kvp"), "");
    EXPECT_EQ(FateOf(Install(), Patches + "A.kvp"), EContentFate::Users);
    EXPECT_EQ(fs::file_size(documents / (Patches + "A.kvp")), 0u);
}

TEST_F(ContentInstaller, WhatTheUserHasChangedSinceStays) {
    Install();
    WriteText(documents / (Routings + "5.1.kvt"), "routinG"); // of the same size
    EXPECT_EQ(FateOf(Uninstall(), Routings + "5.1.kvt"), EContentFate::Users);
    EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{Routings + "5.1.kvt", "routinG"}}));
    WriteText(documents / (Routings + "5.1.kvt"), "routing"); // the user has edited it
    Uninstall();
    EXPECT_EQ(ReadText(documents / (Routings + "5.1.kvt")), "routing");
}

TEST_F(ContentInstaller, WhatTheUserHasDeletedComesBack) {
    Install();
    fs::remove(documents / (Patches + "A.kvp"));
    EXPECT_EQ(FateOf(Install(), Patches + "A.kvp"), EContentFate::Installed);
    ExpectWhole();
}

TEST_F(ContentInstaller, UninstallingDoesNotMissWhatTheUserHasDeleted) {
    Install();
    fs::remove(documents / (Patches + "A.kvp"));
    EXPECT_EQ(FateOf(Uninstall(), Patches + "A.kvp"), EContentFate::Missing);
    EXPECT_TRUE(fs::is_empty(documents));
}

TEST_F(ContentInstaller, ANewVersionReplacesWhatIsUnchanged) {
    Install();
    WriteText(documents / (Patches + "B.kvp"), "mine");
    WriteText(content / "Patches" / "A.kvp", "patch A, better");
    WriteText(content / "Patches" / "B.kvp", "patch B, better");
    EXPECT_EQ(FateOf(List(), Patches + "A.kvp"), EContentFate::Renewed);
    const auto report = Install();
    EXPECT_EQ(FateOf(report, Patches + "A.kvp"), EContentFate::Renewed);
    EXPECT_EQ(FateOf(report, Patches + "B.kvp"), EContentFate::Users);
    EXPECT_EQ(ReadText(documents / (Patches + "A.kvp")), "patch A, better");
    EXPECT_EQ(ReadText(documents / (Patches + "B.kvp")), "mine");
    Uninstall();
    EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{Patches + "B.kvp", "mine"}}));
}

TEST_F(ContentInstaller, TheOldVersionOfARenewedFileIsTheUsersAgain) {
    Install();
    WriteText(content / "Patches" / "A.kvp", "patch A, better");
    Install();
    WriteText(documents / (Patches + "A.kvp"), "patch A"); // restored by the user
    EXPECT_EQ(FateOf(Uninstall(), Patches + "A.kvp"), EContentFate::Users);
}

TEST_F(ContentInstaller, RemovesFilesThatALaterVersionNoLongerHas) {
    Install();
    fs::remove(content / "Patches" / "A.kvp");
    Install();
    EXPECT_EQ(ReadText(documents / (Patches + "A.kvp")), "patch A");
    Uninstall();
    EXPECT_TRUE(fs::is_empty(documents));
}

TEST_F(ContentInstaller, ListsWhatIsThere) {
    for (const auto& line : List()) EXPECT_EQ(line.fate, EContentFate::Missing) << line.place;
    EXPECT_TRUE(fs::is_empty(documents));
    WriteText(documents / (Patches + "A.kvp"), "patch A"); // by the user
    Install();
    const auto list = List();
    EXPECT_EQ(FateOf(list, Patches + "A.kvp"), EContentFate::Users);
    EXPECT_EQ(FateOf(list, Patches + "B.kvp"), EContentFate::There);
}

TEST_F(ContentInstaller, DoesNotWriteThroughALinkToNothing) {
    std::error_code error;
    fs::create_directories(documents / Patches);
    fs::create_symlink(documents / "elsewhere", documents / (Patches + "A.kvp"), error);
    if (error) GTEST_SKIP() << "no links for this user: " << error.message();
    EXPECT_EQ(FateOf(Install(), Patches + "A.kvp"), EContentFate::Users);
    EXPECT_FALSE(fs::exists(documents / "elsewhere"));
}

TEST_F(ContentInstaller, KeepsTheUsersLinkToAFolderElsewhere) {
    std::error_code error;
    const auto elsewhere = NewFolder();
    fs::create_directories(documents / "Kavelin");
    fs::create_directory_symlink(elsewhere, documents / "Kavelin" / "Routings", error);
    if (error) GTEST_SKIP() << "no links for this user: " << error.message();
    Install();
    EXPECT_EQ(ReadText(elsewhere / "5.1.kvt"), "routing");
    Uninstall();
    EXPECT_TRUE(fs::is_empty(elsewhere));
    EXPECT_TRUE(fs::is_symlink(documents / "Kavelin" / "Routings"));
}

TEST_F(ContentInstaller, RefusesAFolderWithoutContent) {
    const auto empty = NewFolder();
    EXPECT_THROW(InstallContent({empty, {}}, documents), CFailure);
    EXPECT_THROW(InstallContent({empty / "none", {}}, documents), CFailure);
    EXPECT_THROW(InstallContent({content, {}}, {}), CFailure);
    EXPECT_THROW(UninstallContent({}), CFailure);
    EXPECT_TRUE(fs::is_empty(documents));
}

TEST_F(ContentInstaller, ADamagedListStopsIt) {
    const std::string head = "KAV factory content 1\n";
    const std::string hash = " cbf29ce484222325 ";
    for (const std::string& list : {std::string("something else\n"), head + "x\n", head + "7" + hash + "\n",
             head + "7" + hash + "../letter.txt\n", head + "7" + hash + "Kavelin/../../letter.txt\n",
             head + "7" + hash + "/etc/passwd\n", head + "-7" + hash + "a\n", head + "7 zz a\n"}) {
        WriteText(documents / Manifest, list);
        EXPECT_THROW(Install(), CFailure) << list;
        EXPECT_THROW(Uninstall(), CFailure) << list;
        EXPECT_EQ(FilesBelow(documents), (std::map<std::string, std::string>{{Manifest, list}}));
    }
}

TEST_F(ContentInstaller, AWriteThatFailsIsReportedAndCanBeMadeUpFor) {
    MakeContentSmall();
    int calls = 0;
    {
        CFaultyFiles files(0, EFault::Fail);
        Install();
        calls = files.Calls();
    }
    Uninstall();
    for (int call = 1; call <= calls; ++call) {
        bool isReported = false;
        {
            CFaultyFiles files(call, EFault::HalfFail);
            try {
                isReported = HasFailed(Install());
            } catch (const CFailure&) {
                isReported = true;
            }
        }
        if (!isReported) ExpectWhole();
        Install();
        ExpectWhole();
        Uninstall();
        EXPECT_TRUE(fs::is_empty(documents)) << call;
    }
}

TEST_F(ContentInstaller, WhatCannotBeRemovedIsReportedAndRemembered) {
    MakeContentSmall();
    int calls = 0;
    int refusals = 0;
    do {
        Install();
        {
            CFaultyFiles files(++calls, EFault::Fail);
            try {
                refusals += HasFailed(Uninstall()) ? 1 : 0;
            } catch (const CFailure&) {
                ++refusals;
            }
            if (!files.Happened()) calls = 0;
        }
        Uninstall();
        EXPECT_TRUE(fs::is_empty(documents)) << calls;
    } while (calls > 0);
    EXPECT_GE(refusals, 3); // the two files and their list
}

TEST_F(ContentInstaller, EndedAnywhereItCanBeTakenUpAndTakenBack) {
    MakeContentSmall();
    WriteText(documents / (Patches + "A.kvp"), "mine");
    int calls = 0;
    {
        CFaultyFiles files(0, EFault::Stop);
        Install();
        calls = files.Calls();
    }
    Uninstall();
    for (int call = 1; call <= calls; ++call) {
        {
            CFaultyFiles files(call, EFault::HalfStop);
            try {
                Install();
            } catch (const CFailure&) {
                EXPECT_TRUE(files.Happened());
            }
        }
        EXPECT_EQ(ReadText(documents / (Patches + "A.kvp")), "mine") << call;
        Install();
        EXPECT_EQ(FateOf(List(), Routings + "5.1.kvt"), EContentFate::There) << call;
        Uninstall();
        for (const auto& [file, bytes] : FilesBelow(documents)) {
            const bool isContent = file.ends_with(".kvp") || file.ends_with(".kvt");
            EXPECT_TRUE(!isContent || file == Patches + "A.kvp") << call << " left " << file;
        }
        fs::remove_all(documents / "Kavelin" / "Routings"); // unfinished temporary files
    }
}

TEST_F(ContentInstaller, IsACommand) {
    Utils::UseDocumentsFolder(Utils::FromSystemPath(documents) + u"/");
    WriteText(documents / (Patches + "A.kvp"), "mine");
    const auto from = content.string();
    auto run = RunHost({"content", "install", "--from", from});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, Patches + "A.kvp: yours, kept\n4 files, 3 installed, 1 yours, kept\n");
    run = RunHost({"content", "list", "--from", from});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "yours      " + Patches + "A.kvp  --patch \"A\"\ninstalled  " + Patches +
                           "B.kvp  --patch \"B\"\ninstalled  " + Routings +
                           "5.1.kvt          --routing \"5.1\"\ninstalled  " + Routings +
                           "Legacy/Mid/Side.kvt\n");
    WriteText(documents / (Patches + "My $ound.kvp"), "mine");
    WriteText(documents / (Patches + "B.fxp"), "mine");
    WriteText(documents / (Routings + "It's.kvt"), "mine");
    run = RunHost({"content", "list", "--from", from});
    EXPECT_NE(run.out.find("\nyours      " + Patches + "B.fxp         --patch \"B\"\nyours      " + Patches +
                           "My $ound.kvp  --patch 'My $ound'\nyours      " + Routings + "It's.kvt "),
        std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("--routing \"It's\"\n"), std::string::npos) << run.out;
    for (const char* file : {"My $ound.kvp", "B.fxp"}) fs::remove(documents / (Patches + file));
    fs::remove(documents / (Routings + "It's.kvt"));
    run = RunHost({"content", "uninstall"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "3 files, 3 removed\n");
    EXPECT_EQ(RunHost({"content", "install", "--from", (content / "none").string()}).code, 1);
    EXPECT_EQ(RunHost({"content"}).code, 2);
    EXPECT_EQ(RunHost({"content", "remove"}).code, 2);
    EXPECT_EQ(RunHost({"content", "--help"}).code, 0);
    Utils::UseDocumentsFolder(std::nullopt);
}

TEST(FactoryContentCopy, NextToKavhostEqualsTheTree) {
    for (const char* part : {"Patches", "Routings"}) {
        const auto copy = FilesBelow(fs::path(KAVHOST_FOLDER) / "content" / part);
        EXPECT_FALSE(copy.empty());
        EXPECT_EQ(copy, FilesBelow(fs::path(KAV_CONTENT_DIR) / part));
    }
}

TEST(Fingerprint, IsThatOfThePublishedVectors) {
    EXPECT_EQ(FingerprintOf(""), (SFingerprint{0, 0xcbf29ce484222325}));
    EXPECT_EQ(FingerprintOf("a"), (SFingerprint{1, 0xaf63dc4c8601ec8c}));
    EXPECT_EQ(FingerprintOf("foobar"), (SFingerprint{6, 0x85944171f73967e8}));
}
