#include "gfx/texture_check.h"

#include "tests/support/added_log.h"
#include "tests/support/recording_gpu.h"

#include <gtest/gtest.h>

using namespace KAV::GFX;
using namespace KAV::Tests;

namespace {

/// What a check of a texture of that size writes.
std::string Complaint(const GPU& gpu, std::int32_t width, std::int32_t height) {
    const CAddedLog log;
    CheckTexture(u"Knob02", width, height, gpu);
    return log.Text();
}

CRecordingGpu& WithLimits(CRecordingGpu& gpu, int width, int height, int aspect) {
    gpu.maxWidth = width;
    gpu.maxHeight = height;
    gpu.maxAspect = aspect;
    return gpu;
}

} // namespace

TEST(TextureCheck, ComplainsOfASideThatIsNotBelowItsMaximum) {
    CRecordingGpu gpu;
    WithLimits(gpu, 100, 50, 0);
    EXPECT_EQ(Complaint(gpu, 99, 49), "");
    EXPECT_EQ(Complaint(gpu, 100, 49),
        "Error=TextureTooLarge:\"Knob02\", a_nW=100[nMaxW=100], a_nH=49[nMaxH=50]\r\n");
    EXPECT_EQ(Complaint(gpu, 99, 50),
        "Error=TextureTooLarge:\"Knob02\", a_nW=99[nMaxW=100], a_nH=50[nMaxH=50]\r\n");
    EXPECT_EQ(Complaint(gpu, 200, 60),
        "Error=TextureTooLarge:\"Knob02\", a_nW=200[nMaxW=100], a_nH=60[nMaxH=50]\r\n");
}

TEST(TextureCheck, ComplainsOfALongerSideOfTooManyShorterOnes) {
    CRecordingGpu gpu;
    WithLimits(gpu, 0, 0, 4);
    EXPECT_EQ(Complaint(gpu, 400, 100), "");
    EXPECT_EQ(Complaint(gpu, 100, 400), "");
    EXPECT_EQ(Complaint(gpu, 499, 100), ""); // whole times
    EXPECT_EQ(Complaint(gpu, 500, 100),
        "Error=TextureHasIncompatibleAspect:\"Knob02\", a_nW=500, a_nH=100, nAspect=5[nMaxAspect=4]\r\n");
    EXPECT_EQ(Complaint(gpu, 10, 80),
        "Error=TextureHasIncompatibleAspect:\"Knob02\", a_nW=10, a_nH=80, nAspect=8[nMaxAspect=4]\r\n");
}

TEST(TextureCheck, TestsNoLimitThatIsZero) {
    CRecordingGpu gpu;
    EXPECT_EQ(Complaint(gpu, 100000, 1), "");
    WithLimits(gpu, 0, 50, 0);
    EXPECT_EQ(Complaint(gpu, 100000, 49), "");
    EXPECT_NE(Complaint(gpu, 1, 50), "");
    WithLimits(gpu, 50, 0, 0);
    EXPECT_EQ(Complaint(gpu, 49, 100000), "");
    EXPECT_NE(Complaint(gpu, 50, 1), "");
    EXPECT_EQ(Complaint(NoRenderer(), 100000, 1), "");
}

TEST(TextureCheck, ComplainsOfSizeAndShapeAtOnce) {
    CRecordingGpu gpu;
    WithLimits(gpu, 100, 100, 2);
    EXPECT_EQ(Complaint(gpu, 300, 100),
        "Error=TextureTooLarge:\"Knob02\", a_nW=300[nMaxW=100], a_nH=100[nMaxH=100]\r\n"
        "Error=TextureHasIncompatibleAspect:\"Knob02\", a_nW=300, a_nH=100, nAspect=3[nMaxAspect=2]\r\n");
}

TEST(TextureCheck, OfATextureWithoutASideSaysNothingOfItsShape) {
    CRecordingGpu gpu;
    WithLimits(gpu, 0, 0, 1);
    EXPECT_EQ(Complaint(gpu, 0, 10), "");
    EXPECT_EQ(Complaint(gpu, 10, 0), "");
}
