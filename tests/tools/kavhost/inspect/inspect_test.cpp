#include "tools/kavhost/inspect/inspect.h"

#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "tools/kavhost/setup/profile.h"
#include "utils/marked_text.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

const std::string Text =
    "<patch_format>textual</patch_format>\r\n<patch_version>1</patch_version>\r\n"
    "<app_title>Example</app_title>\r\n<plugin_id>1952866660</plugin_id>\r\n"
    "<patch_name>Loud & clear</patch_name>\r\n<multi_fx>true</multi_fx>\r\n"
    "<fx_names>Voice|*||*|Drums</fx_names>\r\n"
    "<param tag=\"32\" namew=\"Gain (1)\" >0.250000</param>\r\n"
    "<param tag=\"132\" namew=\"Gain (2)\" >1.000000</param>\r\n"
    "<param tag=\"36\" namew=\"Fall (1)\" >0.400000</param>\r\n"
    "<param tag=\"30\" namew=\"Mode\" >2.000000</param>\r\n"
    "<param tag=\"31\" namew=\"Fine\" >1.000000</param>\r\n"
    "<param tag=\"99\" namew=\"Unheard of\" >0.5</param>\r\n"
    "<host_bypass>0</host_bypass>\r\n"
    "<kav_input_routing>\r\n\t<fx>1</fx>\r\n\t<name>Front</name>\r\n\t<type>stereo</type>\r\n"
    "\t<map>0,1|*|4,-1|*|-1,-1</map>\r\n\t<ch_names>LR|*|C</ch_names>\r\n</kav_input_routing>\r\n"
    "<gui_width>754</gui_width>\r\n<simd>1</simd>\r\n"
    "<macro_group_names>Push|*|Pull</macro_group_names>\r\n"
    "<macro group=\"0\">32;0.750||555;-1</macro>\r\n<macro group=\"1\"></macro>\r\n";

const std::string Profile = R"json({"name": "Test Fader", "unique_id": 1952866660, "parameters": [
    {"index": 0, "name": "Gain (1)", "unit": "dB", "law": "linear", "minimum": -20, "maximum": 0},
    {"index": 1, "name": "Gain (2)", "unit": "dB", "law": "linear", "minimum": -20, "maximum": 0},
    {"index": 2, "tag": 36, "name": "Fall (1)", "unit": "ms", "law": "exponential", "minimum": 0.01, "maximum": 1000},
    {"index": 3, "name": "Mode", "law": "choice", "choices": ["x1", "x2", "x4", "x8"]},
    {"index": 4, "name": "Fine", "law": "toggle"},
    {"index": 6, "tag": 33, "name": "Level (1)", "unit": "dB", "law": "linear", "minimum": -20, "maximum": 0},
    {"index": 7, "tag": 133, "name": "Level (2)", "unit": "dB", "law": "linear", "minimum": -20, "maximum": 0}
    ]})json";

class Inspect : public testing::Test {
protected:
    void SetUp() override { WriteBytes(_folder / "profile.json", Profile); }

    SRun Run(const std::string& bytes, const std::string& name, std::vector<std::string> more = {}) {
        WriteBytes(_folder / PathOf(name), bytes);
        more.insert(more.begin(),
            {"inspect", Utf8(_folder / PathOf(name)), "--profile", Utf8(_folder / "profile.json")});
        return RunHost(more);
    }
    nlohmann::json Json(const std::string& bytes, const std::string& name) {
        const auto run = Run(bytes, name, {"--json"});
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.code == 0 ? nlohmann::json::parse(run.out) : nlohmann::json();
    }

    std::filesystem::path _folder = NewFolder();
};

std::string Little(std::uint32_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    return bytes;
}

/// A binary patch named "Hé" with one parameter, 0.25.
std::string Binary() {
    std::string bytes = Little(1) + std::string("H\0\xE9\0", 4);
    bytes.resize(140);
    return bytes + Little(33) + Little(0x3E800000);
}

} // namespace

