// Frames of the OpenGL renderer: what it shares with others on its thread, what fails in a session, and where
// its pictures are meant to differ.

#include "gfx/renderers.h"
#include "pixels/blur.h"
#include "tests/gfx/ogl_functions.h"
#include "tests/gfx/ogl_window.h"
#include "tests/gfx/scene_comparison.h"
#include "tests/support/added_log.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <cstring>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

SDraw At(float left, float top, float width, float height, std::uint32_t colour = White) {
    SDraw draw;
    draw.sTo = {left, top, width, height};
    draw.nColor = colour;
    return draw;
}

const SScene& SceneOf(const std::string& name) {
    return *std::find_if(
        Scenes().begin(), Scenes().end(), [&](const SScene& scene) { return scene.name == name; });
}

class OglFrames : public testing::Test {
protected:
    CGlWindow window;
    CGlFunctions functions;
    OGL::DATA gpu{{window.Handle(), SceneWidth, SceneHeight}, EReason::Chosen};

    template<typename TDraw>
    Frame Drawn(GPU& target, const TDraw& draws) {
        target.BeginFrame();
        target.Clear();
        draws();
        target.EndFrame();
        return FrameOf(target);
    }
    /// How many pixels differ by more than `most`.
    static int Off(const Frame& one, const Frame& other, int most) {
        int off = 0;
        for (std::size_t n = 0; n < one.size(); ++n) {
            for (int shift = 0; shift < 24; shift += 8) {
                const int difference = std::abs(
                    static_cast<int>(one[n] >> shift & 0xFF) - static_cast<int>(other[n] >> shift & 0xFF));
                if (difference <= most) continue;
                ++off;
                break;
            }
        }
        return off;
    }
    static testing::AssertionResult AreClose(const Frame& one, const Frame& other) {
        const int off = Off(one, other, 1);
        if (off == 0) return testing::AssertionSuccess();
        return testing::AssertionFailure() << off << " pixels differ";
    }
};

} // namespace

// Several of them

TEST_F(OglFrames, OthersOnTheSameThreadDoNotDisturb) {
    CGlWindow otherWindow;
    OGL::DATA other({otherWindow.Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
    EXPECT_TRUE(other.IsCurrent());
    EXPECT_FALSE(gpu.IsCurrent());
    for (const auto* const name : {"own_size", "tints", "scaled"}) {
        EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, SceneOf(name))) << name;
        EXPECT_TRUE(gpu.IsCurrent());
        EXPECT_TRUE(DrawsAsThePlainRenderer(other, SceneOf("clipped"))) << name;
        gpu.Present();
        other.Present();
    }
    auto texture = MakeTexture(gpu, SpottedPicture(16, 16));
    DrawScene(other, SceneOf("cells"));
    const auto before = FrameOf(other);
    EXPECT_TRUE(other.IsCurrent());
    gpu.FreeTexture(texture);
    EXPECT_TRUE(gpu.IsCurrent()) << "the texture is one of its own";
    DrawScene(other, SceneOf("cells"));
    EXPECT_EQ(FrameOf(other), before);
    gpu.Resize(SceneWidth, SceneHeight);
    EXPECT_TRUE(gpu.IsCurrent());
}

TEST_F(OglFrames, GoOnWhenAnotherOneEnds) {
    for (int n = 0; n < 4; ++n) {
        CGlWindow otherWindow;
        OGL::DATA other({otherWindow.Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
        DrawScene(other, SceneOf("own_size"));
        DrawScene(gpu, SceneOf("own_size"));
        if (n % 2 == 0) {
            other.BeginFrame(); // it is current when it ends
        }
        other.Shutdown();
        EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, SceneOf("own_size")));
    }
}

