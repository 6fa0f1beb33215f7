#include "tools/kavhost/audio/sample_format.h"

#include "tools/kavhost/base/text.h"

#include <array>

namespace KAV::Host {

namespace {

struct SName {
    std::string_view text;
    ESampleFormat format;
};

constexpr std::array FormatNames{
    SName{"8", ESampleFormat::Int8},
    SName{"16", ESampleFormat::Int16},
    SName{"24", ESampleFormat::Int24},
    SName{"32", ESampleFormat::Int32},
    SName{"float", ESampleFormat::Float32},
    SName{"double", ESampleFormat::Float64},
};

} // namespace

int IntegerBits(ESampleFormat format) noexcept {
    switch (format) {
    case ESampleFormat::Int8:
        return 8;
    case ESampleFormat::Int16:
        return 16;
    case ESampleFormat::Int24:
        return 24;
    case ESampleFormat::Int32:
        return 32;
    default:
        return 0;
    }
}

int SampleBytes(ESampleFormat format) noexcept {
    switch (format) {
    case ESampleFormat::Float32:
        return 4;
    case ESampleFormat::Float64:
        return 8;
    case ESampleFormat::Coded:
        return 1;
    default:
        return IntegerBits(format) / 8;
    }
}

std::string_view FormatName(ESampleFormat format) noexcept {
    for (const auto& name : FormatNames) {
        if (name.format == format) return name.text;
    }
    return "coded";
}

std::optional<ESampleFormat> FormatOf(std::string_view name) noexcept {
    for (const auto& known : FormatNames) {
        if (EqualIgnoringCase(known.text, name)) return known.format;
    }
    return std::nullopt;
}

std::optional<EContainer> ContainerOf(const std::filesystem::path& file) {
    const std::string extension = Utf8(file.extension());
    const auto is = [&](std::string_view known) { return EqualIgnoringCase(extension, known); };
    if (is(".wav")) return EContainer::Wav;
    if (is(".flac")) return EContainer::Flac;
    if (is(".aif") || is(".aiff")) return EContainer::Aiff;
    if (is(".ogg") || is(".oga")) return EContainer::Ogg;
    return std::nullopt;
}

std::string_view ContainerName(EContainer container) noexcept {
    switch (container) {
    case EContainer::Wav:
        return "WAV";
    case EContainer::Flac:
        return "FLAC";
    case EContainer::Aiff:
        return "AIFF";
    case EContainer::Ogg:
        return "OGG";
    }
    return {};
}

bool Holds(EContainer container, ESampleFormat format) noexcept {
    if (container == EContainer::Ogg) return format == ESampleFormat::Coded;
    if (format == ESampleFormat::Coded) return false;
    return container != EContainer::Flac || (IntegerBits(format) > 0 && IntegerBits(format) <= 24);
}

ESampleFormat KeptFormat(EContainer container, ESampleFormat input) noexcept {
    if (Holds(container, input)) return input;
    return container == EContainer::Ogg ? ESampleFormat::Coded : ESampleFormat::Int24;
}

} // namespace KAV::Host
