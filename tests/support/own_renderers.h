#pragma once

#include "gfx/renderers.h"
#include "tests/support/recording_gpu.h"

#include <memory>
#include <string>
#include <vector>

namespace KAV::Tests {

/// Recording renderers in the place of all four, while it lives; one at a time.
class COwnRenderers final {
public:
    COwnRenderers() {
        latest = nullptr;
        GFX::UseRenderers(&Table);
    }
    ~COwnRenderers() { GFX::UseRenderers(nullptr); }
    COwnRenderers(const COwnRenderers&) = delete;
    COwnRenderers& operator=(const COwnRenderers&) = delete;

    /// The one that was made last; it must still live.
    CRecordingGpu& Live() const { return *latest; }
    std::vector<std::string>& Calls() const { return latest->lines; }

private:
    static std::unique_ptr<GFX::GPU> Make(const GFX::SRendererTarget&, GFX::EReason) {
        auto made = std::make_unique<CRecordingGpu>();
        latest = made.get();
        return made;
    }

    static inline CRecordingGpu* latest = nullptr;
    static constexpr GFX::RendererTable Table{{{u"Software", Make, true}, {u"OpenGL", Make, true},
        {u"Direct3D9", Make, true}, {u"Direct2D", Make, true}}};
};

} // namespace KAV::Tests
