#pragma once

#include <CLI/CLI.hpp>
#include <set>
#include <string>

namespace KAV::Host {

/// The library keeps the options that an option needs or excludes by their places in memory, so that each run
/// of the program would name them in another order.
class CHelpFormatter final : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override;
};

} // namespace KAV::Host
