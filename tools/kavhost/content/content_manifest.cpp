#include "tools/kavhost/content/content_manifest.h"

#include "platform/file_system.h"
#include "platform/whole_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

namespace KAV::Host {

namespace {

constexpr std::string_view Head = "KAV factory content 1";

/// A number that fills the text.
std::optional<std::uint64_t> ReadNumber(std::string_view text, int base) noexcept {
    std::uint64_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
    return number;
}

/// Inside the documents folder, wherever that is: a file that is to be removed must lie nowhere else.
bool IsPlace(std::string_view place) {
    const auto path = PathOf(place);
    if (place.empty() || path.is_absolute() || path.has_root_path()) return false;
    return std::ranges::none_of(path, [](const auto& part) { return part == ".."; });
}

/// "SIZE HASH PLACE"
std::optional<SInstalledFile> ReadLine(std::string_view line) {
    const auto first = line.find(' ');
    if (first == std::string_view::npos) return std::nullopt;
    const auto second = line.find(' ', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const auto size = ReadNumber(line.substr(0, first), 10);
    const auto hash = ReadNumber(line.substr(first + 1, second - first - 1), 16);
    const auto place = line.substr(second + 1);
    if (!size || !hash || !IsPlace(place)) return std::nullopt;
    return SInstalledFile{std::string(place), {*size, *hash}};
}

} // namespace

SFingerprint FingerprintOf(std::string_view content) noexcept {
    // FNV-1a with 64 bits, by its authors' published constants.
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : content) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 1099511628211U;
    }
    return {content.size(), hash};
}

CContentManifest::CContentManifest(std::filesystem::path file) : _file(std::move(file)) {
    const auto bytes = Platform::ReadWholeFile(_file);
    std::error_code error;
    if (bytes.data == nullptr &&
        std::filesystem::symlink_status(_file, error).type() == std::filesystem::file_type::not_found)
        return;
    std::istringstream lines(
        bytes.data == nullptr ? std::string() : std::string(bytes.data.get(), bytes.size));
    std::string line;
    bool isList = std::getline(lines, line) && line == Head;
    while (isList && std::getline(lines, line)) {
        auto installed = ReadLine(line);
        isList = installed.has_value();
        if (installed) _files.push_back(std::move(*installed));
    }
    if (!isList) throw CFailure(Utf8(_file) + ": not a list of installed files; nothing was changed");
}

bool CContentManifest::Has(std::string_view place, const SFingerprint& content) const {
    return std::ranges::find(_files, SInstalledFile{std::string(place), content}) != _files.end();
}

std::vector<std::string> CContentManifest::Places() const {
    std::set<std::string> places;
    for (const auto& file : _files) places.insert(file.place);
    return {places.begin(), places.end()};
}

void CContentManifest::Add(std::string_view place, const SFingerprint& content) {
    if (!Has(place, content)) _files.push_back({std::string(place), content});
}

void CContentManifest::Settle(std::string_view place, const SFingerprint& content) {
    Forget(place);
    _files.push_back({std::string(place), content});
}

void CContentManifest::Forget(std::string_view place) {
    std::erase_if(_files, [place](const auto& file) { return file.place == place; });
}

void CContentManifest::Save() const {
    if (_files.empty()) {
        std::error_code error;
        if (!std::filesystem::exists(_file, error) || Platform::Files().Remove(_file)) return;
        throw CFailure(Utf8(_file) + ": cannot be removed");
    }
    std::ostringstream text;
    text << Head << '\n';
    for (const auto& file : _files) {
        text << std::dec << file.content.size << ' ' << std::hex << file.content.hash << ' ' << file.place
             << '\n';
    }
    const auto bytes = text.str();
    if (!Platform::ReplaceWholeFile(_file, bytes.data(), bytes.size()))
        throw CFailure(Utf8(_file) + ": cannot be written");
}

} // namespace KAV::Host
