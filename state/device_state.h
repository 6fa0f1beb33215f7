#pragma once

#include "device/device_controls.h"
#include "device/xxx_dsp.h"
#include "state/error_boxes.h"
#include "state/file_questions.h"
#include "state/host_queue.h"
#include "state/panel_state.h"
#include "state/patch_witness.h"
#include "utils/turn.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace KAV {

/// What patches and routings do to one instance: its device, and what it keeps besides values. It needs no
/// widgets.
///
/// Threads: any but the audio thread. Each operation is a turn, or a part of the caller's, and so whole for
/// the others. Files are read and written, and the user is asked, before the turn; what the host has to hear
/// is queued in it, and told when it has ended. `flags`: PatchFlag bits.
///
/// With an empty path SavePatch(), OpenPatch() and SaveRouting() ask the user, unless a question of theirs is
/// still open, and the rest runs when the answer comes, maybe long after the call has returned. The instance
/// may end meanwhile, even within the call: what calls them touches nothing of it afterwards.
class CDeviceState final {
public:
    static constexpr std::int32_t LeastWidth = 500; ///< of the editor, in pixels
    static constexpr float Aspect = 1.363472f;      ///< width by height: the panel's 754 by 553 pixels

    /// All three live as long as this object. Looks for the user's patches and routings; touches no device.
    CDeviceState(CXXXDSP& device, IDeviceControls& controls, IHostRoad& host);
    /// A call to the host that is under way may return later; nothing of this object is touched then.
    ~CDeviceState();
    CDeviceState(const CDeviceState&) = delete;
    CDeviceState& operator=(const CDeviceState&) = delete;

    Utils::CTurns& Turns() noexcept { return _turns; }
    const SPanelState& Panel(const Utils::CTurn&) const noexcept { return _panel; }
    std::uint32_t Generation() const noexcept { return _panel.generation; } ///< without a turn
    void SetWitness(const Utils::CTurn&, IPatchWitness* witness) noexcept { _witness = witness; }
    CErrorBoxes& Errors() noexcept { return _errors; }
    CFileQuestions& Questions() noexcept { return _questions; }

    // The whole state as a text
    std::string PatchText(std::uint32_t flags);
    bool ApplyPatchData(const void* data, std::size_t size, std::uint32_t flags); ///< as CPatchSaveLoad
    bool ReadPatch(std::string_view text, std::uint32_t flags);                   ///< as CPatchSaveLoad
    std::size_t WritePatch(const char** data, std::uint32_t flags);               ///< as CPatchSaveLoad
    /// As WritePatch(), in a buffer of the host's own, which stays as it is until the next call.
    std::size_t WriteChunk(void** data, std::uint32_t flags);

    // Patches as files. Paths are UTF-16; an empty one asks the user. False when nothing was written or read,
    // or not yet: the answer to a question may still be to come.
    void SelectPatch(std::int32_t index, bool force); ///< as CPatchSaveLoad
    /// The user's choice from the list. The list may have changed since the user saw `name` at `index`. If
    /// the entry is no longer there, or its file can't be taken, the patch stays the one it was. The
    /// generation changes all the same, so that a widget which shows the choice already goes back.
    void ChoosePatch(std::int32_t index, std::u16string name);
    bool SavePatch(std::u16string_view path, std::uint32_t flags);
    /// The present state becomes what new instances start with. Replaces an older such file without a
    /// question.
    bool SaveAsDefault();
    bool OpenPatch(std::u16string_view path);
    void SetPatchName(std::u16string_view name);
    std::u16string PatchName();
    std::u16string PatchNameAt(std::int32_t index); ///< of the list; empty outside it
    std::int32_t CurrentPatch();                    ///< place in the list; -1: none yet

    /// Makes side `side` (0 or 1) the live one: the state of the other side takes the place of the present
    /// one, which is kept. The first time there is no other state yet.
    void SwitchAB(std::uint8_t side);
    /// The side that isn't live becomes a copy of the live one, without its routing.
    void CopyAB();
    /// Group `to` gets the values of group `from` as they are heard, channels and routing left out. It must
    /// be the current group.
    void CopyGroup(int from, int to);
    /// Makes another group the current one. With `copy` it gets the values of the one before.
    void SelectGroup(int group, bool copy);

