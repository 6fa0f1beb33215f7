// A busy frame as plain quads, drawn by software, compared with a copy of the window's pixels from memory
// that isn't in the processor's cache. All that usually moves does: meters, knobs, the curve.

#include "bench/copying_target.h"
#include "bench/frames.h"
#include "bench/turns.h"
#include "gfx/cpu/data.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace KAV;
using namespace KAV::GFX;

namespace {

constexpr std::int32_t BaseWidth = 754;
constexpr std::int32_t BaseHeight = 553;

Pixels::SBitmap Round(std::int32_t width, std::int32_t height, std::int32_t columns, std::int32_t rows) {
    auto bitmap = Pixels::TransparentBitmap(width * columns, height * rows);
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        for (std::int32_t x = 0; x < bitmap.width; ++x) {
            const double u = (x % width + 0.5) / width - 0.5;
            const double v = (y % height + 0.5) / height - 0.5;
            const auto alpha = static_cast<std::uint32_t>(
                std::fmax(0.0, std::fmin(255.0, 900.0 - 1900.0 * std::hypot(u, v))));
            const std::uint32_t pixel = alpha * 0x01010101U;
            std::memcpy(&bitmap.bytes[static_cast<std::size_t>(y * bitmap.stride + 4 * x)], &pixel, 4);
        }
    }
    return bitmap;
}

/// The panel's rows as quads, at a scale of 1 or 2.
class CPanel final {
public:
    explicit CPanel(std::int32_t scale) : _scale(scale) {
        _face = Make(Round(BaseWidth * scale, BaseHeight * scale, 1, 1), 1, 1, true);
        _meter = Make(Round(9 * scale, 130 * scale, 63, 1), 63, 1, false);
        _knob = Make(Round(44 * scale, 44 * scale, 63, 8), 63, 8, false);
        _button = Make(Round(30 * scale, 18 * scale, 2, 1), 2, 1, false);
        _text = Make(Round(60 * scale, 12 * scale, 1, 1), 1, 1, false);
    }
    void Draw(int frame) {
        gpu.BeginFrame();
        gpu.Clear();
        Quad(_face, 0, 0, BaseWidth, BaseHeight, 0, White);
        for (int n = 0; n < 32; ++n)
            Quad(_meter, 20 + 12 * (n % 16) + 500 * (n / 16), 100, 9, 130, (frame * 7 + 11 * n) % 63, White);
        for (int n = 0; n < 8; ++n) Quad(_knob, 40 + 85 * n, 420, 44, 44, (frame + 8 * n) % 63, White);
        for (int n = 0; n < 40; ++n)
            Quad(_button, 20 + 36 * (n % 20), 20 + 25 * (n / 20), 30, 18, n % 2,
                n % 3 == 0 ? 0xC0FFE0C0 : White);
        for (int n = 0; n < 32; ++n)
            Quad(_text, 20 + 80 * (n % 9), 260 + 20 * (n / 9), 60, 12, 0, 0xFFC0D0E0);
        Curve(frame);
        gpu.EndFrame();
        gpu.Present();
    }
    std::int32_t Pixels() const { return BaseWidth * BaseHeight * _scale * _scale; }

    Bench::CCopyingTarget window;
    CPU::DATA gpu{{static_cast<Platform::IPictureTarget*>(&window), 1, 1}};

private:
    STexture Make(Pixels::SBitmap bitmap, std::int32_t columns, std::int32_t rows, bool opaque) {
        gpu.Resize(BaseWidth * _scale, BaseHeight * _scale);
        if (opaque) bitmap.alpha = Pixels::EAlpha::None;
        STexture texture;
        texture.nW = bitmap.width;
        texture.nH = bitmap.height;
        gpu.CreateTexture(bitmap, texture, bitmap.width, bitmap.height);
        texture.nColumns = columns;
        texture.nRows = rows;
        texture.nFrames = columns * rows;
        return texture;
    }
    void Quad(
        const STexture& texture, int left, int top, int width, int height, int cell, std::uint32_t colour) {
        const auto scaled = [this](int value) { return static_cast<float>(value * _scale); };
        const auto columns = static_cast<float>(texture.nColumns);
        const auto rows = static_cast<float>(texture.nRows);
        const auto column = static_cast<float>(cell % texture.nColumns);
        const auto row = static_cast<float>(cell / texture.nColumns);
        SDraw draw;
        draw.sTo = {scaled(left), scaled(top), scaled(width), scaled(height)};
        draw.sFrom = {column / columns, (column + 1) / columns, row / rows, (row + 1) / rows};
        draw.nColor = colour;
        gpu.DrawTexture(texture, draw);
    }
    void Curve(int frame) {
        const int count = 91 * _scale;
        std::vector<SPoint>& fill = _fill;
        fill.clear();
        _line.clear();
        for (int n = 0; n < count; ++n) {
            const auto x = static_cast<float>(330 * _scale + n);
            const auto top = static_cast<float>(120 * _scale);
            const auto depth =
                static_cast<float>(_scale) * 100.0f * (1.0f + std::sin(static_cast<float>(n + frame) * 0.1f));
            const SPoint upper{x, top, 0.0f, 0x00FF3A68};
            const SPoint lower{x, top + depth, 0.0f, 0x80FF3968};
            fill.push_back(n % 2 == 0 ? lower : upper);
            fill.push_back(n % 2 == 0 ? upper : lower);
            _line.push_back({x, top + depth - 1.0f, 0.0f, White});
        }
        gpu.SetLineWidth(1.0f);
        gpu.SetLineSmooth(false);
        gpu.DrawLines(2 * count, fill.data(), true, true);
        gpu.SetLineWidth(static_cast<float>(count) * 0.008f);
        gpu.SetLineColor(1.0f, 0.22352941f, 0.40784314f, 1.0f);
        gpu.SetLineSmooth(true);
        gpu.DrawLines(count, _line.data(), false, true);
    }

    std::int32_t _scale;
    STexture _face, _meter, _knob, _button, _text;
    std::vector<SPoint> _fill;
    std::vector<SPoint> _line;
};

/// Argument: the scale. `of_copy` is the frame's time divided by that of the copy.
void BusyFrame(benchmark::State& state) {
    CPanel panel(static_cast<std::int32_t>(state.range(0)));
    Bench::CColdCopy copy(static_cast<std::size_t>(panel.Pixels()));
    int frame = 0;
    panel.Draw(frame);
    Bench::CTurns turns;
    for (auto _ : state) {
        state.SetIterationTime(turns.Run([&] { panel.Draw(++frame); }, [&] { copy.Copy(); }));
    }
    state.counters["frame_ms"] = 1e3 * turns.Subject();
    state.counters["copy_ms"] = 1e3 * turns.Reference();
    state.counters["of_copy"] = turns.Subject() / turns.Reference();
}
BENCHMARK(BusyFrame)->ArgName("scale")->Arg(1)->Arg(2)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
