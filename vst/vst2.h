#pragma once

#include <cstddef>
#include <cstdint>

/// The binary interface between a VST 2.4 host and an effect: the shared record, the numbers of the calls in
/// both directions, and the records that these calls point to. Nothing here has behaviour.
namespace KAV::VST {

struct AEffect;

using Dispatcher = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
    std::intptr_t value, void* pointer, float option);
using HostCallback = Dispatcher; ///< `audioMaster`: the host's half, of the same type
using ProcessEntry = void (*)(AEffect* effect, float** inputs, float** outputs, std::int32_t frames);
using ProcessDoubleEntry = void (*)(AEffect* effect, double** inputs, double** outputs, std::int32_t frames);
using SetParameterEntry = void (*)(AEffect* effect, std::int32_t index, float value);
using GetParameterEntry = float (*)(AEffect* effect, std::int32_t index);
using PluginEntry = AEffect* (*)(HostCallback host); ///< type of `VSTPluginMain`

/// Four characters as one number, first character highest.
constexpr std::int32_t FourCharacters(char a, char b, char c, char d) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(static_cast<unsigned char>(a)) << 24) |
                                     (static_cast<std::uint32_t>(static_cast<unsigned char>(b)) << 16) |
                                     (static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 8) |
                                     static_cast<std::uint32_t>(static_cast<unsigned char>(d)));
}

inline constexpr std::int32_t kEffectMagic = FourCharacters('V', 's', 't', 'P');

/// The record that the effect gives to the host. It lives as long as the effect; the host reads the counts
/// again after `audioMasterIOChanged`.
struct AEffect {
    std::int32_t magic;
    Dispatcher dispatcher;
    ProcessEntry process; ///< accumulating; deprecated
    SetParameterEntry setParameter;
    GetParameterEntry getParameter;
    std::int32_t numPrograms;
    std::int32_t numParams;
    std::int32_t numInputs;
    std::int32_t numOutputs;
    std::int32_t flags; ///< `AEffectFlags`
    std::intptr_t reserved1;
    std::intptr_t reserved2;
    std::int32_t initialDelay; ///< samples
    std::int32_t realQualities;
    std::int32_t offQualities;
    float ioRatio;
    void* object; ///< the effect's own
    void* user;   ///< the host's own
    std::int32_t uniqueID;
    std::int32_t version;
    ProcessEntry processReplacing;
    ProcessDoubleEntry processDoubleReplacing;
    char future[56];
};

enum AEffectFlags : std::int32_t {
    effFlagsHasEditor = 1 << 0,
    effFlagsCanReplacing = 1 << 4,
    effFlagsProgramChunks = 1 << 5,
    effFlagsIsSynth = 1 << 8,
    effFlagsNoSoundInStop = 1 << 9,
    effFlagsCanDoubleReplacing = 1 << 12,
};

/// Calls from the host to the effect's dispatcher. The gaps are calls that version 2.4 removed.
enum EffectOpcode : std::int32_t {
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effGetChunk = 23,
    effSetChunk = 24,
    effProcessEvents = 25,
    effCanBeAutomated = 26,
    effString2Parameter = 27,
    effGetProgramNameIndexed = 29,
    effGetInputProperties = 33,
    effGetOutputProperties = 34,
    effGetPlugCategory = 35,
    effOfflineNotify = 38,
    effOfflinePrepare = 39,
    effOfflineRun = 40,
    effProcessVarIo = 41,
    effSetSpeakerArrangement = 42,
    effSetBypass = 44,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effVendorSpecific = 50,
    effCanDo = 51,
    effGetTailSize = 52,
    effGetParameterProperties = 56,
    effGetVstVersion = 58,
    effEditKeyDown = 59,
    effEditKeyUp = 60,
    effSetEditKnobMode = 61,
    effGetMidiProgramName = 62,
    effGetCurrentMidiProgram = 63,
    effGetMidiProgramCategory = 64,
    effHasMidiProgramsChanged = 65,
    effGetMidiKeyName = 66,
    effBeginSetProgram = 67,
    effEndSetProgram = 68,
    effGetSpeakerArrangement = 69,
    effShellGetNextPlugin = 70,
    effStartProcess = 71,
    effStopProcess = 72,
    effSetTotalSampleToProcess = 73,
    effSetPanLaw = 74,
    effBeginLoadBank = 75,
    effBeginLoadProgram = 76,
    effSetProcessPrecision = 77,
    effGetNumMidiInputChannels = 78,
    effGetNumMidiOutputChannels = 79,
};