    // Routings: UTF-8 documents of a group 0..3; -1 means the current group.
    std::string GetRouting(int group);
    /// An empty text, or a group that isn't there, does nothing.
    void SetRouting(std::string_view text, int group);
    /// Shows the current group's routing. Channels that it doesn't have leave the group.
    void ApplyRouting();
    std::u16string RoutingName(); ///< of the shown group
    /// Takes a routing of the list for the current group or for all of them; one that can't be read does
    /// nothing.
    void SelectRouting(std::int32_t index, bool allGroups);
    /// The user's choice for the current group or for all of them. The list may have changed since the user
    /// saw `name` at `index`; an entry that is no longer there or that can't be read does nothing.
    void ChooseRouting(std::int32_t index, std::u16string name, bool allGroups = false);
    /// Writes a routing of the entries that are `on`, under the labels that are shown, and takes it for the
    /// current group. What is on, labels and group are those of this call, however late the user answers. If
    /// a patch has been loaded before the answer, the routing is written and listed, but not taken.
    void SaveRouting(std::u16string_view path, std::span<const bool, SPanelState::Channels> on);

    // The user edits a routing: until the edit ends the labels are the user's, the routing that is shown
    // isn't refreshed, and the group keeps its own. A patch, another side, another group or a routing from
    // the list ends the edit first.
    /// Begins with the current group's routing, every entry with a label, its number if it has none.
    void BeginRoutingEdit();
    /// Asks where to save the routing and ends the edit with the answer: as SaveRouting(), or when the user
    /// cancels as CancelRoutingEdit().
    void FinishRoutingEdit(std::span<const bool, SPanelState::Channels> on);
    /// Ends it. The group has the routing with which the edit began.
    void CancelRoutingEdit();
    /// Ends it. The group keeps the routing that it has by now, which is shown.
    void EndRoutingEdit();

    // What the user types or sets. Places that aren't there do nothing.
    void NameGroup(std::size_t group, std::u16string_view name);
    void NameMacro(std::size_t macro, std::u16string_view name);
    void NameChannel(std::size_t channel, std::u16string_view name); ///< only while a routing is edited
    /// How strongly `tag`, a parameter of any group, follows a macro: as CMacro::AssignMacro().
    void AssignMacro(std::size_t macro, std::int32_t tag, float sensitivity);
    /// `tag` is that of the first group and means the current one's; `normal` is 0..1.
    void SetParameter(std::int32_t tag, float normal);
    /// Pixels. Nothing happens unless both are above 0; the width is at least the smallest possible one.
    void ResizeTo(std::int32_t width, std::int32_t height);
    /// As ResizeTo(), with the height that belongs to the width.
    void ResizeToWidth(std::int32_t width);
    /// Whether the editor has got a size: from the user, a patch, or what was stored.
    bool HasSize();
    /// As ResizeToWidth(), unless it has got one by now.
    void BeginWithWidth(std::int32_t width);

    // What the host hears, by its own indexes; see CHostQueue for the order and the time.
    void ReportBegin(std::int32_t index);
    void ReportValue(std::int32_t index, float normal); ///< 0..1, of this moment
    void ReportEnd(std::int32_t index);
    void ReportLatency(std::int32_t samples);
    void ReportSize(std::int32_t width, std::int32_t height); ///< of the editor, in pixels
    /// On a thread of the host's, not within a turn. Takes no turn.
    void TellHost(CHostQueue::EOccasion occasion);
    /// Turns of this thread, which isn't the host's, leave their entries to those of the host's threads and
    /// to its idle calls. The empty identifier: there is no such thread. Any thread.
    void SetQuietThread(std::thread::id thread) noexcept { _quietThread = thread; }
    /// The host has made no idle call so far. Any thread.
    bool IsHostSilent() const noexcept { return _queue->IsDirect(); }
    /// What tells a host of edits that makes no idle calls, to be run on a thread of the editor's. It holds
    /// what it needs: the instance may end in the host's call.
    std::function<void()> DirectCall();
    /// What gives the host's window its size when the host refuses to; null: nothing.
    void SetHostWindow(IHostWindow* window) { _queue->SetWindow(window); }

private:
    using Turn = Utils::CTurn;

