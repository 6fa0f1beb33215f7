#pragma once

#include "gfx/gpu.h"
#include "utils/exceptions.h"
#include "utils/text.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Tests {

/// A renderer without a screen. Each call that does something leaves one line, as
/// "DrawTexture 1 to 10,20 30x40 from 0..0.5,0..1 colour 80FF0000 turn 0,0,45": what is as usual (the whole
/// texture, no colour, no transform) is left out, and a draw with alpha 0 leaves no line. Questions leave
/// none. Textures are numbered as they are made; "?" is one that isn't alive.
class CRecordingGpu : public GFX::GPU {
public:
    std::vector<std::string> lines;

    // What it answers, and what it does.
    bool ready = true;
    bool current = true;
    bool anySize = true;
    bool offscreen = false;
    bool renewalDue = false;
    bool makesTextures = true; ///< false: every creation fails
    std::int32_t minWidth = 0;
    std::int32_t maxWidth = 0;
    std::int32_t minHeight = 0;
    std::int32_t maxHeight = 0;
    std::int32_t maxAspect = 0;
    std::string throwIn;                 ///< the operation that throws KAV::Exceptions::Std, by its name
    std::vector<std::uint32_t> frame;    ///< what ReadBack() copies; too short: the rest stays as it is
    std::vector<std::uint32_t> lastBits; ///< the picture that CreateTextureBits() got last
    std::int32_t lastPixelFormat = 0;    ///< and its format

    /// Textures that have been made and not been given back, by their numbers.
    const std::set<std::uint64_t>& LiveTextures() const { return _alive; }

