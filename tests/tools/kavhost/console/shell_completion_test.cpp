#include "tests/tools/kavhost/child.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/console/options.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

using Words = std::set<std::string>;

const std::filesystem::path Folder = KAVHOST_COMPLETION;

/// What bash offers after these words, of which the last one is being typed; "FILES" if it offers files.
Words InBash(const std::vector<std::string>& line) {
    std::string words;
    for (const auto& word : line) words += " '" + word + "'";
    // Outside of a completion the option for files can only be seen to be switched off.
    const std::string script = "files=FILES; compopt() { files=; }; . '" + (Folder / "kavhost").string() +
                               "'; COMP_WORDS=(kavhost" + words +
                               "); COMP_CWORD=" + std::to_string(line.size()) +
                               "; _kavhost; printf '%s\\n' \"${COMPREPLY[@]}\" $files";
    const auto run = CChild({"-c", script}, {.program = "/bin/bash"}).Wait();
    EXPECT_EQ(run.errors, "");
    std::istringstream lines(run.out);
    Words offered;
    for (std::string word; lines >> word;) offered.insert(word);
    return offered;
}

/// What zsh makes of a line when the user presses Tab: after "SEEN:".
std::string InZsh(const std::string& line, const std::filesystem::path& folder) {
    // The terminal shows what is typed, too, so the words that are awaited are typed in two pieces.
    const std::string setup = "PS1=; cd '" + folder.string() + "'; fpath=('" + Folder.string() +
                              "' \\$fpath); autoload -Uz compinit; compinit -u -d '" +
                              (folder / "dump").string() + "'; bindkey '^I' complete-word; print RE''ADY";
    const std::string script = "zmodload zsh/zpty || exit 3\n"
                               "zpty z 'TERM=dumb zsh -f -i'\n"
                               "zpty -w z \"" +
                               setup +
                               "\"\n"
                               "zpty -r -m z l '*READY*'\n"
                               "zpty -w -n z $'" +
                               line +
                               "\\t'\n"
                               "zpty -w -n z $'\\C-aprint -r -- SE\"\"EN:\\C-e:END\\n'\n"
                               "zpty -r -m z l '*SEEN:*:END*'\n"
                               "print -r -- \"$l\"\n";
    return CChild({"-f", "-c", script}, {.program = "/usr/bin/zsh"}).Wait().out;
}

} // namespace

TEST(ShellCompletion, IsWrittenByTheBuild) {
    EXPECT_EQ(BytesOf(Folder / "kavhost"), ShellCompletion(EShell::Bash));
    EXPECT_EQ(BytesOf(Folder / "_kavhost"), ShellCompletion(EShell::Zsh));
}

TEST(ShellCompletion, OffersTheCommandsFirst) {
    const auto all = InBash({""});
    for (const auto* const command : {"info", "render", "edit", "shot", "bench", "inspect", "content"})
        EXPECT_TRUE(all.contains(command)) << command;
    EXPECT_FALSE(all.contains("FILES"));
    EXPECT_EQ(InBash({"ren"}), Words{"render"});
    EXPECT_EQ(InBash({"nothing", ""}), Words{"FILES"}) << "of an unknown command nothing is known";
}

TEST(ShellCompletion, OffersEachOptionOfEachCommand) {
    static const std::regex name(R"(^ *(?:-\w,)?(--[a-z0-9-]+))", std::regex::multiline);
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{{"info"}, {"render"},
             {"edit"}, {"shot"}, {"bench"}, {"inspect"}, {"content", "install"}, {"content", "list"}}) {
        auto asked = command;
        asked.emplace_back("--help");
        const auto help = RunHost(asked).out;
        auto typed = command;
        typed.emplace_back("--");
        const auto offered = InBash(typed);
        for (std::sregex_iterator match(help.begin(), help.end(), name), end; match != end; ++match)
            EXPECT_TRUE(offered.contains((*match)[1])) << command.back() << " " << (*match)[1];
        EXPECT_GT(offered.size(), 1u);
    }
}

TEST(ShellCompletion, KnowsWhatFollowsAnOption) {
    EXPECT_EQ(InBash({"render", "--os", ""}), (Words{"1", "2", "4", "8"}));
    EXPECT_EQ(InBash({"render", "--simd", "o"}), (Words{"on", "off"}));
    EXPECT_EQ(InBash({"render", "--patch", ""}), Words{"FILES"});
    EXPECT_EQ(InBash({"render", "-o", ""}), Words{"FILES"});
    EXPECT_EQ(InBash({"render", "--set", ""}), Words{}) << "files would only mislead";
    EXPECT_EQ(InBash({"render", "--jobs", ""}), Words{});
    EXPECT_EQ(InBash({"render", "song.wav", ""}), Words{"FILES"});
    EXPECT_EQ(InBash({"content", ""}), (Words{"install", "list", "uninstall"}));
    EXPECT_EQ(InBash({"content", "install", "--from", ""}), Words{"FILES"});
}

TEST(ShellCompletion, WorksInZsh) {
    const auto folder = NewFolder();
    WriteBytes(folder / "a_song.wav", "");
    const auto completed = [&](const std::string& line, const std::string& to) {
        const auto seen = InZsh(line, folder);
        EXPECT_NE(seen.find(to), std::string::npos) << line << "\n" << seen;
    };
    completed("kavhost ren", "SEEN:kavhost render");
    completed("kavhost render --plot-d", "SEEN:kavhost render --plot-data");
    completed("kavhost render --report j", "SEEN:kavhost render --report json");
    completed("kavhost render a_s", "SEEN:kavhost render a_song.wav");
    completed("kavhost content unin", "SEEN:kavhost content uninstall");
}
