#include "tests/tree/source_tree.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> ReadLines(const fs::path& file) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

bool IsSource(const fs::path& file) {
    static const std::set<std::string> extensions{
        ".c", ".cc", ".cpp", ".cxx", ".h", ".hpp", ".inc", ".inl", ".ipp"};
    return extensions.contains(file.extension().string());
}

/// Every source below the root, relative to it, with forward slashes, sorted.
std::vector<std::string> Sources(const fs::path& root) {
    std::vector<std::string> sources;
    for (auto entry = fs::recursive_directory_iterator(root); entry != fs::recursive_directory_iterator();
         ++entry) {
        const auto relative = entry->path().lexically_relative(root).generic_string();
        const bool hidden = entry->path().filename().string().starts_with(".");
        if (entry->is_directory() && (hidden || relative == "build" || relative == "out")) {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file() && IsSource(entry->path())) {
            sources.push_back(relative);
        }
    }
    std::sort(sources.begin(), sources.end());
    return sources;
}

std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

bool LiesIn(const std::string& file, const std::string& folder) {
    return file.starts_with(folder + "/");
}

/// The layer with the longest name that contains the file; null if there is none.
const SLayer* LayerOf(const std::string& file, const std::vector<SLayer>& layers) {
    const SLayer* found = nullptr;
    for (const auto& layer : layers) {
        if (LiesIn(file, layer.folder) && (!found || layer.folder.size() > found->folder.size()))
            found = &layer;
    }
    return found;
}

std::vector<std::string> Cells(const std::string& row) {
    std::vector<std::string> cells;
    std::istringstream stream(row);
    std::string cell;
    std::getline(stream, cell, '|'); // before the first bar
    while (std::getline(stream, cell, '|')) {
        const auto first = cell.find_first_not_of(' ');
        const auto last = cell.find_last_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return cells;
}

/// The words of a text in `backquotes`.
std::vector<std::string> Quoted(const std::string& text) {
    static const std::regex quoted("`([^`]+)`");
    std::vector<std::string> words;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), quoted); match != std::sregex_iterator();
         ++match) {
        words.push_back((*match)[1]);
    }
    return words;
}

SLayer ReadLayer(const std::string& row) {
    const auto cells = Cells(row);
    if (cells.size() < 2 || Quoted(cells[0]).size() != 1)
        throw std::runtime_error("what layer is this? " + row);
    SLayer layer;
    layer.folder = Quoted(cells[0]).front();
    for (const auto& name : Quoted(cells[1])) layer.allowed.insert(name);
    layer.product = cells[1] != "everything";
    if (layer.allowed.empty() && layer.product && cells[1] != "nothing") {
        throw std::runtime_error("what may it include? " + row);
    }
    return layer;
}

/// The line with the lines that continue it after a backslash.
std::string Continued(const std::vector<std::string>& lines, std::size_t index) {
    std::string text = lines[index];
    while (text.ends_with("\\") && ++index < lines.size()) text.replace(text.size() - 1, 1, lines[index]);
    return text;
}

std::string Where(const std::string& file, std::size_t index) {
    return file + ":" + std::to_string(index + 1);
}

struct SInclude {
    std::string target;
    std::size_t line; ///< from 0
    bool isQuoted;    ///< "target", not <target>
    bool isOurs;      ///< a file of this tree, named from the root
};

std::vector<SInclude> IncludesOf(const fs::path& root, const std::string& file) {
    static const std::regex include("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"].*");
    std::vector<SInclude> includes;
    const auto lines = ReadLines(root / file);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::smatch match;
        if (!std::regex_match(lines[i], match, include)) continue;
        includes.push_back({match[2], i, match[1] == "\"", fs::exists(root / match.str(2))});
    }
    return includes;
}

} // namespace

