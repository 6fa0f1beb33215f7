#include "tools/kavhost/console/help_formatter.h"

#include <algorithm>

namespace KAV::Host {

namespace {

std::string Named(const char* label, const std::set<CLI::Option*>& options) {
    std::set<std::string> names;
    for (const auto* const option : options) names.insert(option->get_name());
    std::string text = names.empty() ? "" : label;
    for (const auto& name : names) text += " " + name;
    return text;
}

} // namespace

std::string CHelpFormatter::make_option_opts(const CLI::Option* option) const {
    auto text = CLI::Formatter::make_option_opts(option);
    text.resize(std::min({text.size(), text.find(" Needs:"), text.find(" Excludes:")}));
    return text + Named(" Needs:", option->get_needs()) + Named(" Excludes:", option->get_excludes());
}

} // namespace KAV::Host
