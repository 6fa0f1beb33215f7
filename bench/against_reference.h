#pragma once

#include "bench/turns.h"
#include "dsp/flush_denormals.h"

#include <benchmark/benchmark.h>
#include <cstdint>

namespace KAV::Bench {

/// Runs the subject and the reference alternately, `frames` frames each time; both flush denormals, as the
/// engine does. The case's time is the subject's; `ns_frame` and `reference` are medians per frame, `times`
/// is how many times faster the subject is than the reference.
template<typename TSubject, typename TReference>
void Against(
    benchmark::State& state, std::size_t frames, const TSubject& subject, const TReference& reference) {
    const DSP::CFlushDenormals flushing;
    CTurns turns;
    subject();
    reference();
    for (auto _ : state) state.SetIterationTime(turns.Run(subject, reference));
    const double perFrame = 1e9 / static_cast<double>(frames);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames));
    state.counters["ns_frame"] = turns.Subject() * perFrame;
    state.counters["reference"] = turns.Reference() * perFrame;
    state.counters["times"] = turns.Reference() / turns.Subject();
}

} // namespace KAV::Bench
