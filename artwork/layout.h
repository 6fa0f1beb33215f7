#pragma once

#include "artwork/geometry.h"
#include "panel/layout.h"

#include <vector>

namespace KAV::Artwork {

using Panel::EClass;
using Panel::PanelHeight;
using Panel::PanelWidth;
using Panel::ResourceNameOf;
using Panel::SpriteOf;
using Panel::Sprites;
using Panel::SSprite;

/// One widget that shows a picture.
using SPlace = Panel::SPanelRow;

/// Every widget that shows a picture when it is visible, in drawing order. The pattern of the sensitivity
/// knobs never is.
inline const std::vector<SPlace>& Places() {
    static const std::vector<SPlace> places = [] {
        std::vector<SPlace> shown;
        for (const auto& row : Panel::Rows()) {
            if (row.sprite != nullptr && row.name != "Macro 1/1") shown.push_back(row);
        }
        return shown;
    }();
    return places;
}

/// The first widget of this name; throws std::out_of_range when there is none.
inline const SPlace& PlaceOf(std::string_view name) {
    return Panel::RowOf(name);
}

/// The gain-reduction curve: a widget without a picture.
inline const SRect& GainReductionRect() {
    return PlaceOf("Gain Reduction").rect;
}

} // namespace KAV::Artwork
