#pragma once

#include "tools/kavhost/base/errors.h"

#include <ostream>
#include <string>
#include <vector>

namespace KAV::Host {

/// Runs kavhost with UTF-8 arguments, the program's name not among them. Results go to `out`; each error is
/// one line on `errors`, and no exception comes out.
EExitCode RunKavhost(
    const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors) noexcept;

} // namespace KAV::Host
