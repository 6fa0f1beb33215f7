#include "tests/tree/source_tree.h"

#include "panel/layout.h"
#include "tests/support/scratch_home.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string_view>

using namespace KAV::Tests;

namespace {

using Lines = std::vector<std::string>;

const std::filesystem::path Root = KAV_SOURCE_DIR;

// Files outside platform/ and gfx/<back end>/ that may test for the system.
const std::set<std::string> SystemExceptions{};

constexpr std::size_t LongestSource = 600;
const std::set<std::string> LongExceptions{};

// The roots of the widgets: each widget reports to the root that lists it.
const std::set<std::string> CircleExceptions{"gui/gui", "device_gui/xxx_gui"};

/// Texts that only the table of the panel may contain: rectangles, images, and names as the editor's widgets
/// have them, those of a family without their number.
std::set<std::string> SaidByThePanel() {
    std::set<std::string> texts;
    for (const auto& row : KAV::Panel::Rows()) {
        std::ostringstream rect;
        rect << row.rect.x << ',' << row.rect.y << ',' << row.rect.w << ',' << row.rect.h << '}';
        texts.insert('{' + rect.str());
        if (row.sprite != nullptr) texts.emplace(row.sprite->image);
        texts.insert("u\"" + std::string(row.name.substr(0, row.name.find_last_not_of("0123456789 ") + 1)));
    }
    return texts;
}

/// A small tree of files, removed when the test process ends.
class CMadeUpTree final {
public:
    CMadeUpTree() { std::filesystem::remove_all(_root); }

    void Write(const std::string& file, std::string_view text) const {
        std::filesystem::create_directories((_root / file).parent_path());
        std::ofstream(_root / file) << text;
    }
    const std::filesystem::path& Root() const { return _root; }

private:
    std::filesystem::path _root = ScratchFolder() / "tree";
};

std::vector<SLayer> ThreeLayers() {
    return {{"utils", {}}, {"dsp", {"utils"}}, {"tools/host", {"utils", "dsp/interface.h"}},
        {"tests", {}, false}};
}

} // namespace

TEST(Layers, HoldInEveryInclude) {
    EXPECT_EQ(IncludeBreaks(Root, ReadLayers(Root / "docs/architecture.md")), Lines{});
}

TEST(Layers, StandOnRowsAboveThemOnly) {
    std::set<std::string> above;
    for (const auto& layer : ReadLayers(Root / "docs/architecture.md")) {
        for (const auto& name : layer.allowed) {
            const bool isFile = name.ends_with(".h");
            EXPECT_TRUE(above.contains(isFile ? name.substr(0, name.rfind('/')) : name))
                << layer.folder << " may include " << name;
        }
        above.insert(layer.folder);
    }
}

TEST(Layers, AllowNothingInVain) {
    EXPECT_EQ(UnusedAllowances(Root, ReadLayers(Root / "docs/architecture.md")), Lines{});
}

TEST(UnitCircles, AreNone) {
    EXPECT_EQ(UnitCircles(Root, CircleExceptions), Lines{});
}

TEST(SystemSwitches, StandInPlatformAndRendererFoldersOnly) {
    EXPECT_EQ(SystemSwitches(Root, SystemExceptions), Lines{});
}

TEST(WidgetLocks, AreNone) {
    EXPECT_EQ(WidgetLocks(Root), Lines{});
}

TEST(LateHeaders, AreNone) {
    EXPECT_EQ(LateHeaders(Root), Lines{});
}

TEST(MissingPorts, AreNone) {
    EXPECT_EQ(MissingPorts(Root), Lines{});
}

TEST(LongSources, AreNone) {
    EXPECT_EQ(
        LongSources(Root, ReadLayers(Root / "docs/architecture.md"), LongestSource, LongExceptions), Lines{});
}

TEST(RepeatedTexts, AreNone) {
    // The salt of the machine's name keeps these words; otherwise each machine would get another name when
    // the product is renamed.
    EXPECT_EQ(RepeatedTexts(Root, ReadLayers(Root / "docs/architecture.md"),
                  {"\"Kavelin", "/Kavelin/", "KAV Sorrel Limiter", "\"1.0.1.0\""},
                  {"utils/product.h", "platform/linux/system_info.cpp"}),
        Lines{});
}

