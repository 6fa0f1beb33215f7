// Every example of the documentation, run as a reader would run it.

#include "tests/tools/kavhost/child.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/console/options.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sndfile.h>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

/// What isn't run here: it builds, installs or packs a source tree.
const std::vector<std::string> OfTheSourceTree{"./run", "./run install", "./run uninstall", "./run package"};

/// Editors need a display, and a user who closes them. They have tests of their own; here they only
/// find no display.
const std::vector<std::string> OfEditors{"kavhost edit", "kavhost shot", "./run edit", "./run shot"};

/// Commands by the page that has them first.
using Examples = std::map<std::string, std::string>;

bool IsCommand(const std::string& line) {
    return line.starts_with("kavhost ") || line.starts_with("./run ");
}

/// The commands in a page's blocks of code; `\` at the end of a line continues it.
void AddFromPage(const std::string& name, Examples& examples) {
    std::istringstream lines(BytesOf(fs::path(KAVHOST_SOURCES) / name));
    bool isCode = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```")) isCode = !isCode;
        for (std::string more; line.ends_with('\\') && std::getline(lines, more);)
            line = line.substr(0, line.size() - 1) + more;
        if (isCode && IsCommand(line)) examples.emplace(line, name);
    }
}

void AddFromText(const std::string& text, const std::string& name, Examples& examples) {
    std::istringstream lines(text);
    bool isExample = false;
    for (std::string line; std::getline(lines, line);) {
        const std::string word(Trim(line));
        if (word.empty()) isExample = false;
        if (isExample && IsCommand(word)) examples.emplace(word, name);
        if (word == "Examples:") isExample = true;
    }
}

/// The lines between .EX and .EE as a reader of the page sees them.
void AddFromManPage(Examples& examples) {
    const auto shown =
        CChild({"-T", "utf8", "-O", "width=300", KAVHOST_MAN_PAGE}, {.program = "/usr/bin/mandoc"}).Wait();
    ASSERT_EQ(shown.code, 0) << shown.errors;
    std::set<std::string> lines;
    std::istringstream stream(shown.out);
    for (std::string line; std::getline(stream, line);) lines.insert(std::string(Trim(line)));
    std::istringstream source(BytesOf(KAVHOST_MAN_PAGE));
    bool isExample = false;
    for (std::string line; std::getline(source, line);) {
        if (line.starts_with(".E")) isExample = line == ".EX";
        if (!isExample || line.starts_with('.')) continue;
        std::string plain; // escaped are "-" and "\"
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] != '\\')
                plain += line[i];
            else if (line[++i] == 'e')
                plain += '\\';
            else if (line[i] != '&')
                plain += line[i];
        }
        EXPECT_TRUE(lines.contains(plain)) << plain << " is shown in another way";
        if (IsCommand(plain)) examples.emplace(plain, "kavhost.1");
    }
}

Examples AllExamples() {
    Examples examples;
    AddFromPage("README.md", examples);
    AddFromPage("docs/install.md", examples);
    AddFromPage("docs/kavhost.md", examples);
    AddFromText(RunHost({"--help"}).out, "kavhost --help", examples);
    for (const char* command : {"info", "render", "edit", "shot", "bench", "inspect", "content"})
        AddFromText(RunHost({command, "--help"}).out, std::string("kavhost help ") + command, examples);
    AddFromManPage(examples);
    return examples;
}

/// Whether it is one of these commands, with any arguments. "./run" alone has none.
bool IsOf(const std::string& example, const std::vector<std::string>& list) {
    const auto command = std::string(Trim(example.substr(0, example.find(" #"))));
    return std::ranges::any_of(list, [&](const auto& start) {
        return command == start || (start != "./run" && command.starts_with(start + " "));
    });
}

/// A folder with what the examples name, all of it short.
class CReadersFolder final {
public:
    CReadersFolder() {
        const auto sound = Noise(2, 24000, 0.5f, ESampleFormat::Int16);
        for (const char* name : {"song.wav", "other.wav", "film2.wav"}) WriteWav(folder / name, sound);
        for (const char* name : {"film.wav", "surround.wav"})
            WriteWav(folder / name, Noise(6, 24000, 0.5f, ESampleFormat::Int16));
        fs::create_directory(folder / "album");
        WriteWav(folder / "album" / "1.wav", sound);
        WriteMp3(folder / "song.mp3", sound);
        const auto content = fs::path(KAVHOST_PROGRAM).parent_path() / "content";
        fs::copy_file(content / "Patches" / "Master - Loud.kvp", folder / "loud.kvp");
        fs::copy_file(content / "Routings" / "Dual Mono.kvt", folder / "surround.kvt");
        fs::copy_file(EffectFile("fader"), folder / "other.so");
        EXPECT_EQ(CChild({"info", "--save-state", folder / "film.state"}).Wait().code, 0);
        fs::copy_file(folder / "film.state", folder / "song.state");
        // A reader has kavhost on the path, and the tree's ./run builds nothing here: it is built.
        fs::create_directory(folder / "bin");
        fs::create_symlink(KAVHOST_PROGRAM, folder / "bin" / "kavhost");
        WriteBytes(folder / "run", "#!/bin/sh\nexec kavhost \"$@\"\n");
        fs::permissions(folder / "run", fs::perms::owner_all);
    }

    /// In a copy of the folder and a home of its own, because the order of examples doesn't count.
    SRun Run(const std::string& example) {
        const auto copy = NewFolder();
        fs::copy(folder, copy / "work", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        fs::create_directory(copy / "home");
        const auto script = "cd '" + Utf8(copy / "work") + "' && export HOME='" + Utf8(copy / "home") +
                            "' PATH=\"$PWD/bin:$PATH\" && unset XDG_CONFIG_HOME\n" + example + "\n";
        const auto run = CChild({"-c", script}, {.program = "/bin/bash"}).Wait();
        fs::remove_all(copy);
        return run;
    }

private:
    static void WriteMp3(const fs::path& file, const SAudio& sound) {
        SF_INFO info{};
        info.samplerate = sound.format.rateHz;
        info.channels = sound.format.channels;
        info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
        auto* const writer = sf_open(file.c_str(), SFM_WRITE, &info);
        ASSERT_NE(writer, nullptr) << sf_strerror(nullptr);
        sf_writef_float(writer, sound.samples.data(), static_cast<sf_count_t>(sound.Frames()));
        sf_close(writer);
    }

    fs::path folder = NewFolder();
};

} // namespace

TEST(Examples, RunAsTheyStand) {
    CReadersFolder reader;
    const auto examples = AllExamples();
    std::map<std::string, int> found;
    for (const auto& [example, page] : examples) {
        ++found[page];
        if (IsOf(example, OfTheSourceTree)) continue;
        if (IsOf(example, OfEditors)) {
            const auto run = reader.Run("unset DISPLAY; PATH=$PWD/bin\n" + example);
            EXPECT_EQ(run.code, 1) << page << ": " << example;
            EXPECT_NE(run.errors.find("isplay"), std::string::npos) << example << "\n" << run.errors;
            continue;
        }
        const auto run = reader.Run(example);
        EXPECT_EQ(run.code, 0) << page << ": " << example << "\n" << run.errors;
        EXPECT_EQ(run.errors, "") << page << ": " << example;
    }
    // The pages were read.
    EXPECT_GE(found["README.md"], 12);
    EXPECT_GE(found["docs/install.md"], 3);
    EXPECT_GE(found["docs/kavhost.md"], 8);
    EXPECT_GE(examples.size(), 40u);
}

TEST(Examples, AreTheSameInTheManualPageAndInHelp) {
    Examples help, page;
    AddFromText(RunHost({"--help"}).out, "", help);
    for (const char* command : {"info", "render", "edit", "shot", "bench", "inspect", "content"})
        AddFromText(RunHost({command, "--help"}).out, "", help);
    AddFromManPage(page);
    for (const auto& [example, name] : help) EXPECT_TRUE(page.contains(example)) << example;
    EXPECT_EQ(page.size(), help.size());
}

/// Names as `info` and `content list` print them, with the quotes and all.
TEST(Examples, TakeEveryNameThatContentListPrints) {
    CReadersFolder reader;
    const auto list = CChild({"content", "list"}).Wait();
    std::istringstream lines(list.out);
    std::string script;
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto option = line.find("--");
        if (option == std::string::npos) continue;
        script += "kavhost info --json " + line.substr(option) + " >out || exit 9\n";
        ++count;
    }
    EXPECT_GT(count, 60);
    const auto run = reader.Run(script);
    EXPECT_EQ(run.code, 0) << run.errors;
}

TEST(Examples, TakeABareNameFromTheFactoryWithoutInstallingIt) {
    CReadersFolder reader;
    const auto named =
        reader.Run("kavhost info --json --patch 'Master - Loud' --save-state a.state >/dev/null\n"
                   "kavhost info --json --patch loud.kvp --save-state b.state >/dev/null\n"
                   "kavhost inspect a.state; kavhost inspect b.state");
    EXPECT_EQ(named.code, 0) << named.errors;
    // Only the name differs.
    EXPECT_NE(named.out.find("patch       Master - Loud\n"), std::string::npos);
    const auto second = named.out.find("patch       loud\n");
    ASSERT_NE(second, std::string::npos) << named.out;
    const auto rest = [&](std::size_t begin, std::size_t end) {
        const auto line = named.out.find('\n', begin);
        return named.out.substr(line, end - line);
    };
    EXPECT_EQ(rest(0, second), rest(second, named.out.size()));
}
