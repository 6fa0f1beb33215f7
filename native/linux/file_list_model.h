#pragma once

#include "native/line_editor.h"
#include "native/linux/file_list_disk.h"
#include "platform/file_dialog.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Native {

/// What a list of files shows and does, without a window: one folder, in it the folders and the files of a
/// filter, and the name of a file to save. Texts are UTF-8.
///
/// Left out are hidden files, and names that no path of this program can have
/// (platform/xdg/dialog_program.h). While the disk is asked for a folder or a file, the list stays as it is
/// and takes nothing but Cancel(). Threads: one. Throws std::bad_alloc.
class CFileListModel final {
public:
    struct SEntry {
        std::string name;
        bool isFolder = false;
    };
    enum class EState : std::uint8_t {
        Open,
        Replaces, ///< asks whether the file of Path() may be replaced
        Chosen,   ///< Path() is the answer
        Cancelled
    };
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    /// Begins in the folder of the request; in `home` if that is missing, or in the root. The disk must
    /// outlive it.
    CFileListModel(Platform::SFileRequest request, const std::string& home, IFileListDisk& disk);
    ~CFileListModel() { _disk.Forget(); }
    CFileListModel(const CFileListModel&) = delete;
    CFileListModel& operator=(const CFileListModel&) = delete;

    const Platform::SFileRequest& Request() const noexcept { return _request; }
    EState State() const noexcept { return _state; }
    const std::string& Path() const noexcept { return _path; }

    bool IsWaiting() const noexcept { return _isWaiting; } ///< for the disk
    /// Ends with a slash; empty until the first one has been read.
    const std::string& Folder() const noexcept { return _folder; }
    bool IsReadable() const noexcept { return _isReadable; }
    /// Folders first, each kind by name. The first one, "..", leads up, except in the root.
    const std::vector<SEntry>& Entries() const noexcept { return _entries; }
    std::size_t Selected() const noexcept { return _selected; } ///< None: no entry
    std::size_t Filter() const noexcept { return _filter; }
    /// Of a file to save; typed by the user.
    CLineEditor& Name() noexcept { return _name; }

    void Select(std::size_t entry); ///< its name is that of the file to save
    void Move(std::ptrdiff_t entries);
    /// Selects the next entry that begins with this text, letter case ignored.
    void Seek(std::string_view text);
    void Up(); ///< to the folder that this one is in, with this one selected
    void NextFilter();
    void Activate(std::size_t entry); ///< opens a folder, takes a file
    /// Takes the typed name or the selected entry; as the answer to Replaces: the file may be replaced.
    void Accept();
    /// As the answer to Replaces: back to the list. While it waits for the disk: gives that up, and stays in
    /// the folder that it shows, if there is one.
    void Cancel();

private:
    struct SFound; ///< what the disk has said

    void Ask(std::function<void(SFound&)> read, std::function<void(SFound&)> done);
    bool MayAct() const noexcept { return _state == EState::Open && !_isWaiting; }
    /// With the entry of that name selected, if there is one.
    void OpenFolder(std::string folder, std::string selected = {});
    void Show(SFound& found);
    void ShowFiltered();
    bool IsShown(std::string_view name) const;
    void Take(const std::string& path);
    void OnTaken(const std::string& path, SFound& found);

    IFileListDisk& _disk;
    Platform::SFileRequest _request;
    CLineEditor _name;
    EState _state = EState::Open;
    std::string _path;
    std::string _folder;
    std::vector<SEntry> _all; // whatever the filter, unsorted
    std::vector<SEntry> _entries;
    std::size_t _selected = None;
    std::size_t _filter = 0;
    bool _isReadable = true;
    bool _isWaiting = false;
};

/// Whether a name matches a pattern with "*" and "?"; the case of ASCII letters is ignored.
bool MatchesPattern(std::string_view name, std::string_view pattern);

} // namespace KAV::Native
