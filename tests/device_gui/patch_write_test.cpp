// What a patch text holds, byte for byte against a text that the tests put together from the format.

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "tests/support/comma_locale.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

using PatchWriter = State;

} // namespace

TEST_F(PatchWriter, BankChunkOfAFreshInstance) {
    EXPECT_EQ(Chunk(false), SPlainPatch().Text(191));
}

TEST_F(PatchWriter, PresetChunkOfAFreshInstance) {
    EXPECT_EQ(Chunk(true), SPlainPatch().Text(0));
}

TEST_F(PatchWriter, EachFlagAddsItsElementsAndNothingElse) {
    const SPlainPatch plain;
    for (std::uint32_t flags = 0; flags < 256; ++flags) {
        const auto expected = plain.Text(flags & ~96u); // values are the same either way in a fresh instance
        EXPECT_EQ(Device().State().PatchText(flags), expected) << flags;
    }
}

TEST_F(PatchWriter, EveryValueAndNameAndSettingIsWritten) {
    SPlainPatch plain;
    int step = 0;
    for (const auto& [tag, name] : SPlainPatch::Parameters()) {
        const double value = tag == 30 ? 2.0
                             : FindParameter(tag).row->kind == EParameterKind::Toggle
                                 ? step % 2
                                 : static_cast<double>(static_cast<float>(step) / 109.0f);
        if (tag < 24 || tag > 28) { // those move others
            plain.values[tag] = value;
            Device().SetParam(tag, static_cast<float>(value), RawBase);
        }
        ++step;
    }
    plain.name = "Gr\xC3\xBC\xC3\x9F <&> \"x\"";
    Device().State().SetPatchName(u"Gr\u00FC\u00DF <&> \"x\"");
    for (std::size_t g = 0; g < 4; ++g) {
        plain.groupNames[g] = "Group " + std::to_string(g);
        Widget<CFxBtn>(g).SetText(u"Group " + std::u16string(1, static_cast<char16_t>(u'0' + g)));
    }
    plain.macroNames = {"", "", "Push", "", "Air"};
    const std::array<std::u16string_view, 5> macroNames{u"", u"", u"Push", u"", u"Air"};
    for (std::size_t m = 0; m < 5; ++m) Widget<CMacroBtn>(m).SetText(macroNames[m]);
    plain.hostBypass = 1;
    Device().SetHostBypass(true);
    plain.routings[2] = "<map>3,-1</map> of any kind";
    Device().SetRouting(plain.routings[2], 2);
    plain.width = 1000;
    Gui().ResizeTo(1000, 733);
    plain.simd = plain.parallel = 1;
    Device().Simd() = true;
    Device().GroupsParallel() = true;
    plain.filter = 0;
    plain.suspend = -30.25;
    plain.rms = 600.0625;
    plain.tolerance = 0.1;
    plain.gainMax = 1e-4;
    plain.gainMin = 12345.678;
    auto& settings = Device().AutoGain();
    settings.filter = 0;
    settings.suspendLevel = -30.25;
    settings.rmsTime = 600.0625;
    settings.tolerance = 0.1;
    settings.maximumGain = 1e-4;
    settings.maximumCut = 12345.678; // 12345.678 in single precision is 12345.6777
    plain.macros[0] = {{33, 0.75}, {132, 0.2}};
    plain.macros[4] = {{337, 1.0}, {999, 0.0}};
    Device().AssignMacro(0, 33, 0.75f);
    Device().AssignMacro(0, 132, 0.2f);
    Device().AssignMacro(4, 337, 1.0f);
    Device().AssignMacro(4, 999, 0.0f);
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(PatchWriter, SettingsAreShownInSinglePrecision) {
    Device().AutoGain().maximumCut = 16777217.0; // a float has 16777216
    EXPECT_NE(Chunk(false).find("<agc_gain_min>16777216.000</agc_gain_min>"), std::string::npos);
}

TEST_F(PatchWriter, KeepsTheUsersValueUnlessTheEffectiveOneIsAskedFor) {
    Device().SetParam(33, 0.5f, RawBase);
    Device().SetParam(33, 0.25f, MacroOffset);
    const std::string line = "<param tag=\"33\" namew=\"Threshold (1)\" >";
    EXPECT_NE(Device().State().PatchText(0).find(line + "0.500000<"), std::string::npos);
    EXPECT_NE(Device().State().PatchText(EffectiveValues).find(line + "0.750000<"), std::string::npos);
}

TEST_F(PatchWriter, KnowsNoLocaleAndNorDoesTheReader) {
    const CCommaLocale locale;
    const auto chunk = Chunk(false);
    EXPECT_NE(chunk.find(">0.400000</param>"), std::string::npos);
    EXPECT_NE(chunk.find("<agc_rms>2000.000</agc_rms>"), std::string::npos);
    Read("<param tag=\"33\" >0.25</param>\r\n<macro group=\"0\">32;0.125</macro><agc_rms>1.5</agc_rms>",
        AgcSettings);
    EXPECT_EQ(Device().GetParam(33, 0), 0.25f);
    EXPECT_EQ(Device().sensitivities[0][0], 0.125f);
    EXPECT_EQ(Device().AutoGain().rmsTime, 1.5);
}

TEST_F(PatchWriter, GivesTheSizeWithTheZeroAndNothingForNoPlaceToPutIt) {
    const char* text = nullptr;
    const std::size_t size = Gui().WritePatch(&text, 0);
    EXPECT_EQ(size, SPlainPatch().Text(0).size() + 1);
    EXPECT_EQ(text[size - 1], '\0');
    EXPECT_EQ(Gui().WritePatch(nullptr, 0), 0u);
    EXPECT_EQ(effect->Dispatch(VST::effGetChunk, 0, 0, nullptr), 0);
}

TEST_F(PatchWriter, HostsChunkOutlivesEverythingElseThatIsWritten) {
    void* data = nullptr;
    const auto size = static_cast<std::size_t>(effect->Dispatch(VST::effGetChunk, 0, 0, &data));
    const std::string before(static_cast<const char*>(data), size);
    Gui().EnableHistory(true);
    const char* text = nullptr;
    Gui().WritePatch(&text, 0);
    Read("<patch_name>Another</patch_name>\r\n<param tag=\"33\" >0.1</param>");
    Device().State().CopyAB();
    Device().State().SwitchAB(0);
    EXPECT_EQ(std::string(static_cast<const char*>(data), size), before);
}

TEST_F(PatchWriter, TextStaysUntilTheNextOneIsAskedFor) {
    const char* text = nullptr;
    const auto size = Gui().WritePatch(&text, 0);
    const std::string before(text, size);
    Gui().EnableHistory(true);
    Read("<patch_name>Another</patch_name>\r\n<param tag=\"33\" >0.1</param>");
    Gui().Undo();
    Device().State().CopyAB();
    Device().State().SwitchAB(0);
    Chunk(false);
    EXPECT_EQ(std::string(text, size), before);
}
