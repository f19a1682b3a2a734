// The report's text during the run. It only grows, and stored text never moves in memory. So another thread,
// or a crash handler that interrupts the writing of a line, can read all of it at any moment without a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// One thread appends; any number of threads may read at the same time. A reader sees complete appends only.
class KeptText {
  public:
    KeptText() = default;
    ~KeptText();
    KeptText(const KeptText&) = delete;
    KeptText& operator=(const KeptText&) = delete;

    /// Adds `text`; readers see all of it or none of it.
    void Append(std::string_view text);

    /// Bytes stored so far.
    std::size_t size() const { return published_.load(std::memory_order_acquire); }

    /// Calls `visit(std::string_view)` for each piece of the stored text, in order. Allocates nothing and
    /// takes no lock.
    template <typename Visit>
    void ForEachPiece(Visit visit) const;

    /// All text stored so far, in one string.
    std::string Copy() const;

  private:
    static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;
    struct Block {
        std::array<char, kBlockSize> bytes = {};
        std::atomic<Block*> next = nullptr;
    };

    Block first_;
    Block* last_ = &first_;  ///< used by the writing thread only
    std::size_t written_ = 0;
    std::atomic<std::size_t> published_ = 0;
};

template <typename Visit>
void KeptText::ForEachPiece(Visit visit) const {
    std::size_t left = size();
    for (const Block* block = &first_; left > 0; block = block->next.load(std::memory_order_acquire)) {
        const std::size_t here = left < kBlockSize ? left : kBlockSize;
        visit(std::string_view(block->bytes.data(), here));
        left -= here;
    }
}
