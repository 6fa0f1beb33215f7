#include "utils/product.h"

#include <gtest/gtest.h>

using namespace KAV::Utils;

TEST(Product, IsCalledTheSameInBothEncodings) {
    const std::string_view name = KAV_PRODUCT;
    EXPECT_EQ(ProductName, std::u16string(name.begin(), name.end()));
    EXPECT_EQ(ProductVersion, std::u16string(ProductVersionUtf8.begin(), ProductVersionUtf8.end()));
}

TEST(VersionDigits, AreTheNumbersOneAfterTheOther) {
    EXPECT_EQ(VersionDigits("1.0.1.0"), 1010);
    EXPECT_EQ(VersionDigits("2.3.4.5"), 2345);
    EXPECT_EQ(VersionDigits("0.9.0.1"), 901);
}