TEST_F(OglFrames, OfAnotherSizeAreWhole) {
    for (const auto& size : {std::pair(90, 70), std::pair(200, 180), std::pair(SceneWidth, SceneHeight)}) {
        const auto width = size.first;
        const auto height = size.second;
        window.Resize(width, height);
        gpu.SetClip(1, 1, 2, 2);
        gpu.Resize(width, height);
        auto texture = MakeTexture(gpu, Backdrop(width, height));
        CPlainRenderer plain(width, height);
        auto expected = MakeTexture(plain, Backdrop(width, height));
        plain.DrawTexture(expected, At(0, 0, static_cast<float>(width), static_cast<float>(height)));
        const auto isWhole = [&] {
            gpu.BeginFrame();
            gpu.Clear();
            gpu.DrawTexture(texture, At(0, 0, static_cast<float>(width), static_cast<float>(height)));
            gpu.EndFrame();
            const auto drawn = FrameOf(gpu, width, height);
            gpu.Present();
            return AreClose(drawn, FrameOf(plain, width, height));
        };
        EXPECT_TRUE(isWhole() || (window.Settle() && isWhole())) << width;
        gpu.FreeTexture(texture);
    }
    gpu.Resize(0, 100);
    gpu.Resize(100, -1);
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, SceneOf("own_size"))) << "sizes without pixels change nothing";
}

TEST_F(OglFrames, AreReadBackToAnySizeWithBlackBeyond) {
    const auto frame = Drawn(gpu, [&] {
        auto texture = MakeTexture(gpu, Backdrop(SceneWidth, SceneHeight));
        gpu.DrawTexture(texture, At(0, 0, SceneWidth, SceneHeight));
    });
    const auto larger = FrameOf(gpu, SceneWidth + 3, SceneHeight + 2);
    EXPECT_EQ(larger[SceneWidth], 0xFF000000u);
    EXPECT_EQ(larger[static_cast<std::size_t>(SceneWidth + 3)], frame[SceneWidth]);
    EXPECT_EQ(larger.back(), 0xFF000000u);
    const auto smaller = FrameOf(gpu, 7, 5);
    EXPECT_EQ(smaller[7], frame[SceneWidth]);
    for (const auto pixel : frame) ASSERT_EQ(pixel >> 24, 0xFFu);
}

// What fails in a session

TEST_F(OglFrames, ThatCannotBeginThrowAndAreDropped) {
    CGlWindow otherWindow;
    OGL::DATA other({otherWindow.Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
    DrawScene(other, SceneOf("tints"));
    const auto before = FrameOf(other);
    CGlFunctions::failing = CGlFunctions::MakeCurrentName();
    CGlFunctions::error = 4711;
    auto texture = MakeTexture(other, SpottedPicture(8, 8));
    ASSERT_NE(texture.piGDIP, 0u);
    try {
        gpu.BeginFrame();
        ADD_FAILURE() << "it began";
    } catch (const Exceptions::OGL& failure) {
        const auto text = Utils::ToUtf8(failure.message);
        EXPECT_TRUE(text.starts_with(" OPENGL ERROR:\r\n\r\nVendor: ")) << text;
        EXPECT_TRUE(
            text.ends_with("\r\nFunction: ReDraw::" + CGlFunctions::MakeCurrentName() + "(): error = 4711"))
            << text;
    }
    // Nothing of this may reach the other one's context.
    gpu.Clear();
    gpu.DrawTexture(texture, At(0, 0, 50, 50));
    gpu.SetClip(5, 5, 1, 1);
    gpu.Resize(10, 10);
    gpu.EndFrame();
    gpu.Present();
    EXPECT_EQ(FrameOf(other), before);
    CGlFunctions::failing.clear();
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, SceneOf("own_size"))) << "the next frame";
    other.FreeTexture(texture);
}

TEST_F(OglFrames, ThatCannotBePresentedAreLoggedOnce) {
    CGlFunctions::failing = CGlFunctions::SwapName();
    CGlFunctions::error = 4711;
    const CAddedLog log;
    gpu.Present();
    gpu.Present();
    EXPECT_EQ(log.Text(), "Error=" + CGlFunctions::SwapName() + "(_hDC):4711\r\n");
    EXPECT_EQ(CGlFunctions::swaps, 2);
}

TEST_F(OglFrames, WithAnErrorAreLoggedAndGoOn) {
    const CAddedLog log;
    const auto draw = [&] { CGlFunctions::glError = 0x502; };
    Drawn(gpu, draw);
    EXPECT_EQ(log.Text(), "Error=glGetError():1282\r\n");
    EXPECT_TRUE(DrawsAsThePlainRenderer(gpu, SceneOf("own_size")));
}

