#pragma once

/// The terminal behind the standard streams, where there is one.
namespace KAV::Platform {

/// Makes the terminal take the UTF-8 that the program prints. At the start of the program.
void PrepareTerminal() noexcept;

/// A person looks at standard error: it goes to a terminal, not into a file or a pipe.
bool ErrorStreamIsTerminal() noexcept;

} // namespace KAV::Platform
