// Linked into a program, gives it the simulated machine's CreateDXGIFactory1 without patching its imports.
#include <dxgi.h>

#include "tests/lab/machine/adapters.h"

HRESULT WINAPI CreateDXGIFactory1(REFIID wanted, void** factory) {
    return lab::SimulatedCreateDXGIFactory1(wanted, factory);
}
