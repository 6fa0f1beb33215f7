#include "tools/kavhost/setup/profile.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr const char* Limiter = R"json({
    "name": "Example", "unique_id": 1936683628, "maker": "unknown members do no harm",
    "parameters": [
        {"index": 4, "name": "Threshold (1)", "unit": "dB", "law": "linear", "minimum": -30, "maximum": 0},
        {"index": 16, "name": "Release (1)", "unit": "ms", "law": "exponential", "minimum": 0.01, "maximum": 1000},
        {"index": 12, "name": "Limiter (1)", "unit": "", "law": "toggle"},
        {"index": 100, "name": "Oversampling", "law": "choice", "choices": ["OS x1", "OS x2", "OS x4", "OS x8"]}
    ]})json";

const SParameterProfile& Parameter(const char* name) {
    static const auto profile = ParseProfile(Limiter);
    return *profile.Find(std::string_view(name));
}

std::string ParseError(const std::string& json) {
    try {
        ParseProfile(json);
    } catch (const CFailure& failure) {
        return failure.what();
    }
    return "no error";
}

std::string QuantityError(const char* name, const char* quantity) {
    try {
        HostValue(Parameter(name), quantity);
    } catch (const CUsageError& error) {
        return error.what();
    }
    return "no error";
}

std::string With(const std::string& parameter) {
    return R"({"name": "x", "unique_id": 1, "parameters": [)" + parameter + "]}";
}

void Write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

} // namespace

TEST(Profile, FindsParametersByIndexAndByNameWhateverTheCase) {
    const auto profile = ParseProfile(Limiter);
    EXPECT_EQ(profile.uniqueId, 1936683628);
    EXPECT_EQ(profile.Find(16)->name, "Release (1)");
    EXPECT_EQ(profile.Find(std::string_view("release (1)"))->index, 16);
    EXPECT_EQ(profile.Find(17), nullptr);
    EXPECT_EQ(profile.Find(std::string_view("release")), nullptr);
}

TEST(HostValue, OfALinearLawIsTheShareOfTheRange) {
    EXPECT_EQ(HostValue(Parameter("Threshold (1)"), "-30"), 0.0f);
    EXPECT_EQ(HostValue(Parameter("Threshold (1)"), "-6 dB"), static_cast<float>(24.0 / 30));
    EXPECT_EQ(HostValue(Parameter("Threshold (1)"), "0DB"), 1.0f);
}

TEST(HostValue, OfAnExponentialLawIsTheShareOfTheRangesLogarithm) {
    EXPECT_EQ(HostValue(Parameter("Release (1)"), "0.01"), 0.0f);
    EXPECT_NEAR(HostValue(Parameter("Release (1)"), "1 ms"), std::log10(1 / 0.01) / 5, 1e-7);
    EXPECT_NEAR(HostValue(Parameter("Release (1)"), "100 ms"), std::log10(100 / 0.01) / 5, 1e-7);
    EXPECT_EQ(HostValue(Parameter("Release (1)"), "1000"), 1.0f);
}

TEST(HostValue, OfAToggleIsAnEndOfTheRange) {
    for (const char* on : {"on", "On", "1", "TRUE", "yes"})
        EXPECT_EQ(HostValue(Parameter("Limiter (1)"), on), 1.0f);
    for (const char* off : {"off", "0", "false", "no"})
        EXPECT_EQ(HostValue(Parameter("Limiter (1)"), off), 0.0f);
}

TEST(HostValue, OfAChoiceIsItsPlace) {
    EXPECT_EQ(HostValue(Parameter("Oversampling"), "os x4"), static_cast<float>(2.0 / 3));
    EXPECT_EQ(HostValue(Parameter("Oversampling"), "x8"), 1.0f);
    EXPECT_EQ(HostValue(Parameter("Oversampling"), "1"), static_cast<float>(1.0 / 3));
}

