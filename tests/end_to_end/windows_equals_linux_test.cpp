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

double MeanSquareOfDifference(const SMusic& one, const SMusic& other) {
    EXPECT_EQ(one.samples.size(), other.samples.size());
    double sum = 0;
    const auto count = std::min(one.samples.size(), other.samples.size());
    for (std::size_t i = 0; i < count; ++i) {
        const auto difference = static_cast<double>(one.samples[i]) - static_cast<double>(other.samples[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(count);
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

// The coders are built from the same sources, by another compiler. A lossy one decides by the last bits of
// its arithmetic, so two codings differ, but by less than each differs from what was coded.
TEST(Windows, ReadsAndWritesTheFormatsThatLinuxDoes) {
    const auto folder = ScratchFolder();
    auto music = RealMusic();
    music.samples.resize(static_cast<std::size_t>(3 * music.rateHz * music.channels));
    WriteMusic(folder / "in.wav", music);
    SMusic lossless;
    for (const std::string ending : {"flac", "aiff", "ogg"}) {
        Said(Here, "render in.wav -o here." + ending + " --no-dither --set 'Threshold (1)=-12'");
        Said(There, "render in.wav -o there." + ending + " --no-dither --set 'Threshold (1)=-12'");
        const auto here = ReadMusic(folder / ("here." + ending));
        const auto there = ReadMusic(folder / ("there." + ending));
        if (ending == "ogg")
            EXPECT_LT(MeanSquareOfDifference(there, here), MeanSquareOfDifference(lossless, here));
        else
            EXPECT_LE(Difference(here, there), 2e-6f) << ending;
        if (ending == "flac") lossless = here;
        // Each reads what the other has written.
        Said(Here, "render there." + ending + " -o a.wav --format float --no-dither");
        Said(There, "render there." + ending + " -o b.wav --format float --no-dither");
        EXPECT_LE(Difference(ReadMusic(folder / "a.wav"), ReadMusic(folder / "b.wav")), 1e-5f) << ending;
    }
}

TEST(Windows, ReadsMp3AsLinuxDoes) {
    const auto folder = ScratchFolder();
    auto music = RealMusic();
    music.samples.resize(static_cast<std::size_t>(3 * music.rateHz * music.channels));
    WriteMp3(folder / "Gr\xC3\xB6\xC3\x9F"
                      "e.mp3",
        music);
    Said(Here, "render Gr\xC3\xB6\xC3\x9F"
               "e.mp3 -o here.wav --format float");
    Said(There, "render Gr\xC3\xB6\xC3\x9F"
                "e.mp3 -o there.wav --format float");
    const auto here = ReadMusic(folder / "here.wav");
    EXPECT_LE(Difference(here, ReadMusic(folder / "there.wav")), 1e-5f);
    EXPECT_GT(here.Peak(), 0.5f);
}

TEST(Windows, MeasuresLoudnessAndTruePeakAsLinuxDoes) {
    WriteMusic(ScratchFolder() / "in.wav", RealMusic());
    const std::string render =
        "render in.wav -o out.wav --format 16 --no-dither --json --set 'Threshold (1)=-12'";
    const auto here = Said(Here, render);
    const auto there = Said(There, render);
    for (const std::string key : {"\"loudness_lufs\":", "\"true_peak_dbtp\":"}) {
        std::size_t h = 0;
        std::size_t t = 0;
        int found = 0;
        while ((h = here.find(key, h)) != std::string::npos) {
            t = there.find(key, t);
            ASSERT_NE(t, std::string::npos) << key << '\n' << there;
            h += key.size();
            t += key.size();
            const double value = std::strtod(here.c_str() + h, nullptr);
            EXPECT_NEAR(std::strtod(there.c_str() + t, nullptr), value, 0.01) << key;
            EXPECT_LT(std::fabs(value), 30) << key;
            EXPECT_NE(value, 0) << key;
            ++found;
        }
        EXPECT_EQ(found, 2) << key << " of input and output\n" << here;
    }
}

// No shell of Windows expands them. This one would, so they are quoted.
TEST(Windows, ExpandsWildcardsOfInputs) {
    const auto folder = ScratchFolder();
    const SMusic tone{std::vector<float>(200, 0.25f), 2, 48000};
    std::filesystem::create_directory(folder / "wild");
    for (const auto* name : {"one.wav", "t\xC3\xBCo.wav", "three.wav"})
        WriteMusic(folder / "wild" / name, tone);
    Said(There, "render 'wild/*O*.wav' -o out");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "out"))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"one.wav", "t\xC3\xBCo.wav"}));
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
