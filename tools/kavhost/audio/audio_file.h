#pragma once

#include "tools/kavhost/audio/sample_format.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

/// Audio files, as the libraries of this build read and write them: all common forms where there is
/// libsndfile, else WAV alone.
namespace KAV::Host {

class CAudioReader final {
public:
    /// Throws CFailure when the file is missing or of no known form.
    explicit CAudioReader(const std::filesystem::path& file);
    ~CAudioReader();

    const SAudioFormat& Format() const noexcept;
    std::uint64_t Frames() const noexcept; ///< as the file's header tells; the audio may end before or after

    /// Fills whole frames of `interleaved` from where the last call ended; returns how many, fewer only at
    /// the end. Throws CFailure when the file is damaged.
    std::size_t Read(std::span<float> interleaved);

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

/// A file that appears under its name when it is complete, and not at all when anything fails before.
class CAudioWriter final {
public:
    /// `frames` is an estimate of what will be written. Throws CFailure when the folder takes no file, or the
    /// container no such format.
    CAudioWriter(const std::filesystem::path& file, EContainer container, const SAudioFormat& format,
        bool dither, std::uint64_t frames);
    ~CAudioWriter();

    /// Appends whole frames, and leaves in `interleaved` what the file now holds: whole-number formats round
    /// and clip. A lossy coder's own loss is not in it. Throws CFailure when the disk takes no more.
    void Write(std::span<float> interleaved);

    /// Completes the file and gives it its name. The last call.
    void Commit();

    std::uint64_t Clipped() const noexcept; ///< samples that did not fit the format, so far

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
