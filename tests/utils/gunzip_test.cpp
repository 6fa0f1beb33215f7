#include "utils/gunzip.h"

#include "tests/support/gzip.h"

#include <gtest/gtest.h>

using namespace KAV::Tests;
using namespace KAV::Utils;

namespace {

constexpr std::size_t NoLimit = 1u << 30;

std::string Inflated(
    const std::string& stream, std::size_t piece, bool* whole = nullptr, std::size_t limit = NoLimit) {
    CGunzip gunzip;
    std::string text;
    bool all = true;
    for (std::size_t i = 0; i < stream.size() && all; i += piece) {
        const auto part = stream.substr(i, piece);
        all = gunzip.Add(part.data(), part.size(), text, limit);
    }
    if (whole != nullptr) *whole = all;
    return text;
}

/// Lengths near those of the blocks, of one character and of sixteen.
std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 100000u}) {
        texts.emplace_back(size, 'x');
        texts.push_back(Letters(size));
    }
    return texts;
}

} // namespace

TEST(Gunzip, GivesTheTextWhateverThePieces) {
    for (const auto& text : Texts()) {
        const auto stream = Gzip(text);
        for (const std::size_t piece : {1u, 7u, 4096u, 5000u, 1000000u})
            EXPECT_TRUE(Inflated(stream, piece) == text) << text.size() << " in pieces of " << piece;
    }
}

TEST(Gunzip, GivesTheBeginningOfATruncatedStream) {
    const auto text = Texts().back();
    const auto stream = Gzip(text);
    for (std::size_t size = 0; size < stream.size(); size += 997)
        EXPECT_TRUE(text.starts_with(Inflated(stream.substr(0, size), 4096))) << size;
}

TEST(Gunzip, StopsAtADamagedPlace) {
    const auto text = Texts().back();
    auto stream = Gzip(text);
    for (std::size_t i = stream.size() / 2; i < stream.size() / 2 + 64; ++i) stream[i] = '\xFF';
    const auto got = Inflated(stream, 4096);
    EXPECT_TRUE(got.substr(0, 20000) == text.substr(0, 20000));
    EXPECT_FALSE(got == text);
}

TEST(Gunzip, NeverKeepsMuchMoreThanItsLimit) {
    bool whole = true;
    const auto stream = Gzip(std::string(10u << 20, 'x'));
    const auto got = Inflated(stream, stream.size(), &whole, 10000);
    EXPECT_FALSE(whole);
    EXPECT_GT(got.size(), 10000u);
    EXPECT_LE(got.size(), 10000u + 4096u);
    EXPECT_EQ(Inflated(Gzip(std::string(10000, 'x')), 100, &whole, 10000).size(), 10000u);
    EXPECT_TRUE(whole);
}

TEST(Gunzip, TakesNoOtherFormat) {
    EXPECT_EQ(Inflated("plain text, long enough for a head", 4096), "");
    EXPECT_EQ(Inflated(std::string("\x78\x9C\x4B\x04\x00\x00\x62\x00\x62", 9), 4096), ""); // zlib's own
}
