#include "gfx/gpu.h"

#include "gfx/pixel_format.h"
#include "pixels/blur.h"
#include "tests/support/recording_gpu.h"

#include <array>
#include <bit>
#include <cstddef>
#include <gtest/gtest.h>
#include <new>
#include <tuple>
#include <type_traits>

using namespace KAV;
using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

/// Keeps the name of the operation that was called last.
class CNamedCalls final : public GPU {
public:
    explicit CNamedCalls(bool* ended = nullptr) : _ended(ended) {}
    ~CNamedCalls() override {
        if (_ended != nullptr) *_ended = true;
    }
    mutable std::string last;

    bool AnySizeTextures() const override { return Note("AnySizeTextures"); }
    std::int32_t MinTextureW() const override { return Note("MinTextureW"); }
    std::int32_t MaxTextureW() const override { return Note("MaxTextureW"); }
    std::int32_t MinTextureH() const override { return Note("MinTextureH"); }
    std::int32_t MaxTextureH() const override { return Note("MaxTextureH"); }
    std::int32_t MaxAspect() const override { return Note("MaxAspect"); }
    void Clear() override { Note("Clear"); }
    void BeginFrame() override { Note("BeginFrame"); }
    void EndFrame() override { Note("EndFrame"); }
    void Present() override { Note("Present"); }
    void Resize(std::int32_t, std::int32_t) override { Note("Resize"); }
    void SetLineWidth(float) override { Note("SetLineWidth"); }
    void SetLineColor(float, float, float, float) override { Note("SetLineColor"); }
    void SetLineSmooth(bool) override { Note("SetLineSmooth"); }
    bool IsOffscreenCapable() const override { return Note("IsOffscreenCapable"); }
    void BeginOffscreen() override { Note("BeginOffscreen"); }
    void EndOffscreen() override { Note("EndOffscreen"); }
    void DrawOffscreen() override { Note("DrawOffscreen"); }
    void DrawLines(std::int32_t, const SPoint*, bool, bool) override { Note("DrawLines"); }
    void DrawTexture(const STexture&, const SDraw&) override { Note("DrawTexture"); }
    void DrawTexture9(const STexture&, const SDraw9&) override { Note("DrawTexture9"); }
    void CreateTextureBits(const void*, std::int32_t, std::int32_t, STexture&, std::int32_t, std::int32_t,
        std::int32_t, std::int32_t) override {
        Note("CreateTextureBits");
    }
    void CreateTexture(const Pixels::SBitmap&, STexture&, std::int32_t, std::int32_t) override {
        Note("CreateTexture");
    }
    void FreeTexture(STexture&) override { Note("FreeTexture"); }
    void UnbindTexture() override { Note("UnbindTexture"); }
    void MakeBackdrop(STexture&, std::int32_t, std::int32_t) override { Note("MakeBackdrop"); }
    void SetClip(float, float, float, float) override { Note("SetClip"); }
    void SetCulling(bool) override { Note("SetCulling"); }
    bool Shutdown() override { return Note("Shutdown"); }
    bool IsReady() const override { return Note("IsReady"); }
    bool IsCurrent() const override { return Note("IsCurrent"); }
    void ReadBack(std::uint32_t*, std::int32_t, std::int32_t) override { Note("ReadBack"); }
    const char16_t* GetName() const override {
        Note("GetName");
        return u"";
    }
    void ReleaseTexture(STexture&) override { Note("ReleaseTexture"); }
    void SetStretching(bool) override { Note("SetStretching"); }
    bool IsRenewalDue() const override { return Note("IsRenewalDue"); }

private:
    bool Note(const char* name) const {
        last = name;
        return false;
    }
    bool* _ended;
};

/// A pointer to the virtual operation in that slot of the table, as the compilers of both systems form it:
/// one more than the distance from the table's start, and no shift of the object.
template<typename TOperation>
TOperation OperationAt(std::size_t slot) {
    struct {
        std::ptrdiff_t distance;
        std::ptrdiff_t shift;
    } pointer{static_cast<std::ptrdiff_t>(1 + slot * sizeof(void*)), 0};
    return std::bit_cast<TOperation>(pointer);
}

template<typename TOperation, typename... TArguments>
void CallWithZeros(GPU& gpu, TOperation operation) {
    std::tuple<std::remove_cvref_t<TArguments>...> arguments{};
    std::apply([&](auto&... each) { (gpu.*operation)(each...); }, arguments);
}

/// Calls what stands in the slot, with the arguments of the operation that should stand there.
template<typename TResult, typename... TArguments>
void CallSlot(GPU& gpu, std::size_t slot, TResult (GPU::*)(TArguments...)) {
    using Operation = TResult (GPU::*)(TArguments...);
    CallWithZeros<Operation, TArguments...>(gpu, OperationAt<Operation>(slot));
}
template<typename TResult, typename... TArguments>
void CallSlot(GPU& gpu, std::size_t slot, TResult (GPU::*)(TArguments...) const) {
    using Operation = TResult (GPU::*)(TArguments...) const;
    CallWithZeros<Operation, TArguments...>(gpu, OperationAt<Operation>(slot));
}

