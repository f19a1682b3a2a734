// The common part of every simulated COM object: counts its references and the objects alive.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_4.h>
#include <wrl/client.h>

#include <atomic>

namespace lab {

// A COM interface has no destructor; an implementation is deleted only by itself.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Implements IUnknown for `Interface`, and supports that interface's `Answered` bases too. The object starts
/// with one reference, which belongs to its creator.
template <typename Interface, typename... Answered>
class SimulatedUnknown : public Interface {
  public:
    explicit SimulatedUnknown(std::atomic<long>& live_count) : live_count_(live_count) { ++live_count_; }
    virtual ~SimulatedUnknown() { --live_count_; }
    SimulatedUnknown(const SimulatedUnknown&) = delete;
    SimulatedUnknown& operator=(const SimulatedUnknown&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = nullptr;
        if (!Answers(wanted)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *result = static_cast<Interface*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  protected:
    /// Overridden by a class that lacks an interface on some machines, or has a private one.
    virtual bool Answers(REFIID wanted) const {
        return wanted == __uuidof(IUnknown) || wanted == __uuidof(Interface) ||
               ((wanted == __uuidof(Answered)) || ...);
    }

  private:
    std::atomic<long>& live_count_;
    std::atomic<ULONG> references_ = 1;
};

#pragma GCC diagnostic pop

/// The same for a DXGI object, with the methods of IDXGIObject that nothing here needs.
template <typename Interface, typename... Answered>
class SimulatedDxgiObject : public SimulatedUnknown<Interface, IDXGIObject, Answered...> {
  public:
    using SimulatedUnknown<Interface, IDXGIObject, Answered...>::SimulatedUnknown;

    HRESULT STDMETHODCALLTYPE SetPrivateData(REFGUID, UINT, const void*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPrivateDataInterface(REFGUID, const IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrivateData(REFGUID, UINT*, void*) override { return DXGI_ERROR_NOT_FOUND; }
    HRESULT STDMETHODCALLTYPE GetParent(REFIID, void**) override { return E_NOTIMPL; }
};

/// Owns a new object's only reference. (mingw's ComPtr::Attach takes one more, unlike that of Windows.)
template <typename Object>
Microsoft::WRL::ComPtr<Object> OwnNew(Object* newborn) {
    Microsoft::WRL::ComPtr<Object> owner(newborn);
    newborn->Release();
    return owner;
}

}  // namespace lab
