#include "artwork/preview.h"

#include "artwork/layout.h"
#include "artwork/palette.h"
#include "artwork/pen.h"
#include "artwork/png_file.h"
#include "artwork/scales.h"

#include <array>
#include <cmath>
#include <vector>

namespace KAV::Artwork {

namespace {

/// How one widget looks at this moment.
struct SLook {
    int frame = 0;
    SColour tint{1, 1, 1, 1};
    bool visible = true;
    std::string text;
    double textSize = 0; ///< in panel pixels
    SColour textColour = Hex(0xFFFFFF);
};

constexpr SColour ButtonText = Hex(0xC0C0C0);
constexpr double Dim = 0x64 / 255.0;

double PointsToPixels(double points) {
    return points * 4 / 3;
}

/// A level between 0 and 1 for the n-th meter, plausible beside its neighbours.
double MeterAt(int n, double loudest) {
    constexpr std::array<double, 16> below{0, 0.02, 0.16, 0.30, 0.09, 0.12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    return n < 6 ? std::max(0.0, loudest - below[static_cast<std::size_t>(n)]) : 0.0;
}

double FaderValueOf(std::string_view name, bool busy) {
    if (name == "Input Gain") return busy ? 0.8 : 1.0;
    if (name == "Threshold") return busy ? 22.0 / 30 : 1.0;
    if (name == "Release") return busy ? ReleaseValue(32) : 0.4;
    if (name == "Output Ceiling") return busy ? 29.0 / 30 : 1.0;
    if (name == "Main Input Gain") return busy ? 0.5625 : 0.5;
    return 0.5;
}

SLook TopBarLook(const SPlace& place, int ordinal, bool busy) {
    SLook look;
    const int channels = busy ? 6 : 2;
    if (place.name.starts_with("ToolMeterCh")) {
        look.frame = busy ? FrameOf(MeterAt(ordinal, 0.9), 16) : 0;
    } else if (place.name.starts_with("ToolMeterFx")) {
        constexpr std::array<double, 4> levels{0.6, 0.86, 0, 0.3};
        look.frame = busy ? FrameOf(levels[static_cast<std::size_t>(ordinal)], 16) : 0;
    } else if (place.widget == EClass::ChannelBtn) {
        constexpr std::array<const char*, 6> names{"L", "R", "C", "LFE", "Ls", "Rs"};
        look.visible = ordinal < channels;
        look.frame = look.visible ? 1 : 0;
        if (look.visible) look.text = names[static_cast<std::size_t>(ordinal)];
        look.textSize = PointsToPixels(place.rect.w * (ordinal % 8 < 4 ? 0.13 : 0.12));
        look.textColour = ButtonText;
    } else if (place.widget == EClass::FxBtn) {
        look.frame = ordinal == (busy ? 1 : 0) ? 1 : 0;
        if (busy && ordinal == 1) look.tint = Solo;
        if (busy && ordinal == 2) look.tint = Mute;
        look.text = std::to_string(ordinal + 1);
        look.textSize = PointsToPixels(place.rect.w * 0.13);
        look.textColour = look.frame == 1 ? ButtonText : ButtonText.WithAlpha(Dim);
    }
    return look;
}

SLook MacroLook(const SPlace& place, int ordinal, bool busy) {
    SLook look;
    if (place.widget == EClass::MacroKnob) {
        constexpr std::array<double, 5> values{0.72, 0.5, 0.31, 0.5, 0.94};
        look.frame = FrameOf(busy ? values[static_cast<std::size_t>(ordinal)] : 0.5);
        return look;
    }
    constexpr std::array<const char*, 5> names{"Drive", "Macro 2", "Air", "Macro 4", "Loud"};
    look.frame = busy && ordinal == 0 ? 1 : 0;
    look.text = busy ? names[static_cast<std::size_t>(ordinal)] : "Macro " + std::to_string(ordinal + 1);
    look.textSize = PointsToPixels(place.rect.w * 0.08);
    if (look.frame == 0) look.textColour.a = static_cast<float>(Dim);
    return look;
}

/// What the remaining widgets show, at rest and busy.
struct SMoment {
    std::string_view name;
    std::array<int, 2> frames;
    std::array<const char*, 2> texts;
};
constexpr std::array Moments{
    SMoment{"Limiter", {1, 1}, {"", ""}},
    SMoment{"Hiqh Quality", {0, 1}, {"", ""}},
    SMoment{"UpdateLed", {0, 1}, {"", ""}},
    SMoment{"ToolBtnUndo", {1, 0}, {"", ""}},
    SMoment{"ToolBtnRedo", {1, 1}, {"", ""}},
    SMoment{"ToolPatch", {0, 0}, {"- Full Reset -", "Mastering - Loud and Clear"}},
    SMoment{"Oversampling", {0, 0}, {"OS x1", "OS x4"}},
};

/// The number at the end of a name, counted from 0; 0 without one.
int OrdinalOf(std::string_view name) {
    const auto digits = name.find_first_of("0123456789");
    return digits == std::string_view::npos ? 0 : std::stoi(std::string(name.substr(digits))) - 1;
}

SLook LookOf(const SPlace& place, int ordinal, bool busy) {
    SLook look;
    if (place.name.starts_with("Macro")) return MacroLook(place, ordinal, busy);
    if (place.name.find(" Meter ") != std::string_view::npos) {
        const double loudest = place.name.starts_with("Input") ? 0.97 : 0.93;
        look.frame = busy ? FrameOf(MeterAt(ordinal, loudest)) : 0;
    } else if (place.widget == EClass::Knob || place.widget == EClass::Release) {
        look.frame = FrameOf(FaderValueOf(place.name, busy));
    } else {
        look = TopBarLook(place, ordinal, busy);
    }
    for (const auto& one : Moments) {
        if (one.name != place.name) continue;
        look.frame = one.frames[busy ? 1 : 0];
        look.text = one.texts[busy ? 1 : 0];
        look.textSize = PointsToPixels(place.rect.h * 0.35);
    }
    if (place.name == "UpdateLed") look.visible = busy; // there is a newer version
    return look;
}

/// The panel under work, at one scale.
class CStage final {
public:
    explicit CStage(double scale)
        : _scale(scale),
          _bitmap(Pixels(PanelWidth), Pixels(PanelHeight)), _frame{_bitmap.Width(), _bitmap.Height(), scale,
                                                                scale} {}

    void Draw(const CBitmap& cell, const SRect& rect, const SColour& tint) {
        const int w = std::max(1, Pixels(rect.w));
        const int h = std::max(1, Pixels(rect.h));
        _bitmap.Over(cell.Resized(w, h), Pixels(rect.x), Pixels(rect.y), tint);
    }
    void Write(std::string_view text, const SRect& rect, double size, const SColour& colour) {
        CPen pen(_frame);
        pen.Text(text, rect.CentreX(), rect.CentreY(), {.size = size}, colour);
        _bitmap.Over(pen.Result());
    }
    void Lay(CPen& pen) { _bitmap.Over(pen.Result()); }
    const SFrame& Frame() const { return _frame; }
    SPixels Result() const { return _bitmap.Quantised(); }

private:
    int Pixels(double panel) const { return static_cast<int>(std::lround(panel * _scale)); }

    double _scale;
    CBitmap _bitmap;
    SFrame _frame;
};

CBitmap CellOf(const CBitmap& sheet, const SSprite& sprite, int index) {
    return sheet.Cut(index % sprite.columns * sprite.FrameWidth(),
        index / sprite.columns * sprite.FrameHeight(), sprite.FrameWidth(), sprite.FrameHeight());
}

CBitmap TurnedByHalf(const CBitmap& cell) {
    CBitmap turned(cell.Width(), cell.Height());
    for (int y = 0; y < cell.Height(); ++y) {
        for (int x = 0; x < cell.Width(); ++x)
            turned.At(x, y) = cell.At(cell.Width() - 1 - x, cell.Height() - 1 - y);
    }
    return turned;
}

/// Reduction at a place of the display, 0..1: bars of music with a hit on each beat.
double ReductionAt(double t) {
    double reduction = 0;
    for (int beat = -1; beat < 5; ++beat) {
        const double since = t * 4.2 - beat + 0.35;
        const double depth = beat % 2 == 0 ? 0.42 : 0.24;
        if (since > 0)
            reduction = std::max(reduction, depth * std::min(1.0, since * 14) * std::exp(-since * 1.9));
        const double small = since - 0.5;
        if (small > 0)
            reduction = std::max(reduction, 0.16 * std::min(1.0, small * 14) * std::exp(-small * 3.0));
    }
    return reduction;
}

void DrawReduction(CStage& stage) {
    const SRect& rect = GainReductionRect();
    constexpr int columns = 182;
    CPen pen(stage.Frame());
    for (int i = 0; i < columns; ++i) {
        const double t = (i + 0.5) / columns;
        const double h = rect.h * ReductionAt(t);
        const double x = rect.x + rect.w * i / columns;
        const int slices = 24;
        for (int k = 0; k < slices; ++k)
            pen.Fill({x, rect.y + h * k / slices, rect.w / columns, h / slices},
                Reduction.WithAlpha(0.5 * (k + 0.5) / slices));
    }
    auto* path = pen.Path();
    cairo_new_path(path);
    for (int i = 0; i <= columns; ++i) {
        const double t = static_cast<double>(i) / columns;
        cairo_line_to(path, rect.x + rect.w * t, rect.y + rect.h * ReductionAt(t));
    }
    pen.StrokePath(0.9, Reduction);
    stage.Lay(pen);
}

} // namespace

CPreview::CPreview(const std::filesystem::path& folder) {
    for (const auto& sprite : Sprites)
        _pictures.emplace(
            std::string(sprite.stem), CBitmap(ReadPng(folder / (std::string(sprite.stem) + ".png"))));
}

namespace {

using Pictures = std::map<std::string, CBitmap, std::less<>>;

const CBitmap& PictureOf(const Pictures& pictures, std::string_view name) {
    return pictures.find(name)->second;
}

/// The panels of an open macro: over each of the four faders, a sensitivity for each group.
void DrawMacroPanels(CStage& stage, const Pictures& pictures) {
    constexpr std::array<std::array<double, 4>, 4> values{
        {{0.5, 0.8, 0.5, 0.5}, {0.22, 0.1, 0.5, 0.5}, {0.5, 0.65, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}}};
    const SSprite& sprite = SpriteOf("knob04");
    std::size_t index = 0;
    for (const auto* name : {"Input Gain", "Threshold", "Release", "Output Ceiling"}) {
        const SRect under = PlaceOf(name).rect;
        const double width = 1.2 * 12 * 4;
        const double height = 1.2 * 12;
        const SRect rect{under.CentreX() - width / 2, under.CentreY() - height / 2, width, height};
        stage.Draw(
            CellOf(PictureOf(pictures, "toolbtnmacro"), SpriteOf("toolbtnmacro"), 0), rect, {1, 1, 1, 1});
        const double size = width / 4 * 0.8;
        const double step = width / 4 * 0.85;
        for (std::size_t k = 0; k < 4; ++k) {
            const double value = values[index][k];
            const bool upper = value >= 0.5;
            CBitmap cell = CellOf(PictureOf(pictures, "knob04"), sprite, FrameOf(value));
            if (upper) cell = TurnedByHalf(cell);
            const SRect knob{rect.x + (rect.w - 4 * step) / 2 + static_cast<double>(k) * step,
                rect.CentreY() - size / 2, size, size};
            stage.Draw(cell, knob, upper ? Macro : Mute);
            stage.Write(std::to_string(k + 1), knob, PointsToPixels(size * 0.37), Hex(0xFFFFFF));
        }
        ++index;
    }
}

/// The nine parts of the hint: corners as they are, the rest stretched.
void DrawHint(CStage& stage, const Pictures& pictures, const SRect& rect, std::string_view text) {
    const CBitmap& picture = PictureOf(pictures, "hint");
    constexpr int margin = 8;
    const int middle = picture.Width() - 2 * margin;
    const std::array<int, 3> from{0, margin, margin + middle};
    const std::array<int, 3> size{margin, middle, margin};
    const double corner = margin / 2.0;
    const std::array<double, 3> xs{rect.x, rect.x + corner, rect.Right() - corner};
    const std::array<double, 3> ys{rect.y, rect.y + corner, rect.Bottom() - corner};
    const std::array<double, 3> ws{corner, rect.w - 2 * corner, corner};
    const std::array<double, 3> hs{corner, rect.h - 2 * corner, corner};
    for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 3; ++i)
            stage.Draw(
                picture.Cut(from[i], from[j], size[i], size[j]), {xs[i], ys[j], ws[i], hs[j]}, {1, 1, 1, 1});
    }
    stage.Write(text, rect, PointsToPixels(0.013 * PanelWidth) * 0.72, Hex(0xFFFFFF));
}

} // namespace

SPixels CPreview::Compose(EScene scene, double scale) const {
    const bool busy = scene == EScene::Busy;
    CStage stage(scale);
    for (const auto& place : Places()) {
        const SSprite& sprite = *place.sprite;
        const SLook look = LookOf(place, OrdinalOf(place.name), busy);
        if (!look.visible) continue;
        stage.Draw(CellOf(PictureOf(_pictures, sprite.stem), sprite, look.frame), place.rect, look.tint);
        if (!look.text.empty()) stage.Write(look.text, place.rect, look.textSize, look.textColour);
    }
    const SRect& routing = PlaceOf("ToolInputRouting").rect;
    stage.Write(busy ? "5.1" : "Stereo", routing, PointsToPixels(routing.h * 0.35), Hex(0xFFFFFF));
    if (busy) {
        DrawReduction(stage);
        DrawMacroPanels(stage, _pictures);
        DrawHint(stage, _pictures, {250, 62, 105, 22}, "Threshold: -8.0 dB");
    }
    return stage.Result();
}

} // namespace KAV::Artwork
