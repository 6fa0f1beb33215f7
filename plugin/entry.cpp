#include "plugin/device_dsp.h"
#include "vst/vst2.h"

#define KAV_EXPORT __attribute__((visibility("default"), used))

using namespace KAV;

/// The library's entry point. Returns the record of a new instance, or null if the host isn't a VST 2 host.
extern "C" KAV_EXPORT VST::AEffect* VSTPluginMain(VST::HostCallback audioMaster) {
    if (audioMaster == nullptr) return nullptr;
    if (audioMaster(nullptr, VST::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
    try {
        return (new CDeviceDSP(audioMaster))->Record();
    } catch (...) { // the host takes null as a failure to create an instance
        return nullptr;
    }
}

// Old hosts look for these names. They are assembler labels, because a C++ function may not be called main.
extern "C" KAV_EXPORT VST::AEffect* EntryNamedMAIN(VST::HostCallback audioMaster) __asm__("MAIN")
    __attribute__((alias("VSTPluginMain")));
extern "C" KAV_EXPORT VST::AEffect* EntryNamedMain(VST::HostCallback audioMaster) __asm__("main")
    __attribute__((alias("VSTPluginMain")));