TEST_F(Inspect, DescribesATextInWords) {
    const auto run = Run(Text + std::string(1, '\0') + "<simd>0</simd>", "p.kvp", {"--all"});
    ASSERT_EQ(run.code, 0) << run.errors;
    // The exponential law: 0.01 (1000 / 0.01)^0.4 = 0.01 x 100 = 1.
    EXPECT_EQ(run.out, "patch       Loud & clear\n"
                       "form        text\n"
                       "program     Example\n"
                       "unique id   1952866660\n"
                       "parameters of all groups\n"
                       "  Mode        x4\n"
                       "  Fine        on\n"
                       "  Unheard of  0.5\n"
                       "parameters of group 1 \"Voice\"\n"
                       "  Gain (1)    -15.00 dB\n"
                       "  Fall (1)    1.00 ms\n"
                       "parameters of group 2\n"
                       "  Gain (2)    0.00 dB\n"
                       "group 3 \"Drums\"\n"
                       "macro 1 \"Push\"\n"
                       "  Gain (1), sensitivity 0.75\n"
                       "  tag 555, sensitivity -1\n"
                       "macro 2 \"Pull\"\n"
                       "routing of group 2 \"Front\", stereo\n"
                       "  \"LR\"  channel 1 and 2\n"
                       "  \"C\"  channel 5\n"
                       "  \"\"  no channel\n"
                       "settings\n"
                       "  bypassed by the host               off\n"
                       "  editor's width in pixels           754\n"
                       "  vector code                        on\n");
}

TEST_F(Inspect, ShowsWhatDiffersFromANewInstanceUnlessAllIsWanted) {
    const std::string patch =
        "<patch_format>textual</patch_format>\r\n<plugin_id>1952866660</plugin_id>\r\n"
        "<patch_name>P</patch_name>\r\n<multi_fx>true</multi_fx>\r\n<fx_names>1|*|2|*|Drums|*|4</"
        "fx_names>\r\n"
        "<param tag=\"36\" namew=\"Fall (1)\" >0.400000</param>\r\n"
        "<param tag=\"33\" namew=\"Level (1)\" >0.250000</param>\r\n"
        "<param tag=\"133\" namew=\"Level (2)\" >0.333333</param>\r\n"
        "<param tag=\"99\" namew=\"Unheard of\" >0.5</param>\r\n"
        "<host_bypass>0</host_bypass>\r\n<simd>1</simd>\r\n<agc_rms>2000.000</agc_rms>\r\n"
        "<kav_input_routing>\r\n<fx>0</fx>\r\n<name>Not found</name>\r\n<map>0,-1|*|1,-1</map>\r\n"
        "<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>\r\n"
        "<kav_input_routing>\r\n<fx>1</fx>\r\n<name>Not found</name>\r\n<map>0,-1|*|2,-1</map>\r\n"
        "<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>\r\n"
        "<macro_group_names>Macro 1|*|Push|*|Macro 3</macro_group_names>\r\n"
        "<macro group=\"0\"></macro>\r\n<macro group=\"1\"></macro>\r\n<macro group=\"2\">33;1</macro>\r\n";
    // As in a new instance: Fall (1), and within what six decimals can hold Level (2).
    auto profile = nlohmann::json::parse(Profile);
    for (auto& parameter : profile["parameters"]) {
        if (parameter["name"] == "Fall (1)") parameter["default"] = 0.4;
        if (parameter["name"] == "Level (1)") parameter["default"] = 1;
        if (parameter["name"] == "Level (2)") parameter["default"] = 1.0 / 3;
    }
    profile["state"] =
        "<patch_format>textual</patch_format>\r\n<fx_names>1|*|2|*|3|*|4</fx_names>\r\n"
        "<host_bypass>0</host_bypass>\r\n<simd>0</simd>\r\n<agc_rms>2000.000</agc_rms>\r\n"
        "<kav_input_routing>\r\n<fx>0</fx>\r\n<name>Not found</name>\r\n<map>0,-1|*|1,-1</map>\r\n"
        "<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>\r\n"
        "<kav_input_routing>\r\n<fx>1</fx>\r\n<name>Not found</name>\r\n<map>0,-1|*|1,-1</map>\r\n"
        "<ch_names>L|*|R</ch_names>\r\n</kav_input_routing>\r\n"
        "<macro_group_names>Macro 1|*|Macro 2|*|Macro 3</macro_group_names>\r\n";
    WriteBytes(_folder / "profile.json", profile.dump());
    EXPECT_EQ(Run(patch, "p.kvp").out, "patch       P\n"
                                       "form        text\n"
                                       "unique id   1952866660\n"
                                       "parameters of all groups\n"
                                       "  Unheard of  0.5\n"
                                       "parameters of group 1 \"1\"\n"
                                       "  Level (1)   -15.00 dB\n"
                                       "group 3 \"Drums\"\n"
                                       "macro 2 \"Push\"\n"
                                       "macro 3 \"Macro 3\"\n"
                                       "  Level (1), sensitivity 1\n"
                                       "routing of group 2 \"Not found\"\n"
                                       "  \"L\"  channel 1\n"
                                       "  \"R\"  channel 3\n"
                                       "settings\n"
                                       "  vector code                        on\n"
                                       "6 more as in a new instance; --all shows them\n");
    const auto all = Run(patch, "p.kvp", {"--all"}).out;
    for (const char* line : {"  Fall (1)    1.00 ms\n", "  Level (2)   -13.33 dB\n", "macro 1 \"Macro 1\"\n",
             "routing of group 1 \"Not found\"\n", "  bypassed by the host               off\n",
             "  gain compensation RMS time         2000.000\n"})
        EXPECT_NE(all.find(line), std::string::npos) << line << all;
    EXPECT_EQ(all.find("--all"), std::string::npos);
    const auto json = Json(patch, "p.kvp")["parameters"];
    ASSERT_EQ(json.size(), 4u);
    EXPECT_EQ(json[0]["differs"], false);
    EXPECT_EQ(json[1]["differs"], true);
    EXPECT_EQ(json[2]["differs"], false);
    EXPECT_EQ(json[3]["differs"], nullptr);
}