/// Calls from the effect to the host.
enum HostOpcode : std::int32_t {
    audioMasterAutomate = 0,
    audioMasterVersion = 1,
    audioMasterCurrentId = 2,
    audioMasterIdle = 3,
    audioMasterGetTime = 7,
    audioMasterProcessEvents = 8,
    audioMasterIOChanged = 13,
    audioMasterSizeWindow = 15,
    audioMasterGetSampleRate = 16,
    audioMasterGetBlockSize = 17,
    audioMasterGetInputLatency = 18,
    audioMasterGetOutputLatency = 19,
    audioMasterGetCurrentProcessLevel = 23,
    audioMasterGetAutomationState = 24,
    audioMasterGetVendorString = 32,
    audioMasterGetProductString = 33,
    audioMasterGetVendorVersion = 34,
    audioMasterVendorSpecific = 35,
    audioMasterCanDo = 37,
    audioMasterGetLanguage = 38,
    audioMasterGetDirectory = 41,
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43,
    audioMasterEndEdit = 44,
    audioMasterOpenFileSelector = 45,
    audioMasterCloseFileSelector = 46,
};

inline constexpr std::int32_t kPlugCategEffect = 1;
inline constexpr std::int32_t kVstVersion = 2400;

/// Sizes of the texts that the calls fill, in bytes including the closing zero.
inline constexpr std::size_t kVstMaxParamStrLen = 8;
inline constexpr std::size_t kVstMaxProgNameLen = 24;
inline constexpr std::size_t kVstMaxEffectNameLen = 64;
inline constexpr std::size_t kVstMaxVendorStrLen = 64;
inline constexpr std::size_t kVstMaxProductStrLen = 64;

/// The editor's rectangle, in pixels.
struct ERect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

/// Where the host's transport is, as `audioMasterGetTime` returns it: valid until the effect's next call.
struct VstTimeInfo {
    double samplePos; ///< of the block's first sample
    double sampleRate;
    double nanoSeconds;
    double ppqPos;
    double tempo;
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    std::int32_t timeSigNumerator;
    std::int32_t timeSigDenominator;
    std::int32_t smpteOffset;
    std::int32_t smpteFrameRate;
    std::int32_t samplesToNextClock;
    std::int32_t flags; ///< `VstTimeInfoFlags`
};

enum VstTimeInfoFlags : std::int32_t {
    kVstTransportChanged = 1 << 0,
    kVstTransportPlaying = 1 << 1,
    kVstTransportCycleActive = 1 << 2,
};

/// A key as hosts report it. Not a record of the interface: the call passes its parts as arguments.
struct VstKeyCode {
    std::int32_t character; ///< 0 for keys without one
    std::uint8_t virt;      ///< the number of a key without a character; 0 for none
    std::uint8_t modifier;  ///< bits: shift 1, alternate 2, command 4, control 8
};

struct VstSpeakerProperties {
    float azimuth;   ///< radians
    float elevation; ///< radians
    float radius;    ///< metres
    float reserved;
    char name[64];
    std::int32_t type;
    char future[28];
};

/// A speaker layout with room for `SPEAKERS` speakers. The interface's own record has room for 8; hosts
/// allocate more after it when `numChannels` is higher.
template<std::size_t SPEAKERS>
struct SpeakerArrangement {
    std::int32_t type;
    std::int32_t numChannels;
    VstSpeakerProperties speakers[SPEAKERS];
};
using VstSpeakerArrangement = SpeakerArrangement<8>;

static_assert(
    sizeof(void*) == 8, "64-bit systems have one calling convention each; others would need theirs named");
static_assert(sizeof(AEffect) == 192);
static_assert(offsetof(AEffect, dispatcher) == 8);
static_assert(offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24);
static_assert(offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, numParams) == 44);
static_assert(offsetof(AEffect, numInputs) == 48);
static_assert(offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56);
static_assert(offsetof(AEffect, reserved1) == 64);
static_assert(offsetof(AEffect, reserved2) == 72);
static_assert(offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, realQualities) == 84);
static_assert(offsetof(AEffect, offQualities) == 88);
static_assert(offsetof(AEffect, ioRatio) == 92);
static_assert(offsetof(AEffect, object) == 96);
static_assert(offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(offsetof(AEffect, future) == 136);
static_assert(sizeof(ERect) == 8);
static_assert(sizeof(VstTimeInfo) == 88);
static_assert(offsetof(VstTimeInfo, timeSigNumerator) == 64);
static_assert(offsetof(VstTimeInfo, flags) == 84);
static_assert(sizeof(VstSpeakerProperties) == 112);
static_assert(sizeof(VstSpeakerArrangement) == 904);

} // namespace KAV::VST
