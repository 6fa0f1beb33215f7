#pragma once

#include "platform/winapi/direct2d_library.h"
#include "platform/winapi/direct3d_library.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace KAV::Tests {

/// What has been called of a table of graphics functions, and which call is to fail.
struct SCallWatch {
    std::map<std::string, int> counts;
    std::string failing; ///< the name of the call that fails
    int failingAt = 0;   ///< how many calls of that name it takes until one fails; 0: none does any more
    bool failsAlways = false;
    bool failsAfterwards = false;   ///< it has done its work then
    HRESULT result = E_OUTOFMEMORY; ///< what it answers then
    int made = 0;                   ///< objects
    int freed = 0;

    bool Fails(const std::string& name) {
        ++counts[name];
        if (name != failing) return false;
        return failsAlways || (failingAt > 0 && --failingAt == 0);
    }
    /// The first call of that name from now on fails, or the second...
    void Fail(const std::string& name, int at = 1) {
        failing = name;
        failingAt = at;
        failsAlways = false;
    }
    void FailAlways(const std::string& name) {
        failing = name;
        failsAlways = true;
    }
    void FailNothing() { failing.clear(); }
};

/// The lines of a log that report errors.
inline std::vector<std::string> ErrorsOf(const std::string& log) {
    std::vector<std::string> errors;
    for (std::size_t at = 0; at < log.size();) {
        const std::size_t end = std::min(log.find("\r\n", at), log.size());
        const std::string line = log.substr(at, end - at);
        if (line.starts_with("Error=")) errors.push_back(line);
        at = end + 2;
    }
    return errors;
}

/// The calls of one library, watched while it lives; one at a time.
template<typename Table>
class CWatchedCalls final {
public:
    static inline SCallWatch watch;
    static inline Table real{};

    template<auto Member>
    static void Watch(Table& table, const char* name) {
        SWatched<Member>::name = name;
        table.*Member = &SWatched<Member>::Call;
    }

private:
    template<auto Member>
    struct SWatched;
    template<typename R, typename... A, R (*Table::*Member)(A...)>
    struct SWatched<Member> {
        static inline const char* name = "";
        static R Call(A... arguments) {
            const bool fails = watch.Fails(name);
            if constexpr (std::is_same_v<R, HRESULT>) {
                if (fails && !watch.failsAfterwards) return watch.result;
            } else if constexpr (std::is_pointer_v<R>) {
                if (fails) return nullptr;
            }
            if constexpr (std::is_void_v<R>) {
                (real.*Member)(arguments...);
                (Count(arguments), ...);
            } else {
                const R result = (real.*Member)(arguments...);
                (Count(arguments), ...);
                if constexpr (std::is_pointer_v<R>) watch.made += result != nullptr ? 1 : 0;
                if (std::string(name) == "Release") ++watch.freed;
                if constexpr (std::is_same_v<R, HRESULT>) return fails ? watch.result : result;
                return result;
            }
        }
        /// An argument by which an object is handed out.
        template<typename T>
        static void Count(T argument) {
            if constexpr (IsMade<T>()) watch.made += argument != nullptr && *argument != nullptr ? 1 : 0;
        }
        template<typename T>
        static constexpr bool IsMade() {
            if constexpr (std::is_same_v<T, void**>) {
                return true;
            } else if constexpr (std::is_pointer_v<T>) {
                using Pointed = std::remove_pointer_t<T>;
                return std::is_pointer_v<Pointed> && !std::is_const_v<Pointed> &&
                       std::is_convertible_v<Pointed, IUnknown*>;
            } else {
                return false;
            }
        }
    };
};

class CWatchedDirect3D final {
public:
    using Calls = CWatchedCalls<Platform::SDirect3D>;

    CWatchedDirect3D() {
        using T = Platform::SDirect3D;
        Calls::watch = {};
        Calls::real = *Platform::Direct3D();
        T& t = _table = Calls::real;
        Calls::Watch<&T::Direct3DCreate9>(t, "Direct3DCreate9");
        Calls::Watch<&T::Release>(t, "Release");
        Calls::Watch<&T::GetAdapterDisplayMode>(t, "GetAdapterDisplayMode");
        Calls::Watch<&T::GetDeviceCaps>(t, "GetDeviceCaps");
        Calls::Watch<&T::CreateDevice>(t, "CreateDevice");
        Calls::Watch<&T::GetAdapterIdentifier>(t, "GetAdapterIdentifier");
        Calls::Watch<&T::SetRenderState>(t, "SetRenderState");
        Calls::Watch<&T::SetTextureStageState>(t, "SetTextureStageState");
        Calls::Watch<&T::SetSamplerState>(t, "SetSamplerState");
        Calls::Watch<&T::SetFVF>(t, "SetFVF");
        Calls::Watch<&T::SetTransform>(t, "SetTransform");
        Calls::Watch<&T::SetScissorRect>(t, "SetScissorRect");
        Calls::Watch<&T::SetTexture>(t, "SetTexture");
        Calls::Watch<&T::SetRenderTarget>(t, "SetRenderTarget");
        Calls::Watch<&T::SetDepthStencilSurface>(t, "SetDepthStencilSurface");
        Calls::Watch<&T::CreateAdditionalSwapChain>(t, "CreateAdditionalSwapChain");
        Calls::Watch<&T::CreateDepthStencilSurface>(t, "CreateDepthStencilSurface");
        Calls::Watch<&T::CreateTexture>(t, "CreateTexture");
        Calls::Watch<&T::Clear>(t, "Clear");
        Calls::Watch<&T::BeginScene>(t, "BeginScene");
        Calls::Watch<&T::EndScene>(t, "EndScene");
        Calls::Watch<&T::DrawPrimitiveUP>(t, "DrawPrimitiveUP");
        Calls::Watch<&T::TestCooperativeLevel>(t, "TestCooperativeLevel");
        Calls::Watch<&T::GetBackBuffer>(t, "GetBackBuffer");
        Calls::Watch<&T::Present>(t, "Present");
        Calls::Watch<&T::LockSurface>(t, "LockSurface");
        Calls::Watch<&T::UnlockSurface>(t, "UnlockSurface");
        Calls::Watch<&T::LockTexture>(t, "LockTexture");
        Calls::Watch<&T::UnlockTexture>(t, "UnlockTexture");
        Platform::UseDirect3D(&_table);
    }
    ~CWatchedDirect3D() { Platform::UseDirect3D(nullptr); }
    CWatchedDirect3D(const CWatchedDirect3D&) = delete;
    CWatchedDirect3D& operator=(const CWatchedDirect3D&) = delete;

