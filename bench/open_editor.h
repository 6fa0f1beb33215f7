#pragma once

#include "bench/copying_target.h"
#include "device_gui/editor_system.h"
#include "device_gui/row_info.h"
#include "device_gui/xxx_gui.h"
#include "gfx/renderers.h"
#include "gui/meter.h"
#include "native/native_pictures.h"
#include "panel/layout.h"
#include "plugin/device_dsp.h"
#include "vst/vst2.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace KAV::Bench {

inline constexpr std::uint32_t FrameMs = 16;

/// A window of the editor's, of which the renderer gets a handle: that of a window without a screen, which
/// takes the pictures of a software renderer on Linux, unless another one is given.
class CScreenless final : public GUI::IWindow {
public:
    std::int32_t Create(
        GUI::IWindowClient& newClient, void*, std::int32_t, std::int32_t, std::uint32_t) noexcept override {
        client = &newClient;
        return 0;
    }
    void Destroy() noexcept override { client = nullptr; }
    bool Exists() const noexcept override { return client != nullptr; }
    void* Handle() const noexcept override { return handle; }

    GUI::IWindowClient* client = nullptr;
    CCopyingTarget target;
    /// What a renderer draws into.
    void* handle = static_cast<Platform::IPictureTarget*>(&target);
};

/// Such windows on the thread that opens them, with this system's pictures and texts.
class CScreenlessSystem final : public IEditorSystem {
public:
    bool IsAvailable() const noexcept override { return true; }
    GUI::SSurroundings Surroundings() noexcept override { return {&window, &_pictures}; }
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

    CScreenless window;

private:
    Native::CNativePictures _pictures;
    Native::IEditor* _editor = nullptr;
};

/// One renderer under every number, so that an editor gets it without a setting.
class COneRenderer final {
public:
    explicit COneRenderer(const GFX::SRendererRow& renderer) {
        _table.fill(renderer);
        GFX::UseRenderers(&_table);
    }
    ~COneRenderer() { GFX::UseRenderers(nullptr); }
    COneRenderer(const COneRenderer&) = delete;
    COneRenderer& operator=(const COneRenderer&) = delete;

private:
    GFX::RendererTable _table;
};

/// A moving curve instead of the gain reduction: a filled column for each pixel, and a line of `Points`.
class CCurve final : public GUI::CWidget {
public:
    explicit CCurve(GUI::CGUI& root) : CWidget(root, InfoOf(Panel::RowOf(Panel::EClass::GR))) {
        FreezeToFractions(true);
    }
    void Move(int frame) {
        _frame = frame;
        Root().Invalidate();
    }
    /// Notes the values of this one whenever it draws, as it is drawn last.
    void Watch(const GUI::SAnimValue& value) {
        _watched.push_back(&value);
        _shown.push_back(0.0f);
    }
    const std::vector<float>& Shown() const { return _shown; }
    void Draw(std::uint32_t) override {
        ++draws;
        for (std::size_t n = 0; n < _watched.size(); ++n) _shown[n] = _watched[n]->fValue;
        const auto rect = PixelRect();
        const auto left = static_cast<float>(rect.nL);
        const auto top = static_cast<float>(rect.nT);
        const auto width = static_cast<float>(rect.nW);
        const auto height = static_cast<float>(rect.nH);
        const auto depth = [&](float place) {
            return height * (0.5f + 0.45f * std::sin(20.0f * place + 0.1f * static_cast<float>(_frame)));
        };
        _fill.clear();
        for (std::int32_t n = 0; n < rect.nW; ++n) {
            const float x = left + static_cast<float>(n);
            const GFX::SPoint upper{x, top, 0.0f, 0x00FF3A68};
            const GFX::SPoint lower{x, top + depth(static_cast<float>(n) / width), 0.0f, 0x7FFF3968};
            _fill.push_back(n % 2 == 0 ? lower : upper);
            _fill.push_back(n % 2 == 0 ? upper : lower);
        }
        _line.clear();
        for (std::int32_t n = 0; n < Points; ++n) {
            const float place = static_cast<float>(n) / static_cast<float>(Points - 1);
            _line.push_back({left + width * place, top + depth(place) - 1.0f, 0.0f, GFX::White});
        }
        auto& gpu = Root().GPU();
        gpu.UnbindTexture();
        gpu.SetClip(left, top, width, height);
        gpu.SetLineWidth(1.0f);
        gpu.SetLineSmooth(false);
        gpu.DrawLines(static_cast<std::int32_t>(_fill.size()), _fill.data(), true, true);
        gpu.SetLineColor(1.0f, 0.22352941f, 0.40784314f, 1.0f);
        gpu.SetLineWidth(width * 0.008f);
        gpu.SetLineSmooth(true);
        gpu.DrawLines(Points, _line.data(), false, true);
        gpu.SetLineSmooth(false);
        gpu.SetClip(0.0f, 0.0f, 0.0f, 0.0f);
    }

