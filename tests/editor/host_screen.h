#pragma once

#include "tests/editor/editor_host.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace KAV::Tests {

/// What a host shows: a top-level window, and in it one that an editor is opened in; and the user in front of
/// it, whose pointer and keys lead where this system leads them. Positions are pixels of the window that the
/// editor is in. The user's settings are the process's own. One at a time. Threads: the test's.
class CHostScreen final {
public:
    enum class ESpace { Usual, Large }; ///< for editors up to their first width, or of any width
    explicit CHostScreen(ESpace space = ESpace::Usual);
    ~CHostScreen(); ///< after the end of the host
    CHostScreen(const CHostScreen&) = delete;
    CHostScreen& operator=(const CHostScreen&) = delete;

    /// Makes the windows, which belong to the host. The one for its editor.
    std::uintptr_t Begin(CEditorHost& host);

    // The editor's window
    bool HasEditor();
    struct SSize {
        std::int32_t width = 0, height = 0;
        bool operator==(const SSize&) const = default;
    };
    SSize EditorSize();
    /// 0xRRGGBB of what it shows, row by row; the highest byte means nothing.
    std::vector<std::uint32_t> Pixels(
        std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

    /// Whether Pixels() are those that graphics hardware has drawn, when it draws.
    static bool SeesHardware();

    // The pointer
    enum class EButton { Left, Right };
    void MoveTo(std::int32_t x, std::int32_t y);
    void Press(EButton button);
    void Release(EButton button);
    void Turn(int notches); ///< the wheel; above 0: away from the user

    // The keys: a character of the keyboard, or one of these
    enum EKey : int { Return = 0x100, Escape, Down, Right, Home, End, Shift, Control };
    void Key(int key, bool isDown);

    // What the editor asks
    bool IsMenuUp();
    /// Whether a question for a file is up and takes keys.
    bool AsksForFile();
    /// Enters the name of a file there, a new one or one that exists; the user has still to press Return.
    void EnterFile(std::string_view name, bool isNew);
    bool HasQuestion(); ///< a question for a file is up, whoever has the keys

private:
    struct SParts;
    std::unique_ptr<SParts> _parts;
};

} // namespace KAV::Tests
