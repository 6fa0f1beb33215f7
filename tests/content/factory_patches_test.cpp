// The patches that come with the plug-in, loaded in instances of it.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/macro_button.h"
#include "patch/patch_text.h"
#include "tests/support/state_fixture.h"
#include "utils/marked_text.h"
#include "utils/number.h"
#include "utils/text.h"

#include <algorithm>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

const std::filesystem::path Folder = std::filesystem::path(KAV_CONTENT_DIR) / "Patches";
const std::string Reset = "- Full Reset -";

std::vector<std::filesystem::path> Files() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(Folder)) files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

std::string Title(const std::filesystem::path& file) {
    return file.stem().string();
}

std::filesystem::path FileOf(const std::string& title) {
    return Folder / (title + ".kvp");
}

/// Only the lines of the parameters.
std::string Values(std::string_view text) {
    std::string values;
    Utils::CPieces lines(text, Patch::LineEnd);
    while (lines.Next()) {
        if (Patch::ReadParamLine(lines.Piece())) values.append(lines.Piece()).append("\n");
    }
    return values;
}

class FactoryPatches : public State {
protected:
    void Load(const std::filesystem::path& file) {
        ASSERT_TRUE(Device().State().OpenPatch(Utils::FromSystemPath(file))) << file;
    }
    std::vector<std::int32_t> Targets(std::size_t macro) {
        std::vector<std::int32_t> targets;
        for (const std::int32_t tag : Device().tags[macro]) {
            if (tag != CMacro::NoTag) targets.push_back(tag);
        }
        return targets;
    }
    void Turn(std::size_t macro, float value) {
        Device().SetParam(FirstMacroTag + static_cast<std::int32_t>(macro), value, RawBase);
    }
};

} // namespace

TEST_F(FactoryPatches, AreAFullSetThatBeginsWithTheReset) {
    for (const auto& file : Files()) {
        EXPECT_EQ(file.extension(), ".kvp");
        WriteText(documents.Patch(file.filename().string()), ReadText(file));
    }
    const auto names = PatchNames();
    EXPECT_EQ(names.size(), Files().size());
    EXPECT_GE(names.size(), 25u);
    EXPECT_EQ(names.front(), Utils::ToUtf16(Reset));
    Renew();
    EXPECT_EQ(Device().State().PatchName(), Utils::ToUtf16(Reset));
}

/// Without the line of what a patch needs, which is there for kavhost and for people.
TEST_F(FactoryPatches, AreWrittenAsAnInstanceWritesThem) {
    std::size_t withNeeds = 0;
    for (const auto& file : Files()) {
        if (Title(file) == Reset) continue;
        Load(file);
        auto text = ReadText(file);
        const auto needs = std::string(Utils::ExtractTag(text, "<patch_info", ">", "</"));
        if (!needs.empty()) {
            ++withNeeds;
            EXPECT_TRUE(needs.starts_with("Needs: ")) << file;
            text = Utils::ReplaceAll(text, "<patch_info>" + needs + "</patch_info>\r\n", "");
        }
        EXPECT_EQ(text, Device().State().PatchText(0) + '\0') << file;
    }
    EXPECT_EQ(withNeeds, 8u);
}

TEST_F(FactoryPatches, TheResetIsADefaultWithoutAWidth) {
    const auto content = ReadText(FileOf(Reset));
    WriteText(documents.Patch(Reset + ".kvp"), content);
    Renew();
    Gui().ResizeTo(1000, 733);
    Device().Simd() = false;
    Device().GroupsParallel() = true;
    auto& settings = Device().AutoGain();
    settings.filter = 0;
    for (auto* const setting : {&settings.suspendLevel, &settings.rmsTime, &settings.tolerance,
             &settings.maximumGain, &settings.maximumCut})
        *setting = 1.5;
    Gui().SelectPatch(0, true);
    EXPECT_EQ(Gui().Width(), 1000);
    const auto text = Device().State().PatchText(InstanceDefaultFlags);
    EXPECT_EQ(content, Utils::ReplaceAll(text, "<gui_width>1000</gui_width>\r\n", "") + '\0');
}

TEST_F(FactoryPatches, TheResetIsAFreshInstanceWithVectorCode) {
    auto fresh = Device().State().PatchText(HostChunkFlags);
    fresh = Utils::ReplaceAll(fresh, "No KVP patches found!", Reset);
    fresh = Utils::ReplaceAll(fresh, "<simd>0</simd>", "<simd>1</simd>");
    WriteText(documents.Patch(Reset + ".kvp"), ReadText(FileOf(Reset)));
    Renew();
    EXPECT_EQ(Device().State().PatchText(HostChunkFlags), fresh);
}

TEST_F(FactoryPatches, TheResetTakesEveryOtherBack) {
    const auto fresh = Values(Device().State().PatchText(0));
    for (const auto& file : Files()) {
        Load(file);
        if (Title(file) != Reset) {
            EXPECT_NE(Values(Device().State().PatchText(0)), fresh) << file;
        }
        Load(FileOf(Reset));
        EXPECT_EQ(Values(Device().State().PatchText(0)), fresh) << file;
    }
}

TEST_F(FactoryPatches, AreNotTwiceTheSame) {
    std::set<std::string> seen;
    for (const auto& file : Files()) EXPECT_TRUE(seen.insert(Values(ReadText(file))).second) << file;
}

TEST_F(FactoryPatches, KeepTheUsersRoutingsGroupNamesAndWidth) {
    for (const auto& file : Files()) {
        const auto text = ReadText(file);
        for (const char* element : {"<kav_input_routing", "<fx_names", "<gui_width"})
            EXPECT_EQ(text.find(element), std::string::npos) << file << element;
    }
}

TEST_F(FactoryPatches, HaveMacrosWithNames) {
    for (const auto& file : Files()) {
        if (Title(file) == Reset) continue;
        Load(file);
        EXPECT_FALSE(Targets(0).empty()) << file;
        EXPECT_FALSE(Targets(1).empty()) << file;
        for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
            const auto unnamed = u"Macro " + Utils::FormatInt(static_cast<std::int32_t>(macro) + 1);
            EXPECT_EQ(Widget<CMacroBtn>(macro).Text() == unnamed, Targets(macro).empty()) << file << macro;
        }
    }
}

TEST_F(FactoryPatches, HaveMacrosThatShareNoTarget) {
    for (const auto& file : Files()) {
        Load(file);
        std::set<std::int32_t> seen;
        for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
            for (const auto tag : Targets(macro)) EXPECT_TRUE(seen.insert(tag).second) << file << tag;
        }
    }
}

TEST_F(FactoryPatches, HaveMacrosThatMoveEveryTargetAndRestInTheMiddle) {
    for (const auto& file : Files()) {
        Load(file);
        for (std::size_t macro = 0; macro < CMacro::Macros; ++macro) {
            for (const auto tag : Targets(macro)) {
                const auto parameter = FindParameter(tag);
                ASSERT_TRUE(parameter) << file << tag;
                EXPECT_EQ(parameter.row->kind, EParameterKind::Continuous) << file << tag;
                const float base = Device().GetParam(tag, BaseValue);
                EXPECT_EQ(Device().GetParam(tag, 0), base) << file << tag;
                Turn(macro, 1.0f);
                EXPECT_NE(Device().GetParam(tag, 0), base) << file << tag;
                Turn(macro, 0.5f);
                EXPECT_EQ(Device().GetParam(tag, 0), base) << file << tag;
            }
        }
    }
}