TEST(Panel, IsOneTableForTheEditorAndForItsPictures) {
    EXPECT_EQ(Repetitions(Root, SaidByThePanel(), {"panel", "tests"}), Lines{});
    const auto layers = ReadLayers(Root / "docs/architecture.md");
    for (const auto* folder : {"device_gui", "artwork"}) {
        const auto isFolder = [folder](const SLayer& layer) { return layer.folder == folder; };
        const auto layer = std::find_if(layers.begin(), layers.end(), isFolder);
        ASSERT_NE(layer, layers.end());
        EXPECT_TRUE(layer->allowed.contains("panel")) << folder;
    }
}

TEST(UnexplainedPackages, AreNone) {
    EXPECT_EQ(UnexplainedPackages(Root), Lines{});
}

TEST(UnknownTests, AreNone) {
    EXPECT_EQ(UnknownTests(Root), Lines{});
}

TEST(ReadLayers, TakesTheRowsOfTheTableInOrder) {
    const CMadeUpTree tree;
    tree.Write("layers.md", "# Title\n\n"
                            "| Something | Else |\n|---|---|\n| `no` | `layer` |\n\n"
                            "| Folder | May include | Holds |\n|---|---|---|\n"
                            "| `utils` | nothing | ground |\n"
                            "| `dsp` | `utils`, `vst/vst2.h` | |\n"
                            "| `tests` | everything | |\n\n"
                            "| `behind` | the table |\n");
    const auto layers = ReadLayers(tree.Root() / "layers.md");
    ASSERT_EQ(layers.size(), 3u);
    EXPECT_EQ(layers[0].folder, "utils");
    EXPECT_EQ(layers[0].allowed, std::set<std::string>{});
    EXPECT_TRUE(layers[0].product);
    EXPECT_EQ(layers[1].folder, "dsp");
    EXPECT_EQ(layers[1].allowed, (std::set<std::string>{"utils", "vst/vst2.h"}));
    EXPECT_EQ(layers[2].folder, "tests");
    EXPECT_FALSE(layers[2].product);
}

TEST(ReadLayers, RefusesATextWithoutTheTableOrWithAVagueRow) {
    const CMadeUpTree tree;
    tree.Write("none.md", "| Folder | Holds |\n|---|---|\n| `utils` | nothing |\n");
    tree.Write("vague.md", "| Folder | May include |\n|---|---|\n| `utils` | this and that |\n");
    EXPECT_THROW(ReadLayers(tree.Root() / "none.md"), std::runtime_error);
    EXPECT_THROW(ReadLayers(tree.Root() / "vague.md"), std::runtime_error);
    EXPECT_THROW(ReadLayers(tree.Root() / "absent.md"), std::runtime_error);
}

TEST(IncludeBreaks, AreNoneInAnOrderlyTree) {
    const CMadeUpTree tree;
    tree.Write("utils/text.h", "#include <string>\n");
    tree.Write("dsp/interface.h", "#include \"utils/text.h\"\n");
    tree.Write("dsp/deep/inside.h", "#include \"dsp/interface.h\"\n");
    tree.Write("tools/host/main.cpp", "#include \"dsp/interface.h\"\n#include \"tools/host/main.h\"\n");
    tree.Write("tools/host/main.h", "");
    tree.Write("tests/dsp/interface_test.cpp", "#include \"dsp/deep/inside.h\"\n");
    tree.Write("build/release/generated.cpp", "#include \"what.h\"\n");
    tree.Write(".cache/generated.cpp", "#include \"what.h\"\n");
    EXPECT_EQ(IncludeBreaks(tree.Root(), ThreeLayers()), Lines{});
}

