#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace KAV::Tests {

/// One row of the table of layers: a folder, and what its files may include in addition to their own folder.
struct SLayer {
    std::string folder;            ///< from the root, as "dsp" or "tools/kavhost"
    std::set<std::string> allowed; ///< folders, or single files
    bool product = true;           ///< false where everything may be included: tests and benchmarks
};

/// The rows of the first table in a Markdown text whose first two columns are "Folder" and "May include", in
/// order. Throws std::runtime_error if there is no such table, or if a row can't be understood.
std::vector<SLayer> ReadLayers(const std::filesystem::path& document);

// The checks of a tree. Each returns one line of text per violation. Build results and hidden folders don't
// count.

/// Includes of our own files that the table doesn't allow, or that don't start at the root; and sources in
/// folders that the table doesn't name.
std::vector<std::string> IncludeBreaks(const std::filesystem::path& root, const std::vector<SLayer>& layers);

/// Folders and files that a row of the table allows but no file of its folder includes. Folders without
/// sources are planned and don't count.
std::vector<std::string> UnusedAllowances(
    const std::filesystem::path& root, const std::vector<SLayer>& layers);

/// Units that include each other in a circle, each circle once. A unit is a header together with the source
/// of the same name. Includes of `roots` don't count, because a root and what it owns know each other.
std::vector<std::string> UnitCircles(
    const std::filesystem::path& root, const std::set<std::string>& roots = {});

/// Lines of the product's code that repeat one of the texts; comments don't count.
std::vector<std::string> RepeatedTexts(const std::filesystem::path& root, const std::vector<SLayer>& layers,
    const std::vector<std::string>& texts, const std::set<std::string>& exceptions);

/// Locks in the widgets' folders: widgets belong to one thread, and shared data is changed in turns.
std::vector<std::string> WidgetLocks(const std::filesystem::path& root);

/// Preprocessor conditions on the operating system outside the folders for them.
std::vector<std::string> SystemSwitches(
    const std::filesystem::path& root, const std::set<std::string>& exceptions);

/// Sources that don't include the header of their own name before any other: only then does the compiler tell
/// that a header is incomplete.
std::vector<std::string> LateHeaders(const std::filesystem::path& root);

/// Files of one system's folder, in platform/ or in a back end of gfx/, that the other system lacks.
std::vector<std::string> MissingPorts(const std::filesystem::path& root);

/// Sources of the product that have more lines than `limit`.
std::vector<std::string> LongSources(const std::filesystem::path& root, const std::vector<SLayer>& layers,
    std::size_t limit, const std::set<std::string>& exceptions);

/// Sources outside `folders` that contain one of these texts, ignoring blanks and line ends. The texts may
/// exist only once.
std::vector<std::string> Repetitions(const std::filesystem::path& root, const std::set<std::string>& texts,
    const std::set<std::string>& folders);

/// Packages that packaging/packages.txt or packaging/sources.txt lists and docs/dependencies.md doesn't
/// explain.
std::vector<std::string> UnexplainedPackages(const std::filesystem::path& root);

/// Names in the last column of the tables in docs/failures.md that aren't tests of this tree, and rows
/// without a test.
std::vector<std::string> UnknownTests(const std::filesystem::path& root);

} // namespace KAV::Tests
