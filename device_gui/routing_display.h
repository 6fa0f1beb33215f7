#pragma once

#include "device_gui/plugin_widget.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV {

/// The current group's routing: its text is the routing's name, its list the names of the user's routings.
class CRouting final : public CPluginValueDisplay {
public:
    /// Looks for the user's routings and selects none.
    explicit CRouting(CXXXGUI& a_piPlugin);

    /// Looks for the user's routings again.
    void Refresh();
    void OnValueChanged(float a_fNormal, std::int32_t a_nItem) override;
    /// The host gives enough channels for the routing. Its file is read when this is asked for the first
    /// time.
    bool IsItemEnabled(std::int32_t a_nItem) override;

private:
    static constexpr std::size_t Unread = static_cast<std::size_t>(-1);

    std::vector<std::size_t> _vnChannels; // entries of each routing
};

} // namespace KAV
