#pragma once

#include "gui/pictures.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// Pictures that a test makes up by name and size, and texts that take 6 by 10 pixels a character. It notes
/// what it is asked: "LoadImage Knob.png -1x-1 blur 0", "Letter abc 60x20", "Measure abc".
class CRecordingPictures : public GUI::IPictures {
public:
    static constexpr std::int32_t CharacterWidth = 6;
    static constexpr std::int32_t CharacterHeight = 10;

    struct SSize {
        std::int32_t width = 0;
        std::int32_t height = 0;
    };
    /// The stored pictures. What isn't here doesn't exist.
    std::map<std::u16string, SSize> stored;
    bool hasNewTexts = false;                     ///< what HasNewTexts() answers, once
    std::int32_t characterWidth = CharacterWidth; ///< of a measured text
    std::int32_t largestSide = 65535;             ///< of what it makes, whatever is wanted: small is fast
    std::string throwIn; ///< the operation that throws KAV::Exceptions::Std, by its name

    std::vector<std::string> lines;
    std::vector<GUI::SLettering> lettered; ///< what Letter() got
    std::vector<GUI::SLettering> measured; ///< what Measure() got

    /// How many lines begin so.
    std::size_t Count(std::string_view begin) const {
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(),
            [begin](const std::string& line) { return line.starts_with(begin); }));
    }

    std::unique_ptr<Pixels::SBitmap> LoadImage(
        const std::u16string& name, std::int32_t width, std::int32_t height, std::int32_t blur) override {
        Note("LoadImage", Utils::ToUtf8(name) + Size(width, height) + " blur " + std::to_string(blur));
        const auto found = stored.find(name);
        if (found == stored.end()) return nullptr;
        const auto [storedWidth, storedHeight] = found->second;
        const auto room = 8 * blur;
        auto bitmap = std::make_unique<Pixels::SBitmap>();
        *bitmap =
            Bitmap((width == -1 ? storedWidth : width) + room, (height == -1 ? storedHeight : height) + room);
        return bitmap;
    }
    Pixels::SBitmap Letter(
        const GUI::SLettering& lettering, std::int32_t width, std::int32_t height) override {
        lettered.push_back(lettering);
        Note("Letter", Utils::ToUtf8(lettering.sText) + Size(width, height));
        return Bitmap(width, height);
    }
    GUI::SPixelSize Measure(const GUI::SLettering& lettering) override {
        measured.push_back(lettering);
        Note("Measure", Utils::ToUtf8(lettering.sText));
        return {static_cast<float>(lettering.sText.size()) * static_cast<float>(characterWidth),
            static_cast<float>(CharacterHeight)};
    }
    bool HasNewTexts() override { return std::exchange(hasNewTexts, false); }

private:
    Pixels::SBitmap Bitmap(std::int32_t width, std::int32_t height) const {
        return Pixels::TransparentBitmap(std::min(width, largestSide), std::min(height, largestSide));
    }
    static std::string Size(std::int32_t width, std::int32_t height) {
        return " " + std::to_string(width) + "x" + std::to_string(height);
    }
    void Note(const std::string& operation, const std::string& rest) {
        lines.push_back(operation + " " + rest);
        if (operation == throwIn) throw Exceptions::Std(Utils::ToUtf16(operation), u"TEST");
    }
};

} // namespace KAV::Tests
