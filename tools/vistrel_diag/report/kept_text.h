// The report's text while the run goes on: it only grows, and what has been kept once never moves. So the
// text can be read whole at any moment, by another thread or by a handler of a crash in the middle of a line,
// without a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// One thread appends; any number may read meanwhile. A reader sees whole appends only.
class KeptText {
  public:
    KeptText() = default;
    ~KeptText();
    KeptText(const KeptText&) = delete;
    KeptText& operator=(const KeptText&) = delete;

    /// Adds `text`; readers see all of it or nothing.
    void Append(std::string_view text);

    /// Bytes kept so far.
    std::size_t size() const { return published_.load(std::memory_order_acquire); }

    /// Calls `visit(std::string_view)` for each piece of what is kept, in order. Allocates nothing and takes
    /// no lock.
    template <typename Visit>
    void ForEachPiece(Visit visit) const;

    /// Everything kept so far in one piece.
    std::string Copy() const;

  private:
    static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;
    struct Block {
        std::array<char, kBlockSize> bytes = {};
        std::atomic<Block*> next = nullptr;
    };

    Block first_;
    Block* last_ = &first_;  ///< the writer's own
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
