#include "native/linux/file_list_model.h"

#include "tests/support/file_text.h"
#include "tests/support/other_process.h"
#include "tests/support/scratch_home.h"
#include "utils/text.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utility>

using namespace KAV;
using namespace KAV::Native;
using namespace KAV::Tests;
namespace fs = std::filesystem;
using EState = CFileListModel::EState;

namespace {

/// Reads at once, or when the test says so.
class CDiskDouble final : public IFileListDisk {
public:
    void Run(std::function<void()> read, std::function<void()> done) override {
        work = [read = std::move(read), done = std::move(done)] {
            read();
            done();
        };
        if (!isSlow) Answer();
    }
    void Forget() noexcept override { work = nullptr; }
    void Answer() { std::exchange(work, nullptr)(); }

    bool isSlow = false;
    std::function<void()> work;
};

class FileListModel : public testing::Test {
protected:
    CDiskDouble disk;
    fs::path folder = ScratchFolder() / "list";
    Platform::SFileRequest request;

    FileListModel() {
        fs::remove_all(folder);
        fs::create_directories(folder);
        request.folder = folder.string();
        request.filters = {{"Preset File", {"*.fxp", "*.kvp"}}, {"All", {"*"}}};
    }
    void Put(const std::string& name) const { WriteText(folder / name, "x"); }
    std::string In(const std::string& name) const { return (folder / name).string(); }
    CFileListModel List() { return {request, "/", disk}; }
    static std::vector<std::string> Names(const CFileListModel& list) {
        std::vector<std::string> names;
        for (const auto& entry : list.Entries()) names.push_back(entry.name + (entry.isFolder ? "/" : ""));
        return names;
    }
    static std::size_t PlaceOf(const CFileListModel& list, const std::string& name) {
        for (std::size_t n = 0; n < list.Entries().size(); ++n) {
            if (list.Entries()[n].name == name) return n;
        }
        return CFileListModel::None;
    }
    static void Name(CFileListModel& list, const std::string& name) {
        list.Name().SelectAll();
        list.Name().Erase(CLineEditor::EMove::Left);
        list.Name().Type(Utils::ToUtf16(name));
    }
};

} // namespace

TEST_F(FileListModel, ShowsFoldersFirstThenTheFilesOfTheFilter) {
    for (const auto* const name : {"b.kvp", "A.KVP", "c.fxp", "d.txt", ".hidden.kvp", "kvp"}) Put(name);
    fs::create_directories(folder / "z.txt");
    fs::create_directories(folder / "Y");
    fs::create_directories(folder / ".config");
    auto list = List();
    EXPECT_EQ(list.Folder(), folder.string() + "/");
    EXPECT_EQ(Names(list), (std::vector<std::string>{"../", "Y/", "z.txt/", "A.KVP", "b.kvp", "c.fxp"}));
    list.NextFilter();
    EXPECT_EQ(Names(list),
        (std::vector<std::string>{"../", "Y/", "z.txt/", "A.KVP", "b.kvp", "c.fxp", "d.txt", "kvp"}));
    list.NextFilter();
    EXPECT_EQ(Names(list).size(), 6u);
}

TEST_F(FileListModel, LeavesOutNamesThatNoPathCanHave) {
    for (const auto* const name : {"a\\b.kvp", "a\nb.kvp", "\xFF.kvp", "fine.kvp"}) Put(name);
    EXPECT_EQ(Names(List()), (std::vector<std::string>{"../", "fine.kvp"}));
}

TEST_F(FileListModel, BeginsInTheHomeIfTheFolderIsMissing) {
    request.folder = In("missing");
    EXPECT_EQ(CFileListModel(request, folder.string(), disk).Folder(), folder.string() + "/");
    EXPECT_EQ(CFileListModel(request, "", disk).Folder(), "/");
    request.folder = "relative";
    EXPECT_EQ(CFileListModel(request, In("missing"), disk).Folder(), "/");
    EXPECT_EQ(PlaceOf(CFileListModel(request, "", disk), ".."), CFileListModel::None)
        << "nothing is above the root";
}

TEST_F(FileListModel, TakesTheSelectedFile) {
    Put("a.kvp");
    Put("b.kvp");
    auto list = List();
    list.Accept();
    EXPECT_EQ(list.State(), EState::Open) << "nothing is selected";
    list.Move(3);
    list.Accept();
    EXPECT_EQ(list.State(), EState::Chosen);
    EXPECT_EQ(list.Path(), In("b.kvp"));
}

