// The methods of an output that nothing here needs; a class for one of these interfaces derives from it.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_2.h>

namespace lab {

/// `Base` implements IUnknown and IDXGIObject over IDXGIOutput or an interface derived from it.
template <typename Base>
class OutputStub : public Base {
  public:
    using Base::Base;

    HRESULT STDMETHODCALLTYPE GetDisplayModeList(DXGI_FORMAT, UINT, UINT*, DXGI_MODE_DESC*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindClosestMatchingMode(const DXGI_MODE_DESC*, DXGI_MODE_DESC*,
                                                      IUnknown*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE WaitForVBlank() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TakeOwnership(IUnknown*, BOOL) override { return E_NOTIMPL; }
    void STDMETHODCALLTYPE ReleaseOwnership() override {}
    HRESULT STDMETHODCALLTYPE GetGammaControlCapabilities(DXGI_GAMMA_CONTROL_CAPABILITIES*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetGammaControl(const DXGI_GAMMA_CONTROL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetGammaControl(DXGI_GAMMA_CONTROL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDisplaySurface(IDXGISurface*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDisplaySurfaceData(IDXGISurface*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFrameStatistics(DXGI_FRAME_STATISTICS*) override { return E_NOTIMPL; }
};

/// The same over IDXGIOutput1.
template <typename Base>
class Output1Stub : public OutputStub<Base> {
  public:
    using OutputStub<Base>::OutputStub;

    HRESULT STDMETHODCALLTYPE GetDisplayModeList1(DXGI_FORMAT, UINT, UINT*, DXGI_MODE_DESC1*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindClosestMatchingMode1(const DXGI_MODE_DESC1*, DXGI_MODE_DESC1*,
                                                       IUnknown*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDisplaySurfaceData1(IDXGIResource*) override { return E_NOTIMPL; }
};

}  // namespace lab
