// A program of its own: what a process has once looked for in vain, it doesn't look for again.

#include "native/native_pictures.h"
#include "pixels/sheet.h"
#include "pixels/sheet_store.h"
#include "utils/exceptions.h"

#include <cstdint>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string_view>
#include <vector>

using namespace KAV;

/// The dynamic linker's, on a system without this library.
extern "C" __attribute__((visibility("default"))) void* dlopen(const char* file, int mode) noexcept {
    if (file != nullptr && std::string_view(file).starts_with("libpng")) return nullptr;
    const auto real = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
    return real(file, mode);
}

TEST(MissingPictureLibrary, IsNamedAndPicturesFail) {
    const std::u16string name = u"ToolBtnEdit((2))##Sz-1x-1pxSb0.png";
    Native::CNativePictures pictures;
    EXPECT_EQ(pictures.Begin(), u"libpng16.so.16");
    const std::vector<Native::SPictureWish> wishes{{name, 10, 10}};
    pictures.Prepare(wishes);
    EXPECT_EQ(Pixels::CSheetStore::OfProcess().KeptBytes(), 0u);
    const auto bitmap = pictures.LoadImage(name, -1, -1, 0);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_THROW(bitmap->sheet->Cells(10, 10), Exceptions::GDIPImage);
    EXPECT_THROW(pictures.LoadImage(name, 10, 10, 0), Exceptions::GDIPImage);
    EXPECT_FALSE(pictures.HasNewTexts());
    pictures.End();
    EXPECT_EQ(pictures.Begin(), u"libpng16.so.16");
}
