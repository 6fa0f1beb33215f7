#pragma once

#include "dsp/engine_parameters.h"
#include "routing/routing_record.h"

#include <array>
#include <cstdint>

namespace KAV::DSP {

/// What every engine of this family shares with its device: its dimensions and the values that the user sets.
/// `TSample` is the type of the audio buffers, `TValue` that of parameter values.
template<typename TSample, typename TValue, int CHANNELS, int GROUPS>
class CPluginDSP_base {
public:
    using Sample = TSample;
    using Value = TValue;
    static constexpr int MaxChannels = CHANNELS;
    static constexpr int Groups = GROUPS;

    using Parameters = SEngineParameters<std::size_t{CHANNELS}, std::size_t{GROUPS}>;

    CPluginDSP_base(const CPluginDSP_base&) = delete;
    CPluginDSP_base& operator=(const CPluginDSP_base&) = delete;

    Parameters parameters;
    std::array<SRoutingRecord, std::size_t{GROUPS}> routing;

protected:
    CPluginDSP_base() = default;
    ~CPluginDSP_base() = default;
};

} // namespace KAV::DSP