TEST(HostValue, RefusesWhatHasNoPlaceAndListsWhatHas) {
    EXPECT_EQ(
        QuantityError("Threshold (1)", "-31"), "Threshold (1): \"-31\" is not accepted, only -30 to 0 dB");
    EXPECT_EQ(QuantityError("Threshold (1)", "3"), "Threshold (1): \"3\" is not accepted, only -30 to 0 dB");
    EXPECT_EQ(
        QuantityError("Threshold (1)", "-6,5"), "Threshold (1): \"-6,5\" is not accepted, only -30 to 0 dB");
    EXPECT_EQ(
        QuantityError("Release (1)", "1 s"), "Release (1): \"1 s\" is not accepted, only 0.01 to 1000 ms");
    EXPECT_EQ(
        QuantityError("Release (1)", "fast"), "Release (1): \"fast\" is not accepted, only 0.01 to 1000 ms");
    EXPECT_EQ(QuantityError("Limiter (1)", "2"), "Limiter (1): \"2\" is not accepted, only on or off");
    EXPECT_EQ(QuantityError("Oversampling", "x16"),
        "Oversampling: \"x16\" is not accepted, only one of \"OS x1\", \"OS x2\", \"OS x4\", \"OS x8\"");
    EXPECT_NE(QuantityError("Oversampling", "4"), "no error");
    EXPECT_NE(QuantityError("Oversampling", "-1"), "no error");
}

TEST(ParseProfile, ReportsWhereAFaultIs) {
    EXPECT_EQ(ParseError("{"), "not an effect profile: not a JSON object");
    EXPECT_EQ(ParseError("[]"), "not an effect profile: not a JSON object");
    EXPECT_EQ(ParseError(R"({"name": "x"})"), "not an effect profile: \"unique_id\" is missing");
    EXPECT_EQ(ParseError(R"({"name": "x", "unique_id": 1.5, "parameters": []})"),
        "not an effect profile: \"unique_id\" is not a 32-bit number");
    EXPECT_EQ(ParseError(R"({"name": "x", "unique_id": 1, "parameters": 5})"),
        "not an effect profile: \"parameters\" has the wrong type");
    EXPECT_EQ(ParseError(With("5")), "not an effect profile: parameter 1: not an object");
    EXPECT_EQ(ParseError(With(R"({"index": -1, "name": "a", "law": "toggle"})")),
        "not an effect profile: parameter 1: the index is negative");
    EXPECT_EQ(ParseError(With(R"({"index": 0, "name": "a", "law": "cubic"})")),
        "not an effect profile: parameter 1: the law \"cubic\" is unknown");
    EXPECT_EQ(ParseError(With(R"({"index": 0, "name": "a", "law": "linear", "minimum": 0})")),
        "not an effect profile: parameter 1: \"maximum\" is missing");
    EXPECT_EQ(ParseError(With(R"({"index": 0, "name": "a", "law": "linear", "minimum": 1, "maximum": 1})")),
        "not an effect profile: parameter 1: the range is empty");
    EXPECT_EQ(
        ParseError(With(R"({"index": 0, "name": "a", "law": "exponential", "minimum": 0, "maximum": 1})")),
        "not an effect profile: parameter 1: an exponential range must be above 0");
    EXPECT_EQ(ParseError(With(R"({"index": 0, "name": "a", "law": "choice", "choices": ["one"]})")),
        "not an effect profile: parameter 1: fewer than two choices");
}

TEST(ParseProfile, TakesUniqueIdsOfEitherSign) {
    EXPECT_EQ(ParseProfile(R"({"name": "x", "unique_id": 4294967295, "parameters": []})").uniqueId, -1);
    EXPECT_EQ(ParseProfile(R"({"name": "x", "unique_id": -1, "parameters": []})").uniqueId, -1);
}

TEST(FindProfile, TakesTheFileWithTheEffectsNumberAndPassesOthersOver) {
    const auto folder = NewFolder();
    Write(folder / "a.json", "[{\"unique_id\": 1936683628}]");
    Write(folder / "b.json", "{ not JSON at all");
    Write(folder / "c.json", R"({"unique_id": 5})");
    Write(folder / "d.txt", Limiter);
    EXPECT_FALSE(FindProfile(folder, 1936683628));
    Write(folder / "e.json", Limiter);
    EXPECT_EQ(FindProfile(folder, 1936683628)->name, "Example");
    EXPECT_FALSE(FindProfile(folder / "missing", 1936683628));
}

TEST(FindProfile, DoesNotHideAFaultOfTheRightProfile) {
    const auto folder = NewFolder();
    Write(folder / "a.json", R"({"unique_id": 5})");
    EXPECT_THROW(FindProfile(folder, 5), CFailure);
}

TEST(ReadProfile, FailsForAMissingFile) {
    EXPECT_THROW(ReadProfile(NewFolder() / "missing.json"), CFailure);
}
