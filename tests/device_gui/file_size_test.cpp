// Files of the user up to the largest that is read, and one byte beyond.

#include "tests/support/added_log.h"
#include "tests/support/faulty_files.h"
#include "tests/support/state_fixture.h"

#include <algorithm>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class FileSize : public State {
protected:
    static constexpr std::uintmax_t Largest = std::uintmax_t{16} * 1024 * 1024;

    /// A file with `text` at its beginning and zeros after it, which take no space on the disk.
    static void Write(const std::filesystem::path& file, const std::string& text, std::uintmax_t size) {
        WriteText(file, text);
        std::filesystem::resize_file(file, size);
    }
    void WritePatch(const std::string& file, std::uintmax_t size) {
        Write(documents.Patch(file),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n"
            "<patch_name>x</patch_name>\r\n"
            "<param tag=\"33\" >0.25</param>\r\n",
            size);
    }
    void WriteRouting(const std::string& file, std::uintmax_t size) {
        Write(documents.Routing(file), "<kav_input_routing><name>x</name><map>5,-1</map></kav_input_routing>",
            size);
    }
    std::u16string Path(const std::string& file) { return Utils::FromSystemPath(documents.Patch(file)); }
    float Threshold() { return Device().GetParam(33, 0); }
    static std::ptrdiff_t Count(const std::string& text, const std::string& line) {
        std::ptrdiff_t count = 0;
        for (auto at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) ++count;
        return count;
    }
};

/// The calls for a file of which nothing is read, and for the line in the log.
const std::string Unread = "OpenToRead Size Close Write ";
const std::string TooLarge = "\", nSize=16777217[nMaxSize=16777216]\r\n";

} // namespace

TEST_F(FileSize, OfAPatchMayBe16MegabytesAndNotOneByteMore) {
    WritePatch("fits.kvp", Largest);
    WritePatch("large.kvp", Largest + 1);
    EXPECT_TRUE(Device().State().OpenPatch(Path("fits.kvp")));
    EXPECT_EQ(Threshold(), 0.25f);
    Device().SetParam(33, 0.5f, 0);
    const auto before = Chunk(false);
    const CAddedLog log;
    {
        const CFaultyFiles files(0, CFaultyFiles::EFault::Fail);
        EXPECT_FALSE(Device().State().OpenPatch(Path("large.kvp")));
        EXPECT_EQ(files.Names(), Unread);
    }
    EXPECT_EQ(Chunk(false), before);
    EXPECT_TRUE(dialogs.errors.empty());
    EXPECT_EQ(log.Text(), "Error=FileTooLarge:\"large.kvp" + TooLarge);
}

TEST_F(FileSize, OfAnOlderPatchIsLimitedTheSameWay) {
    std::string record(60 + 148, '\0');
    std::ranges::copy(std::string("sorl"), record.begin() + 16);
    Write(documents.Patch("old.fxp"), record, Largest + 1);
    const auto before = Chunk(false);
    const CAddedLog log;
    EXPECT_FALSE(Device().State().OpenPatch(Path("old.fxp")));
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(log.Text(), "Error=FileTooLarge:\"old.fxp" + TooLarge);
}

TEST_F(FileSize, OfTheFirstPatchIsLoggedOnceByANewInstanceThatGoesWithoutIt) {
    WritePatch("- Full Reset -.kvp", Largest + 1);
    WritePatch("b.kvp", 1000);
    const CAddedLog log;
    {
        const CFaultyFiles files(0, CFaultyFiles::EFault::Fail);
        Renew();
        EXPECT_NE(files.Names().find("OpenToRead Size Close "), std::string::npos) << files.Names();
    }
    EXPECT_EQ(Threshold(), 1.0f) << "the built-in value";
    EXPECT_EQ(Count(log.Text(), "Error=FileTooLarge:\"- Full Reset -.kvp" + TooLarge), 1) << log.Text();
    Device().State().SelectPatch(1, false);
    EXPECT_EQ(Threshold(), 0.25f) << "the next one is read";
}

TEST_F(FileSize, OfAPatchThatIsChosenLeavesNameAndPlaceAsTheyWere) {
    WritePatch("a.kvp", 1000);
    WritePatch("b.kvp", Largest + 1);
    Renew();
    const auto before = Chunk(false);
    Device().State().ChoosePatch(1, u"b");
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Device().State().PatchName(), u"a");
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
}

TEST_F(FileSize, OfARoutingIsLimitedTheSameWay) {
    WriteRouting("fits.kvt", Largest);
    WriteRouting("large.kvt", Largest + 1);
    EXPECT_NE(ReadRoutingFile(u"fits").find("<map>5,-1</map>"), std::string::npos);
    const CAddedLog log;
    const CFaultyFiles files(0, CFaultyFiles::EFault::Fail);
    EXPECT_EQ(ReadRoutingFile(u"large"), "");
    EXPECT_EQ(files.Names(), Unread);
    EXPECT_EQ(log.Text(), "Error=FileTooLarge:\"large.kvt" + TooLarge);
}

TEST_F(FileSize, OfAnOldLayoutIsLimitedTheSameWay) {
    for (const bool fits : {false, true}) {
        WriteRouting("Legacy/Mono.kvt", fits ? Largest : Largest + 1);
        CLegacyRoutings layouts;
        EXPECT_EQ(layouts.Block(0.0f, 0).empty(), !fits);
    }
}
