#include "tests/tools/kavhost/child.h"
#include "tools/kavhost/base/text.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

/// A pipe in the file system whose one end the test keeps open, both if need be.
class CFifo final {
public:
    CFifo(const fs::path& file, int flags) {
        if (mkfifo(file.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
        _end = open(file.c_str(), flags | O_NONBLOCK | O_CLOEXEC);
    }
    ~CFifo() { Close(); }
    CFifo(const CFifo&) = delete;
    CFifo& operator=(const CFifo&) = delete;

    /// Puts bytes in until no more fit.
    void Fill() const {
        fcntl(_end, F_SETPIPE_SZ, 4096);
        const std::string bytes(4096, 'x');
        while (write(_end, bytes.data(), bytes.size()) > 0) {}
    }

    void Close() {
        if (_end >= 0) close(_end);
        _end = -1;
    }

private:
    int _end;
};

class BatchProcess : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(_folder / "scratch");
        setenv("TMPDIR", (_folder / "scratch").c_str(), 1);
        WriteWav(_folder / "in.wav", Noise(2, 1000, 0.5f, ESampleFormat::Int16));
    }

    static std::vector<std::string> Render(const std::vector<std::string>& more) {
        std::vector<std::string> arguments{"render", "-p", EffectFile("fader")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    /// A render that takes at least this many seconds: 5 ms for each of its blocks.
    std::vector<std::string> LongRender(const std::string& output, std::size_t seconds = 10) const {
        WriteWav(_folder / "long.wav", Noise(1, 512 * 200 * seconds, 0.5f, ESampleFormat::Int16));
        return Render(
            {_folder / "long.wav", "-o", _folder / output, "--set", "4:on", "--no-align", "--no-preroll"});
    }

    static void Await(const std::function<bool()>& isTrue) {
        const auto start = std::chrono::steady_clock::now();
        while (!isTrue()) {
            if (std::chrono::steady_clock::now() - start > std::chrono::seconds(60))
                throw std::runtime_error("waited in vain");
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    /// Files that are on their way, of a folder.
    static std::vector<std::string> TemporaryIn(const fs::path& folder) {
        auto names = FilesIn(folder);
        std::erase_if(names, [](const std::string& name) { return !name.starts_with(".kavhost-"); });
        return names;
    }

    std::vector<std::string> Temporary() const { return TemporaryIn(_folder); }

    /// Of what was read or is to be printed.
    std::vector<std::string> Scratch() const { return TemporaryIn(_folder / "scratch"); }

    fs::path _folder = NewFolder();
};

const std::array Signals{std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}, std::pair{SIGHUP, 129}};

} // namespace

TEST_F(BatchProcess, ReportsAFileWhileTheNextOneIsAwaited) {
    const CFifo pipe(_folder / "pipe", O_RDWR);
    for (const auto& [signal, code] : Signals) {
        const auto out = _folder / ("out" + std::to_string(signal));
        CChild child(Render({_folder / "in.wav", _folder / "pipe", "-o", out, "--no-align"}));
        Await([&] { return child.OutputSoFar().find("in.wav\n") != std::string::npos; });
        child.Signal(signal); // at once, while it waits for the pipe
        const auto run = child.Wait();
        EXPECT_EQ(run.code, code);
        EXPECT_EQ(run.errors, "kavhost: not finished: " + Utf8(_folder / "pipe") +
                                  "\nkavhost: interrupted: 1 of 2 files are finished\n");
        EXPECT_EQ(FilesIn(out), std::vector<std::string>{"in.wav"});
        EXPECT_TRUE(Scratch().empty());
    }
}

TEST_F(BatchProcess, ClosesItsArrayWhenItIsInterrupted) {
    const CFifo pipe(_folder / "pipe", O_RDWR);
    CChild child(Render({_folder / "in.wav", _folder / "none.wav", _folder / "pipe", _folder / "in2.wav",
        "-o", _folder / "out", "--no-align", "--json"}));
    Await([&] { return child.OutputSoFar().find("none.wav") != std::string::npos; });
    child.Signal(SIGINT);
    const auto run = child.Wait();
    EXPECT_EQ(run.code, 130);
    const auto reports = nlohmann::json::parse(run.out);
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[0]["frames"], 1000);
    EXPECT_EQ(reports[1]["error"], Utf8(_folder / "none.wav") + ": no such file");
    for (const std::size_t place : {2u, 3u}) EXPECT_EQ(reports[place]["error"], "interrupted");
    EXPECT_EQ(reports[3]["input"], Utf8(_folder / "in2.wav"));
    EXPECT_NE(run.errors.find("interrupted: 1 of 4 files are finished, 1 failed\n"), std::string::npos)
        << run.errors;
}

TEST_F(BatchProcess, PrintsLinesForProgramsAsFilesAreFinished) {
    const CFifo pipe(_folder / "pipe", O_RDWR);
    CChild child(Render({_folder / "pipe", _folder / "in.wav", "-o", _folder / "out", "--no-align", "--jobs",
        "2", "--report", "jsonl"}));
    Await([&] { return child.OutputSoFar().ends_with("\n"); }); // the second file's, as the first one waits
    EXPECT_EQ(nlohmann::json::parse(child.OutputSoFar())["input"], Utf8(_folder / "in.wav"));
    child.Signal(SIGTERM);
    const auto run = child.Wait();
    EXPECT_EQ(run.code, 143);
    const auto end = run.out.find('\n');
    EXPECT_EQ(nlohmann::json::parse(run.out.substr(end + 1))["error"], "interrupted");
}

TEST_F(BatchProcess, ReadsStandardInput) {
    ASSERT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / "file.wav"})).Wait().code, 0);
    const auto run =
        CChild(Render({"-", "-o", _folder / "out.wav"}), {.standardInput = _folder / "in.wav"}).Wait();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(run.out.starts_with("standard input -> " + Utf8(_folder / "out.wav") + "\n")) << run.out;
    EXPECT_EQ(BytesOf(_folder / "out.wav"), BytesOf(_folder / "file.wav"));
    EXPECT_TRUE(Scratch().empty());

    const auto json =
        CChild(Render({"-", "-o", _folder / "new/", "--json"}), {.standardInput = _folder / "in.wav"}).Wait();
    EXPECT_EQ(nlohmann::json::parse(json.out)[0]["input"], "-");
    EXPECT_EQ(FilesIn(_folder / "new"), std::vector<std::string>{"stdin.wav"});

    WriteBytes(_folder / "bad", "nothing");
    const auto bad =
        CChild(Render({"-", "-o", _folder / "out.wav"}), {.standardInput = _folder / "bad"}).Wait();
    EXPECT_EQ(bad.code, 1);
    EXPECT_TRUE(bad.errors.starts_with("kavhost: standard input: ")) << bad.errors;
}