std::vector<SLayer> ReadLayers(const fs::path& document) {
    std::vector<SLayer> layers;
    const auto lines = ReadLines(document);
    auto line = std::find_if(lines.begin(), lines.end(), [](const std::string& text) {
        const auto cells = Cells(text);
        return cells.size() >= 2 && cells[0] == "Folder" && cells[1] == "May include";
    });
    if (line == lines.end()) throw std::runtime_error("no table of layers in " + document.string());
    for (line += 2; line < lines.end() && line->starts_with("|"); ++line) layers.push_back(ReadLayer(*line));
    return layers;
}

std::vector<std::string> IncludeBreaks(const fs::path& root, const std::vector<SLayer>& layers) {
    std::vector<std::string> breaks;
    for (const auto& file : Sources(root)) {
        const SLayer* layer = LayerOf(file, layers);
        if (!layer) breaks.push_back(file + " lies in no folder of the table");
        if (!layer || !layer->product) continue;
        for (const auto& include : IncludesOf(root, file)) {
            if (!include.isOurs) {
                if (include.isQuoted)
                    breaks.push_back(
                        Where(file, include.line) + " includes " + include.target + ", not from the root");
                continue;
            }
            const SLayer* other = LayerOf(include.target, layers);
            const bool fine = other == layer || layer->allowed.contains(include.target) ||
                              (other && layer->allowed.contains(other->folder));
            if (!fine) breaks.push_back(Where(file, include.line) + " includes " + include.target);
        }
    }
    return breaks;
}

std::vector<std::string> UnusedAllowances(const fs::path& root, const std::vector<SLayer>& layers) {
    std::map<std::string, std::set<std::string>> used; // by folder; folders without sources are only planned
    for (const auto& file : Sources(root)) {
        const SLayer* layer = LayerOf(file, layers);
        if (!layer) continue;
        auto& names = used[layer->folder];
        for (const auto& include : IncludesOf(root, file)) {
            const SLayer* other = LayerOf(include.target, layers);
            names.insert(include.target);
            if (other) names.insert(other->folder);
        }
    }
    std::vector<std::string> unused;
    for (const auto& layer : layers) {
        if (!used.contains(layer.folder)) continue;
        for (const auto& name : layer.allowed) {
            const bool isThere = used.contains(name) || fs::is_regular_file(root / name);
            if (isThere && !used[layer.folder].contains(name))
                unused.push_back(layer.folder + " includes nothing of " + name);
        }
    }
    return unused;
}

std::vector<std::string> UnitCircles(const fs::path& root, const std::set<std::string>& roots) {
    const auto unitOf = [](const std::string& file) { return file.substr(0, file.rfind('.')); };
    std::map<std::string, std::set<std::string>> units; // each with those that it includes
    for (const auto& file : Sources(root)) {
        for (const auto& include : IncludesOf(root, file)) {
            const auto unit = unitOf(file), target = unitOf(include.target);
            if (include.isOurs && unit != target && !roots.contains(target)) units[unit].insert(target);
        }
    }
    std::vector<std::string> circles;
    for (;;) {
        // Removes units that include nothing that is left. What remains is part of a circle or leads to one.
        bool isSmaller = true;
        while (isSmaller) {
            for (auto& [unit, targets] : units)
                std::erase_if(targets, [&](const auto& target) { return !units.contains(target); });
            isSmaller = std::erase_if(units, [](const auto& entry) { return entry.second.empty(); }) > 0;
        }
        if (units.empty()) return circles;
        std::vector<std::string> path;
        std::string unit = units.begin()->first;
        auto known = path.end();
        while ((known = std::find(path.begin(), path.end(), unit)) == path.end()) {
            path.push_back(unit);
            unit = *units[unit].begin();
        }
        std::string circle;
        for (; known != path.end(); ++known) circle += *known + " - ";
        circles.push_back(circle + unit);
        units[path.back()].erase(unit); // broken here, so that the next one can be found
    }
}

std::vector<std::string> RepeatedTexts(const fs::path& root, const std::vector<SLayer>& layers,
    const std::vector<std::string>& texts, const std::set<std::string>& exceptions) {
    std::vector<std::string> repeated;
    for (const auto& file : Sources(root)) {
        const SLayer* layer = LayerOf(file, layers);
        if (!layer || !layer->product || exceptions.contains(file)) continue;
        const auto lines = ReadLines(root / file);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const auto code = lines[i].substr(0, lines[i].find("//"));
            for (const auto& text : texts) {
                if (code.find(text) != std::string::npos)
                    repeated.push_back(Where(file, i) + " repeats " + text);
            }
        }
    }
    return repeated;
}