TEST_F(FileListModel, OpensFoldersAndGoesUpToThemAgain) {
    fs::create_directories(folder / "a" / "b");
    WriteText(folder / "a" / "x.kvp", "x");
    auto list = List();
    list.Activate(PlaceOf(list, "a"));
    EXPECT_EQ(list.Folder(), In("a") + "/");
    EXPECT_EQ(Names(list), (std::vector<std::string>{"../", "b/", "x.kvp"}));
    EXPECT_EQ(list.Selected(), CFileListModel::None);
    list.Activate(0);
    EXPECT_EQ(list.Folder(), folder.string() + "/");
    ASSERT_NE(list.Selected(), CFileListModel::None);
    EXPECT_EQ(list.Entries()[list.Selected()].name, "a");
    list.Accept();
    EXPECT_EQ(list.Folder(), In("a") + "/");
    for (int n = 0; n < 50; ++n) list.Up();
    EXPECT_EQ(list.Folder(), "/");
}

TEST_F(FileListModel, MovesWithinItsEntries) {
    Put("a.kvp");
    Put("b.kvp");
    auto list = List();
    list.Move(1);
    EXPECT_EQ(list.Selected(), 0u);
    list.Move(-5);
    EXPECT_EQ(list.Selected(), 0u);
    list.Move(100);
    EXPECT_EQ(list.Selected(), 2u);
    auto other = List();
    other.Move(-1);
    EXPECT_EQ(other.Selected(), 2u);
}

TEST_F(FileListModel, SeeksNamesByTheirBeginning) {
    for (const auto* const name : {"alpha.kvp", "Beta.kvp", "bravo.kvp"}) Put(name);
    auto list = List();
    for (const auto* const next : {"Beta.kvp", "bravo.kvp", "Beta.kvp"}) {
        list.Seek("b");
        ASSERT_NE(list.Selected(), CFileListModel::None);
        EXPECT_EQ(list.Entries()[list.Selected()].name, next);
    }
    list.Seek("q");
    list.Seek("");
    EXPECT_EQ(list.Entries()[list.Selected()].name, "Beta.kvp");
}

TEST_F(FileListModel, DoesNotTakeAFileThatHasGone) {
    Put("a.kvp");
    auto list = List();
    list.Select(1);
    fs::remove(folder / "a.kvp");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Open);
    EXPECT_EQ(list.Entries().size(), 1u);
}

TEST_F(FileListModel, SavesUnderTheTypedName) {
    request.saves = true;
    request.name = "USER_a/b";
    auto list = List();
    EXPECT_EQ(list.Name().Text(), u"USER_a_b");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Chosen);
    EXPECT_EQ(list.Path(), In("USER_a_b"));
}

TEST_F(FileListModel, AsksBeforeAFileIsReplaced) {
    Put("a.kvp");
    request.saves = true;
    auto list = List();
    list.Select(PlaceOf(list, "a.kvp"));
    EXPECT_EQ(list.Name().Text(), u"a.kvp");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Replaces);
    list.Cancel();
    EXPECT_EQ(list.State(), EState::Open);
    list.Activate(PlaceOf(list, "a.kvp"));
    EXPECT_EQ(list.State(), EState::Replaces) << "by a double click, too";
    list.Up();
    list.Select(0);
    list.NextFilter();
    EXPECT_EQ(list.Path(), In("a.kvp")) << "the question is the only thing to answer";
    list.Accept();
    EXPECT_EQ(list.State(), EState::Chosen);
    EXPECT_EQ(list.Path(), In("a.kvp"));
}

TEST_F(FileListModel, AsksBeforeALinkToNothingIsReplaced) {
    fs::create_symlink("/nowhere/at/all", folder / "link.kvp");
    request.saves = true;
    request.name = "link.kvp";
    auto list = List();
    list.Accept();
    EXPECT_EQ(list.State(), EState::Replaces);
}

TEST_F(FileListModel, TakesPathsAsNames) {
    fs::create_directories(folder / "sub");
    request.saves = true;
    auto list = List();
    Name(list, "sub");
    list.Accept();
    EXPECT_EQ(list.Folder(), In("sub") + "/") << "a folder is opened";
    EXPECT_EQ(list.Name().Text(), u"");
    Name(list, "missing/x.kvp");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Open);
    Name(list, "a\\b.kvp");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Open) << "a backslash would count as a slash";
    Name(list, In("x.kvp"));
    list.Accept();
    EXPECT_EQ(list.State(), EState::Chosen);
    EXPECT_EQ(list.Path(), In("x.kvp"));
}

