// Large patches. Work is counted in bytes that searches pass over, so that no clock decides.

#include "device/value_flags.h"
#include "tests/support/faulty_files.h"
#include "tests/support/state_fixture.h"
#include "utils/marked_text.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchSize : public State {
protected:
    /// Bytes passed over per byte of the text.
    double Passes(const std::string& lines) {
        const auto before = Utils::SearchedBytes();
        EXPECT_TRUE(Read(lines, 191));
        return static_cast<double>(Utils::SearchedBytes() - before) / static_cast<double>(lines.size());
    }
};

std::string Repeated(const std::string& piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) text += piece;
    return text;
}

const std::string Head = "<multi_fx>true</multi_fx>\r\n";

} // namespace

TEST_F(PatchSize, AMillionLinesTakeAsManyPassesAsAThousand) {
    host.record = false;
    const std::string line = "<param tag=\"33\" namew=\"Threshold (1)\" >0.250000</param>\r\n";
    const double few = Passes(Head + Repeated(line, 1000));
    const double many = Passes(Head + Repeated(line, 1'000'000) + "<param tag=\"32\" >0.5</param>");
    EXPECT_LT(many, few * 1.05);
    EXPECT_EQ(Device().GetParam(32, 0), 0.5f);
}

TEST_F(PatchSize, AHundredMegabytesTakeAsManyPassesAsAHundredKilobytes) {
    host.record = false;
    for (const std::string piece : {"x", "<", "\r\n", "<param tag=\"", "\"", "<kav_input_routing>", "|*|",
             "<kav_input_routing></kav_input_routing>"}) {
        const double few = Passes(Head + Repeated(piece, 100'000 / piece.size()));
        const std::size_t large = piece == "x" ? 100'000'000 : 10'000'000;
        const double many =
            Passes(Head + Repeated(piece, large / piece.size()) + "\r\n<param tag=\"32\" >0.5</param>");
        EXPECT_LT(many, few * 1.05 + 0.1) << piece;
        EXPECT_LT(many, 60.0) << piece;
    }
}

TEST_F(PatchSize, AMillionMacroTargetsFillTheSlotsOnce) {
    host.record = false;
    const double few = Passes("<macro group=\"0\">" + Repeated("33;0.75||", 1000) + "</macro>");
    const double many = Passes("<macro group=\"0\">" + Repeated("33;0.75||", 1'000'000) + "</macro>");
    EXPECT_LT(many, few * 1.05);
    EXPECT_EQ(Device().tags[0][0], 33);
    EXPECT_EQ(Device().tags[0][1], 0); // the piece behind the last separator
}

TEST_F(PatchSize, AMillionLayoutsReadEachFileOnce) {
    host.record = false;
    WriteText(documents.Routing("Legacy/Mono.kvt"), "<kav_input_routing><map>0,-1</map></kav_input_routing>");
    std::string text = Head;
    for (int i = 0; i < 1'000'000; ++i) {
        text += "<param tag=\"";
        text += i % 2 == 0 ? "138" : "238";
        text += "\" namew=\"ToolInp\" >";
        text += std::to_string(i % 44) + "</param>\r\n";
    }
    CFaultyFiles files(0, CFaultyFiles::EFault::Fail);
    EXPECT_TRUE(Read(text, 191));
    std::size_t opened = 0;
    const auto& names = files.Names();
    for (auto place = names.find("OpenToRead"); place != std::string::npos;
         place = names.find("OpenToRead", place + 1))
        ++opened;
    EXPECT_GE(opened, 1u);
    EXPECT_LE(opened, 44u);
    EXPECT_NE(Gui().GetRouting(1).find("<map>0,-1</map>"), std::string::npos);
}

TEST_F(PatchSize, AGroupIsCopiedInOnePassPerRule) {
    const auto before = Utils::SearchedBytes();
    const auto size = Device().State().PatchText(0).size();
    Device().SetCurrentGroup(1);
    Device().State().CopyGroup(0, 1);
    EXPECT_LT(Utils::SearchedBytes() - before, size * 60);
}
