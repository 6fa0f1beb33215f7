#pragma once

#include "platform/winapi/com_call.h"
#include "platform/winapi/windows_header.h"

#include <d3d9.h>

/// The system's library for graphics hardware, version 9, loaded when an editor first draws with it. Only for
/// Windows.
namespace KAV::Platform {

/// The library's function and the calls of its objects, under their names there.
struct SDirect3D {
    decltype(&::Direct3DCreate9) Direct3DCreate9 = nullptr;

    ComFunction<& IUnknown::Release> Release = CallMethod<&IUnknown::Release>;

    ComFunction<& IDirect3D9::GetAdapterDisplayMode> GetAdapterDisplayMode =
        CallMethod<&IDirect3D9::GetAdapterDisplayMode>;
    ComFunction<& IDirect3D9::GetDeviceCaps> GetDeviceCaps = CallMethod<&IDirect3D9::GetDeviceCaps>;
    ComFunction<& IDirect3D9::CreateDevice> CreateDevice = CallMethod<&IDirect3D9::CreateDevice>;
    ComFunction<& IDirect3D9::GetAdapterIdentifier> GetAdapterIdentifier =
        CallMethod<&IDirect3D9::GetAdapterIdentifier>;

    ComFunction<& IDirect3DDevice9::SetRenderState> SetRenderState =
        CallMethod<&IDirect3DDevice9::SetRenderState>;
    ComFunction<& IDirect3DDevice9::SetTextureStageState> SetTextureStageState =
        CallMethod<&IDirect3DDevice9::SetTextureStageState>;
    ComFunction<& IDirect3DDevice9::SetSamplerState> SetSamplerState =
        CallMethod<&IDirect3DDevice9::SetSamplerState>;
    ComFunction<& IDirect3DDevice9::SetFVF> SetFVF = CallMethod<&IDirect3DDevice9::SetFVF>;
    ComFunction<& IDirect3DDevice9::SetTransform> SetTransform = CallMethod<&IDirect3DDevice9::SetTransform>;
    ComFunction<& IDirect3DDevice9::SetScissorRect> SetScissorRect =
        CallMethod<&IDirect3DDevice9::SetScissorRect>;
    ComFunction<& IDirect3DDevice9::SetTexture> SetTexture = CallMethod<&IDirect3DDevice9::SetTexture>;
    ComFunction<& IDirect3DDevice9::SetRenderTarget> SetRenderTarget =
        CallMethod<&IDirect3DDevice9::SetRenderTarget>;
    ComFunction<& IDirect3DDevice9::SetDepthStencilSurface> SetDepthStencilSurface =
        CallMethod<&IDirect3DDevice9::SetDepthStencilSurface>;
    ComFunction<& IDirect3DDevice9::CreateAdditionalSwapChain> CreateAdditionalSwapChain =
        CallMethod<&IDirect3DDevice9::CreateAdditionalSwapChain>;
    ComFunction<& IDirect3DDevice9::CreateDepthStencilSurface> CreateDepthStencilSurface =
        CallMethod<&IDirect3DDevice9::CreateDepthStencilSurface>;
    ComFunction<& IDirect3DDevice9::CreateTexture> CreateTexture =
        CallMethod<&IDirect3DDevice9::CreateTexture>;
    ComFunction<& IDirect3DDevice9::Clear> Clear = CallMethod<&IDirect3DDevice9::Clear>;
    ComFunction<& IDirect3DDevice9::BeginScene> BeginScene = CallMethod<&IDirect3DDevice9::BeginScene>;
    ComFunction<& IDirect3DDevice9::EndScene> EndScene = CallMethod<&IDirect3DDevice9::EndScene>;
    ComFunction<& IDirect3DDevice9::DrawPrimitiveUP> DrawPrimitiveUP =
        CallMethod<&IDirect3DDevice9::DrawPrimitiveUP>;
    ComFunction<& IDirect3DDevice9::TestCooperativeLevel> TestCooperativeLevel =
        CallMethod<&IDirect3DDevice9::TestCooperativeLevel>;

    ComFunction<& IDirect3DSwapChain9::GetBackBuffer> GetBackBuffer =
        CallMethod<&IDirect3DSwapChain9::GetBackBuffer>;
    ComFunction<& IDirect3DSwapChain9::Present> Present = CallMethod<&IDirect3DSwapChain9::Present>;
    ComFunction<& IDirect3DSurface9::LockRect> LockSurface = CallMethod<&IDirect3DSurface9::LockRect>;
    ComFunction<& IDirect3DSurface9::UnlockRect> UnlockSurface = CallMethod<&IDirect3DSurface9::UnlockRect>;
    ComFunction<& IDirect3DTexture9::LockRect> LockTexture = CallMethod<&IDirect3DTexture9::LockRect>;
    ComFunction<& IDirect3DTexture9::UnlockRect> UnlockTexture = CallMethod<&IDirect3DTexture9::UnlockRect>;
};

/// The functions, for the life of the process; null if the library is missing. Any thread; nothing throws.
const SDirect3D* Direct3D() noexcept;

/// For tests: these functions instead, which may count or fail; null means those of the library. A call that
/// is under way may still use the earlier ones.
void UseDirect3D(const SDirect3D* functions) noexcept;

} // namespace KAV::Platform
