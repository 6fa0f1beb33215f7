#include "platform/module.h"
#include "tests/support/scratch_home.h"

#include <array>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

std::string Ask(const char* name) {
    void* const library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    if (library == nullptr) return {};
    const auto ask = reinterpret_cast<std::size_t (*)(char*, std::size_t)>(dlsym(library, "ProbeModulePath"));
    std::array<char, 4096> text{};
    ask(text.data(), text.size());
    dlclose(library);
    return text.data();
}

} // namespace

TEST(ModuleFile, MayHaveThreeHundredCharacters) {
    const auto folder = ScratchFolder() / std::string(200, 'a') / std::string(200, 'b');
    fs::create_directories(folder);
    fs::copy_file(KAV_PROBE_PATH, folder / "probe.so");
    EXPECT_EQ(Ask((folder / "probe.so").c_str()), (folder / "probe.so").string());
}

TEST(ModuleFile, IsAbsoluteForAHostThatLoadsByARelativePath) {
    const auto folder = fs::canonical(ScratchFolder()) / "relative";
    fs::create_directories(folder);
    fs::copy_file(KAV_PROBE_PATH, folder / "probe.so");
    ASSERT_EQ(chdir(folder.c_str()), 0);
    const auto path = Ask("./probe.so");
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(path, (folder / "probe.so").string());
}