TEST(IncludeBreaks, NameFileAndLine) {
    const CMadeUpTree tree;
    tree.Write("dsp/limiter.h", "");
    tree.Write("dsp/limiter.cpp", "#include \"limiter.h\"\n");
    tree.Write("plugin/entry.cpp", "");
    tree.Write("tools/host/main.cpp", "// upwards is fine here\n  #  include \"dsp/limiter.h\"\n");
    tree.Write("utils/text.cpp", "#include <dsp/limiter.h>\n#include \"dsp/limiter.h\" // why not\n");
    EXPECT_EQ(IncludeBreaks(tree.Root(), ThreeLayers()),
        (Lines{"dsp/limiter.cpp:1 includes limiter.h, not from the root",
            "plugin/entry.cpp lies in no folder of the table", "tools/host/main.cpp:2 includes dsp/limiter.h",
            "utils/text.cpp:1 includes dsp/limiter.h", "utils/text.cpp:2 includes dsp/limiter.h"}));
}

TEST(UnusedAllowances, NameTheFolderAndWhatItDoesNotInclude) {
    const CMadeUpTree tree;
    tree.Write("utils/text.h", "#include <string>\n");
    tree.Write("dsp/interface.h", "");
    tree.Write("dsp/limiter.cpp", "#include \"dsp/interface.h\"\n");
    tree.Write("tools/host/main.cpp", "#include \"utils/text.h\"\n#include \"utils/missing.h\"\n");
    EXPECT_EQ(UnusedAllowances(tree.Root(), ThreeLayers()),
        (Lines{"dsp includes nothing of utils", "tools/host includes nothing of dsp/interface.h"}));
    tree.Write("dsp/limiter.cpp", "#include <utils/text.h>\n");
    tree.Write("tools/host/main.cpp", "#include \"utils/text.h\"\n#include \"dsp/interface.h\"\n");
    EXPECT_EQ(UnusedAllowances(tree.Root(), ThreeLayers()), Lines{});
}

TEST(UnusedAllowances, OfAndForFoldersWithoutSourcesArePlans) {
    const CMadeUpTree tree;
    tree.Write("dsp/limiter.cpp", "");
    tree.Write("README.md", "");
    EXPECT_EQ(UnusedAllowances(tree.Root(), ThreeLayers()), Lines{});
}

TEST(UnitCircles, JoinAHeaderAndItsSource) {
    const CMadeUpTree tree;
    tree.Write("dsp/a.h", "");
    tree.Write("dsp/a.cpp", "#include \"dsp/a.h\"\n#include \"dsp/b.h\"\n");
    tree.Write("dsp/b.h", "#include \"dsp/c.h\"\n");
    tree.Write("dsp/c.h", "#include \"utils/a.h\"\n");
    tree.Write("utils/a.h", "");
    EXPECT_EQ(UnitCircles(tree.Root()), Lines{});
    tree.Write("dsp/c.h", "#include \"dsp/a.h\"\n");
    EXPECT_EQ(UnitCircles(tree.Root()), Lines{"dsp/a - dsp/b - dsp/c - dsp/a"});
    EXPECT_EQ(UnitCircles(tree.Root(), {"dsp/b"}), Lines{});
    EXPECT_EQ(UnitCircles(tree.Root(), {"dsp/d"}), Lines{"dsp/a - dsp/b - dsp/c - dsp/a"});
}

TEST(UnitCircles, AreFoundOneBesideTheOther) {
    const CMadeUpTree tree;
    tree.Write("dsp/a.h", "#include \"dsp/b.h\"\n#include \"dsp/c.h\"\n");
    tree.Write("dsp/b.h", "");
    tree.Write("dsp/c.h", "");
    tree.Write("dsp/b.cpp", "#include \"dsp/a.h\"\n");
    tree.Write("dsp/c.cpp", "#include \"dsp/a.h\"\n");
    tree.Write("dsp/leads.h", "#include \"dsp/a.h\"\n#include \"utils/x.h\"\n");
    tree.Write("utils/x.h", "#include \"utils/y.h\"\n");
    tree.Write("utils/y.h", "#include \"utils/x.h\"\n");
    EXPECT_EQ(UnitCircles(tree.Root()),
        (Lines{"dsp/a - dsp/b - dsp/a", "dsp/a - dsp/c - dsp/a", "utils/x - utils/y - utils/x"}));
}

