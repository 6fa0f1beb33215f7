#pragma once

#include "tools/kavhost/base/pending_file.h"

#include <filesystem>

namespace KAV::Host {

class CEffect;

/// An effect's present state as the bytes of a bank's chunk, in a file that appears with Commit(). Throws
/// CFailure if the effect provides no state, or as CPendingFile does.
class CStateFile final {
public:
    CStateFile(const std::filesystem::path& file, const CEffect& effect);
    void Commit(EExisting existing = EExisting::Replaced) { _file.Commit(existing); }

private:
    CPendingFile _file;
};

} // namespace KAV::Host
