#pragma once

#include <string>

namespace CLI {
class App;
}

namespace KAV::Host {

/// The manual page of what the parser takes, in the language of man(7). It has no date, so that a build gives
/// the same page on any day.
std::string ManPageOf(const CLI::App& app);

} // namespace KAV::Host
