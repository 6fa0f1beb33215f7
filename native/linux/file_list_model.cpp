#include "native/linux/file_list_model.h"

#include "platform/directory.h"
#include "platform/xdg/dialog_program.h"
#include "utils/text.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace KAV::Native {

namespace {

namespace fs = std::filesystem;
using Platform::AnswerOfPath;
using Platform::EFileAnswer;

char Lower(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (auto& letter : lower) letter = Lower(letter);
    return lower;
}

bool IsFolder(const std::string& path) noexcept {
    std::error_code error;
    return fs::is_directory(path, error);
}

bool Exists(const std::string& path) noexcept {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool IsBefore(const CFileListModel::SEntry& left, const CFileListModel::SEntry& right) {
    if (left.isFolder != right.isFolder) return left.isFolder;
    const auto a = Lower(left.name);
    const auto b = Lower(right.name);
    return a != b ? a < b : left.name < right.name;
}

} // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
    std::size_t at = 0;
    std::size_t place = 0;
    std::size_t star = std::string_view::npos; // the last one in the pattern
    std::size_t taken = 0;                     // where in the name what follows it is tried next
    while (at < name.size()) {
        if (place < pattern.size() && pattern[place] == '*') {
            star = place++;
            taken = at;
        } else if (place < pattern.size() &&
                   (pattern[place] == '?' || Lower(pattern[place]) == Lower(name[at]))) {
            ++place;
            ++at;
        } else if (star != std::string_view::npos) {
            place = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    while (place < pattern.size() && pattern[place] == '*') ++place;
    return place == pattern.size();
}

CFileListModel::CFileListModel(Platform::SFileRequest request, const std::string& home)
    : _request(std::move(request)), _name(Utils::ToUtf16(Platform::ProposedName(_request)), false) {
    auto folder = Platform::ExistingFolder(_request);
    if (folder.empty() && home.starts_with('/') && IsFolder(home)) folder = home;
    OpenFolder(folder.empty() ? "/" : folder);
}

void CFileListModel::OpenFolder(std::string folder) {
    if (!folder.ends_with('/')) folder += '/';
    _folder = std::move(folder);
    Read();
}

void CFileListModel::Read() {
    _selected = None;
    _entries.clear();
    std::error_code error;
    const fs::directory_iterator first(_folder, error);
    _isReadable = !error;
    const bool hasUp = _folder != "/";
    if (hasUp) _entries.push_back({"..", true});
    for (auto& entry : Platform::ListDirectory(_folder)) {
        if (entry.name.starts_with('.') || AnswerOfPath("/" + entry.name).kind != EFileAnswer::Chosen)
            continue;
        if (entry.isFolder || IsShown(entry.name))
            _entries.push_back({std::move(entry.name), entry.isFolder});
    }
    std::sort(_entries.begin() + (hasUp ? 1 : 0), _entries.end(), IsBefore);
}

bool CFileListModel::IsShown(std::string_view name) const {
    if (_filter >= _request.filters.size()) return true;
    return std::ranges::any_of(_request.filters[_filter].patterns,
        [name](const std::string& pattern) { return MatchesPattern(name, pattern); });
}

void CFileListModel::Select(std::size_t entry) {
    if (_state != EState::Open || entry >= _entries.size()) return;
    _selected = entry;
    if (_request.saves && !_entries[entry].isFolder)
        _name = CLineEditor(Utils::ToUtf16(_entries[entry].name), false);
}

void CFileListModel::Move(std::ptrdiff_t entries) {
    if (_entries.empty()) return;
    const auto last = static_cast<std::ptrdiff_t>(_entries.size()) - 1;
    const std::ptrdiff_t from =
        _selected == None ? (entries > 0 ? -1 : last + 1) : static_cast<std::ptrdiff_t>(_selected);
    Select(static_cast<std::size_t>(std::clamp(from + entries, std::ptrdiff_t{0}, last)));
}

void CFileListModel::Seek(std::string_view text) {
    const auto wanted = Lower(text);
    if (wanted.empty()) return;
    for (std::size_t n = 1; n <= _entries.size(); ++n) {
        const auto entry = (_selected == None ? n - 1 : _selected + n) % _entries.size();
        if (!Lower(_entries[entry].name).starts_with(wanted)) continue;
        Select(entry);
        return;
    }
}

void CFileListModel::Up() {
    if (_state != EState::Open || _folder == "/") return;
    const auto slash = _folder.rfind('/', _folder.size() - 2);
    const auto name = _folder.substr(slash + 1, _folder.size() - slash - 2);
    OpenFolder(_folder.substr(0, slash + 1));
    const auto place = std::ranges::find(_entries, name, &SEntry::name);
    if (place != _entries.end()) _selected = static_cast<std::size_t>(place - _entries.begin());
}

void CFileListModel::NextFilter() {
    if (_state != EState::Open || _request.filters.empty()) return;
    _filter = (_filter + 1) % _request.filters.size();
    Read();
}

void CFileListModel::Activate(std::size_t entry) {
    if (_state != EState::Open || entry >= _entries.size()) return;
    const auto chosen = _entries[entry];
    if (!chosen.isFolder) return Take(_folder + chosen.name);
    if (chosen.name == "..") return Up();
    OpenFolder(_folder + chosen.name);
}

void CFileListModel::Accept() {
    if (_state == EState::Replaces) {
        _state = EState::Chosen;
    } else if (_state == EState::Open && _request.saves) {
        const auto name = Utils::ToUtf8(_name.Text());
        if (!name.empty()) {
            Take(name.starts_with('/') ? name : _folder + name);
        } else if (_selected != None && _entries[_selected].isFolder) {
            Activate(_selected);
        }
    } else if (_selected != None) {
        Activate(_selected);
    }
}

void CFileListModel::Take(std::string path) {
    if (IsFolder(path)) {
        _name = CLineEditor({}, false);
        return OpenFolder(std::move(path));
    }
    const bool exists = Exists(path);
    const auto folder = path.substr(0, path.rfind('/') + 1);
    // A name that no path of ours can have, or that leads nowhere, is left to the user to correct.
    if (AnswerOfPath(path).kind != EFileAnswer::Chosen || !IsFolder(folder)) return;
    if (!_request.saves && !exists) return Read(); // it has gone
    _path = std::move(path);
    _state = _request.saves && exists ? EState::Replaces : EState::Chosen;
}

void CFileListModel::Cancel() {
    if (_state == EState::Replaces) {
        _state = EState::Open;
    } else if (_state == EState::Open) {
        _state = EState::Cancelled;
    }
}

} // namespace KAV::Native