TEST_F(BatchProcess, ReadsPipes) {
    ASSERT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / "file.wav"})).Wait().code, 0);
    ASSERT_EQ(mkfifo((_folder / "pipe").c_str(), 0600), 0);
    CChild child(Render({_folder / "pipe", "-o", _folder / "out.wav"}));
    WriteBytes(_folder / "pipe", BytesOf(_folder / "in.wav")); // waits for the child, which waits for this
    const auto run = child.Wait();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(run.out.starts_with(Utf8(_folder / "pipe") + " -> ")) << run.out;
    EXPECT_EQ(BytesOf(_folder / "out.wav"), BytesOf(_folder / "file.wav"));
}

TEST_F(BatchProcess, EndsAtOnceWhileItWaitsForStandardInput) {
    const CFifo pipe(_folder / "pipe", O_RDWR);
    for (const auto& [signal, code] : Signals) {
        CChild child(Render({"-", "-o", _folder / "out.wav"}), {.standardInput = _folder / "pipe"});
        Await([&] { return !Scratch().empty(); });
        child.Signal(signal);
        const auto run = child.Wait();
        EXPECT_EQ(run.code, code);
        EXPECT_EQ(run.errors, "kavhost: interrupted\n");
        EXPECT_TRUE(Scratch().empty());
    }
}

