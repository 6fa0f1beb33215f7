#pragma once

#include "pixels/bitmap.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Pictures that are committed in tests/pictures, as what has been looked at and found right.
namespace KAV::Tests {

/// Whether the picture has the size and the bytes of tests/pictures/NAME.png; the bytes of transparent pixels
/// count as well. If not, it and a picture of the differences are written into the build, and the failure
/// says where. With KAV_RENEW_PICTURES=1 the picture is committed instead. That is a failure too: somebody
/// has to look at it.
testing::AssertionResult IsTheCommittedPicture(const Pixels::SBitmap& picture, const std::string& name);

/// The same for an opaque picture that is `rest` but for a rectangle: only that is committed, transparent
/// where nothing differs, and next to it its place, as NAME.place.
testing::AssertionResult DiffersAsCommitted(
    const Pixels::SBitmap& picture, const Pixels::SBitmap& rest, const std::string& name);

/// As IsTheCommittedPicture(), but for docs/pictures/NAME.png.
testing::AssertionResult IsTheDocumentedPicture(const Pixels::SBitmap& picture, const std::string& name);

// What is committed: tests/pictures/NAME.png, the text of NAME.place, and the names of all pictures in a
// folder below, without their extension. Throw std::runtime_error.
Pixels::SBitmap CommittedPicture(const std::string& name);
std::string CommittedPlace(const std::string& name);
std::vector<std::string> CommittedPictures(const std::string& folder);

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
