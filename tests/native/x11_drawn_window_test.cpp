// A window that a renderer draws into by itself, or that has a child which a renderer draws into.

#include "gfx/ogl/data.h"
#include "tests/native/x11_editor.h"

#include <optional>

namespace KAV::Tests {

using Lines = std::vector<std::string>;

namespace {

constexpr std::uint32_t Red = 0xFFFF0000;

/// The editor's window, as one whose visual can't be drawn with.
class COtherVisual final : public Platform::IPictureTarget {
public:
    explicit COtherVisual(Native::CX11Window& window) : _window(window) {}
    bool Put(const std::uint32_t* pixels, std::int32_t stride, std::int32_t width, std::int32_t height,
        std::span<const Platform::SArea> areas) noexcept override {
        return _window.Put(pixels, stride, width, height, areas);
    }
    Platform::SSystemWindow System() const noexcept override {
        auto system = _window.System();
        system.visual = 0x7FFF;
        return system;
    }
    void SetDrawnWindow(std::uint32_t window) noexcept override { _window.SetDrawnWindow(window); }

private:
    Native::CX11Window& _window;
};

/// Draws a frame of nothing but black.
void DrawBlack(GFX::GPU& gpu) {
    gpu.BeginFrame();
    gpu.Clear();
    gpu.EndFrame();
    gpu.Present();
}

/// Another window lies over the editor for a moment, and no picture of it is kept by the display.
void CoverForAMoment(CXTestHost& host, CX11Editor& editor) {
    const auto cover = host.MakeWindow(host.Parent(), 0, 0, 250, 200);
    host.Raise(cover);
    host.Show(cover, true);
    editor.Run(3);
    editor.heard.paints = 0;
    host.Show(cover, false);
}

} // namespace

TEST(X11DrawnWindow, TellsAnotherRendererWhereItIs) {
    CXTestHost host;
    CX11Editor editor(host);
    const auto system = editor.window->System();
    EXPECT_NE(system.connection, nullptr);
    EXPECT_EQ(system.window, editor.id);
    EXPECT_EQ(system.visual, host.VisualOf(editor.id));
    EXPECT_EQ(system.screen, 0);
    editor.window->End();
    EXPECT_EQ(editor.window->System().connection, nullptr);
}

TEST(X11DrawnWindow, ShowsNoEarlierPictureAgain) {
    CXTestHost host;
    CX11Editor editor(host);
    EXPECT_TRUE(editor.Fill(Red));
    EXPECT_TRUE(editor.Shows(10, 10, Red));
    auto* const target = static_cast<Platform::IPictureTarget*>(editor.window.get());
    std::optional<GFX::OGL::DATA> gpu;
    gpu.emplace(GFX::SRendererTarget{target, 200, 150}, GFX::EReason::Chosen);
    ASSERT_TRUE(gpu->IsReady());
    DrawBlack(*gpu);
    EXPECT_TRUE(editor.Shows(10, 10, 0));
    CoverForAMoment(host, editor);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0; })) << "it is to draw again";
    editor.Run(3);
    EXPECT_EQ(host.Pixel(editor.id, 10, 10) & 0xFFFFFFu, 0u);
    gpu.reset();
    EXPECT_TRUE(editor.Until([&] { return editor.Fill(Red); }));
    EXPECT_TRUE(editor.Shows(10, 10, Red)) << "the next renderer";
}

TEST(X11DrawnWindow, KeepsTheInputOfAChild) {
    CXTestHost host;
    CX11Editor editor(host);
    COtherVisual target(*editor.window);
    const GFX::OGL::DATA gpu(
        {static_cast<Platform::IPictureTarget*>(&target), 200, 150}, GFX::EReason::Chosen);
    ASSERT_TRUE(gpu.IsReady());
    ASSERT_EQ(host.Children(editor.id).size(), 1u);
    editor.window->TrackLeave();
    host.MoveTo(10, 20);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.lastMove == "10,20 flags 0"; }));
    EXPECT_EQ(editor.Lines(), Lines{}) << "the pointer in the child hasn't left";
    host.Press(1);
    host.MoveTo(30, 40);
    host.Release(1);
    EXPECT_EQ(editor.Lines(), (Lines{"press 10,20 flags 1", "release 30,40 flags 1"}));
    editor.window->TrackLeave();
    host.MoveTo(300, 250);
    EXPECT_EQ(editor.Lines(), Lines{"leave"});
}

TEST(X11DrawnWindow, IsDrawnAgainWhenAChildHasLostItsPicture) {
    CXTestHost host;
    CX11Editor editor(host);
    COtherVisual target(*editor.window);
    GFX::OGL::DATA gpu({static_cast<Platform::IPictureTarget*>(&target), 200, 150}, GFX::EReason::Chosen);
    ASSERT_TRUE(gpu.IsReady());
    DrawBlack(gpu);
    CoverForAMoment(host, editor);
    EXPECT_TRUE(editor.Until([&] { return editor.heard.paints > 0; }));
}

} // namespace KAV::Tests
