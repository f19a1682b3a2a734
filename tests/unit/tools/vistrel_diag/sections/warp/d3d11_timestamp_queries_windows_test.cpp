#include "tools/vistrel_diag/sections/warp/d3d11_timestamp_queries.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/lab/tests/lab_device.h"
#include "tests/unit/support/scripted_com.h"

namespace {

/// A context that passes every GetData call to `answer`. One at a time.
class AnsweredQueries {
  public:
    using GetDataFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Asynchronous*, void*,
                                                        UINT, UINT);
    using Answer = std::function<HRESULT(GetDataFunction genuine, ID3D11Asynchronous* query, void* data,
                                         UINT size, UINT flags)>;

    AnsweredQueries(ID3D11DeviceContext* context, Answer answer)
        : methods_(context), answer_(std::move(answer)) {
        current_ = this;
        genuine_ = methods_.Replace(29, &GetData);
    }
    ~AnsweredQueries() { current_ = nullptr; }
    AnsweredQueries(const AnsweredQueries&) = delete;
    AnsweredQueries& operator=(const AnsweredQueries&) = delete;

  private:
    static HRESULT STDMETHODCALLTYPE GetData(ID3D11DeviceContext* /*context*/, ID3D11Asynchronous* query,
                                             void* data, UINT size, UINT flags) {
        return current_->answer_(current_->genuine_, query, data, size, flags);
    }

    static inline AnsweredQueries* current_ = nullptr;
    ContextMethods methods_;
    GetDataFunction genuine_ = nullptr;
    Answer answer_;
};

class D3D11TimestampQueriesTest : public testing::Test {
  protected:
    D3D11TimestampQueriesTest() {
        EXPECT_TRUE(queries_.Create());
        queries_.BeginBatch();
        queries_.StampStart();
        queries_.StampEnd();
        queries_.EndBatch();
    }

    LabDevice lab_;
    D3D11TimestampQueries queries_{*lab_.device.Get(), *lab_.context.Get()};
};

TEST_F(D3D11TimestampQueriesTest, ReturnTheResultsOfTheGpu) {
    UINT64 next = 70;
    AnsweredQueries answered(lab_.context.Get(), [&next](auto, auto*, void* data, UINT size, UINT) {
        if (size == sizeof(D3D11_QUERY_DATA_TIMESTAMP_DISJOINT)) {
            *static_cast<D3D11_QUERY_DATA_TIMESTAMP_DISJOINT*>(data) = {25'000'000, FALSE};
        } else {
            *static_cast<UINT64*>(data) = next++;
        }
        return S_OK;
    });
    GpuClock clock;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    EXPECT_TRUE(queries_.ReadClock(clock));
    EXPECT_EQ(clock.frequency, 25'000'000U);
    EXPECT_FALSE(clock.disjoint);
    EXPECT_TRUE(queries_.ReadStart(start));
    EXPECT_TRUE(queries_.ReadEnd(end));
    EXPECT_EQ(start, 70U);
    EXPECT_EQ(end, 71U);
}

TEST_F(D3D11TimestampQueriesTest, ReportADisjointClock) {
    AnsweredQueries answered(lab_.context.Get(), [](auto, auto*, void* data, UINT, UINT) {
        *static_cast<D3D11_QUERY_DATA_TIMESTAMP_DISJOINT*>(data) = {25'000'000, TRUE};
        return S_OK;
    });
    GpuClock clock;
    EXPECT_TRUE(queries_.ReadClock(clock));
    EXPECT_TRUE(clock.disjoint);
}

TEST_F(D3D11TimestampQueriesTest, ReturnNothingUntilTheDataIsReady) {
    for (const HRESULT result : {S_FALSE, DXGI_ERROR_DEVICE_REMOVED}) {
        AnsweredQueries answered(lab_.context.Get(),
                                 [result](auto, auto*, void*, UINT, UINT) { return result; });
        GpuClock clock;
        std::uint64_t stamp = 0;
        EXPECT_FALSE(queries_.ReadClock(clock));
        EXPECT_FALSE(queries_.ReadStart(stamp));
        EXPECT_FALSE(queries_.ReadEnd(stamp));
    }
}

/// A driver buffers commands until there are enough of them or a flush is requested. Without a flush it never
/// reaches the queries, and waiting for them never ends.
TEST_F(D3D11TimestampQueriesTest, FlushTheWorkWhilePolling) {
    AnsweredQueries answered(
        lab_.context.Get(), [this](auto genuine, auto* query, void* data, UINT size, UINT flags) -> HRESULT {
            const bool kept_back = (flags & D3D11_ASYNC_GETDATA_DONOTFLUSH) != 0;
            return kept_back ? S_FALSE : genuine(lab_.context.Get(), query, data, size, flags);
        });
    const auto comes = [this](auto read) {
        for (int tries = 0; tries < 5000; ++tries) {
            if (read()) {
                return true;
            }
            queries_.Pause();
        }
        return false;
    };
    GpuClock clock;
    std::uint64_t stamp = 0;
    EXPECT_TRUE(comes([&] { return queries_.ReadClock(clock); }));
    EXPECT_TRUE(comes([&] { return queries_.ReadStart(stamp); }));
    EXPECT_TRUE(comes([&] { return queries_.ReadEnd(stamp); }));
}

}  // namespace