std::vector<std::string> SystemSwitches(const fs::path& root, const std::set<std::string>& exceptions) {
    static const std::regex condition("^\\s*#\\s*(if|ifdef|ifndef|elif|elifdef|elifndef)\\b(.*)");
    static const std::regex system("\\b(_?_?WIN(32|64|DOWS)(__)?|__CYGWIN__|__MINGW(32|64)__|_MSC_VER|"
                                   "(__)?linux(__)?|__gnu_linux__|(__)?unix(__)?|__APPLE__|__FreeBSD__)\\b");
    static const std::regex free("^(platform|tests|gfx/[^/]+)/.*");
    std::vector<std::string> switches;
    for (const auto& file : Sources(root)) {
        if (exceptions.contains(file) || std::regex_match(file, free)) continue;
        const auto lines = ReadLines(root / file);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            std::smatch match;
            const auto line = Continued(lines, i);
            if (!std::regex_match(line, match, condition)) continue;
            const std::string asked = match[2];
            if (std::regex_search(asked, system)) switches.push_back(Where(file, i) + " asks for the system");
        }
    }
    return switches;
}

std::vector<std::string> WidgetLocks(const fs::path& root) {
    static const std::regex widgets("^(gui|device_gui)/.*");
    static const std::regex lock("mutex|\\b(lock_guard|unique_lock|scoped_lock|shared_lock|CLock)\\b");
    std::vector<std::string> locks;
    for (const auto& file : Sources(root)) {
        if (!std::regex_match(file, widgets)) continue;
        const auto lines = ReadLines(root / file);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (std::regex_search(lines[i], lock)) locks.push_back(Where(file, i) + " has a lock");
        }
    }
    return locks;
}

std::vector<std::string> LateHeaders(const fs::path& root) {
    std::vector<std::string> late;
    for (const auto& file : Sources(root)) {
        const auto own = fs::path(file).replace_extension(".h");
        if (fs::path(file).extension() != ".cpp" || !fs::exists(root / own)) continue;
        const auto lines = ReadLines(root / file);
        const auto first = std::find_if(
            lines.begin(), lines.end(), [](const std::string& line) { return line.starts_with("#include"); });
        if (first == lines.end() || *first != "#include \"" + own.generic_string() + '"')
            late.push_back(file + " doesn't begin with its header");
    }
    return late;
}

std::vector<std::string> MissingPorts(const fs::path& root) {
    std::vector<std::string> owners{"platform"};
    if (fs::exists(root / "gfx")) {
        for (const auto& entry : fs::directory_iterator(root / "gfx")) {
            if (entry.is_directory()) owners.push_back("gfx/" + entry.path().filename().generic_string());
        }
    }
    std::sort(owners.begin() + 1, owners.end());
    const std::array<std::string, 2> systems{"linux", "win32"};
    std::vector<std::string> missing;
    for (const auto& owner : owners) {
        std::array<std::set<std::string>, 2> files;
        for (std::size_t i = 0; i < systems.size(); ++i) {
            const auto folder = root / owner / systems[i];
            if (!fs::exists(folder)) continue;
            for (const auto& entry : fs::recursive_directory_iterator(folder)) {
                if (entry.is_regular_file())
                    files[i].insert(entry.path().lexically_relative(folder).generic_string());
            }
        }
        for (std::size_t i = 0; i < systems.size(); ++i) {
            for (const auto& file : files[1 - i]) {
                if (!files[i].contains(file))
                    missing.push_back(owner + "/" + systems[i] + "/" + file + " is missing");
            }
        }
    }
    return missing;
}

