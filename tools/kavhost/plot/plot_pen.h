#pragma once

#include <memory>
#include <ostream>
#include <span>
#include <string>

namespace KAV::Host {

struct SPoint {
    double x = 0;
    double y = 0;
};

struct SBox {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;

    double Right() const noexcept { return left + width; }
    double Bottom() const noexcept { return top + height; }
};

struct SColour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

struct SLine {
    SColour colour;
    double width = 1;
    bool isDashed = false;
};

struct SLetters {
    double size = 15; ///< in pixels
    SColour colour;
    bool isBold = false;
    enum class EPlace { Left, Middle, Right } place = EPlace::Left; ///< of the point in the text
    double mostWidth = 0; ///< a longer text is cut and ends in an ellipsis; 0: none is
    int mostLines = 1;
    bool isUpright = false; ///< runs upwards
};

/// A white sheet, and what can be drawn on it; distances are pixels from its left top corner.
class CPlotPen final {
public:
    CPlotPen(int width, int height); ///< throws CFailure without memory for it
    ~CPlotPen();
    CPlotPen(const CPlotPen&) = delete;
    CPlotPen& operator=(const CPlotPen&) = delete;

    void Clip(const SBox& box); ///< until Unclip() nothing outside is drawn
    void Unclip();
    void Fill(const SBox& box, const SColour& colour);
    /// As one shape: where boxes meet there is no seam. Thousands are no problem, as they would be to an
    /// outline with as many corners.
    void Fill(std::span<const SBox> boxes, const SColour& colour);
    void Stroke(std::span<const SPoint> points, const SLine& line);
    void Frame(const SBox& box, const SLine& line);

    /// The point is at the top of the first line; for an upright text, at the left of it. What is no UTF-8 is
    /// replaced. Returns the height.
    double Write(const std::string& text, const SPoint& at, const SLetters& letters);
    double WidthOf(const std::string& text, const SLetters& letters);

    void WritePng(std::ostream& png); ///< throws CFailure

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
