#pragma once

#include "dsp/engine_parameters.h"
#include "patch/patch_text.h"
#include "utils/channels.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace KAV {

inline constexpr int DeviceChannels = Utils::MostChannels;
inline constexpr int DeviceGroups = 4;
inline constexpr std::int32_t NoHostIndex = -1;
inline constexpr std::int32_t HighestTag = 337;
inline constexpr int HostParameters = 109;
inline constexpr std::int32_t FirstMacroTag = 24;
/// Meters, from -4 down: 16 entries before any processing, 4 groups, 16 entries entering the shown group, 16
/// leaving it. -56 is the editor's own lamp, which is always 0 here.
inline constexpr std::int32_t FirstMeterTag = -4;
inline constexpr std::int32_t LastMeterTag = -55;
using Patch::GroupTagStep;

/// A buffer of this size holds every full name and its closing zero.
inline constexpr std::size_t TagNameCapacity = 32;

using DeviceParameters = DSP::SEngineParameters<DeviceChannels, DeviceGroups>;

enum class EParameterKind { Toggle, Selector, Continuous };

/// How a position 0..1 becomes a real value, between `minimum` at 0 and `maximum` at 1.
enum class EParameterLaw { Linear, Exponential };

/// The text that a host is shown: scale x position + offset.
struct SDisplay {
    double scale;
    double offset;
    int decimals;
    bool plusSign; ///< values above 0 get a "+"
};

/// One row of the parameter table: one parameter, or a run of `count` similar ones, each of which exists
/// either once or once per group. `n` is the place in the run (0..count-1), `g` the group (0..3, 0 for
/// parameters that exist once).
struct SParameterRow {
    std::int32_t firstTag;
    int count;
    bool perGroup;
    std::string_view name; ///< in a run followed by the number, then per group by " (1)".." (4)"
    EParameterKind kind;
    std::string_view unit; ///< the label that hosts show
    SDisplay display;      ///< continuous ones only
    EParameterLaw law;     ///< continuous ones only, the engine's law; `minimum` and `maximum` in `unit`
    double minimum;
    double maximum;
    float (*initial)(int n, int g); ///< the value in a new instance: position, index, or 0 and 1
    // Where the value is stored; only the function that fits `kind` is set.
    Utils::CShared<bool>& (*toggle)(DeviceParameters& parameters, int n, int g);
    Utils::CShared<std::int32_t>& (*selector)(DeviceParameters& parameters);
    DSP::SValueTriple& (*continuous)(DeviceParameters& parameters, int n, int g);
};

/// One parameter: its row and its place in it. A default-constructed one stands for a tag without a
/// parameter.
struct SParameter {
    const SParameterRow* row = nullptr;
    int place = 0; ///< in the run
    int group = 0;

    explicit operator bool() const noexcept { return row != nullptr; }
};

/// The table, its rows in host order.
std::span<const SParameterRow> ParameterRows() noexcept;

/// Tags in host order.
std::span<const std::int32_t> HostParamTable() noexcept;
/// The index of a tag in host order, or NoHostIndex if the host has no such parameter. Takes any number.
std::int32_t HostIndexOf(std::int32_t tag) noexcept;
/// Takes any number.
SParameter FindParameter(std::int32_t tag) noexcept;

/// The full name, like "Threshold (2)", cut to the buffer.
void WriteParameterName(const SParameter& parameter, std::span<char> text) noexcept;
/// The text of the current final value, cut to the buffer.
void WriteParameterDisplay(
    const SParameter& parameter, DeviceParameters& values, std::span<char> text) noexcept;

/// The texts of a selector's indexes.
std::span<const std::string_view> OversamplingTexts() noexcept;

/// Sets every parameter to its value in a new instance.
void InitialiseParameters(DeviceParameters& values) noexcept;

} // namespace KAV
