#include "tests/tools/kavhost/effects/test_effect.h"

KAV_TEST_EXPORT KAV::VST::AEffect* VSTPluginMain(KAV::VST::HostCallback) {
    return nullptr;
}
