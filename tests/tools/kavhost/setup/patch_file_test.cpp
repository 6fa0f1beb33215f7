#include "tools/kavhost/setup/patch_file.h"

#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"

#include <gtest/gtest.h>
#include <limits>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

const std::int32_t Keeper = KAV::VST::FourCharacters('t', 'k', 'e', 'p');
const std::int32_t Fader = KAV::VST::FourCharacters('t', 'f', 'a', 'd');

class PatchFile : public testing::Test {
protected:
    /// Applies a file of these bytes; returns the error message.
    std::string Apply(const std::string& bytes, CEffect& effect, const std::string& name = "p.fxp") {
        WriteBytes(_folder / PathOf(name), bytes);
        try {
            CPatchFile(_folder / PathOf(name)).Apply(effect);
        } catch (const CFailure& failure) {
            return failure.what();
        }
        return "no error";
    }

    std::filesystem::path _folder = NewFolder();
    CEffectLibrary _library{EffectFile("keeper")};
    CEffect _keeper{_library, {48000, 512}};
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(PatchFile, OfOneChunkIsGivenToTheEffect) {
    EXPECT_EQ(Apply(ChunkRecord(Keeper, KeeperChunk("PROG", {0.25f, 0.5f, 0.75f})), _keeper), "no error");
    EXPECT_EQ(_keeper.Parameter(0), 0.25f);
    EXPECT_EQ(_keeper.Parameter(2), 0.75f);
    EXPECT_EQ(_keeper.ProgramName(), "First"); // the chunk, including the name, belongs to the effect
}

TEST_F(PatchFile, OfValuesSetsParametersAndTheName) {
    EXPECT_EQ(Apply(ValueRecord(Keeper, "Quiet", {0.125f, 1.0f, 0.0f}), _keeper), "no error");
    EXPECT_EQ(_keeper.Parameter(0), 0.125f);
    EXPECT_EQ(_keeper.Parameter(1), 1.0f);
    EXPECT_EQ(_keeper.ProgramName(), "Quiet");
}

TEST_F(PatchFile, OfAnOlderReleaseLeavesNewerParametersUnchanged) {
    _keeper.SetParameter(2, 0.5f);
    EXPECT_EQ(Apply(ValueRecord(Keeper, "", {0.125f}), _keeper), "no error");
    EXPECT_EQ(_keeper.Parameter(0), 0.125f);
    EXPECT_EQ(_keeper.Parameter(2), 0.5f);
    EXPECT_EQ(_keeper.ProgramName(), "First"); // it has no name
}

TEST_F(PatchFile, OfValuesNeedsNoChunks) {
    const CEffectLibrary library(EffectFile("fader"));
    CEffect fader(library, {48000, 512});
    EXPECT_EQ(Apply(ValueRecord(Fader, "", {0.25f}), fader), "no error");
    EXPECT_EQ(fader.Parameter(0), 0.25f);
    EXPECT_EQ(Apply(ChunkRecord(Fader, "x"), fader), "p.fxp: Test Fader does not accept this patch");
}

TEST_F(PatchFile, OfAnotherPlugInIsRefused) {
    EXPECT_EQ(
        Apply(ValueRecord(Fader, "", {0.25f}), _keeper), "Patch \"p.fxp\" was created for another plug-in");
    EXPECT_EQ(Apply(ChunkRecord(Fader, KeeperChunk("PROG", {0, 0, 0})), _keeper),
        "Patch \"p.fxp\" was created for another plug-in");
    for (const char* text : {"<plugin_id>1</plugin_id>", "<plugin_id>x</plugin_id>", "<plugin_id>", "any"}) {
        EXPECT_EQ(Apply(text, _keeper, "p.kvp"), "Patch \"p.kvp\" was created for another plug-in") << text;
    }
    EXPECT_EQ(_keeper.Parameter(0), 1.0f);
}

TEST_F(PatchFile, OfTextIsTakenOnlyAsTheEffectTakesIt) {
    const auto text = "<plugin_id>" + std::to_string(Keeper) + "</plugin_id>";
    EXPECT_EQ(Apply(text, _keeper, "p.kvp"), "p.kvp: Test Keeper does not accept this patch");
    // Bytes after the zero aren't part of the text.
    EXPECT_EQ(Apply(std::string(1, '\0') + text, _keeper, "p.kvp"),
        "Patch \"p.kvp\" was created for another plug-in");
}

TEST_F(PatchFile, IsRefusedWhenCutOffAnywhere) {
    for (const auto& whole : {ValueRecord(Keeper, "Name", {0.25f, 0.5f, 0.75f}),
             ChunkRecord(Keeper, KeeperChunk("PROG", {0.25f, 0.5f, 0.75f}))}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const auto message = Apply(whole.substr(0, size), _keeper);
            EXPECT_TRUE(Contains(message, size == 0 ? ": empty" : "p.fxp: not a complete patch: too short"))
                << size << ": " << message;
        }
    }
    EXPECT_EQ(_keeper.Parameter(0), 1.0f);
}

