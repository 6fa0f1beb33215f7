#include "native/linux/file_list_model.h"

#include "platform/directory.h"
#include "platform/xdg/dialog_program.h"
#include "utils/text.h"

#include <algorithm>
#include <filesystem>
#include <memory>
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

struct CFileListModel::SFound {
    std::string folder; // what follows is of this one; ends with a slash
    bool isReadable = false;
    std::vector<SEntry> entries; // that a path of ours can have
    bool isFolder = false;       // the path that was asked for
    bool exists = false;
    bool isInFolder = false;

    void Read(std::string itsFolder) {
        folder = std::move(itsFolder);
        if (!folder.ends_with('/')) folder += '/';
        std::error_code error;
        const fs::directory_iterator first(folder, error);
        isReadable = !error;
        for (auto& entry : Platform::ListDirectory(folder)) {
            if (!entry.name.starts_with('.') && AnswerOfPath("/" + entry.name).kind == EFileAnswer::Chosen)
                entries.push_back({std::move(entry.name), entry.isFolder});
        }
    }
};

CFileListModel::CFileListModel(Platform::SFileRequest request, const std::string& home, IFileListDisk& disk)
    : _disk(disk), _request(std::move(request)),
      _name(Utils::ToUtf16(Platform::ProposedName(_request)), false) {
    Ask(
        [asked = _request, home](SFound& found) {
            auto folder = Platform::ExistingFolder(asked);
            if (folder.empty() && home.starts_with('/') && IsFolder(home)) folder = home;
            found.Read(folder.empty() ? "/" : folder);
        },
        [this](SFound& found) { Show(found); });
}

/// `read` owns all that it touches.
void CFileListModel::Ask(std::function<void(SFound&)> read, std::function<void(SFound&)> done) {
    const auto found = std::make_shared<SFound>();
    _isWaiting = true;
    try {
        _disk.Run([found, read = std::move(read)] { read(*found); },
            [this, found, done = std::move(done)] {
                _isWaiting = false;
                done(*found);
            });
    } catch (...) { // no memory, or no thread: the list stays as it is
        _isWaiting = false;
        throw;
    }
}

void CFileListModel::OpenFolder(std::string folder, std::string selected) {
    Ask([folder = std::move(folder)](SFound& found) { found.Read(folder); },
        [this, selected = std::move(selected)](SFound& found) {
            Show(found);
            const auto place = std::ranges::find(_entries, selected, &SEntry::name);
            if (place != _entries.end()) _selected = static_cast<std::size_t>(place - _entries.begin());
        });
}

void CFileListModel::Show(SFound& found) {
    _folder = std::move(found.folder);
    _isReadable = found.isReadable;
    _all = std::move(found.entries);
    ShowFiltered();
}

void CFileListModel::ShowFiltered() {
    _selected = None;
    _entries.clear();
    const bool hasUp = _folder != "/";
    if (hasUp) _entries.push_back({"..", true});
    for (const auto& entry : _all) {
        if (entry.isFolder || IsShown(entry.name)) _entries.push_back(entry);
    }
    std::sort(_entries.begin() + (hasUp ? 1 : 0), _entries.end(), IsBefore);
}

bool CFileListModel::IsShown(std::string_view name) const {
    if (_filter >= _request.filters.size()) return true;
    return std::ranges::any_of(_request.filters[_filter].patterns,
        [name](const std::string& pattern) { return MatchesPattern(name, pattern); });
}

void CFileListModel::Select(std::size_t entry) {
    if (!MayAct() || entry >= _entries.size()) return;
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
    if (!MayAct() || _folder == "/") return;
    const auto slash = _folder.rfind('/', _folder.size() - 2);
    OpenFolder(_folder.substr(0, slash + 1), _folder.substr(slash + 1, _folder.size() - slash - 2));
}

void CFileListModel::NextFilter() {
    if (!MayAct() || _request.filters.empty()) return;
    _filter = (_filter + 1) % _request.filters.size();
    ShowFiltered();
}

void CFileListModel::Activate(std::size_t entry) {
    if (!MayAct() || entry >= _entries.size()) return;
    const auto chosen = _entries[entry];
    if (!chosen.isFolder) return Take(_folder + chosen.name);
    if (chosen.name == "..") return Up();
    OpenFolder(_folder + chosen.name);
}

void CFileListModel::Accept() {
    if (_isWaiting) return;
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

void CFileListModel::Take(const std::string& path) {
    Ask(
        [path, shown = _folder, saves = _request.saves](SFound& found) {
            found.isFolder = IsFolder(path);
            found.exists = Exists(path);
            found.isInFolder = IsFolder(path.substr(0, path.rfind('/') + 1));
            if (found.isFolder) {
                found.Read(path);
            } else if (!saves && !found.exists) {
                found.Read(shown); // it has gone
            }
        },
        [this, path](SFound& found) { OnTaken(path, found); });
}

void CFileListModel::OnTaken(const std::string& path, SFound& found) {
    if (found.isFolder) {
        _name = CLineEditor({}, false);
        return Show(found);
    }
    // A name that no path of ours can have, or that leads nowhere, is left to the user to correct.
    if (AnswerOfPath(path).kind != EFileAnswer::Chosen || !found.isInFolder) return;
    if (!_request.saves && !found.exists) return Show(found);
    _path = path;
    _state = _request.saves && found.exists ? EState::Replaces : EState::Chosen;
}

void CFileListModel::Cancel() {
    if (_isWaiting) {
        _disk.Forget();
        _isWaiting = false;
        if (!_folder.empty()) return;
    }
    if (_state == EState::Replaces) {
        _state = EState::Open;
    } else if (_state == EState::Open) {
        _state = EState::Cancelled;
    }
}

} // namespace KAV::Native
