#pragma once

#include "native/native_pictures.h"
#include "pixels/sheet_store.h"
#include "platform/resource.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Tests {

inline const std::u16string Edit = u"ToolBtnEdit((2))##Sz-1x-1pxSb0.png"; // 100 x 102: two frames of 100 x 51
inline const std::u16string Lamp = u"Lamp_2((2))##Sz-1x-1pxSb0.png";      // 36 x 72

inline std::string StoredBytes(std::u16string_view name) {
    const auto bytes = Platform::Resource(Utils::ToUtf8(name));
    return {bytes.begin(), bytes.end()};
}

/// Leaves nothing of the tests before.
inline void EmptyStore() {
    auto& store = Pixels::CSheetStore::OfProcess();
    store.Begin();
    for (int i = 0; i <= Pixels::CSheetStore::RestTicks; ++i) store.Tick();
    store.End();
    EXPECT_EQ(store.KeptBytes(), 0u);
}

class CPicturesFixture : public testing::Test {
protected:
    CPicturesFixture() : _before(std::filesystem::current_path()) {
        EmptyStore();
        EXPECT_EQ(pictures.Begin(), u"");
    }
    ~CPicturesFixture() override {
        pictures.End();
        std::filesystem::current_path(_before);
    }

    std::unique_ptr<Pixels::SBitmap> Load(const std::u16string& name, std::int32_t width = -1,
        std::int32_t height = -1, std::int32_t blur = 0) {
        return pictures.LoadImage(name, width, height, blur);
    }
    /// What it throws; empty if nothing.
    std::u16string Message(const std::u16string& name, std::int32_t width = -1, std::int32_t height = -1,
        std::int32_t blur = 0) {
        try {
            Load(name, width, height, blur);
        } catch (const Exceptions::Std& error) {
            return error.message;
        }
        return {};
    }

    Native::CNativePictures pictures;

private:
    std::filesystem::path _before;
};

} // namespace KAV::Tests
