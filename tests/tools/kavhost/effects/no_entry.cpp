#include "tests/tools/kavhost/effects/test_effect.h"

KAV_TEST_EXPORT int NotAnEffect() {
    return 0;
}
