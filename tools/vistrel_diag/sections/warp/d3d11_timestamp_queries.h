// The time-stamp queries of a Direct3D 11 device, as GpuTimeFrames asks them.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>

#include "tools/vistrel_diag/sections/warp/gpu_timer.h"

class D3D11TimestampQueries {
  public:
    /// Both must outlive this.
    D3D11TimestampQueries(ID3D11Device& device, ID3D11DeviceContext& context)
        : device_(device), context_(context) {}

    bool Create();
    void BeginBatch() { context_.Begin(disjoint_.Get()); }
    void StampStart() { context_.End(start_.Get()); }
    void StampEnd() { context_.End(end_.Get()); }
    void EndBatch() { context_.End(disjoint_.Get()); }
    bool ReadClock(GpuClock& clock);
    bool ReadStart(std::uint64_t& stamp);
    bool ReadEnd(std::uint64_t& stamp);
    void Pause() { Sleep(1); }

  private:
    using Query = Microsoft::WRL::ComPtr<ID3D11Query>;

    bool CreateQuery(D3D11_QUERY kind, Query& query);
    template <typename Data>
    bool Read(const Query& query, Data& data);

    ID3D11Device& device_;
    ID3D11DeviceContext& context_;
    Query disjoint_;
    Query start_;
    Query end_;
};
