// The command lines of docs/patches.md, as they are printed there.

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "utils/marked_text.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;
using Json = nlohmann::json;

namespace {

namespace fs = std::filesystem;

const fs::path Content = KAV_CONTENT_DIR;
const fs::path Document = Content.parent_path() / "docs" / "patches.md";

/// The words of a line as a shell splits it: between blanks, or between double quotes.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words{""};
    bool isQuoted = false;
    for (const char letter : line) {
        if (letter == '"') {
            isQuoted = !isQuoted;
        } else if (letter == ' ' && !isQuoted) {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    return words;
}

std::vector<std::vector<std::string>> Commands() {
    std::vector<std::vector<std::string>> commands;
    const auto text = BytesOf(Document);
    KAV::Utils::CPieces lines(text, "\n");
    while (lines.Next()) {
        if (lines.Piece().starts_with("kavhost render in.wav "))
            commands.push_back(Words(std::string(lines.Piece())));
    }
    return commands;
}

/// Each command in the folder of the content, on a file of `in.wav`'s name elsewhere.
class PatchCommands : public testing::Test {
protected:
    PatchCommands() : _before(fs::current_path()) { fs::current_path(Content); }
    ~PatchCommands() override { fs::current_path(_before); }

    SRun Run(std::vector<std::string> words) const {
        for (auto& word : words) {
            if (word == "in.wav" || word == "out.wav") word = Utf8(_folder / word);
        }
        words.erase(words.begin()); // kavhost
        words.insert(words.begin() + 1, {"--plugin", Utf8(PluginFile()), "--profile", Utf8(PluginProfile()),
                                            "--no-preroll", "--no-align", "--json", "--strict"});
        return RunHost(words);
    }
    std::vector<float> Output() const { return ReadWav(_folder / "out.wav").samples; }

    fs::path _folder = NewFolder();
    fs::path _before;
};

fs::path PatchOf(const std::vector<std::string>& words) {
    return words.back();
}

/// As many as the patch has buttons for, from the first one, and two at least.
int ChannelsOf(const fs::path& patch) {
    std::int32_t most = 2;
    for (const auto& parameter : ReadPatch(patch).parameters) {
        const auto button = parameter.tag.value_or(0) % 100;
        if (button >= 1 && button <= 16 && parameter.value >= 0.5) most = std::max(most, button);
    }
    return most;
}

/// The whole state of a new instance, with these routings by group and this connection.
std::string StateWith(const std::string& fresh, const std::map<int, std::string>& routings, bool isParallel) {
    auto state = fresh;
    const std::string opening = "<kav_input_routing>";
    const std::string closing = "</kav_input_routing>";
    for (const auto& [group, document] : routings) {
        const auto head = opening + "\r\n\t<fx>" + std::to_string(group) + "</fx>";
        const auto begin = state.find(head);
        const auto end = state.find(closing, begin);
        if (begin == std::string::npos || end == std::string::npos) return {};
        state.replace(begin, end + closing.size() - begin, head + document.substr(opening.size()));
    }
    return KAV::Utils::ReplaceAll(
        state, "<groups_parallel>0<", isParallel ? "<groups_parallel>1<" : "<groups_parallel>0<");
}

} // namespace

TEST_F(PatchCommands, AreThereForEveryPatch) {
    std::vector<std::string> patches, commands;
    for (const auto& file : fs::directory_iterator("Patches")) patches.push_back(Utf8(file.path()));
    for (const auto& words : Commands()) commands.push_back(Utf8(PatchOf(words)));
    std::ranges::sort(patches);
    std::ranges::sort(commands);
    EXPECT_EQ(commands, patches);
}

/// Nothing is missing, and no channel passes unlimited: each of these would be a failure.
TEST_F(PatchCommands, RunAsTheyArePrinted) {
    for (const auto& words : Commands()) {
        WriteWav(_folder / "in.wav", Noise(ChannelsOf(PatchOf(words)), 500, 0.9f));
        const auto run = Run(words);
        ASSERT_EQ(run.code, 0) << Utf8(PatchOf(words)) << run.errors;
        const auto report = Json::parse(run.out)[0];
        EXPECT_EQ(report["patch"], Utf8(PatchOf(words).stem()));
        EXPECT_EQ(report["notes"], Json::array());
    }
}

TEST_F(PatchCommands, SetUpWhatThePatchNeeds) {
    ASSERT_EQ(
        RunHost({"info", "--plugin", Utf8(PluginFile()), "--save-state", Utf8(_folder / "fresh")}).code, 0);
    const auto fresh = BytesOf(_folder / "fresh");
    int withNeeds = 0;
    for (const auto& words : Commands()) {
        const auto needs = ReadPatch(PatchOf(words)).needs;
        if (needs.empty()) continue;
        ++withNeeds;
        WriteWav(_folder / "in.wav", Noise(ChannelsOf(PatchOf(words)), 4000, 0.9f));
        ASSERT_EQ(Run(words).code, 0) << Utf8(PatchOf(words));
        const auto output = Output();

        std::map<int, std::string> routings;
        bool isParallel = false;
        for (const auto& need : needs) {
            if (need == "groups connected in parallel") {
                isParallel = true;
                continue;
            }
            const std::string name(KAV::Utils::ExtractTag(need, "routing", " ", " in group"));
            for (const char letter : need.substr(need.find(" in group"))) {
                if (letter >= '1' && letter <= '4')
                    routings[letter - '1'] = BytesOf(fs::path("Routings") / (name + ".kvt"));
            }
        }
        WriteBytes(_folder / "state", StateWith(fresh, routings, isParallel));
        const std::vector<std::string> byState{"kavhost", "render", "in.wav", "-o", "out.wav", "--format",
            "float", "--state", Utf8(_folder / "state"), "--patch", words.back()};
        const auto run = Run(byState);
        ASSERT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(Output(), output) << Utf8(PatchOf(words));
    }
    EXPECT_EQ(withNeeds, 8);
}

/// Without its needs a patch sounds otherwise, and a user who asks for strictness hears of it.
TEST_F(PatchCommands, FailWithoutWhatThePatchNeeds) {
    for (auto words : Commands()) {
        const auto patch = PatchOf(words);
        const auto needs = ReadPatch(patch).needs;
        if (needs.empty()) continue;
        WriteWav(_folder / "in.wav", Noise(2, 100, 0.9f));
        const auto run = Run({"kavhost", "render", "in.wav", "-o", "out.wav", "--patch", Utf8(patch)});
        EXPECT_EQ(run.code, 1) << Utf8(patch);
        EXPECT_NE(run.errors.find("a need of the patch is not met: " + needs.front()), std::string::npos)
            << run.errors;
    }
}
