// Several renderers at once on one thread, and many one after the other.

#include "gfx/renderers.h"
#include "tests/gfx/direct_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/gfx/watched_calls.h"

#include <cstdlib>
#include <memory>
#include <psapi.h>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// A window with a renderer, and what one that is alone draws.
struct SEditor {
    explicit SEditor(std::uint32_t which) : number(which) {
        gpu = GFX::Renderers()[which].pCreate(window.Target(), GFX::EReason::Chosen);
    }
    Frame Draw(const std::string& scene) const {
        DrawScene(*gpu, SceneOf(scene));
        gpu->Present();
        return FrameOf(*gpu);
    }

    std::uint32_t number;
    CDirectWindow window{SceneWidth, SceneHeight};
    std::unique_ptr<GFX::GPU> gpu;
};

const std::array<std::string, 4> Pictures{"clipped", "tints", "transformed", "smooth_lines"};

class DirectEditors : public testing::TestWithParam<std::vector<std::uint32_t>> {};

} // namespace

TEST_P(DirectEditors, DrawInTurnAsIfEachWereAlone) {
    std::vector<std::vector<Frame>> expected; // by editor and picture
    for (const auto number : GetParam()) {
        const SEditor alone(number);
        ASSERT_TRUE(alone.gpu->IsReady()) << number;
        auto& frames = expected.emplace_back();
        for (const auto& picture : Pictures) frames.push_back(alone.Draw(picture));
    }
    std::vector<std::unique_ptr<SEditor>> editors;
    for (const auto number : GetParam()) editors.push_back(std::make_unique<SEditor>(number));
    const auto draw = [&](std::size_t round) {
        for (std::size_t n = 0; n < editors.size(); ++n) {
            if (editors[n] == nullptr) continue;
            const std::size_t picture = (n + round) % Pictures.size();
            EXPECT_EQ(editors[n]->Draw(Pictures[picture]), expected[n][picture])
                << n << " in round " << round;
        }
    };
    draw(0);
    draw(1);
    editors.front().reset(); // closed while the others go on
    draw(2);
    editors.back()->gpu->Resize(70, 50);
    editors.back()->gpu->Resize(SceneWidth, SceneHeight);
    draw(3);
}

INSTANTIATE_TEST_SUITE_P(All, DirectEditors,
    testing::Values(std::vector{GFX::Direct3D9, GFX::Direct3D9}, std::vector{GFX::Direct2D, GFX::Direct2D},
        std::vector{GFX::Direct3D9, GFX::Direct2D},
        std::vector{GFX::Direct3D9, GFX::Direct2D, GFX::OpenGL, GFX::Software},
        std::vector{GFX::Direct3D9, GFX::Direct3D9, GFX::Direct2D, GFX::Direct2D}));

TEST(DirectSwitches, LeaveNothingBehind) {
    const CWatchedDirect3D direct3D;
    const CWatchedDirect2D direct2D;
    const CDirectWindow window(SceneWidth, SceneHeight);
    std::array<Frame, GFX::RendererCount> expected;
    const auto used = [] {
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
        return counters.PagefileUsage;
    };
    const int rounds = std::getenv("KAV_LONG") != nullptr ? 1000 : 40;
    std::size_t settled = 0;
    for (int n = 0; n < rounds; ++n) {
        const auto number = static_cast<std::uint32_t>(n) % GFX::RendererCount;
        const auto gpu = GFX::Renderers()[number].pCreate(window.Target(), GFX::EReason::Chosen);
        ASSERT_TRUE(gpu->IsReady()) << n;
        DrawScene(*gpu, SceneOf("tints"));
        gpu->Present();
        auto& frame = expected[number];
        if (frame.empty()) frame = FrameOf(*gpu);
        ASSERT_EQ(FrameOf(*gpu), frame) << n;
        gpu->Shutdown();
        if (n == rounds / 5) settled = used();
    }
    EXPECT_GT(direct3D->made, rounds);
    EXPECT_EQ(direct3D->made, direct3D->freed);
    EXPECT_GT(direct2D->made, rounds);
    EXPECT_EQ(direct2D->made, direct2D->freed);
    constexpr std::size_t most = 16u << 20u; // the system's own caches grow a little
    const auto end = used();
    RecordProperty("kilobytesAfterAFifth", std::to_string(settled / 1024));
    RecordProperty("kilobytes", std::to_string(end / 1024));
    EXPECT_LT(end, settled + most);
}
