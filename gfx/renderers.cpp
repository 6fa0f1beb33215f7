#include "gfx/renderers.h"

#include "utils/dialogs.h"
#include "utils/product.h"
#include "utils/session_log.h"

#include <atomic>
#include <string>
#include <utility>

namespace KAV::GFX {

namespace {

/// A back end enters its row here.
const RendererTable& Built() noexcept {
    static const RendererTable sBuilt{{
        SoftwareRenderer(),
        OpenGLRenderer(),
        Direct3DRenderer(),
        Direct2DRenderer(),
    }};
    return sBuilt;
}

std::atomic<const RendererTable*> replacement{nullptr};

/// What follows a renderer that isn't ready.
struct SFallBack {
    std::uint32_t nNext;
    std::u16string_view sNext; ///< as the user reads it; empty at the end of the chain
};

constexpr std::array<SFallBack, RendererCount> FallBacks{{
    {Software, u""},
    {Direct2D, u"Direct2D renderer"},
    {OpenGL, u"OpenGL hardware renderer"},
    {Software, u"Software renderer"},
}};

std::u16string ProductTitle() {
    return std::u16string(Utils::ProductName).append(u" v").append(Utils::ProductVersion);
}

std::u16string FailureText(std::u16string_view a_sName, std::u16string_view a_sNext) {
    std::u16string sText = u"Can not initialize ";
    sText.append(a_sName).append(u" hardware renderer for ").append(ProductTitle());
    sText.append(u"! Please update your graphics hardware or switch GPU in multi-GPU environment.");
    if (!a_sNext.empty()) sText.append(u"\r\n\r\nAttempt to create ").append(a_sNext).append(u" now...");
    return sText;
}

bool Exists(const SRendererRow& a_sRow) noexcept {
    return a_sRow.pCreate != nullptr && a_sRow.bOnThisSystem;
}

/// Ends a renderer that never drew, so that it has no textures to get back.
void End(std::unique_ptr<GPU> a_piGPU) noexcept {
    if (a_piGPU == nullptr) return;
    try {
        a_piGPU->Shutdown();
    } catch (...) { // it isn't used any more, whatever it says
        return;
    }
}

/// Null unless it is ready; then it may have passed itself over.
std::unique_ptr<GPU> CreateReady(const SRendererRow& a_sRow, const SRendererTarget& a_sTarget,
    EReason a_nReason, bool& a_rsPassedOver) noexcept {
    std::unique_ptr<GPU> piGPU;
    try {
        piGPU = a_sRow.pCreate(a_sTarget, a_nReason);
        if (piGPU != nullptr && piGPU->IsReady()) return piGPU;
    } catch (const SPassedOver&) {
        a_rsPassedOver = true;
    } catch (...) { // it isn't ready, which is reported below
    }
    End(std::move(piGPU));
    return nullptr;
}

void Report(const std::u16string& a_sText, bool a_bBox, const ShowError& a_piShowError) {
    Utils::LogLine(u"Error=" + a_sText);
    if (a_bBox) a_piShowError(ProductTitle(), a_sText);
}

} // namespace

const RendererTable& Renderers() noexcept {
    const RendererTable* const pTable = replacement.load(std::memory_order_acquire);
    return pTable != nullptr ? *pTable : Built();
}

void UseRenderers(const RendererTable* a_pTable) noexcept {
    replacement.store(a_pTable, std::memory_order_release);
}

SCreatedRenderer CreateRenderer(void* a_pWindow, std::int32_t a_nW, std::int32_t a_nH,
    std::uint32_t a_nRenderer, const ShowError& a_piShowError) noexcept {
    SCreatedRenderer sCreated;
    sCreated.nRenderer = a_nRenderer;
    if (a_nRenderer >= RendererCount) return sCreated;
    const SRendererTarget sTarget{a_pWindow, a_nW, a_nH, &a_piShowError};
    EReason nReason = EReason::Chosen;
    for (;;) {
        const SRendererRow& sRow = Renderers()[sCreated.nRenderer];
        const SFallBack& sFallBack = FallBacks[sCreated.nRenderer];
        bool bPassedOver = !Exists(sRow);
        if (!bPassedOver) sCreated.piGPU = CreateReady(sRow, sTarget, nReason, bPassedOver);
        if (sCreated.IsReady()) return sCreated;
        try {
            Report(FailureText(sRow.sName, sFallBack.sNext), !bPassedOver, a_piShowError);
        } catch (...) { // no memory to report it; the next one is tried all the same
        }
        if (sFallBack.sNext.empty()) return sCreated;
        sCreated.nRenderer = sFallBack.nNext;
        nReason = EReason::FallBack;
    }
}

SCreatedRenderer CreateRenderer(
    void* a_pWindow, std::int32_t a_nW, std::int32_t a_nH, std::uint32_t a_nRenderer) noexcept {
    const auto show = [](std::u16string_view a_sTitle, std::u16string_view a_sText) {
        Utils::Dialogs().ShowError(a_sTitle, a_sText);
    };
    return CreateRenderer(a_pWindow, a_nW, a_nH, a_nRenderer, show);
}

} // namespace KAV::GFX
