#pragma once

#include <ostream>

namespace KAV::Host {

struct SPatchContent;
struct SProfile;

/// What a patch holds, in words; quantities where `profile`, which may be null, has the laws of its
/// parameters. Unless it `showsAll`, what is as in a new instance is only counted. Control characters
/// are escaped.
void PrintPatch(std::ostream& out, const SPatchContent& content, const SProfile* profile, bool showsAll);

/// All of it as one JSON object, for programs.
void PrintPatchAsJson(std::ostream& out, const SPatchContent& content, const SProfile* profile);

} // namespace KAV::Host
