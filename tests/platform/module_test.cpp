#include "platform/module.h"

#include "platform/library.h"
#include "tests/support/scratch_home.h"

#include <array>
#include <gtest/gtest.h>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

/// A copy of the library in a folder of that name, and the path that it reports for itself.
struct SProbe {
    explicit SProbe(const fs::path& folder)
        : file(folder / (std::u8string(u8"Prüf modul") + fs::path(LibrarySuffix()).u8string())) {
        fs::create_directories(folder);
        fs::copy_file(KAV_PROBE_PATH, file);
    }
    std::string Ask(const fs::path& name) const {
        std::string reason;
        void* const library = OpenLibrary(name, reason);
        EXPECT_NE(library, nullptr) << reason;
        if (library == nullptr) return {};
        const auto ask =
            reinterpret_cast<std::size_t (*)(char*, std::size_t)>(FindSymbol(library, "ProbeModulePath"));
        std::array<char, 4096> text{};
        ask(text.data(), text.size());
        CloseLibrary(library);
        return text.data();
    }
    std::string Expected() const {
        const auto text = file.generic_u8string();
        return {text.begin(), text.end()};
    }
    fs::path file;
};

} // namespace

TEST(Module, IsTheSameFromEverywhereInTheProgram) {
    EXPECT_NE(ThisModule(), nullptr);
    EXPECT_EQ(ThisModule(), ThisModule());
}

TEST(ModuleFile, IsTheLibrarysOwnAndNotThePrograms) {
    const SProbe probe(ScratchFolder() / fs::path(u8"Ordner mit Umläuten 音量"));
    EXPECT_EQ(probe.Ask(probe.file), probe.Expected());
    EXPECT_NE(ModuleFile().filename(), probe.file.filename());
    EXPECT_TRUE(ModuleFile().is_absolute());
}
