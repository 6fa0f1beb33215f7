// Many renderers, one after the other and at once.

#include "gfx/renderers.h"
#include "tests/gfx/ogl_functions.h"
#include "tests/gfx/ogl_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/support/process_memory.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

const SScene& SceneOf(const std::string& name) {
    return *std::find_if(
        Scenes().begin(), Scenes().end(), [&](const SScene& scene) { return scene.name == name; });
}

#if !defined(_WIN32)
std::ptrdiff_t OpenFiles() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}
#endif

} // namespace

TEST(OglSwitches, LeaveNothingBehind) {
    CGlWindow window;
    const CGlFunctions functions;
    const ShowError show = [](std::u16string_view, std::u16string_view) { ADD_FAILURE() << "a box"; };
#if !defined(_WIN32)
    [[maybe_unused]] std::size_t memory = 0; // is not looked at under a sanitizer
    std::ptrdiff_t files = 0;
#endif
    const int rounds = std::getenv("KAV_LONG") != nullptr ? 1000 : 200;
    for (int n = 0; n < rounds; ++n) {
        const std::uint32_t number = n % 2 == 0 ? OpenGL : Software;
        const auto created = CreateRenderer(window.Handle(), SceneWidth, SceneHeight, number, show);
        ASSERT_EQ(created.nRenderer, number) << n;
        DrawScene(created.Get(), SceneOf(n % 4 == 0 ? "scaled" : "cells"));
        created.Get().Present();
        created.Get().Shutdown();
        ASSERT_TRUE(CGlFunctions::IsLevel()) << n;
#if !defined(_WIN32)
        const bool isEnd = n + 1 == rounds;
        if (!isEnd && n + 1 != rounds / 5) continue;
        if (isEnd) {
            EXPECT_EQ(OpenFiles(), files);
#if !defined(KAV_SANITIZED) // a sanitizer keeps freed memory for a while
            // 80 contexts that were kept would take 80 MB.
            EXPECT_LT(AnonymousBytes(), memory + (4U << 20U));
#endif
        }
        memory = AnonymousBytes();
        files = OpenFiles();
#endif
    }
}

TEST(OglSwitches, RenderersOfAllKindsDrawInTurn) {
    const CGlFunctions functions;
    std::vector<std::unique_ptr<CGlWindow>> windows;
    std::vector<SCreatedRenderer> renderers;
    const std::array<std::uint32_t, 4> numbers{OpenGL, Software, OpenGL, OpenGL};
    for (const auto number : numbers) {
        windows.push_back(std::make_unique<CGlWindow>());
        renderers.push_back(CreateRenderer(windows.back()->Handle(), SceneWidth, SceneHeight, number,
            [](std::u16string_view, std::u16string_view) { ADD_FAILURE() << "a box"; }));
        ASSERT_EQ(renderers.back().nRenderer, number);
    }
    std::size_t frame = 0;
    while (!renderers.empty()) {
        for (int n = 0; n < 3; ++n) {
            for (const auto& renderer : renderers) {
                const auto& scene = SceneOf(std::array{"own_size", "cells", "tints"}[frame++ % 3]);
                if (renderer.nRenderer == OpenGL) {
                    ASSERT_TRUE(DrawsAsThePlainRenderer(renderer.Get(), scene));
                } else {
                    DrawScene(renderer.Get(), scene);
                }
                renderer.Get().Present();
            }
        }
        // The oldest one is closed while the others draw.
        renderers.front().Get().Shutdown();
        renderers.erase(renderers.begin());
        windows.erase(windows.begin());
    }
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

#if !defined(_WIN32)

TEST(OglSwitches, RenderersOnThreadsOfTheirOwnDrawAtOnce) {
    std::vector<std::unique_ptr<CGlWindow>> windows;
    for (int n = 0; n < 4; ++n) windows.push_back(std::make_unique<CGlWindow>());
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (std::size_t n = 0; n < windows.size(); ++n) {
        threads.emplace_back([&, n] {
            // Each begins and ends while others draw, as editors are opened and closed.
            for (std::size_t opening = 0; opening <= n; ++opening) {
                OGL::DATA gpu({windows[n]->Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
                for (int frame = 0; frame < 12; ++frame) {
                    if (!DrawsAsThePlainRenderer(gpu, SceneOf(frame % 2 == 0 ? "cells" : "tints"))) ++wrong;
                    gpu.Present();
                }
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

#endif