    bool AnySizeTextures() const override { return Answer("AnySizeTextures", anySize); }
    std::int32_t MinTextureW() const override { return Answer("MinTextureW", minWidth); }
    std::int32_t MaxTextureW() const override { return Answer("MaxTextureW", maxWidth); }
    std::int32_t MinTextureH() const override { return Answer("MinTextureH", minHeight); }
    std::int32_t MaxTextureH() const override { return Answer("MaxTextureH", maxHeight); }
    std::int32_t MaxAspect() const override { return Answer("MaxAspect", maxAspect); }
    void Clear() override { Note("Clear"); }
    void BeginFrame() override { Note("BeginFrame"); }
    void EndFrame() override { Note("EndFrame"); }
    void Present() override { Note("Present"); }
    void Resize(std::int32_t width, std::int32_t height) override { Note("Resize", Size(width, height)); }
    void SetLineWidth(float width) override { Note("SetLineWidth", " " + Text(width)); }
    void SetLineColor(float r, float g, float b, float a) override {
        Note("SetLineColor", " " + List({r, g, b, a}));
    }
    void SetLineSmooth(bool smooth) override { Note("SetLineSmooth", smooth ? " on" : " off"); }
    bool IsOffscreenCapable() const override { return Answer("IsOffscreenCapable", offscreen); }
    void BeginOffscreen() override { Note("BeginOffscreen"); }
    void EndOffscreen() override { Note("EndOffscreen"); }
    void DrawOffscreen() override { Note("DrawOffscreen"); }
    void DrawLines(std::int32_t count, const GFX::SPoint* points, bool perVertex, bool strip) override {
        std::string text = strip ? " strip" : " pairs";
        for (std::int32_t i = 0; i < count; ++i) {
            const auto& point = points[i];
            text += (i == 0 ? " " : " | ") + List({point.fX, point.fY});
            if (point.fZ != 0.0f) text += "," + Text(point.fZ);
            if (perVertex) text += " " + Colour(point.nColor);
        }
        Note("DrawLines", text);
    }
    void DrawTexture(const GFX::STexture& texture, const GFX::SDraw& draw) override {
        if (GFX::IsTransparent(draw.nColor)) return;
        std::string text = Name(texture) + To(draw.sTo);
        const auto& from = draw.sFrom;
        if (from != GFX::STexturePart{}) {
            text += " from " + Text(from.fU1) + ".." + Text(from.fU2) + "," + Text(from.fV1) + ".." +
                    Text(from.fV2);
        }
        Note("DrawTexture", text + Tint(draw.nColor) + Transform(draw.sTransform));
    }
    void DrawTexture9(const GFX::STexture& texture, const GFX::SDraw9& draw) override {
        if (GFX::IsTransparent(draw.nColor)) return;
        std::string text = Name(texture) + To(draw.sTo) + " margins " + std::to_string(draw.nMrgL) + "," +
                           std::to_string(draw.nMrgT) + "," + std::to_string(draw.nMrgR) + "," +
                           std::to_string(draw.nMrgB);
        if (draw.fValue != 0.0f) text += " value " + Text(draw.fValue);
        Note("DrawTexture9", text + Tint(draw.nColor) + Transform(draw.sTransform));
    }
    void CreateTextureBits(const void* bits, std::int32_t pitch, std::int32_t pixelFormat,
        GFX::STexture& texture, std::int32_t width, std::int32_t height, std::int32_t textureWidth,
        std::int32_t textureHeight) override {
        lastBits.clear();
        lastPixelFormat = pixelFormat;
        for (std::int32_t y = 0; y < height && bits != nullptr; ++y) {
            const auto* const row = static_cast<const std::uint8_t*>(bits) + y * pitch;
            for (std::int32_t x = 0; x < width; ++x) {
                lastBits.push_back(row[4 * x] | static_cast<std::uint32_t>(row[4 * x + 1]) << 8U |
                                   static_cast<std::uint32_t>(row[4 * x + 2]) << 16U |
                                   static_cast<std::uint32_t>(row[4 * x + 3]) << 24U);
            }
        }
        Make("CreateTextureBits", texture, Size(width, height) + " in" + Size(textureWidth, textureHeight));
    }
    void CreateTexture(const Pixels::SBitmap& bitmap, GFX::STexture& texture, std::int32_t textureWidth,
        std::int32_t textureHeight) override {
        Make("CreateTexture", texture,
            Size(bitmap.width, bitmap.height) + " in" + Size(textureWidth, textureHeight));
    }
    void FreeTexture(GFX::STexture& texture) override {
        Note("FreeTexture", Name(texture));
        _alive.erase(texture.piGDIP);
        texture = GFX::FreedTexture();
    }
    void UnbindTexture() override { Note("UnbindTexture"); }
    void MakeBackdrop(GFX::STexture& texture, std::int32_t width, std::int32_t height) override {
        Note("MakeBackdrop", Size(width, height));
        GPU::MakeBackdrop(texture, width, height);
    }
    void SetClip(float left, float top, float width, float height) override {
        const bool none = width == 0.0f || height == 0.0f;
        Note("SetClip", none ? " none" : " " + Rect({left, top, width, height}));
    }
    void SetCulling(bool cull) override { Note("SetCulling", cull ? " on" : " off"); }
    bool Shutdown() override {
        Note("Shutdown");
        return true;
    }
    bool IsReady() const override { return Answer("IsReady", ready); }
    bool IsCurrent() const override { return Answer("IsCurrent", current); }
    void ReadBack(std::uint32_t* bits, std::int32_t width, std::int32_t height) override {
        Note("ReadBack", Size(width, height));
        const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        for (std::size_t i = 0; i < pixels && i < frame.size(); ++i) bits[i] = frame[i];
    }
    const char16_t* GetName() const override { return Answer("GetName", u"Recording"); }
    void ReleaseTexture(GFX::STexture& texture) override { Note("ReleaseTexture", Name(texture)); }
    /// No line: it draws nothing.
    void SetStretching(bool stretching) override { isStretching = stretching; }
    bool IsRenewalDue() const override { return renewalDue; }
    bool isStretching = false;

private:
    static std::string Text(float value) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%g", static_cast<double>(value));
        return text.data();
    }
    static std::string List(std::initializer_list<float> values) {
        std::string text;
        for (const float value : values) text += (text.empty() ? "" : ",") + Text(value);
        return text;
    }
    static std::string Colour(std::uint32_t colour) {
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), "%08X", static_cast<unsigned>(colour));
        return text.data();
    }
    static std::string Size(std::int32_t width, std::int32_t height) {
        return " " + std::to_string(width) + "x" + std::to_string(height);
    }
    static std::string Rect(const GFX::SRect& rect) {
        return List({rect.fL, rect.fT}) + " " + Text(rect.fW) + "x" + Text(rect.fH);
    }
    static std::string To(const GFX::SRect& rect) { return " to " + Rect(rect); }
    static std::string Tint(std::uint32_t colour) {
        return colour == GFX::White ? "" : " colour " + Colour(colour);
    }
    static std::string Transform(const GFX::STransform& transform) {
        const GFX::STransform none;
        const auto& t = transform;
        std::string text;
        if (t.fSX != none.fSX || t.fSY != none.fSY || t.fSZ != none.fSZ)
            text += " scale " + List({t.fSX, t.fSY, t.fSZ});
        if (t.fRX != none.fRX || t.fRY != none.fRY || t.fRZ != none.fRZ)
            text += " turn " + List({t.fRX, t.fRY, t.fRZ});
        if (t.fMX != none.fMX || t.fMY != none.fMY || t.fMZ != none.fMZ)
            text += " move " + List({t.fMX, t.fMY, t.fMZ});
        return text;
    }
    std::string Name(const GFX::STexture& texture) const {
        return _alive.contains(texture.piGDIP) ? " " + std::to_string(texture.piGDIP) : " ?";
    }
    void ThrowIf(std::string_view operation) const {
        if (operation == throwIn) throw Exceptions::Std(Utils::ToUtf16(operation), u"TEST");
    }
    template<typename T>
    T Answer(std::string_view operation, T answer) const {
        ThrowIf(operation);
        return answer;
    }
    void Note(const std::string& operation, const std::string& rest = {}) {
        lines.push_back(operation + rest);
        ThrowIf(operation);
    }
    void Make(const std::string& operation, GFX::STexture& texture, const std::string& rest) {
        if (!makesTextures) return Note(operation, " fails" + rest);
        Note(operation, " " + std::to_string(_made + 1) + rest);
        texture.piGDIP = ++_made;
        _alive.insert(_made);
    }

    std::uint64_t _made = 0;
    std::set<std::uint64_t> _alive;
};

} // namespace KAV::Tests
