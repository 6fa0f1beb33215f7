#include "bench/renderers/system.h"

#include <ctime>

namespace KAV::Bench {

std::vector<SCase> Cases() {
    return {{"software", GFX::SoftwareRenderer(), false}, {"OpenGL", GFX::OpenGLRenderer(), true}};
}

double ProcessTime() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

} // namespace KAV::Bench
