// A saved file survives every call of the file system that fails, and a process that ends in the middle.

#include "device_gui/patch_display.h"
#include "tests/support/faulty_files.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchFaults : public State {
protected:
    std::u16string Path(const std::string& file) { return Utils::FromSystemPath(documents.Patch(file)); }
};

} // namespace

TEST_F(PatchFaults, TheOldOrTheNewFileIsThereWhateverFails) {
    using EFault = CFaultyFiles::EFault;
    for (const auto fault : {EFault::Fail, EFault::HalfFail, EFault::Stop, EFault::HalfStop}) {
        int call = 0;
        bool happened = true;
        while (happened) {
            ++call;
            ASSERT_LT(call, 200);
            ASSERT_TRUE(Device().State().SavePatch(Path("mine.kvp"), 0));
            const auto older = ReadText(documents.Patch("mine.kvp"));
            Device().SetParam(33, static_cast<float>(call) / 256.0f, 0);
            const auto newer = Device().State().PatchText(0) + '\0';
            ASSERT_NE(older, newer);
            {
                CFaultyFiles files(call, fault);
                EXPECT_TRUE(Device().State().SavePatch(
                    Path("mine.kvp"), 0)); // silent: the list is renewed all the same
                happened = files.Happened();
            }
            const auto left = ReadText(documents.Patch("mine.kvp"));
            EXPECT_TRUE(left == older || left == newer) << call;
            EXPECT_EQ(Device().State().PatchName(), u"mine");
            EXPECT_TRUE(dialogs.errors.empty());
        }
        EXPECT_GT(call, 5);
    }
}

TEST_F(PatchFaults, AFirstSaveLeavesNoBrokenFile) {
    bool happened = true;
    for (int call = 1; happened; ++call) {
        std::filesystem::remove_all(documents.Patch("").parent_path());
        {
            CFaultyFiles files(call, CFaultyFiles::EFault::Fail);
            Device().State().SavePatch(Path("new.kvp"), 0);
            happened = files.Happened();
        }
        const auto left = ReadText(documents.Patch("new.kvp"));
        EXPECT_TRUE(left.empty() || left.ends_with(std::string("</macro>\r\n") + '\0')) << call;
    }
    EXPECT_FALSE(ReadText(documents.Patch("new.kvp")).empty());
}

TEST_F(PatchFaults, ARoutingThatCannotBeWrittenIsNotSelected) {
    const auto before = Gui().GetRouting(0);
    CFaultyFiles files(1, CFaultyFiles::EFault::Stop);
    Gui().SaveRouting(Utils::FromSystemPath(documents.Routing("r.kvt")));
    EXPECT_EQ(Gui().GetRouting(0), before);
}

TEST_F(PatchFaults, APatchThatCannotBeReadWhileItIsLoadedChangesNothing) {
    ASSERT_TRUE(Device().State().SavePatch(Path("a.kvp"), 0));
    Device().SetParam(33, 0.125f, 0);
    const auto before = Chunk(false);
    bool happened = true;
    for (int call = 1; happened; ++call) {
        {
            CFaultyFiles files(call, CFaultyFiles::EFault::Fail);
            const bool loaded = Device().State().OpenPatch(Path("a.kvp"));
            happened = files.Happened();
            EXPECT_TRUE(loaded || Chunk(false) == before) << call;
        }
        Device().SetParam(33, 0.125f, 0);
    }
    EXPECT_TRUE(dialogs.errors.empty());
}
