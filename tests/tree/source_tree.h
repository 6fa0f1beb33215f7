#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace KAV::Tests {

/// One row of the table of layers: a folder, and what its files may include besides their own folder.
struct SLayer {
    std::string folder;            ///< from the root, as "dsp" or "tools/kavhost"
    std::set<std::string> allowed; ///< folders, or single files
    bool product = true;           ///< false where everything may be included: the tests and benchmarks
};

/// The rows of the first table of a Markdown text whose first two columns are "Folder" and "May include", in
/// their order. Throws std::runtime_error when there is none, or a row that cannot be understood.
std::vector<SLayer> ReadLayers(const std::filesystem::path& document);

// The checks of a tree. Each gives one line of text per break; none means that all is well. Build results and
// hidden folders do not count.

/// Includes of our own files that the table does not allow, or that do not start at the root; and sources in
/// folders that the table does not name.
std::vector<std::string> IncludeBreaks(const std::filesystem::path& root, const std::vector<SLayer>& layers);

/// Folders and files that a row of the table allows and no include of its folder needs. What has no sources
/// yet is planned, and no break.
std::vector<std::string> UnusedAllowances(
    const std::filesystem::path& root, const std::vector<SLayer>& layers);

/// Units that include each other in a circle, each circle once. A unit is a header with the source of its
/// name. Includes of `roots` don't count: what they own knows them.
std::vector<std::string> UnitCircles(
    const std::filesystem::path& root, const std::set<std::string>& roots = {});

/// Lines of the product that repeat one of the texts in their code; comments don't count.
std::vector<std::string> RepeatedTexts(const std::filesystem::path& root, const std::vector<SLayer>& layers,
    const std::vector<std::string>& texts, const std::set<std::string>& exceptions);

/// Locks in the widgets' folders: widgets belong to one thread, and what threads share is changed in turns.
std::vector<std::string> WidgetLocks(const std::filesystem::path& root);

/// Preprocessor conditions on the operating system outside the folders that are there for it.
std::vector<std::string> SystemSwitches(
    const std::filesystem::path& root, const std::set<std::string>& exceptions);

/// Files of one system's folder under platform/ that the other system lacks.
std::vector<std::string> MissingPorts(const std::filesystem::path& root);

/// Sources of the product that have more lines than `limit`.
std::vector<std::string> LongSources(const std::filesystem::path& root, const std::vector<SLayer>& layers,
    std::size_t limit, const std::set<std::string>& exceptions);

/// Sources outside `folders` that hold one of these texts, blanks and line ends aside: what is said once.
std::vector<std::string> Repetitions(const std::filesystem::path& root, const std::set<std::string>& texts,
    const std::set<std::string>& folders);

/// Packages that packaging/packages.txt asks for and docs/dependencies.md does not explain.
std::vector<std::string> UnexplainedPackages(const std::filesystem::path& root);

/// Names in the last column of the tables in docs/failures.md that are no test of this tree, and rows without
/// one.
std::vector<std::string> UnknownTests(const std::filesystem::path& root);

} // namespace KAV::Tests
