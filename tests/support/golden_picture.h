#pragma once

#include "pixels/bitmap.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

/// Pictures that are committed in tests/pictures, as what has been looked at and found right.
namespace KAV::Tests {

/// Whether the picture has the size and the bytes of tests/pictures/NAME.png; the bytes of transparent pixels
/// count as well. If not, it and a picture of the differences are written into the build, and the failure
/// says where. With KAV_RENEW_PICTURES=1 the picture is committed instead. That is a failure too: somebody
/// has to look at it.
testing::AssertionResult IsTheCommittedPicture(const Pixels::SBitmap& picture, const std::string& name);

/// Whether two pictures have the same size and the same bytes.
testing::AssertionResult AreTheSame(const Pixels::SBitmap& actual, const Pixels::SBitmap& expected);
/// White where two pictures of one size are equal, red where they differ, darker for a larger difference.
Pixels::SBitmap DifferenceOf(const Pixels::SBitmap& actual, const Pixels::SBitmap& expected);

/// As the file has it, straight alpha. Throws std::runtime_error.
Pixels::SBitmap ReadPng(const std::filesystem::path& file);
/// Writes the bytes as they are, whatever their alpha means, and makes missing folders. Throws
/// std::runtime_error.
void WritePng(const Pixels::SBitmap& picture, const std::filesystem::path& file);

} // namespace KAV::Tests
