// Replaces a method of a real COM object's class.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>

namespace lab {

/// Puts `replacement` into the slot of the object's vtable, for all objects of its class, and stores the
/// function that was there in `original`. Does nothing if that has already been done.
template <typename Function>
void ReplaceVtableSlot(void* object, std::size_t slot, Function replacement,
                       std::atomic<Function>& original) {
    if (original.load() != nullptr) {
        return;
    }
    void** const table = *static_cast<void***>(object);
    void* const new_entry = reinterpret_cast<void*>(replacement);
    original = reinterpret_cast<Function>(table[slot]);
    DWORD protection = 0;
    VirtualProtect(&table[slot], sizeof(void*), PAGE_READWRITE, &protection);
    table[slot] = new_entry;
    VirtualProtect(&table[slot], sizeof(void*), protection, &protection);
}

}  // namespace lab
