// The engine compared with an independently written plain model: the same bits over random sessions.

#include "tests/dsp/engine_subject.h"
#include "tests/dsp/reference/scenario.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

using namespace KAV;

namespace {

/// 1,000 in a normal run, 10,000 in a long one, any number on demand.
std::uint64_t ScenarioCount() {
    if (const char* count = std::getenv("KAV_SCENARIOS")) return std::strtoull(count, nullptr, 10);
    return std::getenv("KAV_LONG") != nullptr ? 10000 : 1000;
}

} // namespace

TEST(EngineScenarios, EqualThePlainModelBitForBit) {
    Reference::CCoverage coverage;
    for (std::uint64_t seed = 1; seed <= ScenarioCount(); ++seed) {
        const auto reference = Reference::MakeReferenceEngine(coverage);
        Tests::CEngineSubject engine;
        const auto result = Reference::RunScenario(seed, *reference, engine);
        ASSERT_TRUE(result.equal) << result.difference;
        ASSERT_EQ(engine.SystemCalls(), 0u) << "allocations or locks on the audio thread, scenario " << seed;
    }
    std::string rare;
    for (const auto& name : coverage.UncoveredBelow(20)) rare += name + ' ';
    EXPECT_EQ(rare, "") << "these cases occurred less than 20 times, too rarely for the comparison";
}
