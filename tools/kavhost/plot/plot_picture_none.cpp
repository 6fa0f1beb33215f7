#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/plot/plot.h"

namespace KAV::Host {

bool CanDrawPlots() noexcept {
    return false;
}

void DrawPlot(const SPlot&, std::ostream&) {
    throw CFailure("this build cannot draw pictures");
}

} // namespace KAV::Host
