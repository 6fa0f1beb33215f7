#include "tools/kavhost/base/wildcards.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

bool HasWildcards(const fs::path& name) {
    return name.u16string().find_first_of(u"*?") != std::u16string::npos;
}

char16_t Lower(char16_t letter) noexcept {
    return letter >= u'A' && letter <= u'Z' ? static_cast<char16_t>(letter - u'A' + u'a') : letter;
}

/// Goes back to the last `*` where the rest doesn't fit, and lets it stand for one character more.
bool Fits(std::u16string_view name, std::u16string_view pattern) noexcept {
    constexpr auto none = std::u16string_view::npos;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = none;
    std::size_t afterStar = 0; ///< in `name`
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            afterStar = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || Lower(pattern[p]) == Lower(name[n]))) {
            ++p;
            ++n;
        } else if (star != none) {
            p = star + 1;
            n = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', p) == none;
}

/// What the folder holds that fits; a folder that can't be read holds nothing.
std::vector<fs::path> EntriesThatFit(const fs::path& folder, const fs::path& pattern, bool wantsFolders) {
    std::vector<fs::path> found;
    const auto wanted = pattern.u16string();
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const auto leaf = entry->path().filename();
        const auto name = leaf.u16string();
        if (name.starts_with(u'.') && !wanted.starts_with(u'.')) continue;
        std::error_code ignored;
        const bool isWanted = wantsFolders ? entry->is_directory(ignored) : entry->is_regular_file(ignored);
        if (isWanted && Fits(name, wanted)) found.push_back(folder / leaf);
    }
    return found;
}

} // namespace

std::vector<fs::path> ExpandWildcards(const fs::path& name) {
    std::error_code error;
    if (!HasWildcards(name) || fs::exists(name, error)) return {name};
    std::vector<fs::path> found{name.root_path()};
    const auto parts = name.relative_path();
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        const bool isLast = std::next(part) == parts.end();
        std::vector<fs::path> next;
        for (const auto& folder : found) {
            if (HasWildcards(*part)) {
                auto entries = EntriesThatFit(folder, *part, !isLast);
                std::ranges::move(entries, std::back_inserter(next));
            } else if (auto path = folder / *part; !isLast || fs::is_regular_file(path, error)) {
                next.push_back(std::move(path));
            }
        }
        found = std::move(next);
    }
    if (found.empty()) return {name};
    std::ranges::sort(found);
    return found;
}

} // namespace KAV::Host