TEST_F(FileListModel, IsCancelled) {
    auto list = List();
    list.Cancel();
    EXPECT_EQ(list.State(), EState::Cancelled);
    EXPECT_EQ(list.Path(), "");
}

TEST_F(FileListModel, ShowsAnUnreadableFolderAsSuch) {
    fs::create_directories(folder / "closed");
    chmod((folder / "closed").c_str(), 0);
    chmod(folder.c_str(), 0755);
    request.folder = In("closed");
    const auto unreadable = [this] {
        const auto list = List();
        return !list.IsReadable() && Names(list) == std::vector<std::string>{"../"} ? 0 : 1;
    };
    for (auto parent = folder.parent_path(); parent != parent.root_path() && parent != "/tmp";
         parent = parent.parent_path())
        chmod(parent.c_str(), 0755);
    EXPECT_EQ(AsNobody(unreadable), 0);
    EXPECT_TRUE(List().IsReadable() || geteuid() != 0);
    chmod((folder / "closed").c_str(), 0755);
}

TEST_F(FileListModel, StaysAsItIsWhileTheDiskIsAsked) {
    fs::create_directories(folder / "sub");
    Put("a.kvp");
    request.saves = true;
    request.name = "name";
    auto list = List();
    const auto before = Names(list);
    disk.isSlow = true;
    list.Activate(PlaceOf(list, "sub"));
    EXPECT_TRUE(list.IsWaiting());
    list.Move(1);
    list.Seek("a");
    list.Up();
    list.NextFilter();
    list.Activate(PlaceOf(list, "a.kvp"));
    list.Accept();
    EXPECT_EQ(Names(list), before);
    EXPECT_EQ(list.Folder(), folder.string() + "/");
    EXPECT_EQ(list.Filter(), 0u);
    disk.Answer();
    EXPECT_FALSE(list.IsWaiting());
    EXPECT_EQ(list.Folder(), In("sub") + "/");
    list.Accept();
    EXPECT_EQ(list.State(), EState::Open);
    disk.Answer();
    EXPECT_EQ(list.State(), EState::Chosen);
}

TEST_F(FileListModel, GivesUpADiskThatDoesNotAnswer) {
    fs::create_directories(folder / "sub");
    auto list = List();
    disk.isSlow = true;
    list.Activate(PlaceOf(list, "sub"));
    list.Cancel();
    EXPECT_FALSE(disk.work) << "the answer is dropped";
    EXPECT_FALSE(list.IsWaiting());
    EXPECT_EQ(list.State(), EState::Open);
    EXPECT_EQ(list.Folder(), folder.string() + "/");
    list.Cancel();
    EXPECT_EQ(list.State(), EState::Cancelled);
}

TEST_F(FileListModel, IsCancelledWhileItsFirstFolderIsRead) {
    disk.isSlow = true;
    auto list = List();
    EXPECT_TRUE(list.IsWaiting());
    EXPECT_TRUE(list.Entries().empty());
    list.Up();
    list.Accept();
    list.Cancel();
    EXPECT_EQ(list.State(), EState::Cancelled);
    EXPECT_FALSE(disk.work);
    { const auto gone = List(); }
    EXPECT_FALSE(disk.work) << "nor is anything left of one that has ended";
}

TEST_F(FileListModel, ListsTenThousandFiles) {
    for (int n = 0; n < 10000; ++n) Put(std::to_string(n) + ".kvp");
    auto list = List();
    EXPECT_EQ(list.Entries().size(), 10001u);
    list.Move(20000);
    list.Accept();
    EXPECT_EQ(list.Path(), In("9999.kvp"));
}

TEST(MatchesPattern, KnowsStarsAndQuestionMarks) {
    for (const auto& [name, pattern] : std::vector<std::pair<std::string, std::string>>{{"a.kvp", "*.kvp"},
             {"A.KVP", "*.kvp"}, {"a.kvp", "*.KVP"}, {"", "*"}, {"a", "*"}, {"a.b.kvp", "*.kvp"},
             {"ab", "a?"}, {"xaxaab", "*a*ab"}, {"a.kvp", "a.kvp"}, {".kvp", "*.kvp"}})
        EXPECT_TRUE(MatchesPattern(name, pattern)) << name << " " << pattern;
    for (const auto& [name, pattern] : std::vector<std::pair<std::string, std::string>>{
             {"a.kvpx", "*.kvp"}, {"kvp", "*.kvp"}, {"a", ""}, {"a", "a?"}, {"", "?"}, {"axb", "*a"}})
        EXPECT_FALSE(MatchesPattern(name, pattern)) << name << " " << pattern;
}
