#include "tests/tools/kavhost/child.h"
#include "tests/tools/kavhost/tags/chunks.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

class Process : public testing::Test {
protected:
    std::vector<std::string> RenderTo(
        const std::string& output, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{
            "render", "-p", EffectFile("fader"), _folder / "in.wav", "-o", _folder / output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    fs::path _folder = NewFolder();
};

const std::vector<std::string> InputAlone{"in.wav"};

} // namespace

TEST_F(Process, ReportsItsResultInItsExitCode) {
    WriteWav(_folder / "in.wav", Noise(2, 1000, 0.5f));
    EXPECT_EQ(CChild(RenderTo("out.wav")).Wait().code, 0);
    EXPECT_EQ(CChild({"info", "-p", EffectFile("no_entry")}).Wait().code, 1);
    EXPECT_EQ(CChild({"info", "-p", "/no/such/file.so"}).Wait().code, 1);
    EXPECT_EQ(CChild({"--bogus"}).Wait().code, 2);
    EXPECT_EQ(CChild(RenderTo("out.wav", {"--set", "77=0"})).Wait().code, 2);
}

TEST_F(Process, IsQuietInAPipe) {
    WriteWav(_folder / "in.wav", Noise(2, 100000, 0.5f));
    const auto run = CChild(RenderTo("out.wav")).Wait();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.out.find('*'), std::string::npos) << run.out;
}

TEST_F(Process, ShowsABarOnATerminal) {
    WriteWav(_folder / "in.wav", Noise(2, 100000, 0.5f));
    const auto run = CChild(RenderTo("out.wav"), {.errorsToTerminal = true}).Wait();
    EXPECT_EQ(run.code, 0);
    EXPECT_TRUE(run.errors.starts_with("\r  0% [" + std::string(35, ' ') + "] in.wav")) << run.errors;
    static const std::regex half("\r (4[5-9]|5[0-5])% \\[#{16,19} +\\] in\\.wav");
    EXPECT_TRUE(std::regex_search(run.errors, half)) << run.errors;
    EXPECT_NE(run.errors.find("\r100% [" + std::string(35, '#') + "] in.wav"), std::string::npos);
    EXPECT_EQ(OnScreen(run.errors), "") << run.errors; // nothing is left of it
}

