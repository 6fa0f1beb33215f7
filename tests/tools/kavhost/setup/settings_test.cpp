#include "tools/kavhost/setup/settings.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"
#include "tools/kavhost/setup/profile.h"

#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

/// The fader: Gain -24 to 24 dB, Mode with three texts, Time falling from 1000 to 0.01 ms, Switch of 1, 2, 4,
/// 8, Slow.
class Settings : public testing::Test {
protected:
    SSetting Set(const std::string& text, const SProfile* profile = nullptr) {
        return ResolveSettings(std::vector{text}, _effect, profile).at(0);
    }
    std::string Error(const std::string& text, const SProfile* profile = nullptr) {
        try {
            Set(text, profile);
        } catch (const CUsageError& error) {
            return error.what();
        }
        return "no error";
    }

    CEffectLibrary _library{EffectFile("fader")};
    CEffect _effect{_library, {48000, 512}};
    SProfile _profile = ParseProfile(R"({"name": "Test Fader", "unique_id": 1, "parameters": [
        {"index": 0, "name": "Gain: all", "unit": "dB", "law": "linear", "minimum": -24, "maximum": 24},
        {"index": 2, "name": "Fall Time", "unit": "ms", "law": "exponential", "minimum": 0.01, "maximum": 1000},
        {"index": 99, "name": "Beyond", "unit": "", "law": "toggle"}]})");
};

} // namespace

TEST_F(Settings, ByIndexTakeTheHostsValue) {
    const auto setting = Set("2=0.75");
    EXPECT_EQ(setting.index, 2);
    EXPECT_EQ(setting.value, 0.75f);
    EXPECT_EQ(_effect.Parameter(2), 0.75f);
}

TEST_F(Settings, ByNameTakeTheProfilesQuantity) {
    EXPECT_EQ(Set("gain: ALL = -12 dB", &_profile).value, 0.25f);
    EXPECT_NEAR(Set("Fall Time=1 ms", &_profile).value, 0.4, 1e-7);
    EXPECT_EQ(Set("2=0.5", &_profile).value, 0.5f); // an index also works with a profile
}

TEST_F(Settings, ByDisplayFindTheMiddleOfWhatShowsTheNumber) {
    for (const char* text : {"0:-6", "0:-6.0 dB", " 0 : -6.0"}) {
        Set(text);
        EXPECT_EQ(_effect.ParameterDisplay(0), "-6.0") << text;
        EXPECT_NEAR(_effect.Parameter(0), 18.0 / 48, 1e-5) << text;
    }
}

TEST_F(Settings, ByDisplayReachBothEndsExactly) {
    EXPECT_EQ(Set("0:-24").value, 0.0f);
    EXPECT_EQ(Set("0:24").value, 1.0f);
    EXPECT_EQ(Set("2:1000").value, 0.0f);
    EXPECT_EQ(Set("2:0.01").value, 1.0f);
}

TEST_F(Settings, ByDisplayFollowAScaleThatFalls) {
    Set("2:100 ms");
    EXPECT_EQ(_effect.ParameterDisplay(2), "100.00");
}

TEST_F(Settings, ByDisplayTakeTheNearerOfTwoRoundedNumbers) {
    Set("0:-5.97");
    EXPECT_EQ(_effect.ParameterDisplay(0), "-6.0");
}

TEST_F(Settings, ByDisplayFindWords) {
    EXPECT_EQ(Set("1:soft").value, 0.0f);
    Set("1:Medium");
    EXPECT_EQ(_effect.ParameterDisplay(1), "Medium");
    EXPECT_NEAR(_effect.Parameter(1), 0.5, 0.01);
    EXPECT_EQ(Set("1:HARD").value, 1.0f);
    EXPECT_EQ(Set("4:on").value, 1.0f);
}

TEST_F(Settings, ByDisplayFindStepsOfNumbers) {
    Set("3:4");
    EXPECT_EQ(_effect.ParameterDisplay(3), "4");
    EXPECT_EQ(Error("3:3"), "parameter 3: its display never shows \"3\", but 2 and then 4");
}

TEST_F(Settings, ByDisplayRefuseWhatIsNeverShown) {
    EXPECT_EQ(Error("0:30"), "parameter 0: its display never shows \"30\", only -24 to 24 dB");
    EXPECT_EQ(Error("0:-30 dB"), "parameter 0: its display never shows \"-30 dB\", only -24 to 24 dB");
    EXPECT_EQ(Error("1:Loud"),
        "parameter 1: its display never shows \"Loud\", only \"Soft\", \"Medium\", \"Hard\"");
}

TEST_F(Settings, LeaveTheEffectAsTheySay) {
    const auto settings =
        ResolveSettings(std::vector<std::string>{"0:-6", "1:Hard", "0=0.25"}, _effect, nullptr);
    EXPECT_EQ(settings.size(), 3u);
    EXPECT_EQ(_effect.Parameter(0), 0.25f); // the last one counts
    EXPECT_EQ(_effect.Parameter(1), 1.0f);
    CEffect fresh(_library, {48000, 512});
    ApplySettings(settings, fresh);
    EXPECT_EQ(fresh.Parameter(0), 0.25f);
    EXPECT_EQ(fresh.Parameter(1), 1.0f);
}

TEST_F(Settings, NameTheNearestParameter) {
    EXPECT_EQ(Error("Fal Time=3", &_profile),
        "unknown parameter \"Fal Time\"; the nearest is \"Fall Time\", index 2");
    EXPECT_EQ(Error("Gian=3"),
        "unknown parameter \"Gian\"; the nearest is \"Gain\", index 0; without a profile only "
        "INDEX=VALUE and INDEX:TEXT are accepted");
}

TEST_F(Settings, RefuseIndicesThatTheEffectDoesNotHave) {
    EXPECT_EQ(Error("5=0"), "unknown parameter 5: the effect has 5, 0 to 4");
    EXPECT_EQ(Error("-1=0"), "unknown parameter -1: the effect has 5, 0 to 4");
    EXPECT_EQ(Error("99:1"), "unknown parameter 99: the effect has 5, 0 to 4");
    EXPECT_EQ(Error("Beyond=on", &_profile), "unknown parameter 99: the effect has 5, 0 to 4");
}

TEST_F(Settings, RefuseHostValuesOutsideTheirRange) {
    for (const char* text : {"0=1.01", "0=-0.1", "0=", "0=x", "0=0,5", "0=0.5 dB", "0=nan", "0=inf"}) {
        EXPECT_NE(Error(text).find("is not accepted, only 0 to 1"), std::string::npos) << text;
    }
}

TEST_F(Settings, RefuseTextsThatAreNoSetting) {
    EXPECT_EQ(Error("loud"), "setting \"loud\" is not of the form NAME=QUANTITY, INDEX=VALUE or INDEX:TEXT");
    EXPECT_EQ(Error(""), "setting \"\" is not of the form NAME=QUANTITY, INDEX=VALUE or INDEX:TEXT");
}
