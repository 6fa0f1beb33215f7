#include "artwork/pictures.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace KAV::Artwork {

namespace {

using Factory = Painter (*)(const SFrame& frame);

const std::map<std::string_view, Factory>& Factories() {
    static const std::map<std::string_view, Factory> factories{
        {"buttonar", AutoReleaseButtonPainter},
        {"buttonin", LimiterButtonPainter},
        {"dialogbtn", DialogButtonPainter},
        {"fader", FaderPainter},
        {"gui_front_root_panel_1500px", BodyPainter},
        {"hint", HintPainter},
        {"hq", HighQualityPainter},
        {"knob02", MainKnobPainter},
        {"knob03", MacroKnobPainter},
        {"knob04", SensitivityKnobPainter},
        {"lamp_2", LampPainter},
        {"logo", LogoPainter},
        {"meterled", MeterPainter},
        {"resizearrow", ResizePainter},
        {"switchgpu2", RendererSwitchPainter},
        {"switchsimd", SimdSwitchPainter},
        {"toolbar_down3", ToolbarPainter},
        {"toolbar_up", TopBarPainter},
        {"toolbtna", SlotPainter},
        {"toolbtnabcopy", SlotCopyPainter},
        {"toolbtnabout", SettingsPainter},
        {"toolbtncopy", CopyPainter},
        {"toolbtndown", DropDownPainter},
        {"toolbtnedit", EditPainter},
        {"toolbtnload", LoadPainter},
        {"toolbtnmacro", MacroButtonPainter},
        {"toolbtnnext", [](const SFrame& frame) { return StepPainter(frame, true); }},
        {"toolbtnprev", [](const SFrame& frame) { return StepPainter(frame, false); }},
        {"toolbtnredo", [](const SFrame& frame) { return HistoryPainter(frame, true); }},
        {"toolbtnrtg", ChannelButtonPainter},
        {"toolbtnsave", SavePainter},
        {"toolbtnundo", [](const SFrame& frame) { return HistoryPainter(frame, false); }},
        {"tooldisplay", DisplayPainter},
        {"toolmeterchnl", ChannelMeterPainter},
        {"tooloversampling", DisplayPainter},
    };
    return factories;
}

/// Calls work(0) to work(count - 1), each once, from several threads; the first exception comes out.
template<typename Work>
void ForEach(int count, const Work& work) {
    std::atomic<int> next = 0;
    std::vector<std::exception_ptr> failures(std::clamp(std::thread::hardware_concurrency(), 1u, 16u));
    std::vector<std::thread> threads;
    threads.reserve(failures.size());
    for (auto& failure : failures) {
        threads.emplace_back([&next, &work, &failure, count] {
            try {
                for (int i = next++; i < count; i = next++) work(i);
            } catch (...) {
                failure = std::current_exception();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& failure : failures) {
        if (failure) std::rethrow_exception(failure);
    }
}

} // namespace

Painter PainterOf(const SSprite& sprite) {
    const auto found = Factories().find(sprite.stem);
    if (found == Factories().end()) throw std::out_of_range("nobody draws " + std::string(sprite.stem));
    return found->second(FrameOf(sprite));
}

SPixels Paint(const SSprite& sprite) {
    const Painter painter = PainterOf(sprite);
    CBitmap sheet(sprite.width, sprite.height);
    ForEach(sprite.frames, [&](int index) {
        sheet.Paste(painter(index), index % sprite.columns * sprite.FrameWidth(),
            index / sprite.columns * sprite.FrameHeight());
    });
    const bool band = sprite.frames == 1 && sprite.width >= 1500;
    return sheet.Quantised(band ? 2.0 : 0.0);
}

} // namespace KAV::Artwork