std::vector<std::string> LongSources(const fs::path& root, const std::vector<SLayer>& layers,
    std::size_t limit, const std::set<std::string>& exceptions) {
    std::vector<std::string> sources;
    for (const auto& file : Sources(root)) {
        const SLayer* layer = LayerOf(file, layers);
        if (!layer || !layer->product || exceptions.contains(file)) continue;
        const auto length = ReadLines(root / file).size();
        if (length > limit) sources.push_back(file + " has " + std::to_string(length) + " lines");
    }
    return sources;
}

std::vector<std::string> Repetitions(
    const fs::path& root, const std::set<std::string>& texts, const std::set<std::string>& folders) {
    std::vector<std::string> repetitions;
    for (const auto& file : Sources(root)) {
        if (std::any_of(folders.begin(), folders.end(),
                [&file](const std::string& folder) { return LiesIn(file, folder); }))
            continue;
        std::string all;
        for (const auto& line : ReadLines(root / file)) all += WithoutBlanks(line);
        for (const auto& text : texts) {
            if (all.find(WithoutBlanks(text)) != std::string::npos)
                repetitions.push_back(file + " repeats " + text);
        }
    }
    return repetitions;
}

std::vector<std::string> UnexplainedPackages(const fs::path& root) {
    std::set<std::string> explained;
    for (const auto& line : ReadLines(root / "docs/dependencies.md")) {
        for (const auto& word : Quoted(line)) explained.insert(word);
    }
    std::vector<std::string> unexplained;
    // The package is the last word of a line, in the second list the only one.
    for (const auto* list : {"packaging/packages.txt", "packaging/sources.txt"}) {
        for (const auto& line : ReadLines(root / list)) {
            std::istringstream words(line);
            std::string package;
            if (line.starts_with("#")) continue;
            for (std::string word; words >> word;) package = word;
            if (!package.empty() && !explained.contains(package))
                unexplained.push_back(package + " is not explained");
        }
    }
    return unexplained;
}

namespace {

/// Tests in Python: methods of a class that begin with "test_".
void CollectPythonTests(const fs::path& folder, std::set<std::string>& tests) {
    static const std::regex aClass(R"(class (\w+).*)");
    static const std::regex method(R"(    def (test_\w+).*)");
    if (!fs::is_directory(folder)) return;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() != ".py") continue;
        std::string suite;
        for (const auto& line : ReadLines(entry.path())) {
            std::smatch match;
            if (std::regex_match(line, match, aClass)) suite = match.str(1);
            if (std::regex_match(line, match, method)) tests.insert(suite + "." + match.str(1));
        }
    }
}

} // namespace

std::vector<std::string> UnknownTests(const fs::path& root) {
    static const std::regex declared(R"((?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\))");
    std::set<std::string> tests;
    for (const auto& source : Sources(root / "tests")) {
        const auto lines = ReadLines(root / "tests" / source);
        for (std::size_t i = 0; i < lines.size(); ++i) { // a long name is on a line of its own
            const auto text = lines[i] + (i + 1 < lines.size() ? lines[i + 1] : "");
            std::smatch match;
            const bool begins = lines[i].starts_with("TEST") || lines[i].starts_with("TYPED_TEST(");
            if (begins && std::regex_search(text, match, declared))
                tests.insert(match.str(1) + "." + match.str(2));
        }
    }
    CollectPythonTests(root / "tests/hosts", tests);
    std::vector<std::string> unknown;
    bool areFigures = false; // the rows of the table say how long something ran
    for (const auto& line : ReadLines(root / "docs/failures.md")) {
        const auto cells = Cells(line);
        if (!line.starts_with("|") || cells.size() < 3) {
            areFigures = false;
            continue;
        }
        areFigures = areFigures || cells[2] == "Runs";
        if (areFigures || cells[2] == "Shown by" || cells[2].starts_with("---")) continue;
        const auto names = Quoted(cells[2]);
        if (names.empty()) unknown.push_back("nothing shows: " + cells[0]);
        for (const auto& name : names) {
            if (!tests.contains(name)) unknown.push_back(name + " is no test");
        }
    }
    return unknown;
}

} // namespace KAV::Tests