TEST_F(Inspect, FindsNothingToShowInTheStateOfANewInstance) {
    const auto state = Utf8(_folder / "new.state");
    ASSERT_EQ(RunHost({"info", "-p", Utf8(PluginFile()), "--save-state", state}).code, 0);
    const auto run = RunHost({"inspect", state, "--profile", Utf8(PluginProfile())});
    // 109 parameters, 5 macros, 4 routings, 10 settings.
    EXPECT_TRUE(
        run.out.ends_with("unique id   1936683628\n128 more as in a new instance; --all shows them\n"))
        << run.out;
}

TEST_F(Inspect, ReadsRoutings) {
    const std::string routing =
        "<kav_input_routing>\n\t<kvt_version>1.0</kvt_version>\n\t<name>Front</name>\n"
        "\t<type>stereo</type>\n\t<map>0,1|*|4,-1</map>\n"
        "\t<ch_names>LR|*|C</ch_names>\n</kav_input_routing>\n";
    for (const char* name : {"front.kvt", "front.kvp", "front.fxp", "front"}) {
        EXPECT_EQ(Run(routing, name).out,
            "routing \"Front\", stereo\n  \"LR\"  channel 1 and 2\n  \"C\"  channel 5\n")
            << name;
    }
    const auto json = Json(routing, "front.kvt");
    EXPECT_EQ(json["form"], "routing");
    EXPECT_EQ(json["patch"], "Front");
    EXPECT_EQ(json["routings"][0]["entries"][1]["label"], "C");
    EXPECT_EQ(json["routings"][0]["group"], nullptr);
    EXPECT_EQ(Run(routing.substr(0, routing.size() - 5), "cut.kvt").code, 1);
}

