#include "tools/kavhost/effect/state_file.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect.h"

namespace KAV::Host {

CStateFile::CStateFile(const std::filesystem::path& file, const CEffect& effect) : _file(file) {
    const auto bytes = effect.Chunk(EChunk::Bank);
    if (bytes.empty()) throw CFailure(Utf8(file) + ": " + effect.Name() + " provides no state to save");
    _file.Stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

} // namespace KAV::Host
