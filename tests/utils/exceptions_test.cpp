#include "utils/exceptions.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

using namespace KAV::Exceptions;

namespace {

const unsigned char* GlStrings(unsigned int name) {
    const char* text = nullptr;
    if (name == 0x1F00) text = "Mak\xC3\xA9r";
    if (name == 0x1F02) text = "2.1";
    return reinterpret_cast<const unsigned char*>(text); // not a renderer's name
}

} // namespace

TEST(Exceptions, StdNamesTheSourceInFrontOfTheMessage) {
    EXPECT_EQ(Std(u"It broke.", u"WINDOW").message, u" WINDOW ERROR:\r\n\r\nIt broke.");
}

TEST(Exceptions, StdFuncBeginsItsMessageWithAnEmptyLinePair) {
    EXPECT_EQ(StdFunc(u"CreateWindow", 1400, u"WINDOW").message,
        u" WINDOW ERROR:\r\n\r\n\r\n\r\nFunction: CreateWindow(): error = 1400");
    EXPECT_EQ(StdFunc(u"Present", 0x88760868u, u"D3D9").message,
        u" D3D9 ERROR:\r\n\r\n\r\n\r\nFunction: Present(): error = 2289436776");
}

TEST(Exceptions, GdipNamesFunctionAndStatus) {
    EXPECT_EQ(GDIP(u"DrawImage", 2).message, u" GDI+ ERROR:\r\n\r\nFunction: DrawImage() error = 2");
}

TEST(Exceptions, GdipImageAddsNameAndSizeToTheBitmapsStatus) {
    EXPECT_EQ(GDIPImage(u"LabelImage", 640, -1, 3).message,
        u" GDI+ ERROR:\r\n\r\nFunction: Gdiplus::Bitmap() error = 3\r\nImage: \"LabelImage\" "
        u"(640x-1px)\r\n\r\nCan't load image.");
}

TEST(Exceptions, OglTellsOfTheDriver) {
    EXPECT_EQ(OGL(u"glTexImage2D", 1285, GlStrings).message,
        u" OPENGL ERROR:\r\n\r\nVendor: Mak\xE9r\r\nRenderer: \r\nVersion: 2.1\r\nFunction: glTexImage2D(): "
        u"error = 1285");
    EXPECT_EQ(OGL(u"x", 0, nullptr).message,
        u" OPENGL ERROR:\r\n\r\nVendor: \r\nRenderer: \r\nVersion: \r\nFunction: x(): error = 0");
}

TEST(Exceptions, AreOneFamilyThatIsCaughtByItsBase) {
    static_assert(std::is_base_of_v<std::exception, Std>);
    static_assert(std::is_base_of_v<Std, StdFunc> && std::is_base_of_v<Std, OGL>);
    static_assert(std::is_base_of_v<Std, GDIP> && std::is_base_of_v<GDIP, GDIPImage>);
    static_assert(std::is_copy_constructible_v<GDIPImage>);
    try {
        throw GDIPImage(u"x", 1, 2, 3);
    } catch (const Std& error) {
        EXPECT_NE(error.message.find(u"(1x2px)"), std::u16string::npos);
        EXPECT_STREQ(error.what(), std::exception().what());
    }
}
