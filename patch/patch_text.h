#pragma once

#include "routing/routing_document.h"
#include "utils/marked_text.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The elements of a patch text. It looks like XML but isn't: a sequence of lines, UTF-8, each ended by CR
/// LF, with no nesting and no quoting. A reader finds each element by plain search, anywhere in the text; a
/// name that contains the marks of its own element breaks its value, which is accepted. The functions accept
/// any bytes. Threads: any.
namespace KAV::Patch {

/// The tag of a group's parameter is that of the first group plus this per group.
inline constexpr std::int32_t GroupTagStep = 100;

using Utils::CPieces;
using Utils::ExtractTag;

/// How a text patch begins; nothing else distinguishes it from other data.
inline constexpr std::string_view Opening = "<patch_format>textual</patch_format>";
static_assert(Opening.size() == 36);

/// The identifier of this plug-in, 'sorl', as it is written in patches.
inline constexpr std::int32_t PluginId = 1936683628;

/// Between the names of a list.
inline constexpr std::string_view ListSeparator = RoutingSeparator;

inline constexpr std::string_view LineEnd = "\r\n";

/// Appends "<name>value</name>" and a line end.
void AddElement(std::string& text, std::string_view name, std::string_view value);

/// The lines from the opening to the patch's name.
std::string Head(std::string_view appVersion, std::string_view patchName);

/// The names joined by the separator. The separator is only put before a name if there is text before it, so
/// empty names at the start leave none.
std::string JoinNames(std::span<const std::string> names);

/// Appends a parameter with its tag, of any group, and its value as the device stores it.
void AddParamLine(std::string& text, std::int32_t tag, std::string_view name, float value);

struct SParamLine {
    std::int32_t tag = 0;      ///< never negative
    float value = 0.0f;        ///< 0 if it isn't a number
    std::string_view rawValue; ///< not empty
    std::string_view name;     ///< may be empty
};

/// Nothing for a line that isn't a parameter's: one without a tag of 0 or above, or without a value.
std::optional<SParamLine> ReadParamLine(std::string_view line) noexcept;

/// The line with its own number replaced by `tag`; unchanged if it has no number.
std::string WithTag(std::string_view line, std::int32_t tag);

/// One assignment of a macro.
struct SMacroTarget {
    std::int32_t tag = 0;
    float sensitivity = 0.0f; ///< 0 if it is missing or not a number
};

/// Appends the line of macro `macro` 0..4, even if it has no assignments.
void AddMacroLine(std::string& text, int macro, std::span<const SMacroTarget> targets);

/// The content of the line of macro `macro`, to be read with CPieces(..., "||") and ReadMacroTarget(). Empty
/// if there is no such line or it is empty.
std::string_view MacroTargets(std::string_view text, int macro);
SMacroTarget ReadMacroTarget(std::string_view piece) noexcept;

/// A routing document as the block of group `group`: the group's number is on a line of its own after the
/// document's opening. The block ends with a line end.
std::string RoutingBlock(std::string_view document, int group);

/// Iterates over the routing blocks of a text.
class CRoutingBlocks final {
public:
    explicit CRoutingBlocks(std::string_view text) noexcept : _rest(text) {}
    /// Moves to the next whole block; false after the last one.
    bool Next() noexcept;
    /// The group's number as text; empty if the block has none.
    std::string_view Group() const noexcept;
    /// The document without the group's number.
    std::string Document() const;

private:
    std::string_view _rest;
    std::string_view _block;
};

} // namespace KAV::Patch