TEST_F(BatchProcess, WritesToStandardOutputAndReportsElsewhere) {
    ASSERT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / "file.wav"})).Wait().code, 0);
    const auto run = CChild(Render({_folder / "in.wav", "-o", "-"})).Wait();
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.out, BytesOf(_folder / "file.wav"));
    EXPECT_TRUE(run.errors.starts_with(Utf8(_folder / "in.wav") + " -> standard output\n")) << run.errors;
    EXPECT_TRUE(Scratch().empty());

    const auto flac = CChild(Render({_folder / "in.wav", "-o", "-", "--ext", "flac", "--json"})).Wait();
    EXPECT_EQ(flac.out.substr(0, 4), "fLaC");
    EXPECT_EQ(nlohmann::json::parse(flac.errors)[0]["output"], "-");
}

TEST_F(BatchProcess, WritesAllToStandardOutputOrNothing) {
    const auto bytes = BytesOf(_folder / "in.wav");
    WriteBytes(_folder / "cut.wav", bytes.substr(0, bytes.size() - 100));
    const auto failed = CChild(Render({_folder / "cut.wav", "-o", "-", "--strict"})).Wait();
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.out, "");
    const auto full = CChild(Render({_folder / "in.wav", "-o", "-"}), {.standardOutput = "/dev/full"}).Wait();
    EXPECT_EQ(full.code, 1);
    EXPECT_NE(full.errors.find("standard output cannot be written"), std::string::npos) << full.errors;
    EXPECT_TRUE(Scratch().empty());
}

TEST_F(BatchProcess, EndsAtOnceWhenItsOutputIsNotTaken) {
    const CFifo pipe(_folder / "pipe", O_RDWR);
    pipe.Fill();
    const std::vector<std::vector<std::string>> outputs{{"-o", "-"}, {"-o", _folder / "out.wav"}};
    for (const auto& output : outputs) {
        for (const auto& [signal, code] : Signals) {
            auto arguments = Render({_folder / "in.wav", "--no-align"});
            arguments.insert(arguments.end(), output.begin(), output.end());
            CChild child(arguments, {.standardOutput = _folder / "pipe"});
            if (output[1] == "-")
                Await([&] { return !Scratch().empty(); });
            else
                Await([&] { return fs::exists(_folder / "out.wav"); });
            child.Signal(signal);
            EXPECT_EQ(child.Wait().code, code);
            EXPECT_TRUE(Scratch().empty());
            fs::remove(_folder / "out.wav");
        }
    }
}

TEST_F(BatchProcess, EndsWhenTheReaderOfItsOutputHasEnded) {
    CFifo pipe(_folder / "pipe", O_RDWR);
    CChild child(LongRender("out.wav", 1), {.standardOutput = _folder / "pipe"});
    Await([&] { return !Temporary().empty(); });
    pipe.Close();
    const auto run = child.Wait(); // which has to finish its file first to notice
    EXPECT_EQ(run.code, 141);
    EXPECT_EQ(run.errors, "");
    EXPECT_TRUE(Temporary().empty());
}

TEST_F(BatchProcess, RemovesWhatAKilledRunHasLeft) {
    CChild killed(LongRender("out.wav"));
    Await([&] { return !Temporary().empty(); });
    killed.Signal(SIGKILL);
    killed.Wait();
    const auto left = Temporary();
    ASSERT_EQ(left.size(), 1u);

    CChild alive(LongRender("other.wav"));
    Await([&] { return !fs::exists(_folder / left[0]) && !Temporary().empty(); });
    const auto live = Temporary();
    ASSERT_EQ(live.size(), 1u); // of the run that goes on
    EXPECT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / "short.wav"})).Wait().code, 0);
    EXPECT_EQ(Temporary(), live);
    alive.Signal(SIGINT);
    EXPECT_EQ(alive.Wait().code, 130);
    EXPECT_TRUE(Temporary().empty());
}

