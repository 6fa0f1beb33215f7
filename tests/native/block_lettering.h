#pragma once

#include "native/paint.h"
#include "pixels/lettering.h"

#include <algorithm>
#include <vector>

namespace KAV::Tests {

/// Text as blocks, one per character, all of one width: with expectations that can be counted. A line of
/// text fills its box's height. Counts what it is asked.
class CBlockLettering final : public Pixels::CLettering {
public:
    static constexpr std::int32_t Advance = 8;

    void Draw(const Pixels::STextLine& line, Pixels::SBitmap& to) override {
        drawn.push_back(line);
        for (std::size_t n = 0; n < Characters(line.text); ++n) {
            const auto left = line.left + Advance * static_cast<std::int32_t>(n);
            const auto width = std::min(Advance - 1, line.left + line.width - left);
            if (width > 0) Native::Fill(to, {left, line.top, width, line.height}, line.colour);
        }
    }
    Pixels::STextSize Measure(const Pixels::STextLine& line) override {
        ++measured;
        return {
            static_cast<float>(Advance * factor * static_cast<std::int32_t>(Characters(line.text))), 12.0f};
    }
    std::vector<float> Gaps(const Pixels::STextLine& line) override {
        std::vector<float> gaps;
        float x = 0.0f;
        for (const char16_t unit : line.text) {
            const bool isSecondHalf = (unit & 0xFC00u) == 0xDC00u;
            gaps.push_back(isSecondHalf ? x - Advance : x);
            if (!isSecondHalf) x += Advance;
        }
        gaps.push_back(x);
        return gaps;
    }
    bool HasNewGlyphs() override { return false; }

    std::vector<Pixels::STextLine> drawn;
    int measured = 0;
    std::int32_t factor = 1; ///< how much wider texts are

private:
    static std::size_t Characters(const std::u16string& text) {
        return static_cast<std::size_t>(std::count_if(
            text.begin(), text.end(), [](char16_t unit) { return (unit & 0xFC00u) != 0xDC00u; }));
    }
};

} // namespace KAV::Tests
