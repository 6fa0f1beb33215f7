#pragma once

#include "artwork/geometry.h"

#include <span>
#include <string_view>

namespace KAV::Artwork {

/// The panel at its base size, in panel pixels. The lowest band reaches one row below it.
inline constexpr int PanelWidth = 754;
inline constexpr int PanelHeight = 553;

/// One picture: a grid of frames, filled row by row, and the size at which one frame stands on the panel.
struct SSprite {
    std::string_view name;     ///< as the layout names it: the file's name without its ending
    std::string_view resource; ///< the name under which the library carries it
    int width = 0;             ///< of the whole file, in its own pixels
    int height = 0;
    int frames = 1;
    int columns = 1;
    double panelWidth = 0; ///< of one frame, in panel pixels
    double panelHeight = 0;
    bool mayTouchEdges = false; ///< bands and tiles fill their frame; all others keep a transparent rim

    constexpr int Rows() const { return (frames + columns - 1) / columns; }
    constexpr int FrameWidth() const { return width / columns; }
    constexpr int FrameHeight() const { return height / Rows(); }
};

/// What a widget does with its picture, as far as its look is concerned.
enum class EKind { Still, Meter, Value, Switch, Momentary };

/// One widget that shows a picture: where it stands, in the order in which the panel is drawn.
struct SPlace {
    std::string_view name;
    std::string_view sprite;
    SRect rect;
    EKind kind = EKind::Still;
    int id = -1; ///< the widget's id in the layout
};

/// Every picture there is.
std::span<const SSprite> Sprites();

/// The picture of this name; throws std::out_of_range if there is none.
const SSprite& SpriteOf(std::string_view name);

/// Every widget with a picture, in drawing order.
std::span<const SPlace> Places();

/// The first widget of this name; throws std::out_of_range if there is none.
const SPlace& PlaceOf(std::string_view name);

/// The gain-reduction curve: a widget without a picture.
inline constexpr SRect GainReductionRect{332, 161, 91, 206};
/// The routing display: text on the top bar.
inline constexpr SRect RoutingTextRect{14, 23, 58, 21};

} // namespace KAV::Artwork
