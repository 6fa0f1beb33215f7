#pragma once

#include <ostream>

namespace KAV::Host {

struct SPatchContent;
struct SProfile;

/// What a patch holds, in words; quantities where `profile`, which may be null, has the laws of its
/// parameters. Bytes that would move a terminal's cursor come out as question marks.
void PrintPatch(std::ostream& out, const SPatchContent& content, const SProfile* profile);

/// The same as one JSON object, for programs.
void PrintPatchAsJson(std::ostream& out, const SPatchContent& content, const SProfile* profile);

} // namespace KAV::Host
