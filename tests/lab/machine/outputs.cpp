#include "tests/lab/machine/outputs.h"

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/duplication.h"
#include "tests/lab/machine/fixed_text.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/output_stub.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

DXGI_MODE_ROTATION RotationOf(int degrees) {
    switch (degrees) {
        case 90:
            return DXGI_MODE_ROTATION_ROTATE90;
        case 180:
            return DXGI_MODE_ROTATION_ROTATE180;
        case 270:
            return DXGI_MODE_ROTATION_ROTATE270;
        default:
            return DXGI_MODE_ROTATION_IDENTITY;
    }
}

class SimulatedOutput final : public Output1Stub<SimulatedDxgiObject<IDXGIOutput1, IDXGIOutput>> {
  public:
    explicit SimulatedOutput(std::size_t position)
        : Output1Stub(Counts().live_outputs), position_(position) {}

    HRESULT STDMETHODCALLTYPE GetParent(REFIID wanted, void** parent) override {
        return OwnNew(NewAdapter(State().adapter))->QueryInterface(wanted, parent);
    }

    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_OUTPUT_DESC* description) override {
        if (description == nullptr) {
            return E_INVALIDARG;
        }
        if (Script().description_fails) {
            return static_cast<HRESULT>(*Script().description_fails);
        }
        const Display& display = TheMachine().DisplayOf(position_);
        *description = {};
        FillText(display.name, description->DeviceName);
        const Size size = State().size;
        description->DesktopCoordinates = {display.left, display.top,
                                           display.left + static_cast<LONG>(size.width),
                                           display.top + static_cast<LONG>(size.height)};
        description->AttachedToDesktop = display.attached;
        description->Rotation = RotationOf(Script().rotation);
        description->Monitor = nullptr;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE DuplicateOutput(IUnknown* device,
                                              IDXGIOutputDuplication** duplication) override {
        InjectFailure("DuplicateOutput");
        return DuplicateDesktop(position_, device, duplication);
    }

  protected:
    bool Answers(REFIID wanted) const override {
        if (wanted == __uuidof(IDXGIOutput1) && Script().without_output1) {
            return false;
        }
        return Output1Stub::Answers(wanted);
    }

  private:
    const Output& Script() const { return TheMachine().scenario.outputs[position_]; }
    const OutputState& State() const { return TheMachine().outputs[position_]; }

    std::size_t position_;
};

}  // namespace

IDXGIOutput* NewOutput(std::size_t position) {
    return new SimulatedOutput(position);
}

}  // namespace lab