TEST_F(OglFrames, TexturesThatCannotBeMadeLeaveNothing) {
    const std::vector<std::pair<std::string, std::string>> calls{
        {"glGenTextures", "glGenTextures(1, &nTexture):1285"},
        {"glTexImage2D", "glTexImage2D(GL_TEXTURE_2D, 0, nInternalFormat, a_nTexW, a_nTexH, 0, nFormat, "
                         "GL_UNSIGNED_BYTE, nullptr):1285"},
        {"glTexSubImage2D", "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, a_nW, a_nH, nFormat, GL_UNSIGNED_BYTE, "
                            "a_pBits):1281"}};
    for (const auto& [function, text] : calls) {
        CGlFunctions::failing = function;
        const CAddedLog log;
        EXPECT_EQ(MakeTexture(gpu, SpottedPicture(8, 8)).piGDIP, 0u);
        EXPECT_EQ(log.Text(), "Error=" + text + "\r\n");
        EXPECT_EQ(CGlFunctions::textures, 0) << function;
    }
    CGlFunctions::failing.clear();
    auto texture = MakeTexture(gpu, SpottedPicture(40, 30));
    EXPECT_EQ(CGlFunctions::textures, 1);
    CGlFunctions::failing =
        "glTexImage2D"; // at a size that is made when it is drawn: the stored one is stretched
    const auto frame = Drawn(gpu, [&] { gpu.DrawTexture(texture, At(0, 0, 80, 60)); });
    EXPECT_NE(frame[SceneWidth * 30 + 40], 0xFF000000u);
    gpu.FreeTexture(texture);
    EXPECT_EQ(CGlFunctions::textures, 0);
}

