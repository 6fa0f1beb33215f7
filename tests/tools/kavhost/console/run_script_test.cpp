// ./run and the script that it builds with, in a copy of the tree in which a script stands for CMake.

#include "tests/tools/kavhost/child.h"

#include <gtest/gtest.h>
#include <regex>

using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

class RunScript : public testing::Test {
protected:
    void SetUp() override {
        const fs::path sources = KAVHOST_SOURCES;
        fs::create_directories(_tree / "packaging");
        fs::copy_file(sources / "run", _tree / "run");
        for (const char* name : {"setup.sh", "install.sh"})
            fs::copy_file(sources / "packaging" / name, _tree / "packaging" / name);
        // What every Debian system has, so that nothing is installed.
        WriteBytes(_tree / "packaging" / "packages.txt", "build bash\nhost bash\n");
        Program("bin/cmake", "[ ! -e \"$TREE/broken\" ] || exit 1\necho built >>\"$TREE/built\"");
        Program("build/release/kavhost", "echo \"kavhost was called with: $*\"");
    }
    void Program(const std::string& name, const std::string& lines) const {
        const auto file = _tree / name;
        fs::create_directories(file.parent_path());
        WriteBytes(file, "#!/bin/sh\n" + lines + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    SRun Run(const std::string& arguments) const {
        const auto tree = _tree.string();
        const auto script = "export TREE='" + tree + "' PATH=\"" + tree + "/bin:$PATH\"; exec '" + tree +
                            "/run' " + arguments;
        return CChild({"-c", script}, {.program = "/bin/bash"}).Wait();
    }

    fs::path _tree = NewFolder();
};

} // namespace

TEST_F(RunScript, PrintsALineBeforeItsFirstBuildAndNoneBeforeLaterOnes) {
    const auto first = Run("info");
    EXPECT_EQ(first.code, 0) << first.errors;
    EXPECT_EQ(first.out, "kavhost was called with: info\n");
    EXPECT_EQ(first.errors, "== the first build takes some minutes; its output is in build/log\n");
    const auto second = Run("info");
    EXPECT_EQ(second.out, first.out);
    EXPECT_EQ(second.errors, "");
    EXPECT_NE(BytesOf(_tree / "built"), "");
}

TEST_F(RunScript, PrintsThatLineUntilABuildHasSucceeded) {
    WriteBytes(_tree / "broken", "");
    EXPECT_NE(Run("info").code, 0);
    fs::remove(_tree / "broken");
    const auto run = Run("info");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.errors, "== the first build takes some minutes; its output is in build/log\n");
}

TEST_F(RunScript, ListsItsOwnCommandsAndThoseOfKavhost) {
    for (const char* option : {"--help", "-h"}) {
        const auto run = Run(option);
        EXPECT_EQ(run.code, 0) << run.errors;
        for (const char* command : {"install", "uninstall", "package", "ARGUMENT..."})
            EXPECT_TRUE(std::regex_search(run.out, std::regex("(^|\n)\\./run " + std::string(command) + " ")))
                << command << run.out;
        EXPECT_TRUE(run.out.ends_with("\n\nkavhost was called with: " + std::string(option) + "\n"))
            << run.out;
        EXPECT_EQ(run.out.find('#'), std::string::npos) << run.out;
    }
    EXPECT_EQ(Run("render --help").out, "kavhost was called with: render --help\n");
}
