#pragma once

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/routing_display.h"
#include "device_gui/routing_edit.h"
#include "patch/routing_files.h"
#include "routing/routing_document.h"
#include "tests/device_gui/open_panel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Tests {

/// The part of an open panel that is about channels and routings.
class RoutingPanel : public OpenPanel {
protected:
    using Names = std::vector<std::u16string>;
    static constexpr std::size_t Channels = SPanelState::Channels;

    static std::string Document(
        const std::string& name, const std::string& map, const std::string& labels, const char* type = "") {
        return "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>" + name +
               "</name>\r\n\t<map>" + map + "</map>\r\n\t<ch_names>" + labels + "</ch_names>\r\n" + type +
               "</kav_input_routing>";
    }
    /// The map of the first `entries` channels.
    static std::string MapOf(int entries) {
        std::string map;
        for (int entry = 0; entry < entries; ++entry)
            map += (entry > 0 ? "|*|" : "") + std::to_string(entry) + ",-1";
        return map;
    }
    void WriteRouting(const std::string& name, int entries) {
        WriteText(documents.Routing(name + ".kvt"), Document("inside", MapOf(entries), ""));
    }
    std::string MapOfGroup(int group) {
        const auto text = Gui().GetRouting(group);
        return std::string(RoutingValue(text, "<map"));
    }

    /// `number` 1..16, as on the panel.
    CChannelBtn& Channel(int number) { return Widget<CChannelBtn>(static_cast<std::size_t>(number) - 1); }
    CRouting& Display() { return Widget<CRouting>(); }
    CRoutingEdit& EditButton() { return Widget<CRoutingEdit>(); }
    GUI::CWidget& DropDown() { return Named(u"ToolBtnDown"); }
    bool IsMember(int number, int group = 0) { return Device().GetParam(number + 100 * group, 0) != 0.0f; }

    // Routing edit
    void BeginEdit() {
        Click(EditButton());
        ASSERT_TRUE(IsEditing());
        Told();
    }
    /// As the state has it.
    bool IsEditing() {
        const Utils::CTurn turn(Device().State().Turns());
        return Device().State().Panel(turn).isRoutingEdited;
    }
    /// The channel buttons belong to the group again, and the edit button is off.
    bool IsPanelAtRest() {
        for (int n = 1; n <= static_cast<int>(Channels); ++n) {
            if (Channel(n).Id() != n ||
                (Channel(n).Value() != 0.0f) != IsMember(n, Device().GetCurrentGroup()))
                return false;
        }
        return EditButton().Value() == 0.0f;
    }
    /// What is on, as the numbers on the panel: "1 2 5".
    std::string OnChannels() {
        std::string on;
        for (int n = 1; n <= static_cast<int>(Channels); ++n) {
            if (Channel(n).Value() != 0.0f) on += (on.empty() ? "" : " ") + std::to_string(n);
        }
        return on;
    }
    std::size_t VisibleChannels() {
        std::size_t visible = 0;
        for (std::size_t n = 0; n < Channels; ++n) visible += Widget<CChannelBtn>(n).IsVisible() ? 1u : 0u;
        return visible;
    }
    std::u16string RoutingPath(const std::string& name) {
        return Utils::FromSystemPath(documents.Routing(name));
    }
};

} // namespace KAV::Tests
