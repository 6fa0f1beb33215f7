#pragma once

#include "gfx/renderers.h"
#include "native/native_pictures.h"
#include "pixels/bitmap.h"
#include "tests/device_gui/open_panel.h"
#include "tests/panel_pictures/kept_picture.h"
#include "tests/support/own_settings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// As OpenPanel, but the pictures, the texts and the software renderer are the product's own: what the window
/// would show is a picture.
class PaintedPanel : public OpenPanel {
protected:
    COwnSettings settings;
    CKeptPicture kept;
    GFX::RendererTable table; ///< the software renderer at each number

    PaintedPanel() {
        window.handle = kept.Handle();
        table.fill(kept.Renderer());
        GFX::UseRenderers(&table); // undone with the recording ones
    }

    std::unique_ptr<IEditorSystem> MakeSystem() override { return std::make_unique<CSystem>(window); }

    /// Another instance, whose editor is open.
    void Renew() { Reopen(); }
    void ShowAtWidth(std::int32_t width) {
        Device().State().ResizeToWidth(width);
        Settle();
    }
    /// All animations come to their ends, and whatever is drawn by then is drawn.
    void Settle() { robot.Advance(1200); }
    /// `frames` blocks of a sound that drives the limiter and all meters of a pair.
    void Play(int blocks, float level) {
        std::vector<std::vector<float>> sound(2, std::vector<float>(512));
        for (int n = 0; n < blocks; ++n) {
            for (std::size_t i = 0; i < 512; ++i, ++_frame) {
                const auto phase = 0.06f * static_cast<float>(_frame % 100000);
                sound[0][i] = level * std::sin(phase);
                sound[1][i] = 0.7f * level * std::sin(1.5f * phase);
            }
            effect->Process(sound);
            robot.Advance(11);
        }
    }
    const Pixels::SBitmap& Shown() { return kept.Shown(Gui().Width(), Gui().Height()); }

private:
    class CSystem final : public IEditorSystem {
    public:
        explicit CSystem(CRecordingWindow& window) : _window(window) {}
        bool IsAvailable() const noexcept override { return true; }
        GUI::SSurroundings Surroundings() noexcept override { return {&_window, &_pictures}; }
        std::u16string BeginPictures() override { return _pictures.Begin(); }
        void EndPictures() noexcept override { _pictures.End(); }
        void Prepare(std::span<const Native::SPictureWish> wishes) noexcept override {
            _pictures.Prepare(wishes);
        }
        bool Open(void*, std::int32_t, std::int32_t, Native::IEditor& editor) override {
            _editor = &editor;
            editor.OnOpened();
            return true;
        }
        void Close() noexcept override {
            if (auto* const editor = std::exchange(_editor, nullptr)) editor->OnClosing();
        }

    private:
        CRecordingWindow& _window;
        Native::CNativePictures _pictures;
        Native::IEditor* _editor = nullptr;
    };

    std::size_t _frame = 0;
};

} // namespace KAV::Tests
