#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"
#include "tools/kavhost/plot/plot_axis.h"
#include "tools/kavhost/plot/plot_pen.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <mutex>

namespace KAV::Host {

namespace {

// From the palette by Okabe and Ito, which the colour-blind can distinguish; one is darker, so that print in
// grey can.
constexpr SColour Before{0.337, 0.706, 0.914, 1};
constexpr SColour BeforeDark{0.0, 0.447, 0.698, 1};
constexpr SColour After{0.835, 0.369, 0.0, 1};
constexpr SColour Reduction{0.30, 0.30, 0.34, 1};
constexpr SColour Ink{0.10, 0.10, 0.12, 1};
constexpr SColour Grey{0.42, 0.42, 0.45, 1};
constexpr SColour Grid{0.88, 0.88, 0.90, 1};
constexpr SColour Strong{0.55, 0.55, 0.58, 1}; // the grid's line at 0, or at full scale

constexpr double Left = 104;
constexpr double Right = PlotWidth - 36;
constexpr double HeadHeight = 28;
constexpr double Gap = 12;
constexpr double WaveThickness = 1.2;

constexpr SColour Faint(SColour colour, double alpha) noexcept {
    colour.alpha = alpha;
    return colour;
}

/// One diagram: a frame with a scale at its left, a name above it, and time from left to right.
class CPanel final {
public:
    CPanel(CPlotPen& pen, const SBox& box, const SAxis& time, const SAxis& values)
        : _pen(pen), _box(box), _time(time), _values(values) {}

    double X(double seconds) const noexcept {
        return _box.left + (seconds - _time.from) / (_time.to - _time.from) * _box.width;
    }
    double Y(double value) const noexcept {
        const double held = std::clamp(value, -1e6, 1e6); // the library has bounds, and infinity none
        return _box.Bottom() - (held - _values.from) / (_values.to - _values.from) * _box.height;
    }
    const SBox& Box() const noexcept { return _box; }
    CPlotPen& Pen() const noexcept { return _pen; }

    /// The grid, to be drawn over; `text` letters a value.
    void DrawGrid(const std::function<std::string(double)>& text) const {
        for (const double tick : _time.ticks) {
            const double x = std::round(X(tick)) + 0.5;
            _pen.Stroke(std::array{SPoint{x, _box.top}, SPoint{x, _box.Bottom()}}, {Grid});
        }
        for (const double tick : _values.ticks) {
            const double y = std::round(Y(tick)) + 0.5;
            _pen.Stroke(
                std::array{SPoint{_box.left, y}, SPoint{_box.Right(), y}}, {tick == 0 ? Strong : Grid});
            _pen.Write(text(tick), {_box.left - 10, y - 9},
                {.size = 14, .colour = Ink, .place = SLetters::EPlace::Right});
        }
    }

    void DrawFrame() const {
        _pen.Frame({_box.left + 0.5, _box.top + 0.5, _box.width, _box.height}, {Strong});
    }

    void Name(const std::string& title, const std::string& unit) const {
        _pen.Write(title, {_box.left, _box.top - 24}, {.size = 16, .colour = Ink, .isBold = true});
        _pen.Write(unit, {20, _box.top + _box.height / 2},
            {.size = 14, .colour = Grey, .place = SLetters::EPlace::Middle, .isUpright = true});
    }

