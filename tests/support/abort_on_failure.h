#pragma once

#include <cstdlib>
#include <gtest/gtest.h>

namespace KAV::Tests {

/// From now on the first expectation that fails ends the process, after it has been printed: for fuzz
/// targets, which have no test that could fail.
inline void AbortOnFailure() {
    class CAborts final : public testing::EmptyTestEventListener {
        void OnTestPartResult(const testing::TestPartResult& result) override {
            if (result.failed()) std::abort();
        }
    };
    testing::UnitTest::GetInstance()->listeners().Append(new CAborts); // which owns it
}

} // namespace KAV::Tests