    void SetParam(Turn& turn, std::int32_t tag, float value, std::uint32_t flags);
    void ReportValue(Turn& turn, std::int32_t index, float normal);
    void TellHostAfter(Turn& turn) noexcept;
    void ShowPatchName(const Turn& turn, std::u16string_view name);
    void ApplyRouting(Turn& turn);
    void ShowRouting(const Turn& turn);
    void SetRouting(Turn& turn, std::string_view text, int group);
    void TakeRouting(Turn& turn, std::string_view text, bool allGroups);
    void CancelRoutingEdit(Turn& turn);
    void EndRoutingEdit(const Turn& turn);

    std::string Write(const Turn& turn, std::uint32_t flags);
    void WriteParameters(std::string& text, std::uint32_t flags);
    void WriteSettings(std::string& text, std::uint32_t flags);
    void WriteMacros(std::string& text);

    /// A patch, and the routings that stand for the layouts of an old one: files, read before the turn.
    struct SReadable {
        std::string text; ///< empty: the data was no patch
        std::string legacyRoutings;
    };
    static SReadable Prepare(std::string_view text);
    static SReadable Prepare(const void* data, std::size_t size);
    bool Read(Turn& turn, const SReadable& patch, std::uint32_t flags);
    void ReadNames(std::string_view text);
    void ReadMacros(std::string_view text);
    void ReadParameters(Turn& turn, std::string_view text);
    void ReadRoutings(Turn& turn, std::string_view text);
    void ReadSettings(std::string_view text, std::uint32_t flags);

    std::string LoadPatchFile(std::u16string_view path);
    /// The patch `name` of the list, at place `index` when it was looked up.
    void LoadListed(std::int32_t index, const std::u16string& name, bool force);
    bool SavePatchAs(std::u16string_view path, std::uint32_t flags);
    bool OpenPatchFile(std::u16string_view path);

    /// A routing as it was shown when the user wanted to save it.
    struct SShownRouting {
        int group = 0;
        std::array<std::string, SPanelState::Channels> labels; // UTF-8
        std::array<bool, SPanelState::Channels> on{};
        std::uint32_t patches = 0; // how many had been read
    };
    SShownRouting ShownRouting(const Turn& turn, std::span<const bool, SPanelState::Channels> on) const;
    Utils::SFileQuestion RoutingQuestion();
    void SaveRoutingAs(std::u16string_view path, const SShownRouting& shown);

    CXXXDSP& _device;
    IDeviceControls& _controls;
    IHostRoad& _host;
    Utils::CTurns _turns;
    CErrorBoxes _errors{_turns};
    CFileQuestions _questions{_turns};
    const std::shared_ptr<CHostQueue> _queue = std::make_shared<CHostQueue>(); // it has a lock of its own
    std::atomic<std::thread::id> _quietThread{};

    // Within a turn
    SPanelState _panel;
    struct SRoutingEdit {
        std::uint32_t number = 0; // of the edits of this instance
        int group = 0;
        std::string text;  // the group's routing when it began
        bool asks = false; // where to save it
    };
    std::optional<SRoutingEdit> _routingEdit;
    std::uint32_t _routingEdits = 0; // so far
    std::uint32_t _patches = 0;      // read so far
    IPatchWitness* _witness = nullptr;
    bool _hasSize = false;
    bool _tellsHost = false; // the turn has something for the host, and empties the queue when it has ended
    std::string _patch;      // as last written
    std::string _chunk;      // what the host was last given
    std::string _otherSide;  // the state of the side that isn't live; empty: none yet
    std::int32_t _current = -1; // place in the list of patches
};

} // namespace KAV
