#pragma once

#include "tools/kavhost/audio/sample_format.h"
#include "tools/kavhost/base/pending_file.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

/// Audio files in all common formats, as libsndfile reads and writes them. Channels are always in the order
/// of WAV files, whatever that of the container.
namespace KAV::Host {

class CAudioReader final {
public:
    /// Throws CFailure if the file is missing or its format is unknown.
    explicit CAudioReader(const std::filesystem::path& file);
    ~CAudioReader();

    const SAudioFormat& Format() const noexcept;
    std::uint64_t Frames() const noexcept; ///< as the file's header says; the audio may end before or after

    /// Fills `interleaved` with whole frames, continuing after the last call; returns how many, fewer only at
    /// the end. Throws CFailure if the file is damaged.
    std::size_t Read(std::span<float> interleaved);

    /// The next call of Read() begins with that frame, or at the end; in a coded file, such as Ogg, up to
    /// some hundredths of a second beside it. Throws CFailure if that is impossible.
    void Seek(std::uint64_t frame);

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

/// A file that appears under its name when it is complete, and not at all if anything fails before.
class CAudioWriter final {
public:
    /// `frames` is an estimate of what will be written. Throws CFailure if no file can be created in the
    /// folder, or the container doesn't support the format.
    CAudioWriter(const std::filesystem::path& file, EContainer container, const SAudioFormat& format,
        bool dither, std::uint64_t frames);
    ~CAudioWriter();

    /// Appends whole frames, and leaves in `interleaved` what the file now contains: integer formats round
    /// and clip. A lossy coder's own loss is not included. Throws CFailure if the disk is full.
    void Write(std::span<float> interleaved);

    /// Completes the file under the name that it has until Commit(), and returns that. Nothing is written
    /// after that.
    const std::filesystem::path& Complete();

    /// Completes the file and renames it to its name. The last call. Throws as CPendingFile::Commit() does.
    void Commit(EExisting existing = EExisting::Replaced);

    std::uint64_t
    Clipped() const noexcept; ///< samples that did not fit the format, as CQuantiser counts them
    double ClippedBySteps() const noexcept;

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