TEST_F(BatchProcess, LeavesRecentFilesOfOtherMachinesAlone) {
    // Whether they are locked there can't be known here.
    const auto recent = _folder / ".kavhost-00000000-00000001.tmp",
               old = _folder / ".kavhost-00000000-00000002.tmp";
    WriteBytes(recent, "theirs");
    WriteBytes(old, "theirs");
    fs::last_write_time(old, fs::file_time_type::clock::now() - std::chrono::hours(25));
    ASSERT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / "out.wav"})).Wait().code, 0);
    EXPECT_TRUE(fs::exists(recent));
    EXPECT_FALSE(fs::exists(old));
}

TEST_F(BatchProcess, KeepsOwnerAndModeOfAFileThatItReplaces) {
    const auto out = _folder / "out.wav";
    for (const mode_t mode : {0640u, 0606u, 0600u}) {
        WriteBytes(out, "old");
        ASSERT_EQ(chmod(out.c_str(), mode), 0);
        const bool isOther = chown(out.c_str(), 12345, 23456) == 0; // an administrator may do that
        ASSERT_EQ(CChild(Render({_folder / "in.wav", "-o", out})).Wait().code, 0);
        struct stat status {};
        ASSERT_EQ(stat(out.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, mode);
        EXPECT_EQ(status.st_uid, isOther ? 12345u : geteuid());
        EXPECT_EQ(status.st_gid, isOther ? 23456u : getegid());
        EXPECT_EQ(ReadWav(out).Frames(), 1000u);
        fs::remove(out);
    }
    const mode_t mask = umask(0027);
    EXPECT_EQ(CChild(Render({_folder / "in.wav", "-o", out})).Wait().code, 0);
    umask(mask);
    EXPECT_EQ(fs::status(out).permissions(), fs::perms{0640}); // a new file's is as the user has chosen
}

TEST_F(BatchProcess, ReplacesNothingThatIsWriteProtected) {
    const auto out = _folder / "out.wav";
    WriteBytes(out, "old");
    chmod(out.c_str(), 0444);
    const auto run = CChild(Render({_folder / "in.wav", "-o", out})).Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.errors, "kavhost: " + Utf8(out) + ": is write-protected\n");
    EXPECT_EQ(BytesOf(out), "old");
}

TEST_F(BatchProcess, WritesNamesOfAnyLength) {
    const auto name = std::string(251, 'n') + ".wav";
    EXPECT_EQ(CChild(Render({_folder / "in.wav", "-o", _folder / name})).Wait().code, 0);
    EXPECT_EQ(ReadWav(_folder / name).Frames(), 1000u);
    const auto longer = CChild(Render({_folder / "in.wav", "-o", _folder / ("n" + name)})).Wait();
    EXPECT_EQ(longer.code, 1);
    EXPECT_NE(longer.errors.find("File name too long"), std::string::npos) << longer.errors;
}

TEST_F(BatchProcess, EscapesControlCharactersOfNames) {
    const std::string name = "a\n\x1b[2Jb.wav", shown = "a\\n\\x1b[2Jb.wav";
    fs::copy_file(_folder / "in.wav", _folder / name);
    const auto run = CChild(Render({_folder / name, _folder / ("no" + name), "-o", _folder / "out"})).Wait();
    EXPECT_TRUE(run.out.starts_with(Utf8(_folder / shown) + " -> " + Utf8(_folder / "out" / shown) + "\n"))
        << run.out;
    EXPECT_EQ(run.errors, "kavhost: " + Utf8(_folder / ("no" + shown)) + ": no such file\n");
    const auto json = CChild(Render({_folder / name, "-o", _folder / "out", "--json"}), {}).Wait();
    EXPECT_EQ(
        nlohmann::json::parse(json.out)[0]["input"], Utf8(_folder / name)); // a program gets the name itself
}