TEST_F(Inspect, DescribesItForProgramsToo) {
    const auto patch = Json(Text, "any name");
    EXPECT_EQ(patch["patch"], "Loud & clear");
    EXPECT_EQ(patch["unique_id"], 1952866660);
    EXPECT_EQ(patch["relative"], false);
    EXPECT_EQ(patch["parameters"].size(), 6u);
    const auto& gain = patch["parameters"][0];
    EXPECT_EQ(gain["tag"], 32);
    EXPECT_EQ(gain["index"], nullptr);
    EXPECT_EQ(gain["name"], "Gain (1)");
    EXPECT_EQ(gain["group"], 1);
    EXPECT_EQ(gain["value"], 0.25);
    EXPECT_EQ(gain["quantity"], "-15.00 dB");
    EXPECT_EQ(patch["groups"], nlohmann::json::array({"Voice", "", "Drums"}));
    EXPECT_EQ(patch["macros"][0]["name"], "Push");
    EXPECT_EQ(patch["macros"][0]["targets"][0]["name"], "Gain (1)");
    EXPECT_EQ(patch["macros"][0]["targets"][1]["name"], nullptr);
    EXPECT_EQ(patch["routings"][0]["group"], 2);
    EXPECT_EQ(patch["routings"][0]["entries"][1]["first"], 4);
    EXPECT_EQ(patch["settings"]["gui_width"], "754");
}

TEST_F(Inspect, ReadsEveryFormOfAPatch) {
    const auto binary = Json(Binary(), "old");
    EXPECT_EQ(binary["form"], "binary");
    EXPECT_EQ(binary["patch"], "H\xC3\xA9");
    EXPECT_EQ(binary["relative"], true);
    EXPECT_EQ(binary["parameters"][0]["tag"], 33);
    EXPECT_EQ(binary["parameters"][0]["value"], 0.25);
    EXPECT_EQ(Json(ChunkRecord(1952866660, Text), "p.fxp")["patch"], "Loud & clear");
    EXPECT_EQ(Json(ChunkRecord(1952866660, Text), "p.kvp")["patch"], "Loud & clear");
    EXPECT_EQ(Json(Text, "p.fxp")["patch"], "Loud & clear");
    EXPECT_EQ(Json(ChunkRecord(1952866660, Binary()), "p.fxp")["unique_id"], 1952866660);
    const auto values = Json(ValueRecord(1952866660, "List", {0.25f, 1, 0.4f, 1, 0, 0.5f}), "p.fxp");
    EXPECT_EQ(values["patch"], "List");
    EXPECT_EQ(values["parameters"][0]["quantity"], "-15.00 dB");
    EXPECT_EQ(values["parameters"][3]["quantity"], "x8"); // a host's value of a choice is 0 to 1
    EXPECT_EQ(values["parameters"][5]["name"], "parameter 5");
    EXPECT_EQ(values["parameters"][5]["quantity"], nullptr);
}

TEST_F(Inspect, NamesForTheCurrentGroupWhatABinaryPatchOnlyNumbers) {
    const auto run = Run(Binary() + Little(36) + Little(0x3ECCCCCD) + Little(40) + Little(0x3F000000), "old");
    ASSERT_EQ(run.code, 0) << run.errors;
    // The linear law: -20 + 0.25 x 20. The exponential one: 0.01 (1000 / 0.01)^0.4.
    EXPECT_EQ(run.out, "patch       H\xC3\xA9\n"
                       "form        binary\n"
                       "parameters of the current group\n"
                       "  Level   -15.00 dB\n"
                       "  Fall    1.00 ms\n"
                       "  tag 40  0.5\n");
    const auto fall = Json(Binary() + Little(36) + Little(0), "old")["parameters"][1];
    EXPECT_EQ(fall["name"], "Fall");
    EXPECT_EQ(fall["group"], nullptr);
}

