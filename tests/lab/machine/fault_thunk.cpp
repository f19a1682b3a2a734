#include "tests/lab/machine/fault_thunk.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace lab {
namespace {

// The first four arguments are in RCX, RDX, R8, R9 and XMM0 to XMM3, the others on the stack. The function is
// entered by a jump, so the stack is unchanged.
constexpr std::uint8_t kCode[] = {
    0x51, 0x52, 0x41, 0x50, 0x41, 0x51,              // push rcx; push rdx; push r8; push r9
    0x48, 0x83, 0xec, 0x78,                          // sub rsp, 0x78
    0xf3, 0x0f, 0x7f, 0x44, 0x24, 0x30,              // movdqu [rsp+0x30], xmm0
    0xf3, 0x0f, 0x7f, 0x4c, 0x24, 0x40,              // movdqu [rsp+0x40], xmm1
    0xf3, 0x0f, 0x7f, 0x54, 0x24, 0x50,              // movdqu [rsp+0x50], xmm2
    0xf3, 0x0f, 0x7f, 0x5c, 0x24, 0x60,              // movdqu [rsp+0x60], xmm3
    0x48, 0xb9, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rcx, point
    0x48, 0x8b, 0x94, 0x24, 0x98, 0,    0, 0,        // mov rdx, [rsp+0x98]: the return address
    0x4c, 0x8d, 0x44, 0x24, 0x28,                    // lea r8, [rsp+0x28]
    0x48, 0xb8, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rax, decide
    0xff, 0xd0,                                      // call rax
    0xf3, 0x0f, 0x6f, 0x44, 0x24, 0x30,              // movdqu xmm0, [rsp+0x30]
    0xf3, 0x0f, 0x6f, 0x4c, 0x24, 0x40,              // movdqu xmm1, [rsp+0x40]
    0xf3, 0x0f, 0x6f, 0x54, 0x24, 0x50,              // movdqu xmm2, [rsp+0x50]
    0xf3, 0x0f, 0x6f, 0x5c, 0x24, 0x60,              // movdqu xmm3, [rsp+0x60]
    0x4c, 0x8b, 0x54, 0x24, 0x28,                    // mov r10, [rsp+0x28]: the result
    0x48, 0x83, 0xc4, 0x78,                          // add rsp, 0x78
    0x41, 0x59, 0x41, 0x58, 0x5a, 0x59,              // pop r9; pop r8; pop rdx; pop rcx
    0x84, 0xc0,                                      // test al, al
    0x75, 0x0c,                                      // jnz to the end
    0x48, 0xb8, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rax, function
    0xff, 0xe0,                                      // jmp rax
    0x4c, 0x89, 0xd0,                                // mov rax, r10
    0xc3,                                            // ret
};

// The offsets of the three addresses, in the order above.
constexpr std::array<std::size_t, 3> kAddressAt = {36, 59, 114};

constexpr std::size_t kBlockSize = 64 * 1024;
constexpr std::size_t kThunkSize = (sizeof(kCode) + 15) / 16 * 16;

std::byte* NewPiece() {
    static std::byte* next = nullptr;
    static std::size_t left = 0;
    if (left < kThunkSize) {
        next = static_cast<std::byte*>(
            VirtualAlloc(nullptr, kBlockSize, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
        left = next != nullptr ? kBlockSize : 0;
    }
    if (next == nullptr) {
        return nullptr;
    }
    std::byte* const piece = next;
    next += kThunkSize;
    left -= kThunkSize;
    return piece;
}

}  // namespace

void* MakeFaultThunk(FaultDecision decide, void* point, void* function) {
    std::byte* const code = NewPiece();
    if (code == nullptr) {
        return nullptr;
    }
    std::copy(std::begin(kCode), std::end(kCode), reinterpret_cast<std::uint8_t*>(code));
    const std::array<void*, 3> addresses = {point, reinterpret_cast<void*>(decide), function};
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        std::memcpy(code + kAddressAt[i], &addresses[i], sizeof(void*));
    }
    FlushInstructionCache(GetCurrentProcess(), code, kThunkSize);
    return code;
}

}  // namespace lab
