#include "device_gui/user_guide.h"

#include "tests/support/file_text.h"
#include "tests/support/state_fixture.h"
#include "utils/path.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

namespace fs = std::filesystem;

class UserGuide : public testing::Test {
protected:
    void SetUp() override {
        fs::remove_all(machine);
        fs::create_directories(library.parent_path());
    }
    /// The file that is found, or an empty path.
    fs::path Found() const {
        const auto found = FindUserGuide(Utils::FromSystemPath(library));
        return found.empty() ? fs::path() : fs::weakly_canonical(Utils::ToSystemPath(found));
    }

    CUserDocuments documents;
    const fs::path machine = fs::weakly_canonical(ScratchFolder()) / "machine";
    const fs::path library = machine / "lib" / "vst" / "KAVSorrelLimiter.so";
    const fs::path own = documents.Patch("Tessel User Guide.pdf");
    const fs::path beside = library.parent_path() / "KAV Sorrel Limiter User Guide.pdf";
    const fs::path packaged =
        machine / "share" / "doc" / "kav-sorrel-limiter" / "KAV Sorrel Limiter User Guide.pdf";
};

} // namespace

TEST_F(UserGuide, IsTheUsersOwnBeforeTheMachines) {
    for (const auto& file : {own, beside, packaged}) WriteText(file, "guide");
    EXPECT_EQ(Found(), fs::weakly_canonical(own));
}

TEST_F(UserGuide, IsTheMachinesNextToTheLibraryBeforeThePackages) {
    for (const auto& file : {beside, packaged}) WriteText(file, "guide");
    EXPECT_EQ(Found(), beside);
}

TEST_F(UserGuide, IsAmongTheDocumentsOfThePackage) {
    WriteText(packaged, "guide");
    EXPECT_EQ(Found(), packaged);
}

TEST_F(UserGuide, IsNoneWhereThereIsNoFile) {
    EXPECT_EQ(Found(), fs::path());
}

TEST_F(UserGuide, IsTheMachinesForAUserWithoutADocumentsFolder) {
    Utils::UseDocumentsFolder(u"");
    WriteText(packaged, "guide");
    EXPECT_EQ(Found(), packaged);
}

TEST_F(UserGuide, IsTheUsersOwnWhenTheSystemDoesNotNameTheLibrary) {
    EXPECT_EQ(FindUserGuide({}), u"");
    WriteText(own, "guide");
    EXPECT_EQ(fs::weakly_canonical(Utils::ToSystemPath(FindUserGuide({}))), fs::weakly_canonical(own));
}

TEST_F(UserGuide, IsNeverThatOfTheCurrentFolder) {
    Utils::UseDocumentsFolder(u"");
    for (const auto& file : {beside, library.parent_path() / "Tessel User Guide.pdf"})
        WriteText(file, "guide");
    const auto before = fs::current_path();
    fs::current_path(library.parent_path());
    EXPECT_EQ(FindUserGuide({}), u"");
    fs::current_path(before);
}
