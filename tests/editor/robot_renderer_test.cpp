// The renderers that a user can choose, in the delivered library.

#include "tests/editor/robot.h"

#include "platform/settings_store.h"

#include <cstdint>
#include <cstring>

namespace KAV::Tests {

TEST_F(Robot, TriesAnotherRendererInTheAboutView) {
    OpenAbout();
    const auto shownSwitch = [this] { return screen.Pixels(685, 17, 58, 29); }; // above its hint
    MoveTo({715, 45});                                                          // the upper switch
    Picture before;
    EXPECT_TRUE(Until([&] {
        before = shownSwitch();
        WaitForIdles(20);
        return shownSwitch() == before;
    })) << "the pointer's light never stands still";
    const auto stored = [](const void* number = nullptr) -> std::uint32_t {
        constexpr auto root = Platform::ESettingsRoot::CurrentUser;
        constexpr const char* key = "Software/Kavelin/KAV Sorrel Limiter";
        if (number != nullptr) Platform::WriteSetting(root, key, "GFX", number, sizeof(std::uint32_t));
        const auto bytes = Platform::ReadSetting(root, key, "GFX");
        std::uint32_t read = ~0u;
        if (bytes.size == sizeof(read)) std::memcpy(&read, bytes.data.get(), sizeof(read));
        return read;
    };
    const std::uint32_t direct2D = 3;
    ASSERT_EQ(stored(&direct2D), direct2D);
    Click(); // a click alone leaves it
    WaitForIdles(12);
    EXPECT_EQ(stored(), direct2D);
    screen.Turn(1); // from the software renderer, which draws without Direct2D, to OpenGL
    EXPECT_TRUE(Until([&] { return stored() == 1; })) << stored();
    if (screen.SeesHardware()) {
        EXPECT_TRUE(Until([&] { return shownSwitch() != before; })) << "the switch shows what draws";
    }
    screen.Turn(-1);
    EXPECT_TRUE(Until([&] { return stored() == 0; })) << stored();
    EXPECT_TRUE(Until([&] { return shownSwitch() == before; })) << "the whole view comes back";
    EXPECT_FALSE(screen.IsMenuUp());
}

} // namespace KAV::Tests
