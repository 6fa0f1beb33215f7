#include "tests/support/counted_gdiplus.h"

#include <array>
#include <stdexcept>
#include <type_traits>
#include <vector>

// All functions of the table, so that none can escape the count.
#define KAV_GDIPLUS_FUNCTIONS(X)                                                                             \
    X(GdiplusStartup)                                                                                        \
    X(GdiplusShutdown)                                                                                       \
    X(GdipCreateBitmapFromScan0)                                                                             \
    X(GdipCreateBitmapFromStream)                                                                            \
    X(GdipCloneBitmapAreaI)                                                                                  \
    X(GdipDisposeImage)                                                                                      \
    X(GdipGetImageWidth)                                                                                     \
    X(GdipGetImageHeight)                                                                                    \
    X(GdipGetImagePixelFormat)                                                                               \
    X(GdipBitmapLockBits)                                                                                    \
    X(GdipBitmapUnlockBits)                                                                                  \
    X(GdipGetImageGraphicsContext)                                                                           \
    X(GdipCreateFromHWND)                                                                                    \
    X(GdipCreateFromHDC)                                                                                     \
    X(GdipDeleteGraphics)                                                                                    \
    X(GdipGraphicsClear)                                                                                     \
    X(GdipSetSmoothingMode)                                                                                  \
    X(GdipSetClipRect)                                                                                       \
    X(GdipResetClip)                                                                                         \
    X(GdipSetWorldTransform)                                                                                 \
    X(GdipResetWorldTransform)                                                                               \
    X(GdipSetTextRenderingHint)                                                                              \
    X(GdipSetCompositingMode)                                                                                \
    X(GdipFlush)                                                                                             \
    X(GdipCreateMatrix2)                                                                                     \
    X(GdipDeleteMatrix)                                                                                      \
    X(GdipDrawImageRectRect)                                                                                 \
    X(GdipDrawImageI)                                                                                        \
    X(GdipCreateImageAttributes)                                                                             \
    X(GdipDisposeImageAttributes)                                                                            \
    X(GdipSetImageAttributesColorMatrix)                                                                     \
    X(GdipCreatePen1)                                                                                        \
    X(GdipDeletePen)                                                                                         \
    X(GdipDrawLines)                                                                                         \
    X(GdipDrawLine)                                                                                          \
    X(GdipCreateSolidFill)                                                                                   \
    X(GdipDeleteBrush)                                                                                       \
    X(GdipCreateFontFamilyFromName)                                                                          \
    X(GdipGetGenericFontFamilySansSerif)                                                                     \
    X(GdipDeleteFontFamily)                                                                                  \
    X(GdipCreateFont)                                                                                        \
    X(GdipDeleteFont)                                                                                        \
    X(GdipStringFormatGetGenericTypographic)                                                                 \
    X(GdipCloneStringFormat)                                                                                 \
    X(GdipCreateStringFormat)                                                                                \
    X(GdipDeleteStringFormat)                                                                                \
    X(GdipSetStringFormatAlign)                                                                              \
    X(GdipSetStringFormatLineAlign)                                                                          \
    X(GdipSetStringFormatFlags)                                                                              \
    X(GdipSetStringFormatTrimming)                                                                           \
    X(GdipDrawString)                                                                                        \
    X(GdipMeasureString)

