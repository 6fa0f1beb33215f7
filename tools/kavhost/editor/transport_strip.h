#pragma once

#include "tools/kavhost/screen/picture.h"

#include <cstdint>
#include <memory>
#include <string>

/// The strip below an editor: play and pause, the position in the file, the time, and the loop's mark.
namespace KAV::Host {

class CStripText;

/// What is where in a strip, in pixels: everything that can be pressed is as high as the strip.
struct SStripLayout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t buttonEnd = 0; ///< play and pause, from the left edge
    std::int32_t barBegin = 0;  ///< the position
    std::int32_t barEnd = 0;
    std::int32_t timeEnd = 0; ///< the time, from the bar's end, centred
    // From there to the right edge: the loop's mark.
};

/// The height of the strip below an editor of that width: as the panel's own controls are scaled.
std::int32_t StripHeightFor(std::int32_t editorWidth) noexcept;

SStripLayout LayOutStrip(std::int32_t width, std::int32_t height) noexcept;

enum class EStripPart { None, PlayButton, Bar, LoopMark };
EStripPart PartAt(const SStripLayout& layout, std::int32_t x, std::int32_t y) noexcept;

/// The part of the file, 0 to 1, that a position on the bar stands for; outside the bar its nearer end.
double FractionAt(const SStripLayout& layout, std::int32_t x) noexcept;

/// What a strip shows; nothing else changes its picture.
struct SStripView {
    bool plays = false;
    bool loops = false;
    std::int32_t barPixels = 0; ///< of the bar that have played
    std::string time;           ///< "0:12 / 3:45"
    bool operator==(const SStripView&) const = default;
};
SStripView StripViewOf(const SStripLayout& layout, bool plays, bool loops, double seconds, double length);

/// Draws strips; keeps the typeface meanwhile.
class CStripPainter final {
public:
    CStripPainter();
    ~CStripPainter();
    CStripPainter(const CStripPainter&) = delete;
    CStripPainter& operator=(const CStripPainter&) = delete;

    /// Throws CFailure when memory is short.
    SPicture Draw(const SStripLayout& layout, const SStripView& view);

private:
    std::unique_ptr<CStripText> _text;
};

} // namespace KAV::Host