TEST_F(BatchProcess, ReportsAndItsBarShareATerminal) {
    fs::copy_file(_folder / "in.wav", _folder / "b.wav");
    const auto arguments = Render({_folder / "in.wav", _folder / "b.wav", _folder / "none.wav", "-o",
        _folder / "out", "--report", "jsonl"});
    const auto run = CChild(arguments, {.errorsToTerminal = true, .outputToTerminal = true}).Wait();
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("] 1 of 3 files"), std::string::npos) << run.errors; // the bar was there
    std::istringstream lines(OnScreen(run.errors));
    std::string line;
    for (const char* name : {"in.wav", "b.wav"}) {
        ASSERT_TRUE(std::getline(lines, line));
        EXPECT_EQ(nlohmann::json::parse(line)["input"], Utf8(_folder / name)); // whole, and nothing besides
    }
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(line, "kavhost: " + Utf8(_folder / "none.wav") + ": no such file");
}

TEST_F(BatchProcess, RefusesToSendAudioToATerminal) {
    const auto run =
        CChild(Render({_folder / "in.wav", "-o", "-"}), {.errorsToTerminal = true, .outputToTerminal = true})
            .Wait();
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.errors.find("standard output is a terminal"), std::string::npos) << run.errors;
}

TEST_F(BatchProcess, RendersWhatIsThereOfAnInputThatIsCutOff) {
    const auto audio = Noise(2, 48000, 0.5f, ESampleFormat::Int16);
    WriteWav(_folder / "whole.wav", audio);
    for (const char* name : {"a.flac", "a.aiff", "a.ogg", "a.wav"})
        ASSERT_EQ(RunHost(Render({_folder / "whole.wav", "-o", _folder / name, "--no-align"})).code, 0);
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
    SNDFILE* const mpeg = sf_open((_folder / "a.mp3").c_str(), SFM_WRITE, &info);
    ASSERT_NE(mpeg, nullptr);
    sf_writef_float(mpeg, audio.samples.data(), 48000);
    sf_close(mpeg);

    for (const char* name : {"a.flac", "a.aiff", "a.ogg", "a.wav", "a.mp3"}) {
        const auto whole =
            RunHost(Render({_folder / name, "-o", _folder / "out.wav", "--no-align", "--json"}));
        ASSERT_EQ(whole.code, 0) << name << whole.errors;
        EXPECT_EQ(whole.out.find("cut off"), std::string::npos) << name << whole.out;
        const auto bytes = BytesOf(_folder / name);
        WriteBytes(_folder / "cut", bytes.substr(0, bytes.size() * 6 / 10));
        const auto cut =
            RunHost(Render({_folder / "cut", "-o", _folder / "out.wav", "--no-align", "--json"}));
        EXPECT_EQ(cut.code, 0) << name << cut.errors;
        EXPECT_NE(cut.out.find("the input is cut off"), std::string::npos) << name << cut.out;
        const auto frames = ReadWav(_folder / "out.wav").Frames();
        EXPECT_GT(frames, 48000u * 4 / 10) << name;
        EXPECT_LT(frames, 48000u * 8 / 10) << name;
        EXPECT_EQ(BytesOf(_folder / "out.wav").substr(0, 4), "RIFF")
            << name; // not the form for endless files
    }
}

TEST_F(BatchProcess, GivesEachFileOfAnAlbumThatFailsAnEntry) {
    const auto run = CChild({"render", _folder / "in.wav", _folder / "none.wav", "-o", _folder / "out",
                                "--album", "--true-peak", "-1", "--json"})
                         .Wait();
    EXPECT_EQ(run.code, 1);
    const auto reports = nlohmann::json::parse(run.out);
    ASSERT_EQ(reports.size(), 2u);
    for (const auto& report : reports)
        EXPECT_EQ(report["error"], Utf8(_folder / "none.wav") + ": no such file");
    EXPECT_EQ(run.errors, "kavhost: " + Utf8(_folder / "none.wav") + ": no such file\n");
    EXPECT_TRUE(FilesIn(_folder / "out").empty());
}