    /// Instead of curves.
    void Say(const std::string& text) const {
        _pen.Write(text, {_box.left + _box.width / 2, _box.top + _box.height / 2 - 11},
            {.size = 17, .colour = Grey, .place = SLetters::EPlace::Middle});
    }

private:
    CPlotPen& _pen;
    SBox _box;
    const SAxis& _time;
    SAxis _values;
};

struct SLegendEntry {
    const char* text = "";
    SColour colour;
    double thickness = 1;
    bool isDashed = false;
};

void DrawLegend(const CPanel& panel, std::span<const SLegendEntry> entries) {
    auto& pen = panel.Pen();
    const double top = panel.Box().top - 23;
    double right = panel.Box().Right();
    for (std::size_t i = entries.size(); i-- > 0;) { // from the right edge on
        const auto& entry = entries[i];
        const SLetters letters{.size = 14, .colour = Ink};
        right -= pen.WidthOf(entry.text, letters);
        pen.Write(entry.text, {right, top}, letters);
        right -= 8;
        pen.Stroke(std::array{SPoint{right - 30, top + 9}, SPoint{right, top + 9}},
            {entry.colour, entry.thickness, entry.isDashed});
        right -= 30 + 26;
    }
}

/// A stretch of bins that have values.
using Bins = std::function<void(std::size_t first, std::size_t last)>;

void ForEachStretch(const SPlotSeries& series, const Bins& visit) {
    std::size_t first = 0;
    for (std::size_t i = 0; i <= series.bins.size(); ++i) {
        if (i < series.bins.size() && !series.bins[i].IsEmpty()) continue;
        if (i > first) visit(first, i);
        first = i + 1;
    }
}

/// Where a bin lies, from one value to another.
SBox BoxOf(
    const CPanel& panel, const SPlotSeries& series, std::size_t bin, double end, double from, double to) {
    const double begin = static_cast<double>(bin) * series.binSeconds;
    const double left = panel.X(begin), right = panel.X(std::min(begin + series.binSeconds, end));
    const double top = std::min(panel.Y(from), panel.Y(to)), bottom = std::max(panel.Y(from), panel.Y(to));
    return {left, top, right - left, bottom - top};
}

/// Fills each bin from 0 to one of its values.
template<typename VALUE>
void FillBins(
    const CPanel& panel, const SPlotSeries& series, double end, const SColour& colour, VALUE value) {
    std::vector<SBox> boxes;
    for (std::size_t i = 0; i < series.bins.size(); ++i) {
        const auto& bin = series.bins[i];
        if (!bin.IsEmpty()) boxes.push_back(BoxOf(panel, series, i, end, 0, value(bin)));
    }
    panel.Pen().Fill(boxes, colour);
}

/// Fills each bin from its lowest to its highest value; a bin that is thinner than a line is as thick as one,
/// and a line leads to it from where the one before ends.
void FillWave(const CPanel& panel, const SPlotSeries& series, double end, const SColour& colour) {
    std::vector<SBox> boxes;
    for (std::size_t i = 0; i < series.bins.size(); ++i) {
        const auto& bin = series.bins[i];
        if (bin.IsEmpty()) continue;
        auto box = BoxOf(panel, series, i, end, bin.lowest, bin.highest);
        const double missing = std::max(0.0, WaveThickness - box.height);
        box.top -= missing / 2;
        box.height += missing;
        if (i > 0 && !series.bins[i - 1].IsEmpty()) {
            const auto& last = series.bins[i - 1];
            const double from = std::clamp(last.highest, bin.lowest, bin.highest);
            const double to = std::clamp(bin.highest, last.lowest, last.highest);
            auto line = BoxOf(panel, series, i, end, from, to);
            line.left -= WaveThickness / 2;
            line.width = WaveThickness;
            if (line.height > 0) boxes.push_back(line);
        }
        boxes.push_back(box);
    }
    panel.Pen().Fill(boxes, colour);
}

/// A line through the highest value of each bin, at the bin's end or, for what is measured all along it, over
/// its width.
void DrawLine(const CPanel& panel, const SPlotSeries& series, double end, const SLine& line, bool isAtEnd) {
    ForEachStretch(series, [&](std::size_t first, std::size_t last) {
        std::vector<SPoint> points;
        for (std::size_t i = first; i < last; ++i) {
            const double begin = static_cast<double>(i) * series.binSeconds;
            const double y = panel.Y(series.bins[i].highest);
            if (!isAtEnd) points.push_back({panel.X(begin), y});
            points.push_back({panel.X(std::min(begin + series.binSeconds, end)), y});
        }
        if (points.size() == 1)
            points.push_back({points.front().x + 3, points.front().y}); // or none would show
        panel.Pen().Stroke(points, line);
    });
}

double Lowest(const SSpan& bin) {
    return bin.lowest;
}
double Highest(const SSpan& bin) {
    return bin.highest;
}
std::string Signed(double value) {
    auto text = Shortest(std::abs(value) < 1e-12 ? 0 : value);
    if (text.starts_with('-')) text.replace(0, 1, "\xE2\x88\x92");
    return text;
}

void DrawWaveform(const CPanel& panel, const SPlot& plot, const SPlotSignal& signal, const SColour& colour,
    const char* title) {
    auto& pen = panel.Pen();
    panel.DrawGrid(Signed);
    pen.Clip(panel.Box());
    FillWave(panel, signal.amplitude, plot.seconds, colour);
    pen.Unclip();
    panel.DrawFrame();
    panel.Name(title, "full scale = 1");
    if (signal.amplitude.bins.empty()) panel.Say("no sound");
}

bool IsAbove(const SPlotSeries& series, double level) {
    return std::ranges::any_of(series.bins, [=](const SSpan& bin) { return bin.highest > level; });
}

void DrawLevels(const CPanel& panel, const SPlot& plot, const SAxis& values) {
    auto& pen = panel.Pen();
    panel.DrawGrid(Signed);
    pen.Clip(panel.Box());
    DrawLine(panel, plot.before.peak, plot.seconds, {Faint(Before, 0.9), 1.4}, false);
    DrawLine(panel, plot.after.peak, plot.seconds, {Faint(After, 0.5), 1.4}, false);
    DrawLine(panel, plot.before.shortTerm, plot.seconds, {BeforeDark, 2.6, true}, true);
    DrawLine(panel, plot.after.shortTerm, plot.seconds, {After, 2.6}, true);
    pen.Unclip();
    panel.DrawFrame();
    panel.Name("short-term loudness (last 3 s) and sample peak", "LUFS, dBFS");
    DrawLegend(panel,
        std::array{SLegendEntry{"loudness before", BeforeDark, 2.6, true},
            SLegendEntry{"loudness after", After, 2.6}, SLegendEntry{"peak before", Faint(Before, 0.9), 1.5},
            SLegendEntry{"peak after", Faint(After, 0.5), 1.5}});
    if (!IsAbove(plot.before.peak, values.from) && !IsAbove(plot.after.peak, values.from))
        panel.Say("silence");
}

void DrawReduction(const CPanel& panel, const SPlot& plot) {
    auto& pen = panel.Pen();
    panel.DrawGrid(Signed);
    pen.Clip(panel.Box());
    FillBins(panel, plot.reduction, plot.seconds, Faint(Reduction, 0.45), Lowest);
    FillBins(panel, plot.reduction, plot.seconds, Faint(Reduction, 0.70), Highest);
    pen.Unclip();
    panel.DrawFrame();
    panel.Name("gain reduction: RMS out / in over 10 ms, relative to the gain without limiting", "dB");
    DrawLegend(panel,
        std::array{SLegendEntry{"smallest", Faint(Reduction, 0.81), 10},
            SLegendEntry{"largest, over the windows and channels of a column", Faint(Reduction, 0.45), 10}});
    if (std::ranges::all_of(plot.reduction.bins, &SSpan::IsEmpty))
        panel.Say("no window above \xE2\x88\x92"
                  "60 dBFS to measure");
}

/// Title and texts; returns where they end.
double DrawHead(CPlotPen& pen, const SPlot& plot) {
    const double width = Right - 36;
    double y = 16;
    y += pen.Write(plot.title, {36, y}, {.size = 26, .colour = Ink, .isBold = true, .mostWidth = width}) + 3;
    y += pen.Write(plot.settings, {36, y}, {.size = 15, .colour = Ink, .mostWidth = width, .mostLines = 2}) +
         3;
    std::string measures = plot.measures;
    for (const auto& note : plot.notes) measures += " \xC2\xB7 " + note;
    y += pen.Write(measures, {36, y}, {.size = 15, .colour = Grey, .mostWidth = width, .mostLines = 2});
    return y;
}

void DrawTime(const CPanel& panel, const SAxis& time) {
    auto& pen = panel.Pen();
    const double y = panel.Box().Bottom() + 7;
    const double step = time.ticks.size() > 1 ? time.ticks[1] - time.ticks[0] : 1;
    for (const double tick : time.ticks) {
        pen.Write(TimeText(tick, step), {panel.X(tick), y},
            {.size = 14, .colour = Ink, .place = SLetters::EPlace::Middle});
    }
    pen.Write(time.to >= 3600 ? "time (h:min:s)" : "time (min:s)",
        {panel.Box().left + panel.Box().width / 2, y + 19},
        {.size = 14, .colour = Grey, .place = SLetters::EPlace::Middle});
}

} // namespace

bool CanDrawPlots() noexcept {
    return true;
}

void DrawPlot(const SPlot& plot, std::ostream& png) {
    static std::mutex drawing; // fonts are looked up in caches that all threads share
    const std::lock_guard lock(drawing);
    CPlotPen pen(PlotWidth, PlotHeight);
    const SAxis time = TimeAxis(plot.seconds), amplitude = AmplitudeAxis(plot);
    double y = DrawHead(pen, plot) + 8;
    const double room = PlotHeight - 52 - y - 4 * HeadHeight - 3 * Gap;
    const auto panel = [&](double share, const SAxis& values) {
        const SBox box{Left, std::round(y + HeadHeight), Right - Left, std::round(share * room)};
        y = box.Bottom() + Gap;
        return CPanel(pen, box, time, values);
    };
    DrawWaveform(panel(0.2, amplitude), plot, plot.before, BeforeDark, "before");
    DrawWaveform(panel(0.2, amplitude), plot, plot.after, After, "after");
    const SAxis levels = LevelAxis(plot);
    DrawLevels(panel(0.36, levels), plot, levels);
    const auto last = panel(0.24, ReductionAxis(plot));
    DrawReduction(last, plot);
    DrawTime(last, time);
    pen.WritePng(png);
}

} // namespace KAV::Host