    std::size_t draws = 0; ///< every picture of the editor has one

private:
    static constexpr std::int32_t Points = 400;

    int _frame = 0;
    std::vector<const GUI::SAnimValue*> _watched;
    std::vector<float> _shown;
    std::vector<GFX::SPoint> _fill;
    std::vector<GFX::SPoint> _line;
};

/// An instance with its editor open, at a scale of 1 or 2.
class COpenEditor final {
public:
    explicit COpenEditor(std::int32_t scale, const GFX::SRendererRow& renderer = GFX::SoftwareRenderer(),
        void* handle = nullptr)
        : _renderers(renderer) {
        auto system = std::make_unique<CScreenlessSystem>();
        _window = &system->window;
        if (handle != nullptr) _window->handle = handle;
        _device = std::make_unique<CDeviceDSP>(nullptr, Utils::SMakerService{}, std::move(system));
        _curve = std::make_unique<CCurve>(_device->GUI());
        for (auto* const meter : _device->GUI().FindAll<GUI::CMeter>()) {
            if (meter->Id() <= FirstMeter && meter->Id() > FirstMeter - static_cast<std::int32_t>(Meters))
                _meters.push_back(meter);
        }
        for (auto* const widget : _device->GUI().Widgets()) {
            if (std::find(Knobs.begin(), Knobs.end(), widget->Id()) != Knobs.end())
                _knobs.push_back(dynamic_cast<GUI::CValueWidget*>(widget));
        }
        for (const auto* const meter : _meters) _curve->Watch(meter->sValue);
        for (const auto* const knob : _knobs) _curve->Watch(knob->sValue);
        _device->State().ResizeToWidth(Panel::PanelWidth * scale);
        auto* const record = _device->Record();
        record->dispatcher(record, VST::effEditOpen, 0, 0, this, 0.0f);
        Tick();
    }
    ~COpenEditor() {
        auto* const record = _device->Record();
        record->dispatcher(record, VST::effEditClose, 0, 0, nullptr, 0.0f);
        _curve.reset(); // before its root
    }
    COpenEditor(const COpenEditor&) = delete;
    COpenEditor& operator=(const COpenEditor&) = delete;

    /// Whether everything is there that the measurement is about.
    bool IsComplete(std::int32_t scale) const {
        const auto& root = _device->GUI();
        return _window->client != nullptr && root.GPU().IsReady() &&
               root.Width() == Panel::PanelWidth * scale && root.Height() == Panel::PanelHeight * scale &&
               _meters.size() == Meters && _knobs.size() == Knobs.size();
    }
    std::u16string Renderer() const { return _device->GUI().GPU().GetName(); }
    std::size_t Pixels() const {
        return static_cast<std::size_t>(_device->GUI().Width()) *
               static_cast<std::size_t>(_device->GUI().Height());
    }
    /// Everything that usually moves gets another value: the knobs by way of the device.
    void Move() {
        const auto phase = [](int step) { return static_cast<float>(step % Cells) / (Cells - 1); };
        ++_frame;
        int n = 0;
        for (auto* const meter : _meters) meter->SetFromHost(phase(7 * _frame + 11 * n++));
        n = 0;
        for (const auto knob : Knobs) _device->SetParam(knob, phase(_frame + 8 * n++), 0);
        _curve->Move(_frame);
    }
    /// All that happens 60 times a second.
    void Tick() {
        if (_window->client != nullptr) _window->client->OnTick(_time += FrameMs);
    }
    /// Moves and ticks; how many of the meters and knobs are then drawn with another value than before.
    std::size_t CountMoved() {
        Move();
        Tick();
        const auto before = _curve->Shown();
        Move();
        Tick();
        const auto after = _curve->Shown();
        std::size_t moved = 0;
        for (std::size_t n = 0; n < after.size(); ++n) moved += after[n] != before[n] ? 1u : 0u;
        return moved;
    }
    std::size_t Draws() const { return _curve->draws; }
    std::size_t Puts() const { return _window->target.puts; }
    std::size_t Copied() const { return _window->target.copied; }

    static constexpr std::size_t Meters = 32;
    /// Four faders, the main gains and two macros.
    static constexpr std::array<std::int32_t, 8> Knobs{32, 33, 36, 37, 23, 29, 24, 25};

private:
    static constexpr int Cells = 63;
    static constexpr std::int32_t FirstMeter = -24; // of the inputs; those of the outputs follow

    COneRenderer _renderers;
    std::unique_ptr<CDeviceDSP> _device;
    std::unique_ptr<CCurve> _curve;
    CScreenless* _window = nullptr; // of the device's system
    std::vector<GUI::CMeter*> _meters;
    std::vector<GUI::CValueWidget*> _knobs;
    std::uint32_t _time = 0;
    int _frame = 0;
};

} // namespace KAV::Bench