namespace KAV::Tests {

namespace {

using Platform::SGdiplus;

struct SCalls {
    const char* name;
    int succeeded = 0;
    Gdiplus::Status failure = Gdiplus::Ok;
};

#define KAV_CALLS(name) {#name},
std::array calls{std::to_array<SCalls>({KAV_GDIPLUS_FUNCTIONS(KAV_CALLS)})};
#define KAV_PLACE(name) Place_##name,
enum : std::size_t { KAV_GDIPLUS_FUNCTIONS(KAV_PLACE) Places };
static_assert(sizeof(SGdiplus) == Places * sizeof(void*), "a function of the table isn't counted");

const SGdiplus* real = nullptr;

template<auto Function, std::size_t Place, typename TFunction>
struct TCounted;

template<auto Function, std::size_t Place, typename TResult, typename... TArguments>
struct TCounted<Function, Place, TResult(WINGDIPAPI*)(TArguments...)> {
    static TResult WINGDIPAPI Call(TArguments... arguments) {
        auto& call = calls[Place];
        if constexpr (std::is_void_v<TResult>) {
            ++call.succeeded;
            (real->*Function)(arguments...);
        } else {
            const bool isFailing = call.failure != Gdiplus::Ok;
            if (isFailing && Place != Place_GdipBitmapUnlockBits) return call.failure;
            const auto status = (real->*Function)(arguments...);
            if (status == Gdiplus::Ok) ++call.succeeded;
            return isFailing ? call.failure : status;
        }
    }
};

#define KAV_COUNTED(name) &TCounted<&SGdiplus::name, Place_##name, decltype(SGdiplus::name)>::Call,
constexpr SGdiplus Counted{KAV_GDIPLUS_FUNCTIONS(KAV_COUNTED)};

SCalls& CallsOf(std::string_view function) {
    for (auto& call : calls) {
        if (call.name == function) return call;
    }
    throw std::out_of_range(std::string(function));
}

struct SKind {
    const char* name;
    std::vector<const char*> makes;
    const char* frees;
};

const std::vector<SKind>& Kinds() {
    static const std::vector<SKind> kinds{{"start", {"GdiplusStartup"}, "GdiplusShutdown"},
        {"image", {"GdipCreateBitmapFromScan0", "GdipCreateBitmapFromStream", "GdipCloneBitmapAreaI"},
            "GdipDisposeImage"},
        {"lock", {"GdipBitmapLockBits"}, "GdipBitmapUnlockBits"},
        {"graphics", {"GdipGetImageGraphicsContext", "GdipCreateFromHWND", "GdipCreateFromHDC"},
            "GdipDeleteGraphics"},
        {"matrix", {"GdipCreateMatrix2"}, "GdipDeleteMatrix"},
        {"attributes", {"GdipCreateImageAttributes"}, "GdipDisposeImageAttributes"},
        {"pen", {"GdipCreatePen1"}, "GdipDeletePen"}, {"brush", {"GdipCreateSolidFill"}, "GdipDeleteBrush"},
        {"family", {"GdipCreateFontFamilyFromName", "GdipGetGenericFontFamilySansSerif"},
            "GdipDeleteFontFamily"},
        {"font", {"GdipCreateFont"}, "GdipDeleteFont"},
        {"format", {"GdipCloneStringFormat", "GdipCreateStringFormat"}, "GdipDeleteStringFormat"}};
    return kinds;
}

int MadeOf(const SKind& kind) {
    int made = 0;
    for (const auto* const function : kind.makes) made += CallsOf(function).succeeded;
    return made;
}

} // namespace

CCountedGdiplus::CCountedGdiplus() {
    real = Platform::Gdiplus();
    if (real == nullptr) throw std::runtime_error("no GDI+");
    for (auto& call : calls) call = {call.name};
    Platform::UseGdiplus(&Counted);
}

CCountedGdiplus::~CCountedGdiplus() {
    Platform::UseGdiplus(nullptr);
}

void CCountedGdiplus::Fail(std::string_view function, Gdiplus::Status status) {
    CallsOf(function).failure = status;
}

int CCountedGdiplus::Calls(std::string_view function) const {
    return CallsOf(function).succeeded;
}

std::map<std::string, int> CCountedGdiplus::Made() const {
    std::map<std::string, int> made;
    for (const auto& kind : Kinds()) made[kind.name] = MadeOf(kind);
    return made;
}

std::map<std::string, int> CCountedGdiplus::Left() const {
    std::map<std::string, int> left;
    for (const auto& kind : Kinds()) {
        const int count = MadeOf(kind) - CallsOf(kind.frees).succeeded;
        if (count != 0) left[kind.name] = count;
    }
    return left;
}

} // namespace KAV::Tests
