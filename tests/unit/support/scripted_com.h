// Real COM objects with some of their methods replaced: the rest of a device is genuine while a test makes
// one call fail. Every object that the device creates is counted until it is destroyed.
#pragma once

#include <d3d11.h>
#include <dxgi1_4.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/lab/machine/simulated_object.h"

/// Gives one object its own vtable of `Slots` methods for the lifetime of this one.
template <std::size_t Slots>
class MethodTable {
  public:
    explicit MethodTable(void* object) : place_(static_cast<void***>(object)), original_(*place_) {
        std::copy_n(original_, Slots, copy_.begin());
        *place_ = copy_.data();
    }
    ~MethodTable() { *place_ = original_; }
    MethodTable(const MethodTable&) = delete;
    MethodTable& operator=(const MethodTable&) = delete;

    /// Returns the method that was there.
    template <typename Method>
    Method Replace(std::size_t slot, Method method) {
        copy_.at(slot) = reinterpret_cast<void*>(method);
        return reinterpret_cast<Method>(original_[slot]);
    }

  private:
    void*** place_;
    void** original_;
    std::array<void*, Slots> copy_ = {};
};

// The number of methods in the newest version of the interface that the test machine may implement.
using DeviceMethods = MethodTable<54>;
using ContextMethods = MethodTable<134>;
using AdapterMethods = MethodTable<18>;

/// Counts the objects that hold it as private data: it is released with the last reference to its object.
class ObjectCounter final : public lab::SimulatedUnknown<IUnknown> {
  public:
    static std::atomic<long>& Living() {
        static std::atomic<long> living = 0;
        return living;
    }

    static void Attach(ID3D11DeviceChild* object) {
        static constexpr GUID kKey = {
            0x6d3f8a41, 0x51c7, 0x4b02, {0x9e, 0x18, 0x33, 0x70, 0xc4, 0x2a, 0x95, 0x0b}};
        object->SetPrivateDataInterface(kKey, lab::OwnNew(new ObjectCounter).Get());
    }

  private:
    ObjectCounter() : SimulatedUnknown(Living()) {}
};

/// A device whose creating calls can be made to fail. One at a time.
class ScriptedDevice {
  public:
    explicit ScriptedDevice(ID3D11Device* device) : methods_(device) {
        current_ = this;
        Script<3, const D3D11_BUFFER_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Buffer**>();
        Script<5, const D3D11_TEXTURE2D_DESC*, const D3D11_SUBRESOURCE_DATA*, ID3D11Texture2D**>();
        Script<7, ID3D11Resource*, const D3D11_SHADER_RESOURCE_VIEW_DESC*, ID3D11ShaderResourceView**>();
        Script<9, ID3D11Resource*, const D3D11_RENDER_TARGET_VIEW_DESC*, ID3D11RenderTargetView**>();
        Script<12, const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11VertexShader**>();
        Script<15, const void*, SIZE_T, ID3D11ClassLinkage*, ID3D11PixelShader**>();
        Script<23, const D3D11_SAMPLER_DESC*, ID3D11SamplerState**>();
        Script<24, const D3D11_QUERY_DESC*, ID3D11Query**>();
    }
    ~ScriptedDevice() { current_ = nullptr; }
    ScriptedDevice(const ScriptedDevice&) = delete;
    ScriptedDevice& operator=(const ScriptedDevice&) = delete;

    /// The number of creating calls so far.
    int Calls() const { return calls_; }

    /// The number of objects of the device that still exist.
    long LivingObjects() const { return ObjectCounter::Living(); }

    /// The result of the creating call with this number, counted from 1.
    std::function<HRESULT(int)> result_of_call = [](int) { return S_OK; };

  private:
    template <std::size_t Slot, typename... Arguments>
    void Script() {
        original_<Arguments...> = methods_.Replace(Slot, &Create<Arguments...>);
    }

    template <typename... Arguments>
    using Method = HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, Arguments...);

    template <typename... Arguments>
    static inline Method<Arguments...> original_ = nullptr;

    template <typename... Arguments>
    static HRESULT STDMETHODCALLTYPE Create(ID3D11Device* device, Arguments... arguments) {
        auto* const made = std::get<sizeof...(Arguments) - 1>(std::tuple<Arguments...>(arguments...));
        const HRESULT scripted = current_->result_of_call(++current_->calls_);
        if (FAILED(scripted)) {
            *made = nullptr;
            return scripted;
        }
        const HRESULT result = original_<Arguments...>(device, arguments...);
        if (SUCCEEDED(result)) {
            ObjectCounter::Attach(*made);
        }
        return result;
    }

    static inline ScriptedDevice* current_ = nullptr;
    DeviceMethods methods_;
    int calls_ = 0;
};

/// A context whose GetData returns `result` for the first `failures` calls. One at a time.
class ScriptedQueryData {
  public:
    ScriptedQueryData(ID3D11DeviceContext* context, int failures, HRESULT result)
        : methods_(context), failures_(failures), result_(result) {
        current_ = this;
        original_ = methods_.Replace(29, &GetData);
    }
    ~ScriptedQueryData() { current_ = nullptr; }
    ScriptedQueryData(const ScriptedQueryData&) = delete;
    ScriptedQueryData& operator=(const ScriptedQueryData&) = delete;

    int FailuresLeft() const { return failures_; }

  private:
    static HRESULT STDMETHODCALLTYPE GetData(ID3D11DeviceContext* context, ID3D11Asynchronous* query,
                                             void* data, UINT size, UINT flags) {
        if (current_->failures_ > 0) {
            --current_->failures_;
            return current_->result_;
        }
        return current_->original_(context, query, data, size, flags);
    }

    static inline ScriptedQueryData* current_ = nullptr;
    ContextMethods methods_;
    decltype(&GetData) original_ = nullptr;
    int failures_;
    HRESULT result_;
};

/// An adapter that reports memory use from a list, one entry per query. One at a time.
class ScriptedVideoMemory {
  public:
    ScriptedVideoMemory(IDXGIAdapter1* adapter, std::vector<UINT64> usage)
        : methods_(adapter), usage_(std::move(usage)) {
        current_ = this;
        methods_.Replace(14, &QueryVideoMemoryInfo);
    }
    ~ScriptedVideoMemory() { current_ = nullptr; }
    ScriptedVideoMemory(const ScriptedVideoMemory&) = delete;
    ScriptedVideoMemory& operator=(const ScriptedVideoMemory&) = delete;

  private:
    static HRESULT STDMETHODCALLTYPE QueryVideoMemoryInfo(IDXGIAdapter3*, UINT node,
                                                          DXGI_MEMORY_SEGMENT_GROUP segment,
                                                          DXGI_QUERY_VIDEO_MEMORY_INFO* memory) {
        if (node != 0 || segment != DXGI_MEMORY_SEGMENT_GROUP_LOCAL) {
            return E_INVALIDARG;
        }
        *memory = {};
        memory->CurrentUsage = current_->usage_.at(current_->queries_++);
        return S_OK;
    }

    static inline ScriptedVideoMemory* current_ = nullptr;
    AdapterMethods methods_;
    std::vector<UINT64> usage_;
    std::size_t queries_ = 0;
};