TEST_F(Process, LeavesNoFileWhenItIsInterrupted) {
    WriteWav(_folder / "in.wav", Noise(2, 48000 * 20, 0.5f));
    for (const auto& [signal, code] : {std::pair{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
        // Slowed down: 5 ms for each of the 1875 blocks.
        CChild child(RenderTo("out.wav", {"--set", "4:on", "--no-align", "--no-preroll"}));
        const auto start = std::chrono::steady_clock::now();
        while (FilesIn(_folder).size() < 2) {
            ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        child.Signal(signal);
        const auto run = child.Wait();
        EXPECT_EQ(run.code, code);
        EXPECT_EQ(run.errors, "kavhost: interrupted\n");
        EXPECT_EQ(FilesIn(_folder), InputAlone);
    }
}

TEST_F(Process, ShowsOneBarForAllFiles) {
    WriteWav(_folder / "in.wav", Noise(2, 100000, 0.5f));
    WriteWav(_folder / "in2.wav", Noise(2, 3000, 0.5f));
    const auto run = CChild(RenderTo("out", {_folder / "in2.wav", _folder / "none.wav", "--jobs", "2"}),
        {.errorsToTerminal = true})
                         .Wait();
    EXPECT_EQ(run.code, 1);
    for (const char* title : {"] 0 of 3 files", "] 1 of 3 files", "] 2 of 3 files", "] 3 of 3 files"})
        EXPECT_NE(run.errors.find(title), std::string::npos) << run.errors;
    EXPECT_EQ(OnScreen(run.errors), "kavhost: " + Utf8(_folder / "none.wav") + ": no such file\n");
    EXPECT_EQ(FilesIn(_folder / "out"), (std::vector<std::string>{"in.wav", "in2.wav"}));
}

TEST_F(Process, LeavesNoFileWhenItIsInterruptedInSeveralJobs) {
    WriteWav(_folder / "in.wav", Noise(2, 48000 * 20, 0.5f));
    WriteWav(_folder / "in2.wav", Noise(2, 48000 * 20, 0.5f));
    CChild child(RenderTo("out", {_folder / "in2.wav", "--set", "4:on", "--no-align", "--no-preroll",
                                     "--jobs", "2", "--plot", _folder / "out"}));
    const auto start = std::chrono::steady_clock::now();
    while (!fs::exists(_folder / "out") || FilesIn(_folder / "out").size() < 4) {
        ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    child.Signal(SIGINT);
    const auto run = child.Wait();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.errors, "kavhost: not finished: " + Utf8(_folder / "in.wav") + "\n" +
                              "kavhost: not finished: " + Utf8(_folder / "in2.wav") + "\n" +
                              "kavhost: interrupted: 0 of 2 files are finished\n");
    EXPECT_TRUE(FilesIn(_folder / "out").empty());
}

TEST_F(Process, LeavesNoFileWhenTheDiskIsFullWhereverThatHappens) {
    WriteWav(_folder / "in.wav", Noise(2, 10000, 0.5f, ESampleFormat::Int24));
    for (const char* output : {"out.wav", "out.flac", "out.aiff", "out.ogg"}) {
        ASSERT_EQ(CChild(RenderTo(output)).Wait().code, 0);
        const auto size = fs::file_size(_folder / output);
        fs::remove(_folder / output);
        // The loss of the last byte is only noticed when the file is closed, if at all. (The size of an OGG
        // file varies slightly. The limit also applies to the file that receives the error line, so it is
        // never that small.)
        for (const auto limit : {std::uintmax_t{1000}, size / 2, size - (size > 50000 ? 1 : size / 20)}) {
            const auto run = CChild(RenderTo(output), {.mostFileBytes = limit}).Wait();
            EXPECT_EQ(run.code, 1) << output << " " << limit;
            EXPECT_NE(run.errors.find(": cannot be written: File too large\n"), std::string::npos)
                << run.errors;
            EXPECT_EQ(FilesIn(_folder), InputAlone) << output << " " << limit;
        }
    }
}

TEST_F(Process, LeavesNoFileWhenTheDiskIsFullAtItsTags) {
    const std::vector<std::string> quick{"--no-align", "--no-measure"};
    const auto text = "INFO" + InfoText("INAM", std::string(60'000, 'x'));
    WriteBytes(_folder / "in.wav", WavWith({{"LIST", text}}));
    for (const char* output : {"out.wav", "out.flac", "out.aiff", "out.ogg"}) {
        ASSERT_EQ(CChild(RenderTo(output, quick)).Wait().code, 0);
        const auto size = fs::file_size(_folder / output);
        ASSERT_GT(size, 60'000u);
        fs::remove(_folder / output);
        for (const auto limit : {size - 50'000, size - 2000}) {
            const auto run = CChild(RenderTo(output, quick), {.mostFileBytes = limit}).Wait();
            EXPECT_EQ(run.code, 1) << output << " " << limit;
            EXPECT_NE(run.errors.find(std::string(output) + ": cannot be written: File too large\n"),
                std::string::npos)
                << run.errors;
            EXPECT_EQ(FilesIn(_folder), InputAlone) << output << " " << limit;
        }
    }
}

TEST_F(Process, KeepsTheOldFileWhenTheDiskIsFull) {
    const auto old = Noise(1, 10, 0.5f);
    WriteWav(_folder / "in.wav", Noise(2, 10000, 0.5f));
    WriteWav(_folder / "out.wav", old);
    EXPECT_EQ(CChild(RenderTo("out.wav"), {.mostFileBytes = 5000}).Wait().code, 1);
    EXPECT_EQ(ReadWav(_folder / "out.wav").samples, old.samples);
}

TEST_F(Process, FailsWhenItsOwnOutputCannotBeWritten) {
    const auto run = CChild({"info", "-p", EffectFile("fader")}, {.standardOutput = "/dev/full"}).Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: standard output cannot be written\n");
}

TEST_F(Process, WritesOverNothingButPlainFiles) {
    WriteWav(_folder / "in.wav", Noise(1, 100, 0.5f));
    fs::create_symlink("/dev/null", _folder / "null.wav");
    const auto run = CChild(RenderTo("null.wav")).Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("null.wav: not a plain file"), std::string::npos) << run.errors;
    EXPECT_TRUE(fs::is_symlink(_folder / "null.wav"));
}

TEST_F(Process, WritesToTheTargetOfALinkAndNeverToAnInput) {
    WriteWav(_folder / "in.wav", Noise(1, 100, 0.5f));
    WriteWav(_folder / "real.wav", Noise(1, 5, 0.5f));
    fs::create_symlink("real.wav", _folder / "link.wav");
    EXPECT_EQ(CChild(RenderTo("link.wav")).Wait().code, 0);
    EXPECT_TRUE(fs::is_symlink(_folder / "link.wav"));
    EXPECT_EQ(ReadWav(_folder / "real.wav").Frames(), 100u);

    fs::create_symlink("in.wav", _folder / "again.wav");
    fs::create_hard_link(_folder / "in.wav", _folder / "hard.wav");
    EXPECT_EQ(CChild(RenderTo("again.wav")).Wait().code, 2);
    EXPECT_EQ(CChild(RenderTo("hard.wav")).Wait().code, 2);
}

TEST_F(Process, FindsItsEffectAndTheProfileInItsOwnFolder) {
    fs::copy_file(KAVHOST_PROGRAM, _folder / "kavhost");
    fs::copy_file(EffectFile("fader"), _folder / "KAVSorrelLimiter.so");
    const CChild::SOptions beside{.program = _folder / "kavhost"};
    auto info = nlohmann::json::parse(CChild({"info", "--json"}, beside).Wait().out);
    EXPECT_EQ(info["parameters"][0]["name"], "Gain");

    std::ofstream(_folder / "any.json") << R"({"name": "Test Fader", "unique_id": 1952866660, "parameters": [
        {"index": 0, "name": "Overall Gain", "unit": "dB", "law": "linear", "minimum": -24, "maximum": 24}]})";
    info =
        nlohmann::json::parse(CChild({"info", "--json", "--set", "Overall Gain=12 dB"}, beside).Wait().out);
    EXPECT_EQ(info["parameters"][0]["name"], "Overall Gain");
    EXPECT_EQ(info["parameters"][0]["short_name"], "Gain");
    EXPECT_EQ(info["parameters"][0]["value"], 0.75);
    EXPECT_EQ(info["parameters"][0]["display"], "12.0");
}
