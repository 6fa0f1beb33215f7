#include "tests/tools/kavhost/effects/test_effect.h"

KAV_TEST_EXPORT KAV::VST::AEffect* VSTPluginMain(KAV::VST::HostCallback) {
    static KAV::VST::AEffect record{}; // no mark, no operations
    return &record;
}
