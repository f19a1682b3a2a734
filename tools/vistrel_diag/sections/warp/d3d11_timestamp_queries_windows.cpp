#include "tools/vistrel_diag/sections/warp/d3d11_timestamp_queries.h"

bool D3D11TimestampQueries::Create() {
    return CreateQuery(D3D11_QUERY_TIMESTAMP_DISJOINT, disjoint_) &&
           CreateQuery(D3D11_QUERY_TIMESTAMP, start_) && CreateQuery(D3D11_QUERY_TIMESTAMP, end_);
}

bool D3D11TimestampQueries::CreateQuery(D3D11_QUERY kind, Query& query) {
    const D3D11_QUERY_DESC description = {kind, 0};
    return SUCCEEDED(device_.CreateQuery(&description, query.ReleaseAndGetAddressOf()));
}

template <typename Data>
bool D3D11TimestampQueries::Read(const Query& query, Data& data) {
    // S_FALSE, which is also a success code, means that the data is not ready.
    return context_.GetData(query.Get(), &data, sizeof(data), 0) == S_OK;
}

void D3D11TimestampQueries::EndBatch() {
    context_.End(disjoint_.Get());
    if (long_wait_ != nullptr) {
        long_wait_->Begin();
    }
}

void D3D11TimestampQueries::Pause() {
    if (long_wait_ != nullptr) {
        long_wait_->Continue();
    }
    Sleep(1);
}

bool D3D11TimestampQueries::ReadClock(GpuClock& clock) {
    D3D11_QUERY_DATA_TIMESTAMP_DISJOINT data = {};
    static_assert(sizeof(data) == 16);
    if (!Read(disjoint_, data)) {
        return false;
    }
    clock = {data.Frequency, data.Disjoint != FALSE};
    return true;
}

bool D3D11TimestampQueries::ReadStart(std::uint64_t& stamp) {
    return Read(start_, stamp);
}

bool D3D11TimestampQueries::ReadEnd(std::uint64_t& stamp) {
    return Read(end_, stamp);
}
