// Records the calls of a context that still executes them.
#pragma once

#include <d3d11.h>

#include <string>
#include <vector>

#include "render/stereo_warp_constants.h"
#include "tests/unit/support/scripted_com.h"

/// A context that records its calls and executes them. One at a time.
class RecordedContext {
  public:
    explicit RecordedContext(ID3D11DeviceContext* context) : methods_(context) {
        current_ = this;
        draw_ = methods_.Replace(13, &Draw);
        begin_ = methods_.Replace(27, &Begin);
        end_ = methods_.Replace(28, &End);
        update_ = methods_.Replace(48, &UpdateSubresource);
        clear_state_ = methods_.Replace(110, &ClearState);
        flush_ = methods_.Replace(111, &Flush);
    }
    ~RecordedContext() { current_ = nullptr; }
    RecordedContext(const RecordedContext&) = delete;
    RecordedContext& operator=(const RecordedContext&) = delete;

    /// One word per call.
    const std::string& Calls() const { return calls_; }

    /// The contents of each buffer that was filled.
    const std::vector<StereoWarpConstants>& Constants() const { return constants_; }

  private:
    static void STDMETHODCALLTYPE Draw(ID3D11DeviceContext* context, UINT count, UINT first) {
        current_->calls_ += count == 4 && first == 0 ? "draw " : "wrong-draw ";
        current_->draw_(context, count, first);
    }
    static void STDMETHODCALLTYPE Begin(ID3D11DeviceContext* context, ID3D11Asynchronous* query) {
        current_->calls_ += "begin-" + Kind(query) + " ";
        current_->begin_(context, query);
    }
    static void STDMETHODCALLTYPE End(ID3D11DeviceContext* context, ID3D11Asynchronous* query) {
        current_->calls_ += "end-" + Kind(query) + " ";
        current_->end_(context, query);
    }
    static void STDMETHODCALLTYPE UpdateSubresource(ID3D11DeviceContext* context, ID3D11Resource* resource,
                                                    UINT subresource, const D3D11_BOX* box, const void* data,
                                                    UINT row_pitch, UINT depth_pitch) {
        current_->calls_ += subresource == 0 && box == nullptr ? "fill " : "wrong-fill ";
        current_->constants_.push_back(*static_cast<const StereoWarpConstants*>(data));
        current_->update_(context, resource, subresource, box, data, row_pitch, depth_pitch);
    }
    static void STDMETHODCALLTYPE ClearState(ID3D11DeviceContext* context) {
        current_->calls_ += "clear ";
        current_->clear_state_(context);
    }
    static void STDMETHODCALLTYPE Flush(ID3D11DeviceContext* context) {
        current_->calls_ += "flush ";
        current_->flush_(context);
    }

    static std::string Kind(ID3D11Asynchronous* asynchronous) {
        D3D11_QUERY_DESC description = {};
        static_cast<ID3D11Query*>(asynchronous)->GetDesc(&description);
        return description.Query == D3D11_QUERY_TIMESTAMP_DISJOINT ? "clock"
               : description.Query == D3D11_QUERY_TIMESTAMP        ? "stamp"
                                                                   : "other";
    }

    static inline RecordedContext* current_ = nullptr;
    ContextMethods methods_;
    decltype(&Draw) draw_ = nullptr;
    decltype(&Begin) begin_ = nullptr;
    decltype(&End) end_ = nullptr;
    decltype(&UpdateSubresource) update_ = nullptr;
    decltype(&ClearState) clear_state_ = nullptr;
    decltype(&Flush) flush_ = nullptr;
    std::string calls_;
    std::vector<StereoWarpConstants> constants_;
};
