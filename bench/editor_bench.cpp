// What the editor costs while it is open: a whole tick of the real one, with the panel's rows drawn by the
// toolkit's classes and the software renderer, compared with a copy of the window's pixels from memory that
// isn't in the processor's cache.

#include "bench/frames.h"
#include "bench/open_editor.h"
#include "bench/turns.h"
#include "tests/support/scratch_home.h"

#include <benchmark/benchmark.h>

using namespace KAV;
using Bench::COpenEditor;

namespace {

/// Argument: the scale. `of_copy` is the time of a tick divided by that of the copy; the counts are those of
/// one tick.
void EditorFrame(benchmark::State& state, bool moves) {
    static const Tests::CScratchHome home; // no patches, settings or logs of the user
    const auto scale = static_cast<std::int32_t>(state.range(0));
    COpenEditor editor(scale);
    if (!editor.IsComplete(scale) || editor.Puts() == 0) {
        state.SkipWithError("the editor isn't complete");
        return;
    }
    const auto tick = [&] {
        if (moves) editor.Move();
        editor.Tick();
    };
    for (int n = 0; n < 100; ++n) tick(); // every cell has its size
    Bench::CColdCopy copy(editor.Pixels());
    Bench::CTurns turns;
    const auto draws = editor.Draws();
    const auto puts = editor.Puts();
    const auto copied = editor.Copied();
    for (auto _ : state) state.SetIterationTime(turns.Run(tick, [&] { copy.Copy(); }));
    const auto perTick = [&](std::size_t before, std::size_t after) {
        return static_cast<double>(after - before) / static_cast<double>(state.iterations());
    };
    state.counters["tick_ms"] = 1e3 * turns.Subject();
    state.counters["copy_ms"] = 1e3 * turns.Reference();
    state.counters["of_copy"] = turns.Subject() / turns.Reference();
    state.counters["core_at_60"] = 60.0 * turns.Subject();
    state.counters["draws"] = perTick(draws, editor.Draws());
    state.counters["puts"] = perTick(puts, editor.Puts());
    state.counters["of_window"] =
        perTick(copied, editor.Copied()) / static_cast<double>(editor.Pixels()); // that were put
    if (moves && editor.CountMoved() != COpenEditor::Meters + COpenEditor::Knobs.size())
        state.SkipWithError("not everything moves");
}
BENCHMARK_CAPTURE(EditorFrame, busy, true)
    ->ArgName("scale")
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Iterations(200)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(EditorFrame, still, false)
    ->ArgName("scale")
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Iterations(200)
    ->Unit(benchmark::kMillisecond);

} // namespace