TEST_F(Inspect, NamesWhatAMacroMovesThoughThePatchDoesNotSetIt) {
    const auto run = Run(Text + "<macro group=\"2\">36;0.5||133;0.25</macro>\r\n", "p.kvp");
    EXPECT_NE(run.out.find("  Level (2), sensitivity 0.25\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("  Fall (1), sensitivity 0.5\n"), std::string::npos) << run.out;
}

TEST_F(Inspect, FailsForWhatIsNoPatch) {
    for (const auto& bytes : {std::string("x"), std::string("<patch_format>textual</patch_format>"),
             " " + Text, Little(2) + std::string(200, 'x'), std::string("\x01\0\0", 3)}) {
        const auto run = Run(bytes, "p.kvp");
        EXPECT_EQ(run.code, 1);
        EXPECT_NE(run.errors.find("p.kvp: not a patch, a state or a routing\n"), std::string::npos)
            << run.errors;
        EXPECT_EQ(run.out, "");
    }
    EXPECT_EQ(Run("", "p.kvp").code, 1);
    EXPECT_EQ(Run("CcnK", "p.fxp").code, 1);
    EXPECT_EQ(Run(ChunkRecord(1952866660, ""), "p.fxp").code, 1);
    EXPECT_EQ(RunHost({"inspect", "/no/such/file"}).code, 1);
    EXPECT_EQ(RunHost({"inspect"}).code, 2);
    EXPECT_EQ(RunHost({"inspect", "a", "b"}).code, 2);
}

TEST_F(Inspect, ReadsWhatThereIsOfATextThatIsCutOff) {
    const auto whole = ParsePatch(Text);
    for (std::size_t size = 37; size < Text.size(); ++size) {
        const auto content = ParsePatch(Text.substr(0, size));
        ASSERT_LE(content.parameters.size(), whole.parameters.size());
        for (std::size_t i = 0; i < content.parameters.size(); ++i)
            EXPECT_EQ(content.parameters[i].name, whole.parameters[i].name) << size;
        EXPECT_LE(content.settings.size(), whole.settings.size());
        EXPECT_EQ(content.routings.size(), size > Text.find("</kav_input_routing>") + 19 ? 1u : 0u) << size;
    }
    for (std::size_t size = 4; size < 148; ++size)
        EXPECT_TRUE(ParsePatch(Binary().substr(0, size)).parameters.empty()) << size;
}

TEST_F(Inspect, GivesADefinedResultForAnyBytes) {
    CRandom random(7);
    for (int round = 0; round < 300; ++round) {
        auto bytes = round % 2 == 0 ? Text : Binary();
        for (int change = 0; change < 20; ++change) {
            const auto place = 40 + static_cast<std::size_t>(
                                        (random.Bipolar() + 1) / 2 * static_cast<double>(bytes.size() - 41));
            bytes[place] = static_cast<char>(static_cast<int>(random.Bipolar() * 127));
        }
        const auto content = ParsePatch(bytes);
        std::ostringstream words, json;
        const auto profile = ParseProfile(Profile);
        PrintPatch(words, content, &profile, round % 3 == 0);
        PrintPatchAsJson(json, content, nullptr);
        EXPECT_TRUE(nlohmann::json::accept(json.str()));
        for (const char letter : words.str()) {
            EXPECT_TRUE(letter == '\n' || letter < 0 || letter >= ' ') << round;
        }
    }
}

TEST_F(Inspect, TakesTimeThatGrowsWithTheText) {
    const auto searched = [](int lines) {
        std::string bytes = Text;
        for (int i = 0; i < lines; ++i)
            bytes += "<param tag=\"1\" >1</param>\r\n<kav_input_routing></kav_input_routing>\r\n";
        const auto before = Utils::SearchedBytes();
        ParsePatch(bytes);
        return static_cast<double>(Utils::SearchedBytes() - before);
    };
    EXPECT_LT(searched(8000), 8.5 * searched(1000));
}

TEST(QuantityAt, IsTheWayBackFromTheHostsValue) {
    const auto profile = ParseProfile(Profile);
    for (const auto& parameter : profile.parameters) {
        for (const double value : {0.0, 1.0 / 3, 1.0}) {
            const auto x = parameter.law == ELaw::Toggle ? std::round(value) : value;
            // Two decimals of the quantity: 0.005 of 0.1 ms and more, by the steepest of these laws.
            EXPECT_NEAR(static_cast<double>(HostValue(parameter, QuantityAt(parameter, x))), x, 1e-3)
                << parameter.name;
        }
        EXPECT_EQ(QuantityAt(parameter, 7.0), QuantityAt(parameter, 1.0));
        EXPECT_EQ(QuantityAt(parameter, -7.0), QuantityAt(parameter, 0.0));
    }
}
