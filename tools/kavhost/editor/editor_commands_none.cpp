#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/editor/scratch_settings.h"

namespace KAV::Host {

namespace {

[[noreturn]] void Fail(const char* command) {
    throw CFailure(
        std::string(command) + " is not available on this system: kavhost shows editors on Linux only");
}

} // namespace

SEdited EditFile(const CEffectLibrary&, const CSetup&, const SEditOptions&, const NoteSink&) {
    Fail("edit");
}

void ShootEditor(const CEffectLibrary&, const CSetup&, const SShotOptions&, const NoteSink&) {
    Fail("shot");
}

CScratchSettings::CScratchSettings() {
    Fail("shot");
}

CScratchSettings::~CScratchSettings() = default;

} // namespace KAV::Host
