#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/console/options.h"

#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

TEST(CommandLine, HasHelpAndVersionAsCommands) {
    EXPECT_EQ(RunHost({"help"}).out, RunHost({"--help"}).out);
    EXPECT_EQ(RunHost({"version"}).out, RunHost({"--version"}).out);
    EXPECT_EQ(RunHost({"help", "render"}).out, RunHost({"render", "--help"}).out);
    EXPECT_EQ(RunHost({"help", "content", "list"}).out, RunHost({"content", "list", "--help"}).out);
    for (const auto& arguments : {std::vector<std::string>{"help"}, {"version"}, {"help", "render"}}) {
        EXPECT_EQ(RunHost(arguments).code, 0);
        EXPECT_NE(RunHost(arguments).out, "");
    }
}

TEST(CommandLine, NamesACommandThatIsUnknown) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> expected{
        {{"rendr", "a.wav"}, "unknown command \"rendr\"; the nearest is \"render\"; see kavhost --help"},
        {{"dance"}, "unknown command \"dance\"; see kavhost --help"},
        {{"song.wav"}, "unknown command \"song.wav\"; see kavhost --help"},
        {{"content", "instal"}, "unknown command \"instal\"; the nearest is \"install\"; see kavhost --help"},
        {{"help", "inspct"}, "unknown command \"inspct\"; the nearest is \"inspect\"; see kavhost --help"},
        {{}, "no command; see kavhost --help"}};
    for (const auto& [arguments, message] : expected) {
        const auto run = RunHost(arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.errors, "kavhost: " + message + "\n");
        EXPECT_EQ(run.out, "");
    }
}

TEST(CommandLine, TakesAMinusSignOfEitherKindWhereANumberIsExpected) {
    const std::string minus = "\xE2\x88\x92";
    EXPECT_EQ(ReadOptions({"bench", "--gain", minus + "6.5"}).bench.gainDb, -6.5);
    EXPECT_EQ(ReadOptions({"bench", "--gain=" + minus + "6.5"}).bench.gainDb, -6.5);
    EXPECT_EQ(ReadOptions({"bench", "--gain", "-6.5"}).bench.gainDb, -6.5);
    // The name of a file may begin with it.
    const auto file = minus + "6.wav";
    const auto options = ReadOptions({"render", file, "-o", file, "--patch", file});
    EXPECT_EQ(Utf8(options.inputs.at(0)), file);
    EXPECT_EQ(Utf8(options.output), file);
    EXPECT_EQ(Utf8(options.state.patch), file);
}

TEST(CommandLine, TakesAMinusSignOfEitherKindInSettings) {
    for (const std::string minus : {"-", "\xE2\x88\x92"}) {
        for (const auto& setting : {"Threshold (1)=" + minus + "12 dB", "4:" + minus + "12.0"}) {
            const auto run = RunHost(
                {"info", "-p", Utf8(PluginFile()), "--profile", Utf8(PluginProfile()), "--set", setting});
            EXPECT_EQ(run.code, 0) << run.errors;
            EXPECT_NE(run.out.find("Threshold (1)         0.60      -12.0 dB "), std::string::npos)
                << run.out;
        }
    }
}
