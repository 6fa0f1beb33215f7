#pragma once

#include "device/device_controls.h"
#include "device/xxx_dsp.h"
#include "device_gui/version_check.h"
#include "gui/gui.h"
#include "patch/patch_save_load.h"
#include "utils/maker_service.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KAV {

/// The editor's half of an instance, with or without a window: the patch store, the routings, and the
/// exchange between widgets and device. The device owns every value; widgets hold copies, and the names that
/// patches keep.
///
/// Threads: any but the audio thread. Each operation is whole for the others. What an operation changes is
/// told to the host at its end, when no lock is held, in the order of the changes.
class CXXXGUI : public GUI::CGUI, public CPatchSaveLoad {
public:
    /// A newer version is known.
    static constexpr std::uint32_t NewVersionMessage = 1028;

    /// Both live as long as this object; their operations aren't called before the widgets are complete, nor
    /// by the destructor. With a server in `a_psService` the version check begins here.
    CXXXGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, const Utils::SMakerService& a_psService);
    /// Waits for the version check without limit.
    ~CXXXGUI() override;

    // CPatchSaveLoad
    bool ApplyPatchData(const void* a_pData, std::size_t a_nSize, std::uint32_t a_nFlags) override;
    bool ReadPatch(std::string_view a_sText, std::uint32_t a_nFlags) override;
    std::size_t WritePatch(const char** a_psData, std::uint32_t a_nFlags) override;
    void SelectPatch(std::int32_t a_nIndex, bool a_bForce) override;

    /// The present state as a text. `a_nFlags`: PatchFlag bits.
    std::string PatchText(std::uint32_t a_nFlags);

    // For the host. Its chunk has a buffer of its own, which stays as it is until it asks for the next one.
    std::size_t WriteChunk(void** a_psData, std::uint32_t a_nFlags);
    void SetPatchName(std::u16string_view a_sName);
    std::u16string PatchName() const;                        ///< empty without a patch display
    std::u16string PatchNameAt(std::int32_t a_nIndex) const; ///< of the list; empty outside it
    std::int32_t CurrentPatch() const;                       ///< place in the list; -1: none yet

    // Patches as files. Paths are UTF-16; an empty one asks the user. False when nothing was written or read.
    bool SavePatch(std::u16string_view a_sPath, std::uint32_t a_nFlags);
    /// The present state becomes what new instances start with. Replaces an older such file without a
    /// question.
    bool SaveAsDefault();
    bool OpenPatch(std::u16string_view a_sPath);

    /// Makes side `a_nSide` (0 or 1) the live one: the state of the other side takes the place of the present
    /// one, which is kept. The first time there is no other state yet.
    void SwitchAB(std::uint8_t a_nSide);
    /// The side that isn't live becomes a copy of the live one, without its routing.
    void CopyAB();
    /// Group `a_nTo` gets the values of group `a_nFrom` as they are heard, channels and routing left out. It
    /// must be the current group.
    void CopyGroup(int a_nFrom, int a_nTo);

    // Routings: UTF-8 documents of a group 0..3; -1 means the current group.
    std::string GetRouting(int a_nGroup);
    /// An empty text, or a group that isn't there, does nothing.
    void SetRouting(std::string_view a_sText, int a_nGroup);
    /// Shows the current group's routing. Channels that it doesn't have leave the group.
    void ApplyRouting();
    /// Takes a routing of the list for the current group or for all of them; one that can't be read does
    /// nothing.
    void SelectRouting(std::int32_t a_nIndex, bool a_bAllGroups);
    /// Writes the routing that the channel buttons show, those that are on, and takes it.
    void SaveRouting(std::u16string_view a_sPath);

    // The creation of an instance lies between these two calls. What the user has to hear meanwhile is told
    // by the second one, each text once. Where a box would hold up the host, it waits for the first window,
    // and the log has it at once.
    void BeginCreation();
    void EndCreation();

    /// Pixels. Nothing happens unless both are above 0; the width is held to the least that is possible.
    void ResizeTo(std::int32_t a_nWidth, std::int32_t a_nHeight);
    /// As ResizeTo(), with the height that belongs to the width.
    void ResizeToWidth(std::int32_t a_nWidth);

    // Entries of the menu; empty: there is none.
    std::u16string NewVersionText() const; ///< a newer version is known
    std::u16string WhatsNewText() const;   ///< any version is known
    // The maker's pages, in the user's browser. False when there is no such page, or nothing could be
    // started; the address of the download has to be one of the web.
    bool OpenDownload() const;
    bool OpenWhatsNew() const;
    bool OpenUserManual() const;
    bool OpenMakersSite() const;
    const CVersionCheck& Version() const noexcept { return _iVersion; }

    // CGUI
    void CreateGUIWindow() override;
    bool OnUserMessage(std::uint32_t a_nMessage) override;
    void Undo() override;
    void Redo() override;
    void SetParameter(std::int32_t a_nId, float a_fNormal) override;
    void BeginEdit(std::int32_t a_nId) override;
    void EndEdit(std::int32_t a_nId) override;
    void OnFrame(std::uint32_t a_nElapsedMs) override;
    virtual void OnLatencyChanged(std::int32_t a_nSamples);

    CXXXDSP& Device() const noexcept { return _piDSP; }
    IDeviceControls& Controls() const noexcept { return _piControls; }

private:
    /// What the host hears of one parameter.
    struct SNotice {
        std::int32_t nTag;
        float fNormal;
    };

    /// One operation: other threads wait for its end, the host for the end of the outermost.
    class CChange final {
    public:
        explicit CChange(CXXXGUI& a_piGUI);
        ~CChange();
        CChange(const CChange&) = delete;
        CChange& operator=(const CChange&) = delete;

    private:
        CXXXGUI& _piGUI;
        std::optional<GUI::CLock> _iLock;
    };

    // Within a CChange
    void SetParam(std::int32_t a_nTag, float a_fValue, std::uint32_t a_nFlags);
    void ReadNames(std::string_view a_sText) const;
    void ReadMacros(std::string_view a_sText);
    std::string ReadParameters(std::string_view a_sText);
    void ReadRoutings(std::string_view a_sText);
    void ReadSettings(std::string_view a_sText, std::uint32_t a_nFlags);
    void WriteParameters(std::string& a_rsText, std::uint32_t a_nFlags);
    void WriteSettings(std::string& a_rsText, std::uint32_t a_nFlags);
    void WriteMacros(std::string& a_rsText);

    void ShowLamp();
    void TellOfError(std::u16string a_sText);
    void ShowHeldErrors();
    std::string LoadPatchFile(std::u16string_view a_sPath);
    std::vector<std::u16string> Patches() const;

    CXXXDSP& _piDSP;
    IDeviceControls& _piControls;
    std::int32_t _nLastLatency = 0; // samples, as last told to the host

    // Under the lock
    std::vector<SNotice> _vsNotices; // of the running operation
    int _nChanges = 0;               // nested operations
    std::string _sPatch;             // as last written
    std::string _sChunk;             // what the host was last given
    std::string _sOtherSide;         // the state of the side that isn't live; empty: none yet
    std::uint8_t _nSide = 1;         // the side that is live
    std::int32_t _nPatch = -1;       // place in the list
    bool _bCreating = false;
    std::vector<std::u16string> _vsErrors; // no box has shown them yet; no text twice

    Utils::SMakerService _sService;
    CVersionCheck _iVersion; // last: its thread ends before anything above goes
};

} // namespace KAV