constexpr std::size_t Operations = 36;

/// What a backdrop is made of: the blur has tests of its own.
std::vector<std::uint32_t> BlurredOpaque(std::vector<std::uint32_t> pixels, int width, int height) {
    for (auto& pixel : pixels) pixel |= 0xFF000000U;
    Pixels::Blur({reinterpret_cast<std::uint8_t*>(pixels.data()), 4 * pixels.size()}, width, height, 4,
        4 * width, false);
    return pixels;
}

/// A picture in which every pixel differs from its neighbours, half transparent.
std::vector<std::uint32_t> Picture(int width, int height) {
    std::vector<std::uint32_t> pixels;
    for (int i = 0; i < width * height; ++i) {
        pixels.push_back(0x80000000U + static_cast<std::uint32_t>(i) * 0x00051B11U % 0x01000000U);
    }
    return pixels;
}

} // namespace

TEST(Gpu, KeepsItsOperationsInTheirSlots) {
    CNamedCalls gpu;
    std::size_t slot = 0;
    const auto expect = [&](const char* name, auto operation) {
        gpu.last.clear();
        CallSlot(gpu, slot, operation);
        EXPECT_EQ(gpu.last, name) << "slot " << slot;
        ++slot;
    };
    expect("AnySizeTextures", &GPU::AnySizeTextures);
    expect("MinTextureW", &GPU::MinTextureW);
    expect("MaxTextureW", &GPU::MaxTextureW);
    expect("MinTextureH", &GPU::MinTextureH);
    expect("MaxTextureH", &GPU::MaxTextureH);
    expect("MaxAspect", &GPU::MaxAspect);
    expect("Clear", &GPU::Clear);
    expect("BeginFrame", &GPU::BeginFrame);
    expect("EndFrame", &GPU::EndFrame);
    expect("Present", &GPU::Present);
    expect("Resize", &GPU::Resize);
    expect("SetLineWidth", &GPU::SetLineWidth);
    expect("SetLineColor", &GPU::SetLineColor);
    expect("SetLineSmooth", &GPU::SetLineSmooth);
    expect("IsOffscreenCapable", &GPU::IsOffscreenCapable);
    expect("BeginOffscreen", &GPU::BeginOffscreen);
    expect("EndOffscreen", &GPU::EndOffscreen);
    expect("DrawOffscreen", &GPU::DrawOffscreen);
    expect("DrawLines", &GPU::DrawLines);
    expect("DrawTexture", &GPU::DrawTexture);
    expect("DrawTexture9", &GPU::DrawTexture9);
    expect("CreateTextureBits", &GPU::CreateTextureBits);
    expect("CreateTexture", &GPU::CreateTexture);
    expect("FreeTexture", &GPU::FreeTexture);
    expect("UnbindTexture", &GPU::UnbindTexture);
    expect("MakeBackdrop", &GPU::MakeBackdrop);
    expect("SetClip", &GPU::SetClip);
    expect("SetCulling", &GPU::SetCulling);
    expect("Shutdown", &GPU::Shutdown);
    expect("IsReady", &GPU::IsReady);
    expect("IsCurrent", &GPU::IsCurrent);
    expect("ReadBack", &GPU::ReadBack);
    expect("GetName", &GPU::GetName);
    expect("ReleaseTexture", &GPU::ReleaseTexture);
    expect("SetStretching", &GPU::SetStretching);
    expect("IsRenewalDue", &GPU::IsRenewalDue);
    EXPECT_EQ(slot, Operations);
}

TEST(Gpu, HasItsDestructorAfterAllOperations) {
    bool ended = false;
    alignas(CNamedCalls) std::array<std::byte, sizeof(CNamedCalls)> memory;
    GPU* const gpu = new (memory.data()) CNamedCalls(&ended);
    (gpu->*OperationAt<void (GPU::*)()>(Operations))();
    EXPECT_TRUE(ended);
}

TEST(Gpu, HasNoData) {
    EXPECT_EQ(sizeof(GPU), sizeof(void*));
}

TEST(Gpu, OfTheBaseAnswersThatItCanDoNothing) {
    GPU gpu;
    EXPECT_FALSE(gpu.AnySizeTextures());
    EXPECT_EQ(gpu.MinTextureW(), 0);
    EXPECT_EQ(gpu.MaxTextureW(), 0);
    EXPECT_EQ(gpu.MinTextureH(), 0);
    EXPECT_EQ(gpu.MaxTextureH(), 0);
    EXPECT_EQ(gpu.MaxAspect(), 0);
    EXPECT_FALSE(gpu.IsOffscreenCapable());
    EXPECT_FALSE(gpu.Shutdown());
    EXPECT_FALSE(gpu.IsReady());
    EXPECT_TRUE(gpu.IsCurrent());
    EXPECT_FALSE(gpu.IsRenewalDue());
    EXPECT_EQ(std::u16string(gpu.GetName()), u"Null");
}

