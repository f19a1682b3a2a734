// The time-stamp queries of a Direct3D 11 device, in the form that GpuTimeFrames uses.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <cstdint>

#include "tools/vistrel_diag/sections/warp/gpu_timer.h"
#include "tools/vistrel_diag/sections/warp/long_wait.h"

class D3D11TimestampQueries {
  public:
    /// All arguments must outlive this object. `long_wait` is notified of the waits for data; may be null.
    D3D11TimestampQueries(ID3D11Device& device, ID3D11DeviceContext& context, LongWait* long_wait = nullptr)
        : device_(device), context_(context), long_wait_(long_wait) {}

    bool Create();
    void BeginBatch() { context_.Begin(disjoint_.Get()); }
    void StampStart() { context_.End(start_.Get()); }
    void StampEnd() { context_.End(end_.Get()); }
    void EndBatch();
    bool ReadClock(GpuClock& clock);
    bool ReadStart(std::uint64_t& stamp);
    bool ReadEnd(std::uint64_t& stamp);
    void Pause();

  private:
    using Query = Microsoft::WRL::ComPtr<ID3D11Query>;

    bool CreateQuery(D3D11_QUERY kind, Query& query);
    template <typename Data>
    bool Read(const Query& query, Data& data);

    ID3D11Device& device_;
    ID3D11DeviceContext& context_;
    LongWait* long_wait_;
    Query disjoint_;
    Query start_;
    Query end_;
};
