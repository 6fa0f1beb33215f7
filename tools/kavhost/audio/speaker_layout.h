#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Speaker masks as in WAVE_FORMAT_EXTENSIBLE: each bit names a speaker, and the channels follow in the order
/// of the bits, lowest first. A mask may have fewer bits than the file has channels; the last channels then
/// belong to no speaker. 0 leaves all of them unspecified.
namespace KAV::Host {

namespace Speakers {

inline constexpr std::uint32_t FrontLeft = 1u << 0;
inline constexpr std::uint32_t FrontRight = 1u << 1;
inline constexpr std::uint32_t FrontCentre = 1u << 2;
inline constexpr std::uint32_t Lfe = 1u << 3;
inline constexpr std::uint32_t BackLeft = 1u << 4;
inline constexpr std::uint32_t BackRight = 1u << 5;
inline constexpr std::uint32_t FrontLeftOfCentre = 1u << 6;
inline constexpr std::uint32_t FrontRightOfCentre = 1u << 7;
inline constexpr std::uint32_t BackCentre = 1u << 8;
inline constexpr std::uint32_t SideLeft = 1u << 9;
inline constexpr std::uint32_t SideRight = 1u << 10;
inline constexpr std::uint32_t TopCentre = 1u << 11;
inline constexpr std::uint32_t TopFrontLeft = 1u << 12;
inline constexpr std::uint32_t TopFrontCentre = 1u << 13;
inline constexpr std::uint32_t TopFrontRight = 1u << 14;
inline constexpr std::uint32_t TopBackLeft = 1u << 15;
inline constexpr std::uint32_t TopBackCentre = 1u << 16;
inline constexpr std::uint32_t TopBackRight = 1u << 17;

} // namespace Speakers

/// The mask that a user means: a layout's name such as "5.1(side)", speakers such as "FL+FR+LFE", both in
/// either case, or a number such as "0x60f". Nothing if the text is none of these.
std::optional<std::uint32_t> MaskOf(std::string_view text);

/// The text is a number and no name: it is taken as it stands, even if the file has another count of
/// channels.
bool IsMaskNumber(std::string_view text) noexcept;

/// "5.1(side)", "FL+FR+LFE" where the set has no name, "unspecified" for 0, and the number if a bit has no
/// speaker.
std::string LayoutName(std::uint32_t mask);

/// "0x60f", as the command line takes it.
std::string MaskText(std::uint32_t mask);

/// Names of layouts, separated by commas, for help and messages.
std::string LayoutNames();

} // namespace KAV::Host