TEST(Gpu, OfTheBaseDoesNothing) {
    GPU gpu;
    gpu.Clear();
    gpu.BeginFrame();
    gpu.EndFrame();
    gpu.Present();
    gpu.Resize(754, 553);
    gpu.SetLineWidth(1);
    gpu.SetLineColor(1, 1, 1, 1);
    gpu.SetLineSmooth(true);
    gpu.BeginOffscreen();
    gpu.EndOffscreen();
    gpu.DrawOffscreen();
    gpu.DrawLines(2, nullptr, true, true);
    gpu.UnbindTexture();
    gpu.SetClip(0, 0, 1, 1);
    gpu.SetCulling(true);
    std::array<std::uint32_t, 4> pixels{1, 2, 3, 4};
    gpu.ReadBack(pixels.data(), 2, 2);
    EXPECT_EQ(pixels, (std::array<std::uint32_t, 4>{1, 2, 3, 4}));

    const STexture some{5, 6, 7, 0.5f, 0.25f, 8, 9, 10, 11};
    STexture texture = some;
    gpu.DrawTexture(texture, {});
    gpu.DrawTexture9(texture, {});
    gpu.CreateTextureBits(pixels.data(), 8, Argb32, texture, 2, 2, 2, 2);
    gpu.CreateTexture({}, texture, 2, 2);
    gpu.FreeTexture(texture);
    gpu.ReleaseTexture(texture);
    gpu.SetStretching(true);
    EXPECT_EQ(texture, some);
    STexture none;
    gpu.MakeBackdrop(none, 20, 10);
    EXPECT_EQ(none, FreedTexture());
}

TEST(NoRenderer, IsTheBase) {
    EXPECT_EQ(&NoRenderer(), &NoRenderer());
    EXPECT_EQ(std::u16string(NoRenderer().GetName()), u"Null");
    EXPECT_FALSE(NoRenderer().IsReady());
}

TEST(Backdrop, IsTheFrameMadeOpaqueAndBlurred) {
    CRecordingGpu gpu;
    gpu.frame = Picture(11, 7);
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, 11, 7);
    EXPECT_EQ(gpu.lines,
        (std::vector<std::string>{"MakeBackdrop 11x7", "ReadBack 11x7", "CreateTextureBits 1 11x7 in 11x7"}));
    EXPECT_EQ(gpu.lastBits, BlurredOpaque(Picture(11, 7), 11, 7));
    EXPECT_EQ(gpu.lastPixelFormat, Argb32);
    EXPECT_EQ(backdrop, (STexture{1, 11, 7, 1.0f, 1.0f, 1, 1, 1, 0}));
}

TEST(Backdrop, FillsAPowerOfTwoWhereTheRendererAsksForIt) {
    CRecordingGpu gpu;
    gpu.anySize = false;
    gpu.frame = Picture(11, 8);
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, 11, 8);
    EXPECT_EQ(gpu.lines.back(), "CreateTextureBits 1 11x8 in 16x8");
    EXPECT_EQ(backdrop, (STexture{1, 11, 8, 11.0f / 16.0f, 1.0f, 1, 1, 1, 0}));
    gpu.MakeBackdrop(backdrop, 2, 5);
    EXPECT_EQ(gpu.lines.back(), "CreateTextureBits 2 2x5 in 2x8");
    EXPECT_EQ(backdrop, (STexture{2, 2, 5, 1.0f, 5.0f / 8.0f, 1, 1, 1, 0}));
}

TEST(Backdrop, FreesTheOneBeforeIt) {
    CRecordingGpu gpu;
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, 4, 4);
    gpu.MakeBackdrop(backdrop, 4, 4);
    EXPECT_EQ(gpu.LiveTextures(), std::set<std::uint64_t>{2});
    EXPECT_EQ(backdrop.piGDIP, 2u);
}

TEST(Backdrop, IsNoneOfAFrameThatIsNotThere) {
    CRecordingGpu gpu;
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, 0, 4);
    gpu.MakeBackdrop(backdrop, 4, 0);
    gpu.MakeBackdrop(backdrop, -4, -4);
    gpu.ready = false;
    gpu.MakeBackdrop(backdrop, 4, 4);
    EXPECT_EQ(gpu.lines, (std::vector<std::string>{"MakeBackdrop 0x4", "MakeBackdrop 4x0",
                             "MakeBackdrop -4x-4", "MakeBackdrop 4x4"}));
    EXPECT_EQ(backdrop, FreedTexture());
}

TEST(Backdrop, LeavesAFreedRecordWhenItCannotBeMade) {
    CRecordingGpu gpu;
    STexture backdrop;
    gpu.MakeBackdrop(backdrop, 4, 4);
    gpu.makesTextures = false;
    gpu.MakeBackdrop(backdrop, 4, 4);
    EXPECT_EQ(backdrop, FreedTexture());
    EXPECT_TRUE(gpu.LiveTextures().empty());
    gpu.throwIn = "ReadBack";
    EXPECT_THROW(gpu.MakeBackdrop(backdrop, 4, 4), Exceptions::Std);
    EXPECT_EQ(backdrop, FreedTexture());
}
