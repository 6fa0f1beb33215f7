#pragma once

#include "state/shown_name.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace KAV {

/// What an instance keeps besides the values of its device. Widgets show copies of it.
/// Threads: within a turn; `generation` on any.
struct SPanelState {
    static constexpr std::size_t Groups = 4;
    static constexpr std::size_t Macros = 5;
    static constexpr std::size_t Channels = 16;

    CShownName patch{u"Text"};      ///< the patch's name, and the user's patches
    CShownName routing{u"Text"};    ///< the name of the shown group's routing, and the user's routings
    std::uint32_t routingScans = 0; ///< how often the user's routings were looked for; their files may be new
    std::array<std::u16string, Groups> groupNames; ///< at first those on the panel, as the next
    std::array<std::u16string, Macros> macroNames;
    /// Of the entries of the shown group's routing; while a routing is edited, as the user has named them.
    std::array<std::u16string, Channels> labels{u"L", u"R"};
    std::uint8_t side = 1; ///< of A (1) and B (0), the one that is live
    std::size_t entries =
        Channels;                 ///< of that routing, as many as there are labels for; the others are hidden
    bool canEditRouting = true;   ///< that of the shown group
    bool isRoutingEdited = false; ///< the user is putting one together; see CDeviceState::BeginRoutingEdit()
    std::int32_t width = 754;     ///< of the editor, in pixels
    std::int32_t height = 553;

    /// Another number whenever anything above has changed, or a patch has changed the table of macros.
    Utils::CShared<std::uint32_t> generation{1};

    /// To be called after each change.
    void Touch() noexcept { generation = generation + 1; }
    /// Gives a part another value.
    template<typename TPart, typename TValue>
    void Put(TPart& part, const TValue& value) {
        if (part == value) return;
        part = value;
        Touch();
    }
};

} // namespace KAV