TEST_F(PatchFile, IsNotReadPastItsEndWhateverSizesItClaims) {
    const auto values = ValueRecord(Keeper, "", {0.25f});
    const auto chunk = ChunkRecord(Keeper, KeeperChunk("PROG", {0.25f, 0.5f, 0.75f}));
    for (const std::uint32_t size : {0x10000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFC4u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(Contains(Apply(WithNumber(values, 24, size), _keeper), "too short")) << size;
        EXPECT_TRUE(Contains(Apply(WithNumber(chunk, 56, size), _keeper), "too short")) << size;
    }
    // A chunk of no bytes is complete, but no effect would take it.
    EXPECT_TRUE(Contains(Apply(WithNumber(chunk, 56, 0), _keeper), "does not accept this patch"));
    EXPECT_EQ(Apply(WithNumber(values, 24, 0), _keeper), "no error");
    EXPECT_EQ(_keeper.Parameter(0), 1.0f);
}

TEST_F(PatchFile, HasAMarkAndAKnownForm) {
    const auto whole = ValueRecord(Keeper, "", {0.25f});
    EXPECT_TRUE(Contains(Apply("RIFF" + whole.substr(4), _keeper), "p.fxp: not a patch: "));
    for (const char* form : {"FxBk", "FBCh", "\0\0\0\0"}) {
        const auto other = whole.substr(0, 8) + std::string(form, 4) + whole.substr(12);
        EXPECT_TRUE(Contains(Apply(other, _keeper), "p.fxp: not a patch of one program")) << form;
    }
}

TEST_F(PatchFile, HasValuesBetween0And1ForParametersThatAreThere) {
    for (const float value :
        {-0.1f, 1.1f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_TRUE(
            Contains(Apply(ValueRecord(Keeper, "", {0.5f, value}), _keeper), "value of parameter 1 "));
    }
    EXPECT_EQ(Apply(ValueRecord(Keeper, "", {0, 0, 0, 0}), _keeper),
        "p.fxp: the patch has 4 parameters, Test Keeper has 3");
    EXPECT_EQ(_keeper.Parameter(0), 1.0f);
}

TEST_F(PatchFile, IsRecognisedByItsContentWhateverItIsCalled) {
    for (const char* name : {"p.fxp", "P.FXP", "p.kvp", "p.txt", "p"}) {
        _keeper.SetParameter(0, 1);
        EXPECT_EQ(Apply(ValueRecord(Keeper, "", {0.5f}), _keeper, name), "no error") << name;
        EXPECT_EQ(_keeper.Parameter(0), 0.5f) << name;
        const auto text = "<plugin_id>" + std::to_string(Keeper) + "</plugin_id>";
        EXPECT_TRUE(Contains(Apply(text, _keeper, name), ": Test Keeper does not accept this patch")) << name;
    }
    EXPECT_TRUE(Contains(Apply("any", _keeper, "p.txt"), "p.txt: not a patch"));
    EXPECT_TRUE(Contains(Apply("any", _keeper, "p.fxp"), "p.fxp: not a patch"));
    const auto routing = "<kav_input_routing>\r\n<name>A</name><map>0,1</map>\r\n</kav_input_routing>";
    EXPECT_TRUE(Contains(Apply(routing, _keeper, "p.kvp"), "p.kvp: a routing, not a patch"));
    EXPECT_THROW(CPatchFile(_folder / "missing.fxp"), CFailure);
    std::filesystem::create_directory(_folder / "folder.kvp");
    EXPECT_THROW(CPatchFile(_folder / "folder.kvp"), CFailure);
}
