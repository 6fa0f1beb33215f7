#pragma once

#include <cstddef>
#include <optional>

namespace KAV::Tests {

/// Memory of this process that is in RAM now, in bytes.
std::size_t ResidentBytes();

/// What of that belongs to this process alone, and isn't the content of a file. Linux only.
std::size_t AnonymousBytes();

/// Memory that this process has requested, touched or not, in bytes: what it uses if a host locks its memory.
std::size_t ReservedBytes();

/// What of that holds data of this process alone. Not machine code made at run time: a software driver of
/// OpenGL maps 10 MB of addresses for it whenever it is loaded again, uses a page or two, and never returns
/// them. Linux only.
std::size_t CommittedBytes();

/// How many page faults this thread has had; nothing if the system doesn't report it.
std::optional<std::size_t> PageFaultsOfThisThread();

} // namespace KAV::Tests
