// What a frame of the editor costs by each renderer of this system: the whole editor at work, as in the
// frames of bench/editor_bench.cpp, drawn into a real window. Counted is the processor time of the whole
// process, with the threads of the drivers.

#include "bench/open_editor.h"
#include "bench/renderers/system.h"
#include "tests/gfx/ogl_window.h"
#include "tests/support/scratch_home.h"

#include <cstdio>

using namespace KAV;

namespace {

constexpr int Frames = 300;

/// False: the renderer doesn't work here.
bool Measure(const Bench::SCase& one, std::int32_t scale) {
    Tests::CGlWindow window(Panel::PanelWidth * scale, Panel::PanelHeight * scale);
    Bench::COpenEditor editor(scale, one.renderer, one.drawsIntoWindow ? window.Handle() : nullptr);
    if (!editor.IsComplete(scale) || editor.Renderer() != one.renderer.sName) {
        std::printf("%s at %d %%: it doesn't work here\n", one.name, 100 * scale);
        return false;
    }
    const auto frame = [&] {
        editor.Move();
        editor.Tick();
    };
    for (int n = 0; n < 50; ++n) frame(); // textures and texts are there
    const auto draws = editor.Draws();
    const double before = Bench::ProcessTime();
    for (int n = 0; n < Frames; ++n) frame();
    const double seconds = Bench::ProcessTime() - before;
    if (editor.Draws() - draws != Frames) {
        std::printf("%s at %d %%: it doesn't draw each frame\n", one.name, 100 * scale);
        return false;
    }
    std::printf("| %s | %d %% | %.2f |\n", one.name, 100 * scale, 1e3 * seconds / Frames);
    return true;
}

} // namespace

int main() {
    const Tests::CScratchHome home; // no patches, settings or logs of the user
    bool works = true;
    for (const std::int32_t scale : {1, 2})
        for (const auto& one : Bench::Cases()) works = Measure(one, scale) && works;
    return works ? 0 : 1;
}
