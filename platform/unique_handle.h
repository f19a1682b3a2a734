// Owns one Windows handle of any kind and closes it on every path.
#pragma once

#include <windows.h>

#include <utility>

/// `Traits` names the handle type, the value that means "none" and the closing call:
///     struct Traits { using Handle = ...; static Handle Invalid(); static void Close(Handle); };
template <typename Traits>
class UniqueHandle {
  public:
    using Handle = typename Traits::Handle;

    UniqueHandle() = default;
    explicit UniqueHandle(Handle handle) : handle_(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, Traits::Invalid())) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() {
        if (*this) {
            Traits::Close(handle_);
        }
    }

    explicit operator bool() const { return handle_ != Traits::Invalid(); }
    Handle get() const { return handle_; }

  private:
    Handle handle_ = Traits::Invalid();
};

/// Handles whose failure value is INVALID_HANDLE_VALUE: files, snapshots.
struct FileHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { CloseHandle(handle); }
};

using UniqueFileHandle = UniqueHandle<FileHandleTraits>;

/// Handles whose failure value is null: processes, jobs, events, pipes.
struct KernelHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return nullptr; }
    static void Close(Handle handle) { CloseHandle(handle); }
};

using KernelHandle = UniqueHandle<KernelHandleTraits>;
