#pragma once

/// The terminal of the standard streams, if there is one.
namespace KAV::Platform {

/// Makes the terminal accept the UTF-8 that the program prints. Call at the start of the program.
void PrepareTerminal() noexcept;

/// Whether a person sees standard error: it is a terminal, not a file or a pipe.
bool ErrorStreamIsTerminal() noexcept;

} // namespace KAV::Platform
