#include "tests/tools/kavhost/child.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/console/options.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

std::string WithoutEscapes(const std::string& page) {
    return std::regex_replace(page, std::regex(R"(\\(f[BIR]|(?=-)))"), "");
}

/// The page from the heading of a command to the next heading.
std::string SectionOf(const std::string& page, const std::string& command) {
    const auto begin = page.find(".SS \"kavhost " + command + "\"\n");
    if (begin == std::string::npos) return {};
    return page.substr(begin, page.find("\n.S", begin + 1) - begin);
}

std::set<std::string> OptionsIn(const std::string& help) {
    // At the beginning of a line, with or without a short name before it.
    static const std::regex name(R"(^ *(?:-\w,)?(--[a-z0-9-]+))", std::regex::multiline);
    std::set<std::string> options;
    for (std::sregex_iterator match(help.begin(), help.end(), name), end; match != end; ++match)
        options.insert((*match)[1]);
    return options;
}

SRun Mandoc(const std::vector<std::string>& arguments) {
    return CChild(arguments, {.program = "/usr/bin/mandoc"}).Wait();
}

} // namespace

TEST(ManPage, IsWrittenByTheBuild) {
    EXPECT_EQ(BytesOf(KAVHOST_MAN_PAGE), ManPage());
}

TEST(ManPage, HasEachOptionOfEachCommand) {
    const auto page = WithoutEscapes(ManPage());
    const std::vector<std::vector<std::string>> commands{{"info"}, {"render"}, {"bench"}, {"inspect"},
        {"content"}, {"content", "install"}, {"content", "list"}, {"content", "uninstall"}, {"help"},
        {"version"}};
    std::size_t found = 0;
    for (auto command : commands) {
        const auto name = command.size() == 1 ? command[0] : command[0] + " " + command[1];
        const auto section = SectionOf(page, name);
        ASSERT_NE(section, "") << name;
        command.emplace_back("--help");
        for (const auto& option : OptionsIn(RunHost(command).out)) {
            EXPECT_TRUE(std::regex_search(section, std::regex("\n\\.TP\n(-\\w, )?" + option + "\\b")))
                << name << " " << option;
            ++found;
        }
    }
    EXPECT_GT(found, 50u);
    EXPECT_NE(SectionOf(page, "render").find("--plot-data"), std::string::npos);
}

TEST(ManPage, IsWellFormed) {
    const auto lint = Mandoc({"-T", "lint", "-W", "warning", KAVHOST_MAN_PAGE});
    std::string complaints;
    std::istringstream lines(lint.out + lint.errors);
    for (std::string line; std::getline(lines, line);) {
        if (line.find("missing date") == std::string::npos)
            complaints += line + "\n"; // it has none on purpose
    }
    EXPECT_EQ(complaints, "");
}

TEST(ManPage, HasTheSectionsThatReadersLookFor) {
    const auto page = WithoutEscapes(ManPage());
    const auto section = [&](const std::string& title) {
        const auto begin = page.find(".SH " + title + "\n");
        return begin == std::string::npos ? "" : page.substr(begin, page.find("\n.SH", begin) - begin);
    };
    EXPECT_NE(
        section("EXAMPLES").find("\nkavhost render song.wav -o limited.flac --set \"Threshold (1)=-6 dB\"\n"),
        std::string::npos);
    EXPECT_NE(section("ENVIRONMENT").find("\nDISPLAY\n"), std::string::npos);
    EXPECT_NE(section("FILES").find("Kavelin/KAV Sorrel Limiter/*.kvp"), std::string::npos);
    // The same codes as in the table of the documentation.
    const auto status = section("\"EXIT STATUS\"");
    const auto documented = BytesOf(KAVHOST_SOURCES "/docs/kavhost.md");
    static const std::regex row("\n\\| ([0-9]+) \\|"), term("\n\\.TP\n([0-9]+)\n");
    const auto codes = [](const std::string& text, const std::regex& pattern) {
        std::set<std::string> found;
        for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
            found.insert((*match)[1]);
        return found;
    };
    EXPECT_EQ(codes(status, term), codes(documented, row));
    EXPECT_GE(codes(status, term).size(), 4u);
}

TEST(ManPage, KeepsExamplesInLinesOfTheirOwnAsAShellTakesThem) {
    const auto text = Mandoc({"-T", "ascii", "-O", "width=120", KAVHOST_MAN_PAGE});
    ASSERT_EQ(text.code, 0) << text.errors;
    const auto plain = std::regex_replace(text.out, std::regex(".\b"), ""); // bold is overstruck
    EXPECT_TRUE(std::regex_search(
        plain, std::regex(R"(\n *kavhost render \*\.wav -o limited/ --jobs 4 --plot limited/\n)")))
        << plain.substr(0, 3000);
    EXPECT_NE(plain.find("-p, --plugin FILE"), std::string::npos);
    EXPECT_NE(plain.find("-j, --jobs 1..256"), std::string::npos);
}