TEST(SystemSwitches, NameFileAndLine) {
    const CMadeUpTree tree;
    tree.Write("dsp/limiter.cpp", "#if defined(__AVX__)\n#elif defined(_WIN32)\n#endif\n");
    tree.Write("gfx/opengl/window.cpp", "#ifdef __linux__\n#endif\n");
    tree.Write("gfx/renderer.cpp", "#ifndef __linux__\n#endif\n");
    tree.Write("platform/clock.h", "#ifdef _WIN32\n#endif\n");
    tree.Write("vst/vst2.h", "#ifdef _WIN32\n#endif\n");
    tree.Write("utils/text.cpp", "#if defined(NDEBUG) || \\\n    defined(WIN32)\n#endif\n");
    EXPECT_EQ(SystemSwitches(tree.Root(), {"vst/vst2.h"}),
        (Lines{"dsp/limiter.cpp:2 asks for the system", "gfx/renderer.cpp:1 asks for the system",
            "utils/text.cpp:1 asks for the system"}));
}

TEST(WidgetLocks, NameFileAndLine) {
    const CMadeUpTree tree;
    tree.Write("gui/label.h", "#include <mutex>\n\nstd::recursive_mutex m;\n");
    tree.Write("device_gui/patch.cpp", "const std::lock_guard lock(m);\nconst GUI::CLock other(gui);\n");
    tree.Write("device_gui/clock.cpp", "block(); CLocks clocks;\n");
    tree.Write("utils/turn.h", "#include <mutex>\n");
    EXPECT_EQ(WidgetLocks(tree.Root()),
        (Lines{"device_gui/patch.cpp:1 has a lock", "device_gui/patch.cpp:2 has a lock",
            "gui/label.h:1 has a lock", "gui/label.h:3 has a lock"}));
}

TEST(LateHeaders, NameTheirSources) {
    const CMadeUpTree tree;
    tree.Write("dsp/first.h", "#include <map>\n");
    tree.Write("dsp/first.cpp", "// why\n#include \"dsp/first.h\"\n#include <array>\n");
    tree.Write("dsp/late.h", "");
    tree.Write("dsp/late.cpp", "#include <array>\n#include \"dsp/late.h\"\n");
    tree.Write("dsp/forgotten.h", "");
    tree.Write("dsp/forgotten.cpp", "int i;\n");
    tree.Write("dsp/without.cpp", "#include <array>\n");
    EXPECT_EQ(LateHeaders(tree.Root()), (Lines{"dsp/forgotten.cpp doesn't begin with its header",
                                            "dsp/late.cpp doesn't begin with its header"}));
}

TEST(MissingPorts, NameWhatEitherSystemLacks) {
    const CMadeUpTree tree;
    tree.Write("platform/linux/clock.cpp", "");
    tree.Write("platform/linux/folders.cpp", "");
    tree.Write("platform/win32/clock.cpp", "");
    tree.Write("platform/win32/files/find.cpp", "");
    EXPECT_EQ(MissingPorts(tree.Root()),
        (Lines{"platform/linux/files/find.cpp is missing", "platform/win32/folders.cpp is missing"}));
}

TEST(MissingPorts, NameWhatABackEndLacks) {
    const CMadeUpTree tree;
    tree.Write("platform/linux/clock.cpp", "");
    tree.Write("platform/win32/clock.cpp", "");
    tree.Write("gfx/gpu.cpp", "");
    tree.Write("gfx/cpu/blit.cpp", "");
    tree.Write("gfx/ogl/linux/context.cpp", "");
    tree.Write("gfx/ogl/win32/context.cpp", "");
    tree.Write("gfx/ogl/win32/pixels.cpp", "");
    tree.Write("gfx/d3d/win32/data.cpp", "");
    EXPECT_EQ(MissingPorts(tree.Root()),
        (Lines{"gfx/d3d/linux/data.cpp is missing", "gfx/ogl/linux/pixels.cpp is missing"}));
}

