#include "tools/kavhost/audio/audio_file.h"

#include "tools/kavhost/audio/wav_reader.h"
#include "tools/kavhost/audio/wav_writer.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"

#include <fstream>

namespace KAV::Host {

struct CAudioReader::SNative {
    explicit SNative(const std::filesystem::path& file)
        : name(Utf8(file)), stream(file, std::ios::binary), reader(Naming(name, [&] {
              if (!std::filesystem::exists(file)) throw CFailure("no such file");
              if (!stream) throw CFailure("cannot be read");
              return CWavReader(stream);
          })) {}

    std::string name;
    std::ifstream stream;
    CWavReader reader;
};

CAudioReader::CAudioReader(const std::filesystem::path& file) : _native(std::make_unique<SNative>(file)) {}

CAudioReader::~CAudioReader() = default;

const SAudioFormat& CAudioReader::Format() const noexcept {
    return _native->reader.Format();
}

std::uint64_t CAudioReader::Frames() const noexcept {
    return _native->reader.Frames();
}

std::size_t CAudioReader::Read(std::span<float> interleaved) {
    return Naming(_native->name, [&] { return _native->reader.Read(interleaved); });
}

void CAudioReader::Seek(std::uint64_t frame) {
    Naming(_native->name, [&] { _native->reader.Seek(frame); });
}

struct CAudioWriter::SNative {
    SNative(
        const std::filesystem::path& target, EContainer container, const SAudioFormat& format, bool dither)
        : name(Utf8(target)), file(target), writer(Naming(name, [&] {
              if (container != EContainer::Wav) {
                  throw CFailure(
                      std::string(ContainerName(container)) + " is not supported on this system, only WAV");
              }
              return CWavWriter(file.Stream(), format, dither);
          })) {}

    std::string name;
    CPendingFile file;
    CWavWriter writer;
};

CAudioWriter::CAudioWriter(const std::filesystem::path& file, EContainer container,
    const SAudioFormat& format, bool dither, std::uint64_t)
    : _native(std::make_unique<SNative>(file, container, format, dither)) {}

CAudioWriter::~CAudioWriter() = default;

void CAudioWriter::Write(std::span<float> interleaved) {
    Naming(_native->name, [&] { _native->writer.Write(interleaved); });
    _native->file.Check();
}

void CAudioWriter::Commit() {
    _native->writer.Finish();
    _native->file.Commit();
}

std::uint64_t CAudioWriter::Clipped() const noexcept {
    return _native->writer.Clipped();
}

} // namespace KAV::Host