TEST_F(OglFrames, SizesThatAreNoLongerDrawnAreFreed) {
    auto texture = MakeTexture(gpu, SpottedPicture(40, 30));
    for (int side = 10; side < 60; side += 10) {
        Drawn(gpu, [&] {
            gpu.DrawTexture(texture, At(0, 0, static_cast<float>(side), 17));
            gpu.DrawTexture(texture, At(60, 0, 33, 44));
        });
        EXPECT_EQ(CGlFunctions::textures, 3) << "as stored, and at two sizes";
    }
    gpu.SetStretching(true);
    Drawn(gpu, [&] { gpu.DrawTexture(texture, At(0, 0, 70, 60)); });
    EXPECT_EQ(CGlFunctions::textures, 2) << "no further one";
    gpu.FreeTexture(texture);
    EXPECT_EQ(CGlFunctions::textures, 0);
    MakeTexture(gpu, SpottedPicture(40, 30));
    gpu.Shutdown();
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

TEST_F(OglFrames, OfADestroyedWindowHarmNothing) {
    DrawScene(gpu, SceneOf("own_size"));
    window.Destroy();
    for (int n = 0; n < 3; ++n) {
        try {
            DrawScene(gpu, SceneOf("scaled"));
            gpu.Present();
        } catch (const Exceptions::OGL&) { // as the system likes
        }
    }
    gpu.Shutdown();
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

TEST_F(OglFrames, ALostContextIsDueForRenewal) {
    CGlWindow otherWindow;
    OGL::DATA other({otherWindow.Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
    EXPECT_FALSE(gpu.IsRenewalDue());
    CGlFunctions::failing = CGlFunctions::MakeCurrentName();
    CGlFunctions::error = 0x300E; // on Windows there is no such number, and none is needed
    EXPECT_THROW(gpu.BeginFrame(), Exceptions::OGL);
    EXPECT_TRUE(gpu.IsRenewalDue());
    EXPECT_FALSE(other.IsRenewalDue());
}

#if !defined(_WIN32)

TEST_F(OglFrames, AContextThatIsLostWhileItPresentsIsDueForRenewal) {
    CGlFunctions::failing = "eglSwapBuffers";
    CGlFunctions::error = 0x300D;
    gpu.Present();
    EXPECT_FALSE(gpu.IsRenewalDue()) << "another error";
    CGlFunctions::error = 0x300E;
    gpu.Present();
    EXPECT_TRUE(gpu.IsRenewalDue());
}

TEST_F(OglFrames, AreShownInTheWindow) {
    DrawScene(gpu, SceneOf("turned"));
    const auto frame = FrameOf(gpu);
    gpu.Present();
    const auto shown = window.Shown(window.Number());
    for (std::size_t n = 0; n < frame.size(); ++n)
        ASSERT_EQ(shown[n], frame[n]) << n % SceneWidth << ", " << n / SceneWidth;
}

TEST(OglWindow, WithAlphaShowsAnOpaqueFrame) {
    CXTestHost::SOptions options;
    options.depth = 32;
    CGlWindow window(std::make_shared<CXTestHost>(options), SceneWidth, SceneHeight);
    ASSERT_EQ(window.Host().Place(window.Number()).depth, 32);
    OGL::DATA gpu{{window.Handle(), SceneWidth, SceneHeight}, EReason::Chosen};
    ASSERT_TRUE(gpu.IsReady());
    DrawScene(gpu, SceneOf("tints"));
    const auto frame = FrameOf(gpu);
    gpu.Present();
    EXPECT_EQ(window.Shown(window.drawn), frame) << "itself, or a child without alpha";
}

TEST_F(OglFrames, OfADeadDisplayHarmNothing) {
    DrawScene(gpu, SceneOf("own_size"));
    gpu.Present();
    window.Host().KillServer();
    for (int n = 0; n < 3; ++n) {
        try {
            DrawScene(gpu, SceneOf("scaled"));
            gpu.Present();
        } catch (const Exceptions::OGL&) { // as the system likes
        }
    }
    gpu.Shutdown();
    EXPECT_TRUE(CGlFunctions::IsLevel());
}

#else

TEST_F(OglFrames, AContextThatIsRefusedWithoutItsWindowIsNotDueForRenewal) {
    CGlWindow otherWindow;
    OGL::DATA other({otherWindow.Handle(), SceneWidth, SceneHeight}, EReason::Chosen);
    window.Destroy();
    CGlFunctions::failing = CGlFunctions::MakeCurrentName();
    EXPECT_THROW(gpu.BeginFrame(), Exceptions::OGL);
    EXPECT_FALSE(gpu.IsRenewalDue());
}

#endif

// Where its pictures are meant to differ

TEST_F(OglFrames, NineSlicesTakeTheCellOfTheValue) {
    constexpr std::int32_t columns = 3;
    constexpr std::int32_t rows = 2;
    const auto sheet = SpottedPicture(21, 19, columns, rows);
    for (const float value : {0.0f, 0.2f, 0.5f, 0.69f, 0.71f, 1.0f}) {
        const auto frame = static_cast<std::int32_t>(5.0f * value + 0.5f);
        auto cell = Pixels::TransparentBitmap(21, 19);
        cell.alpha = sheet.alpha;
        for (std::int32_t y = 0; y < 19; ++y) {
            for (std::int32_t x = 0; x < 4 * 21; ++x) {
                cell.bytes[static_cast<std::size_t>(y * cell.stride + x)] =
                    sheet.bytes[static_cast<std::size_t>(
                        (frame / columns * 19 + y) * sheet.stride + 4 * 21 * (frame % columns) + x)];
            }
        }
        const auto draw = [value](GPU& target, const Pixels::SBitmap& bitmap, std::int32_t across,
                              std::int32_t down) {
            const auto texture = MakeTexture(target, bitmap, across, down);
            SDraw9 slices{{3, 5, 21, 19}, 5, 4, 7, 6, White, value, {}};
            target.DrawTexture9(texture, slices);
        };
        CPlainRenderer plain(SceneWidth, SceneHeight);
        plain.Clear();
        draw(plain, cell, 1, 1);
        const auto drawn = Drawn(gpu, [&] { draw(gpu, sheet, columns, rows); });
        EXPECT_TRUE(AreClose(drawn, FrameOf(plain))) << value;
        EXPECT_EQ(CGlFunctions::drawn.back(), 36) << "in one call";
    }
}

TEST_F(OglFrames, ShiftsAreRoundedToWholePixels) {
    const auto draw = [](GPU& target, float x, float y) {
        auto moved = At(20, 20, 31, 23);
        moved.sTransform.fMX = x;
        moved.sTransform.fMY = y;
        target.DrawTexture(MakeTexture(target, SpottedPicture(31, 23)), moved);
    };
    const auto whole = Drawn(gpu, [&] { draw(gpu, 7.0f, -9.0f); });
    EXPECT_EQ(Drawn(gpu, [&] { draw(gpu, 6.6f, -8.7f); }), whole);
    EXPECT_EQ(Drawn(gpu, [&] { draw(gpu, 7.4f, -9.4f); }), whole);
    EXPECT_NE(Drawn(gpu, [&] { draw(gpu, 7.6f, -9.0f); }), whole);
}

TEST_F(OglFrames, LinesWithColoursOfTheirPointsAreBlendedAlong) {
    const std::vector<SPoint> points{{20.5f, 0.0f, 0.0f, 0xFFFF0000}, {20.5f, 100.0f, 0.0f, 0xFF0000FF}};
    gpu.SetLineColor(0.0f, 1.0f, 0.0f, 1.0f);
    const auto frame = Drawn(gpu, [&] { gpu.DrawLines(2, points.data(), true, true); });
    for (const std::size_t y : {10u, 50u, 90u}) {
        const auto pixel = frame[y * SceneWidth + 20];
        const auto share = (static_cast<double>(y) + 0.5) / 100.0;
        EXPECT_NEAR(static_cast<double>(pixel >> 16 & 0xFF), 255.0 * (1.0 - share), 2.0);
        EXPECT_EQ(pixel >> 8 & 0xFF, 0u);
        EXPECT_NEAR(static_cast<double>(pixel & 0xFF), 255.0 * share, 2.0);
    }
    const auto plain = Drawn(gpu, [&] { gpu.DrawLines(2, points.data(), false, true); });
    EXPECT_EQ(plain[50 * SceneWidth + 20], 0xFF00FF00u)
        << "the colour that was set, whatever was drawn before";
}

TEST_F(OglFrames, LinesAreDrawnWithoutATexture) {
    const std::vector<SPoint> points{{20.5f, 0.0f, 0.0f, White}, {20.5f, 100.0f, 0.0f, White}};
    gpu.SetLineColor(1.0f, 1.0f, 1.0f, 1.0f);
    const auto frame = Drawn(gpu, [&] {
        auto texture = MakeTexture(gpu, Backdrop(40, 40));
        gpu.DrawTexture(texture, At(60, 60, 40, 40, 0x80FF0000));
        gpu.DrawLines(2, points.data(), false, true);
    });
    EXPECT_EQ(frame[50 * SceneWidth + 20], 0xFFFFFFFFu);
}

TEST_F(OglFrames, LinesThatAreNoneAreNotDrawn) {
    const std::vector<SPoint> points{{20.5f, 0.0f, 0.0f, White}, {std::nanf(""), 100.0f, 0.0f, White}};
    const auto frame = Drawn(gpu, [&] {
        gpu.DrawLines(1, points.data(), false, true);
        gpu.DrawLines(2, nullptr, false, true);
        gpu.DrawLines(2, points.data(), false, true);
        gpu.SetLineWidth(0.0f);
        gpu.DrawLines(1, points.data(), false, true);
    });
    EXPECT_EQ(frame, Frame(frame.size(), 0xFF000000));
}

TEST_F(OglFrames, AColourWithoutAlphaDrawsNothing) {
    auto texture = MakeTexture(gpu, Backdrop(40, 40));
    CGlFunctions::drawn.clear();
    Drawn(gpu, [&] {
        gpu.DrawTexture(texture, At(0, 0, 40, 40, 0x00FFFFFF));
        gpu.DrawTexture9(texture, {{0, 0, 40, 40}, 1, 1, 1, 1, 0x00FFFFFF, 0.0f, {}});
    });
    EXPECT_TRUE(CGlFunctions::drawn.empty());
}

TEST_F(OglFrames, PartsOfQuadsThatTurnAwayAreNotCutOff) {
    auto turned = At(20, 10, 120, 100); // its corners come 35 pixels nearer and go as far away
    turned.sTransform.fRY = 45.0f;
    CPlainRenderer plain(SceneWidth, SceneHeight);
    plain.Clear();
    plain.DrawTexture(MakeTexture(plain, Backdrop(120, 100)), turned);
    CEdgeMap edges(SceneWidth, SceneHeight);
    edges.DrawTexture({}, turned);
    const auto frame = Drawn(gpu, [&] { gpu.DrawTexture(MakeTexture(gpu, Backdrop(120, 100)), turned); });
    EXPECT_LE(CompareFrames(frame, FrameOf(plain), &edges).share, ShareElsewhere);
}

TEST_F(OglFrames, ACellBetweenPixelsShowsNothingFromBeyondIt) {
    auto sheet = Pixels::TransparentBitmap(20, 10); // red and green, and next to it blue
    sheet.alpha = Pixels::EAlpha::Straight;
    for (std::size_t n = 0; n < 200; ++n) {
        const std::size_t x = n % 20;
        const std::uint32_t colour = x < 5 ? 0xFFFF0000 : x < 10 ? 0xFF00FF00 : 0xFF0000FF;
        std::memcpy(&sheet.bytes[4 * n], &colour, 4);
    }
    auto draw = At(10.25f, 10.0f, 10.0f, 10.0f);
    draw.sFrom = {0.0f, 0.5f, 0.0f, 1.0f};
    for (const float place : {10.25f, 10.45f, 9.75f}) {
        draw.sTo.fL = place;
        const auto frame = Drawn(gpu, [&] { gpu.DrawTexture(MakeTexture(gpu, sheet, 2, 1), draw); });
        const std::size_t row = 15 * SceneWidth;
        EXPECT_EQ(frame[row + 10], 0xFFFF0000u) << place << ": nothing of the opposite edge";
        EXPECT_EQ(frame[row + 19], 0xFF00FF00u) << place << ": nothing of the next cell";
    }
}

TEST_F(OglFrames, TheFrameStaysOpaqueUnderTransparentPictures) {
    auto texture = MakeTexture(gpu, Backdrop(40, 40));
    Drawn(gpu, [&] { gpu.DrawTexture(texture, At(0, 0, 40, 40, 0x40FFFFFF)); });
    std::uint32_t pixel = 0;
#if defined(_WIN32)
    Platform::Wgl()->gl.glReadPixels(20, SceneHeight - 20, 1, 1, 0x80E1, 0x1401, &pixel);
#else
    Platform::EglAccess().load()->gl.glReadPixels(20, SceneHeight - 20, 1, 1, 0x80E1, 0x1401, &pixel);
#endif
    EXPECT_EQ(pixel >> 24, 0xFFu);
}

TEST_F(OglFrames, PicturesOfAllFormatsKeepTheirColours) {
    const std::vector<std::uint8_t> rows{10, 20, 30, 40, 50, 60, 0, 0, 70, 80, 90, 100, 110, 120, 0, 0};
    STexture texture;
    texture.nW = texture.nH = 2;
    gpu.CreateTextureBits(rows.data(), 8, 0x21808, texture, 2, 2, 2, 2);
    auto frame = Drawn(gpu, [&] { gpu.DrawTexture(texture, At(0, 0, 2, 2)); });
    EXPECT_EQ(frame[0], 0xFF1E140Au);
    EXPECT_EQ(frame[1], 0xFF3C3228u);
    EXPECT_EQ(frame[SceneWidth + 1], 0xFF786E64u);
    gpu.FreeTexture(texture);
    const std::uint32_t half = 0x80402010; // premultiplied: a colour of 80, 40, 20
    STexture one;
    one.nW = one.nH = 1;
    gpu.CreateTextureBits(&half, 4, 0xE200B, one, 1, 1, 1, 1);
    frame = Drawn(gpu, [&] { gpu.DrawTexture(one, At(0, 0, 1, 1)); });
    EXPECT_NEAR(static_cast<double>(frame[0] >> 16 & 0xFF), 0x40, 1.0);
    EXPECT_NEAR(static_cast<double>(frame[0] & 0xFF), 0x10, 1.0);
    const CAddedLog log;
    STexture none;
    gpu.CreateTextureBits(&half, 4, 12345, none, 1, 1, 1, 1);
    EXPECT_EQ(none.piGDIP, 0u);
    EXPECT_NE(log.Text().find("Error=CreateTextureBits("), std::string::npos);
}

TEST_F(OglFrames, ABackdropIsTheBlurredFrame) {
    DrawScene(gpu, SceneOf("own_size"));
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, SceneWidth, SceneHeight);
    ASSERT_NE(backdrop.piGDIP, 0u);
    EXPECT_EQ(backdrop.nW, SceneWidth);
    auto expected = FrameOf(gpu);
    const auto sharp = expected;
    Pixels::Blur({reinterpret_cast<std::uint8_t*>(expected.data()), 4 * expected.size()}, SceneWidth,
        SceneHeight, 4, 4 * SceneWidth, false);
    const auto frame = Drawn(gpu, [&] { gpu.DrawTexture(backdrop, At(0, 0, SceneWidth, SceneHeight)); });
    EXPECT_TRUE(AreClose(frame, expected));
    EXPECT_GT(Off(frame, sharp, 8), 100);
    gpu.FreeTexture(backdrop);
}