    SCallWatch& operator*() const { return Calls::watch; }
    SCallWatch* operator->() const { return &Calls::watch; }

private:
    Platform::SDirect3D _table;
};

class CWatchedDirect2D final {
public:
    using Calls = CWatchedCalls<Platform::SDirect2D>;

    CWatchedDirect2D() {
        using T = Platform::SDirect2D;
        Calls::watch = {};
        Calls::real = *Platform::Direct2D();
        T& t = _table = Calls::real;
        Calls::Watch<&T::CreateFactory>(t, "CreateFactory");
        Calls::Watch<&T::QueryInterface>(t, "QueryInterface");
        Calls::Watch<&T::Release>(t, "Release");
        Calls::Watch<&T::CreateHwndRenderTarget>(t, "CreateHwndRenderTarget");
        Calls::Watch<&T::CreateStrokeStyle>(t, "CreateStrokeStyle");
        Calls::Watch<&T::CreatePathGeometry>(t, "CreatePathGeometry");
        Calls::Watch<&T::ResizeTarget>(t, "ResizeTarget");
        Calls::Watch<&T::GetMaximumBitmapSize>(t, "GetMaximumBitmapSize");
        Calls::Watch<&T::CreateBitmap>(t, "CreateBitmap");
        Calls::Watch<&T::CreateEffect>(t, "CreateEffect");
        Calls::Watch<&T::CreateSolidColorBrush>(t, "CreateSolidColorBrush");
        Calls::Watch<&T::BeginDraw>(t, "BeginDraw");
        Calls::Watch<&T::EndDraw>(t, "EndDraw");
        Calls::Watch<&T::Clear>(t, "Clear");
        Calls::Watch<&T::SetTransform>(t, "SetTransform");
        Calls::Watch<&T::SetAntialiasMode>(t, "SetAntialiasMode");
        Calls::Watch<&T::PushAxisAlignedClip>(t, "PushAxisAlignedClip");
        Calls::Watch<&T::PopAxisAlignedClip>(t, "PopAxisAlignedClip");
        Calls::Watch<&T::DrawBitmap>(t, "DrawBitmap");
        Calls::Watch<&T::DrawImage>(t, "DrawImage");
        Calls::Watch<&T::DrawGeometry>(t, "DrawGeometry");
        Calls::Watch<&T::GetTarget>(t, "GetTarget");
        Calls::Watch<&T::SetTarget>(t, "SetTarget");
        Calls::Watch<&T::CopyFromRenderTarget>(t, "CopyFromRenderTarget");
        Calls::Watch<&T::CopyFromBitmap>(t, "CopyFromBitmap");
        Calls::Watch<&T::Map>(t, "Map");
        Calls::Watch<&T::Unmap>(t, "Unmap");
        Calls::Watch<&T::SetInput>(t, "SetInput");
        Calls::Watch<&T::SetColorMatrix>(t, "SetColorMatrix");
        Calls::Watch<&T::GetOutput>(t, "GetOutput");
        Calls::Watch<&T::SetColor>(t, "SetColor");
        Calls::Watch<&T::OpenPath>(t, "OpenPath");
        Calls::Watch<&T::AddLines>(t, "AddLines");
        Calls::Watch<&T::ClosePath>(t, "ClosePath");
        Platform::UseDirect2D(&_table);
    }
    ~CWatchedDirect2D() { Platform::UseDirect2D(nullptr); }
    CWatchedDirect2D(const CWatchedDirect2D&) = delete;
    CWatchedDirect2D& operator=(const CWatchedDirect2D&) = delete;

    SCallWatch& operator*() const { return Calls::watch; }
    SCallWatch* operator->() const { return &Calls::watch; }

private:
    Platform::SDirect2D _table;
};

} // namespace KAV::Tests
