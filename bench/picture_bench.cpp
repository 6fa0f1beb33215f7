// How long an editor waits for its pictures, compared with decoding each of them once on one thread. Wall
// time, because two threads share the work.

#include "bench/turns.h"
#include "native/native_pictures.h"
#include "panel/sprites.h"
#include "pixels/png_reader.h"
#include "pixels/sheet_store.h"
#include "platform/resource.h"
#include "utils/text.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

using namespace KAV;

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

std::vector<Native::SPictureWish> WholePanel(double width) {
    std::vector<Native::SPictureWish> wishes;
    for (const auto& sprite : Panel::Sprites) {
        wishes.push_back({Utils::ToUtf16(std::string(sprite.image)),
            static_cast<std::int32_t>(std::lround(sprite.panelWidth * width / 754.0)),
            static_cast<std::int32_t>(std::lround(sprite.panelHeight * width / 754.0))});
    }
    return wishes;
}

double DecodeOnce() {
    const auto start = Clock::now();
    for (const auto& sprite : Panel::Sprites)
        benchmark::DoNotOptimize(Pixels::ReadPng(Platform::Resource(Panel::ResourceNameOf(sprite))));
    return Seconds(start);
}

double Open(Native::CNativePictures& pictures, const std::vector<Native::SPictureWish>& wishes) {
    const auto start = Clock::now();
    pictures.Begin();
    pictures.Prepare(wishes);
    return Seconds(start);
}

/// As in a process that has shown no editor yet.
void Forget() {
    auto& store = Pixels::CSheetStore::OfProcess();
    store.Begin();
    for (int i = 0; i <= Pixels::CSheetStore::RestTicks; ++i) store.Tick();
    store.End();
}

/// The pictures of an editor 754 pixels wide, with `later` after another one of that size has closed.
void PicturesOfAnEditor(benchmark::State& state, bool later) {
    const auto wishes = WholePanel(754);
    Native::CNativePictures pictures;
    std::vector<double> times;
    std::vector<double> references;
    for (auto _ : state) {
        references.push_back(DecodeOnce());
        Forget();
        double time = Open(pictures, wishes);
        pictures.End();
        if (later) {
            time = Open(pictures, wishes);
            pictures.End();
        }
        times.push_back(time);
        state.SetIterationTime(time);
    }
    const double reference = Bench::Median(references);
    state.counters["reference"] = reference;
    state.counters["ratio"] = Bench::Median(times) / reference;
}
BENCHMARK_CAPTURE(PicturesOfAnEditor, first, false)
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PicturesOfAnEditor, later, true)
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);

} // namespace