TEST(LongSources, CountLinesOfTheProductOnly) {
    const CMadeUpTree tree;
    tree.Write("dsp/fits.cpp", "1\n2\n3\n");
    tree.Write("dsp/long.cpp", "1\n2\n3\n4\n");
    tree.Write("dsp/table.cpp", "1\n2\n3\n4\n");
    tree.Write("tests/long_test.cpp", "1\n2\n3\n4\n");
    EXPECT_EQ(
        LongSources(tree.Root(), ThreeLayers(), 3, {"dsp/table.cpp"}), Lines{"dsp/long.cpp has 4 lines"});
}

TEST(RepeatedTexts, NameFileAndLine) {
    const CMadeUpTree tree;
    tree.Write("utils/name.h", "#define NAME \"Thing 1.2\"\n");
    tree.Write("dsp/gain.cpp", "// the Thing\nauto a = \"a Thing\"; // our Thing\n");
    tree.Write("tests/gain_test.cpp", "auto a = \"Thing\";\n");
    EXPECT_EQ(RepeatedTexts(tree.Root(), ThreeLayers(), {"Thing", "1.2"}, {}),
        (Lines{
            "dsp/gain.cpp:2 repeats Thing", "utils/name.h:1 repeats Thing", "utils/name.h:1 repeats 1.2"}));
    EXPECT_EQ(RepeatedTexts(tree.Root(), ThreeLayers(), {"Thing", "1.2"}, {"utils/name.h"}),
        Lines{"dsp/gain.cpp:2 repeats Thing"});
}

TEST(Repetitions, NameFileAndTextAcrossBlanksAndLines) {
    const CMadeUpTree tree;
    tree.Write("panel/layout.cpp", "{1, 2, 3, 4}");
    tree.Write("artwork/knobs.cpp", "rect {1,2,\n    3, 4}\n");
    tree.Write("gui/label.cpp", "{1, 2, 3, 45}\nu\"Tool Patch\"\n");
    EXPECT_EQ(Repetitions(tree.Root(), {"{1,2,3,4}", "u\"Tool Patch\""}, {"panel"}),
        (Lines{"artwork/knobs.cpp repeats {1,2,3,4}", "gui/label.cpp repeats u\"Tool Patch\""}));
}

TEST(UnexplainedPackages, AreThoseThatTheDocumentDoesNotName) {
    const CMadeUpTree tree;
    tree.Write("packaging/packages.txt", "# GROUP PACKAGE\nbuild g++\n\nbuild   cmake\n");
    tree.Write("packaging/sources.txt", "# PACKAGE\nflac\nlibogg\n");
    tree.Write(
        "docs/dependencies.md", "| `g++` | compiler |\n| cmake | in words only |\n| `flac` | coder |\n");
    EXPECT_EQ(UnexplainedPackages(tree.Root()), (Lines{"cmake is not explained", "libogg is not explained"}));
}

TEST(UnknownTests, AreNamesAndRowsThatNothingStandsBehind) {
    const CMadeUpTree tree;
    tree.Write("tests/a_test.cpp", "TEST(Suite, Fact) {\n}\nTEST(Suite,\n    LongFact) {\n}\n"
                                   "TYPED_TEST(Suite, FactOfTypes) {\n}\n");
    tree.Write("tests/hosts/a.py", "class Host(Base):\n    def helper(self):\n    def test_runs(self):\n");
    tree.Write("docs/failures.md",
        "| Fault | Result | Shown by |\n|---|---|---|\n"
        "| a | b | `Suite.Fact`, `Suite.LongFact`, `Suite.FactOfTypes`, `Host.test_runs` |\n"
        "| c | d | `Suite.Fiction` |\n| e | f | |\n\n"
        "| Target | Gets | Runs |\n|---|---|---|\n| g | h | 1 |\n\n| i | j | |\n");
    EXPECT_EQ(UnknownTests(tree.Root()),
        (Lines{"Suite.Fiction is no test", "nothing shows: e", "nothing shows: i"}));
}
