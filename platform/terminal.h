#pragma once

/// The terminal of the standard streams, if there is one.
namespace KAV::Platform {

/// Makes the terminal accept the UTF-8 that the program prints. Call at the start of the program.
void PrepareTerminal() noexcept;

/// The width of the terminal on which a person sees standard error; 0 if it is a file or a pipe.
int ErrorStreamColumns() noexcept;

/// Whether a person sees standard output.
bool OutputStreamIsTerminal() noexcept;

} // namespace KAV::Platform
