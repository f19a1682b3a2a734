// The overhead of ScreenCaptureDxgi::GetFrame over the calls that it needs, on a simulated machine with two
// equal monitors: it captures one, a bare loop the other.
#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/ratio.h"
#include "capture/screen_capture_dxgi.h"
#include "settings/diag_settings.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/machine.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr Closeness kCloseness = {0.02, 11, 101};

void Must(bool held, const char* what) {
    if (!held) {
        std::fprintf(stderr, "capture_bench: %s\n", what);
        std::exit(1);
    }
}

/// A monitor's duplication without any wrapper.
class BareCapture {
  public:
    BareCapture(IDXGIAdapter1* adapter, ID3D11Device* device, ID3D11DeviceContext* context, UINT output)
        : context_(context) {
        ComPtr<IDXGIOutput> found;
        ComPtr<IDXGIOutput1> output1;
        Must(SUCCEEDED(adapter->EnumOutputs(output, &found)) && SUCCEEDED(found.As(&output1)) &&
                 SUCCEEDED(output1->DuplicateOutput(device, &duplication_)),
             "the second monitor cannot be duplicated");
        D3D11_TEXTURE2D_DESC description = {};
        Must(GetImage([&](ID3D11Texture2D* image) { image->GetDesc(&description); }), "no first image");
        description.BindFlags = D3D11_BIND_SHADER_RESOURCE;
        Must(SUCCEEDED(device->CreateTexture2D(&description, nullptr, &copy_)), "no texture to copy to");
    }

    /// False when there was no new image.
    bool GetFrame() {
        return GetImage([&](ID3D11Texture2D* image) { context_->CopyResource(copy_.Get(), image); });
    }

  private:
    template <typename Use>
    bool GetImage(Use&& use) {
        DXGI_OUTDUPL_FRAME_INFO information = {};
        IDXGIResource* resource = nullptr;
        if (FAILED(duplication_->AcquireNextFrame(0, &information, &resource))) {
            return false;
        }
        ID3D11Texture2D* image = nullptr;
        resource->QueryInterface(IID_PPV_ARGS(&image));
        use(image);
        image->Release();
        resource->Release();
        duplication_->ReleaseFrame();
        return true;
    }

    ID3D11DeviceContext* context_;
    ComPtr<IDXGIOutputDuplication> duplication_;
    ComPtr<ID3D11Texture2D> copy_;
};

/// Waits until all copies are made.
void Finish(ID3D11Device* device, ID3D11DeviceContext* context) {
    const D3D11_QUERY_DESC description = {D3D11_QUERY_EVENT, 0};
    ComPtr<ID3D11Query> finished;
    Must(SUCCEEDED(device->CreateQuery(&description, &finished)), "no event query");
    context->End(finished.Get());
    BOOL done = FALSE;
    while (context->GetData(finished.Get(), &done, sizeof(done), 0) != S_OK) {
        Sleep(0);
    }
}

/// What a call without a new image costs is only told: the bare call is a few instructions here, not a call
/// of the system's.
///
/// `frames` says how the desktops change, `new_images` whether every call is to find them changed.
void Measure(const std::string& what, const std::string& frames, bool new_images, int calls) {
    const std::string monitor = " size 1280x720\n frames " + frames + "\n";
    lab::SetUpMachine("clock scripted\nadapter A\noutput \\\\.\\DISPLAY1\n" + monitor +
                      "output \\\\.\\DISPLAY2\n at 1280,0\n" + monitor);
    ComPtr<IDXGIFactory1> factory;
    ComPtr<IDXGIAdapter1> adapter;
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    Must(SUCCEEDED(CreateDXGIFactory1(IID_PPV_ARGS(&factory))) &&
             SUCCEEDED(factory->EnumAdapters1(0, &adapter)) &&
             SUCCEEDED(D3D11CreateDevice(adapter.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                         D3D11_SDK_VERSION, &device, nullptr, &context)),
         "no device");
    ScreenCaptureDxgi capture;
    Must(capture.Initialize(device.Get(), "\\\\.\\DISPLAY1") && capture.GetFrame(), "no capture");
    BareCapture bare(adapter.Get(), device.Get(), context.Get(), 1);

    const Comparison times = TurnAbout(
        kCloseness,
        [&] {
            for (int i = 0; i < calls; ++i) {
                capture.GetFrame();
                Must(capture.IsNewFrame() == new_images, "the tool found another number of images");
            }
            Finish(device.Get(), context.Get());
        },
        [&] {
            for (int i = 0; i < calls; ++i) {
                Must(bare.GetFrame() == new_images, "the bare loop found another number of images");
            }
            Finish(device.Get(), context.Get());
        });
    std::printf("%s: %.3f us a call, bare %.3f us\n", what.c_str(), times.subject * 1e6 / calls,
                times.baseline * 1e6 / calls);
    PrintRatio(what, "bare acquire loop", times.middle, new_images ? Wanted{{}, 1.1} : Wanted{});
}

}  // namespace

int main() {
    DiagSettings::Instance().capture_draw_cursor = false;
    // Each acquire takes long enough on the scripted clock for the next image to be ready.
    Measure("GetFrame with a new image", "20000 per second", true, 100);
    Measure("GetFrame without a new image", "still", false, 20000);
    return 0;
}
