#pragma once

#include "gui/meter.h"

namespace KAV::GUI {

/// A lamp: fades between the first frame of its picture, which is dark, and the last.
class CLED : public CMeter {
public:
    using CMeter::CMeter;

    void DrawShadow() override;
    void DrawImage() override;

protected:
    /// The colour of the frame that is lit, without the fading.
    std::uint32_t LitColor() const noexcept;
    /// Two frames of the picture, 0..1 from the first to the last, of which one fades into the other.
    struct SFade {
        float fDark = 0.0f;
        float fLit = 1.0f;
        float fShare = 0.0f; ///< 0: the dark one, 1: the lit one
    };
    /// From the first frame to the last one, by the value.
    SFade PresentFade() const;
    // The textures, fetched if need be; false when there is none or nothing of it would be seen.
    bool HasImage();
    bool HasShadow();
    void DrawShadowFade(const SFade& a_sFade);
    void DrawImageFade(const SFade& a_sFade);
};

} // namespace KAV::GUI
