#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KAV::Host {

/// A parameter as a patch holds it.
struct SPatchParameter {
    std::optional<std::int32_t> tag;   ///< the number that patches know it by
    std::optional<std::int32_t> index; ///< the host's, in lists of values
    std::string name;                  ///< empty when the patch has none
    double value = 0;                  ///< what the device keeps, or the host's value in lists of values
};

struct SPatchMacroTarget {
    std::int32_t tag = 0;
    double sensitivity = 0;
};

struct SPatchRoutingEntry {
    int first = -1; ///< host channel from 0; below 0: none
    int second = -1;
    std::string label;

    bool operator==(const SPatchRoutingEntry&) const = default;
};

struct SPatchRouting {
    std::optional<int> group; ///< from 0
    std::string name;
    std::string type; ///< empty for most
    std::vector<SPatchRoutingEntry> entries;

    bool operator==(const SPatchRouting&) const = default;
};

/// What stands in a patch, without the effect.
struct SPatchContent {
    std::string form; ///< "text", "binary" or "values"; "routing" for one that is alone in its file
    std::string program;
    std::optional<std::int32_t> uniqueId;
    std::string name;
    std::vector<std::string> needs; ///< what it says it sounds wrong without
    bool isRelative = false; ///< its parameters are those of the group that is current when it is loaded
    std::vector<SPatchParameter> parameters;
    std::vector<std::string> groups;
    std::vector<std::string> macros;
    std::vector<std::vector<SPatchMacroTarget>> macroTargets; ///< of each macro; none for lists of values
    std::vector<SPatchRouting> routings;
    std::vector<std::pair<std::string, std::string>> settings; ///< that are there, by their names in the text
};

/// A state, a patch or a routing as its bytes. Throws CFailure when they are none of these.
SPatchContent ParsePatch(std::string_view bytes);

/// The same of a file, which may also be an .fxp record. Throws CFailure with the file's name.
SPatchContent ReadPatch(const std::filesystem::path& file);

} // namespace KAV::Host
