#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace KAV::Host {

/// How a file stores a sample.
enum class ESampleFormat {
    Int8,
    Int16,
    Int24,
    Int32,
    Float32,
    Float64,
    Coded, ///< no plain number: lossy or companded
};

/// The containers that kavhost writes; a file name's extension selects one.
enum class EContainer { Wav, Flac, Aiff, Ogg };

struct SAudioFormat {
    int rateHz = 0;
    int channels = 0;
    ESampleFormat samples = ESampleFormat::Float32;

    /// The speakers of the channels, a bit each as in speaker_layout.h; nothing if the file doesn't say. A
    /// file that says 0 leaves its speakers unspecified on purpose.
    std::optional<std::uint32_t> mask{};

    /// The mask is what the container defines for this many channels, and not written in the file.
    bool isMaskDefined = false;
};

/// Bits of a whole-number format; 0 for all others.
int IntegerBits(ESampleFormat format) noexcept;

/// Bytes of a stored sample; 1 for a coded one, which has less.
int SampleBytes(ESampleFormat format) noexcept;

/// "8", "16", "24", "32", "float", "double", as the command line takes them; "coded".
std::string_view FormatName(ESampleFormat format) noexcept;
std::optional<ESampleFormat> FormatOf(std::string_view name) noexcept;

std::optional<EContainer> ContainerOf(const std::filesystem::path& file);
std::string_view ContainerName(EContainer container) noexcept;

/// The container can store samples like this.
bool Holds(EContainer container, ESampleFormat format) noexcept;

/// The format for a file whose source was stored as `input`: the same where the container has it, else 24
/// bits, which are below the noise of any recording; an input that was coded has no bits to keep and gets 24,
/// too.
ESampleFormat KeptFormat(EContainer container, ESampleFormat input) noexcept;

} // namespace KAV::Host
