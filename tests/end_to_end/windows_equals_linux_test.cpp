#include "tests/end_to_end/music.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string_view>
#include <utility>
#include <vector>

using namespace KAV::Tests;

namespace {

const std::string Here = "'" KAVHOST_PROGRAM "'";
const std::string There = "'" KAV_WINE_RUN "' '" KAV_WINDOWS_BUILD "/kavhost.exe'";

/// The output of either system's kavhost, run in the scratch folder, with this system's line ends.
std::string Said(const std::string& kavhost, const std::string& arguments) {
    const auto folder = ScratchFolder();
    RunCommand("cd '" + folder.string() + "' && " + kavhost + ' ' + arguments);
    std::string said = ReadText(folder / "command.log");
    std::erase(said, '\r');
    return said;
}

SMusic Rendered(const std::string& kavhost, const std::string& settings) {
    const auto out = ScratchFolder() / "out.wav";
    std::filesystem::remove(out);
    Said(kavhost, "render in.wav -o out.wav --format float " + settings);
    return ReadMusic(out);
}

float Difference(const SMusic& one, const SMusic& other) {
    EXPECT_EQ(one.samples.size(), other.samples.size());
    float difference = 0.0f;
    for (std::size_t i = 0; i < std::min(one.samples.size(), other.samples.size()); ++i) {
        difference = std::max(difference, std::fabs(one.samples[i] - other.samples[i]));
    }
    return difference;
}

/// Replaces the content of the first element of that name.
void Fill(std::string& text, const std::string& name, std::string_view content) {
    auto begin = text.find('<' + name);
    begin = text.find('>', begin) + 1;
    const auto end = text.find("</" + name + '>', begin);
    ASSERT_NE(end, std::string::npos) << name;
    text.replace(begin, end - begin, content);
}

const std::string RoutingName = "Gekreuzt \xE4\xBA\xA4\xE5\xB7\xAE \xF0\x9F\x8E\x9A"; // one beyond 16 bits
const std::string MacroNames = "W\xC3\xA4rme|*|\xE9\x9F\xB3\xE5\x9C\xA7|*|Macro 3|*|Macro 4|*|Macro 5";

/// A state with everything that isn't a parameter: the first group takes only the right channel, through its
/// first entry, and a macro moves its threshold.
void WriteToldState(const std::filesystem::path& file) {
    Said(Here,
        "info --set 'Threshold (1)=-9' --set 'Release (1)=20 ms' --set 'ToolCh2 (1)=off' --set 'Macro 1=60'"
        " --save-state plain.state");
    std::string text = ReadText(ScratchFolder() / "plain.state");
    Fill(text, "name", RoutingName);
    Fill(text, "map", "1,-1|*|0,-1");
    Fill(text, "ch_names", "Rechts|*|L\xC3\xADnks");
    Fill(text, "macro_group_names", MacroNames);
    const auto macro = text.find("<macro group=\"0\">");
    ASSERT_NE(macro, std::string::npos);
    text.replace(macro, text.find('<', macro + 1) - macro, "<macro group=\"0\">33;0.300||36;0.750");
    WriteText(file, text);
}

/// A state that is read keeps the tab of a line that is removed from a routing. That is its format, not a
/// difference.
std::string WithSingleTabs(std::string text) {
    const auto areTabs = [](char a, char b) { return a == '\t' && b == '\t'; };
    text.erase(std::unique(text.begin(), text.end(), areTabs), text.end());
    return text;
}

} // namespace

// The two maths libraries differ in the last bits of their exponentials, and therefore so do a few samples in
// a million.
TEST(Windows, RendersWhatLinuxRenders) {
    const auto folder = ScratchFolder();
    WriteMusic(folder / "in.wav", RealMusic());
    for (const std::string settings :
        {"--set 'Threshold (1)=-12'", "--set 'Threshold (1)=-12' --set 'Auto Release (1)=on'"}) {
        const auto here = Rendered(Here, settings);
        const auto difference = Difference(here, Rendered(There, settings));
        EXPECT_LE(difference, 1e-6f) << settings;
        EXPECT_GT(here.Peak(), 0.99f);
        RecordProperty("difference", std::to_string(difference));
    }
}

TEST(Windows, RestoresTheStatesOfLinuxAndTheOtherWayRound) {
    const auto folder = ScratchFolder();
    const auto music = RealMusic();
    WriteMusic(folder / "in.wav", music);
    WriteToldState(folder / "told.state");
    for (const auto& [maker, reader] : {std::pair(Here, There), std::pair(There, Here)}) {
        Said(maker, "info --state told.state --save-state made.state");
        const auto made = ReadText(folder / "made.state");
        const std::vector<std::string> beyondValues{"<name>" + RoutingName + "</name>",
            "<map>1,-1|*|0,-1</map>", "<macro_group_names>" + MacroNames + "</macro_group_names>",
            "<macro group=\"0\">33;0.300||36;0.750</macro>"};
        for (const auto& kept : beyondValues) {
            EXPECT_NE(made.find(kept), std::string::npos) << maker << " lost " << kept;
        }

        // Each value, name and macro, written again by the other system.
        Said(reader, "info --state made.state --save-state read.state");
        EXPECT_EQ(WithSingleTabs(ReadText(folder / "read.state")), WithSingleTabs(made)) << reader;
        // And what a host would show of it.
        const auto told = [](const std::string& kavhost) {
            const auto json = Said(kavhost, "info --json --state made.state");
            return json.substr(std::min(json.find("\"parameters\""), json.size()));
        };
        EXPECT_EQ(told(reader), told(maker));
        EXPECT_GT(told(maker).size(), 10000u);

        const auto sound = Rendered(maker, "--state made.state --no-align");
        EXPECT_LE(Difference(sound, Rendered(reader, "--state made.state --no-align")), 1e-6f);
        EXPECT_GT(Difference(sound, music), 0.1f) << "nothing was limited";
    }
}

TEST(Windows, InspectsAPatchAsLinuxDoes) {
    const std::string patch = "inspect '" KAV_CONTENT "/Patches/Film - Dialogue.kvp'";
    const auto here = Said(Here, patch);
    EXPECT_EQ(Said(There, patch), here);
    EXPECT_NE(here.find("Threshold (1)"), std::string::npos);
}

// Its clock advances in steps of 16 ms; a second of sound takes less.
TEST(Windows, MeasuresItsTime) {
    WriteMusic(ScratchFolder() / "in.wav", RealMusic());
    const auto said = Said(There, "bench --input in.wav --seconds 1 --runs 1 --json");
    const auto at = said.find("\"ns_per_frame\"");
    ASSERT_NE(at, std::string::npos) << said;
    EXPECT_GT(std::strtod(said.c_str() + said.find(':', at) + 1, nullptr), 0.0) << said;
}
