#pragma once

#include "platform/settings_store.h"
#include "utils/product.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace KAV::Tests {

/// Editors of this process's user draw with the processor from now on. What hardware has drawn can't be read
/// from the windows of each system.
inline void ChooseSoftwareRenderer() {
    constexpr std::uint32_t software = 0;
    EXPECT_TRUE(Platform::WriteSetting(Platform::ESettingsRoot::CurrentUser,
        "Software/" KAV_VENDOR "/" KAV_PRODUCT, "GFX", &software, sizeof(software)));
}

} // namespace KAV::Tests
