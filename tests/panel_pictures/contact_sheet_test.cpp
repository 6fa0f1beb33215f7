// The committed pictures on one page for people, each with its caption.

#include "native/native_pictures.h"
#include "native/paint.h"
#include "tests/panel_pictures/film.h"
#include "tests/support/golden_picture.h"
#include "utils/text.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string_view>

using namespace KAV;
using namespace KAV::Tests;

namespace {

using GUI::SPixelRect;

struct SState {
    std::string_view name; ///< of the picture
    std::u16string_view caption;
    SPixelRect part{}; ///< of the panel that is shown; empty: what differs from rest
};

constexpr std::array<SState, 28> States{{
    {"hint_fader", u"The pointer on a fader"},
    {"hint_toolbar", u"On a key of the toolbar"},
    {"hint_at_the_edge", u"On the key that copies a group"},
    {"pressed", u"A pressed key"},
    {"limiter_off", u"Limiter off"},
    {"faders", u"Faders at their numbers", {105, 96, 404, 300}},
    {"busy_754", u"At work", {0, 96, 430, 250}},
    {"auto_release", u"Auto Release", {328, 280, 180, 167}},
    {"knobs", u"Knobs from end to end", {0, 452, 754, 80}},
    {"oversampling", u"Oversampling and HQ", {590, 520, 164, 33}},
    {"group_2", u"The second group", {480, 14, 274, 130}},
    {"names", u"Names of the user", {160, 447, 440, 86}},
    {"routing_surround", u"A surround routing", {0, 0, 570, 92}},
    {"routing_mid_side", u"Mid/side, which has no key Edit", {0, 0, 300, 92}},
    {"solo_and_mute", u"1 solo, 3 muted"},
    {"routing_edit", u"The user edits a routing", {0, 0, 570, 92}},
    {"patch_name", u"A long name of a patch"},
    {"copy_mode", u"The group to copy to?"},
    {"macro_open", u"An open macro", {100, 270, 410, 45}},
    {"macro_sensitivities", u"With and against the macro", {100, 270, 410, 45}},
    {"side_b", u"The other side"},
    {"settings_menu", u"Settings"},
    {"about", u"About", {190, 0, 564, 300}},
    {"undo", u"A step to undo", {16, 522, 110, 31}},
    {"redo", u"A step to redo", {16, 522, 110, 31}},
    {"lamp", u"A new version"},
    {"busy_500", {}}, // as busy_754
    {"busy_1508", {}},
}};

constexpr std::int32_t Width = 1100;
constexpr std::int32_t Margin = 12;
constexpr std::int32_t CaptionHeight = 22;
constexpr std::uint32_t Ground = 0xFF17191C;
constexpr std::uint32_t Ink = 0xFFC8CCD2;

SPixelRect AtLeast(
    const SPixelRect& area, std::int32_t width, std::int32_t height, const Pixels::SBitmap& in) {
    const auto w = std::max(area.nW, width);
    const auto h = std::max(area.nH, height);
    return {std::clamp(area.nL - (w - area.nW) / 2, 0, in.width - w),
        std::clamp(area.nT - (h - area.nH) / 2, 0, in.height - h), w, h};
}

/// The panel in that state, or the part of it that is worth seeing.
Pixels::SBitmap Shown(const SState& state, const Pixels::SBitmap& rest) {
    const auto name = "panel/" + std::string(state.name);
    auto panel = rest;
    const auto different = CommittedPicture(name);
    SPixelRect area{0, 0, different.width, different.height};
    if (different.width != rest.width) {
        std::istringstream(CommittedPlace(name)) >> area.nL >> area.nT;
        Native::Overlay(panel, different, area.nL, area.nT);
    } else {
        panel = different;
    }
    constexpr std::int32_t around = 10;
    area = {area.nL - around, area.nT - around, area.nW + 2 * around, area.nH + 2 * around};
    return Cut(panel, AtLeast(state.part.nW > 0 ? state.part : area, 160, 50, rest));
}

/// Pictures from left to right in rows, with their captions below them.
class CPage {
public:
    CPage() { _lettering.Begin(); }
    ~CPage() { _lettering.End(); }
    CPage(const CPage&) = delete;
    CPage& operator=(const CPage&) = delete;

    void Add(const Pixels::SBitmap& picture, std::u16string_view caption) {
        if (_left + picture.width + Margin > Width) NextRow();
        _parts.push_back({picture, _left, _top});
        _parts.push_back({Caption(caption, picture.width), _left, _top + picture.height});
        _left += picture.width + Margin;
        _rowHeight = std::max(_rowHeight, picture.height + CaptionHeight);
    }
    Pixels::SBitmap Page() {
        NextRow();
        auto page = Pixels::TransparentBitmap(Width, _top);
        page.alpha = Pixels::EAlpha::None;
        Native::Fill(page, {0, 0, page.width, page.height}, Ground);
        for (const auto& part : _parts) Native::Overlay(page, part.picture, part.left, part.top);
        return page;
    }

private:
    struct SPart {
        Pixels::SBitmap picture;
        std::int32_t left;
        std::int32_t top;
    };

    void NextRow() {
        _left = Margin;
        _top += _rowHeight + Margin;
        _rowHeight = 0;
    }
    Pixels::SBitmap Caption(std::u16string_view text, std::int32_t width) {
        GUI::SLettering lettering;
        lettering.sText = text;
        lettering.fPixels = 12.0f;
        lettering.nAlign = 3; // left, in the middle of its height
        lettering.nColor = Ink;
        lettering.nW = width;
        lettering.nH = CaptionHeight;
        const auto size = _lettering.Measure(lettering);
        EXPECT_LE(size.fW, static_cast<float>(width)) << Utils::ToUtf8(text);
        return _lettering.Letter(lettering, width, CaptionHeight);
    }

    Native::CNativePictures _lettering;
    std::vector<SPart> _parts;
    std::int32_t _left = Margin;
    std::int32_t _top = Margin;
    std::int32_t _rowHeight = 0;
};

} // namespace

TEST(ContactSheet, ShowsEveryCommittedState) {
    std::set<std::string> missing;
    for (const auto& file : CommittedPictures("panel")) {
        if (!file.starts_with("film_") && !file.starts_with("rest_")) missing.insert(file);
    }
    const auto rest = CommittedPicture("panel/rest_754");
    CPage page;
    for (const auto& state : States) {
        missing.erase(std::string(state.name));
        if (!state.caption.empty()) page.Add(Shown(state, rest), state.caption);
    }
    EXPECT_TRUE(missing.empty()) << *missing.begin() << " has no caption";
    EXPECT_TRUE(IsTheDocumentedPicture(page.Page(), "panel-states"));
}
