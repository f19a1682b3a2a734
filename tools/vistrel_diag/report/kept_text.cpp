#include "tools/vistrel_diag/report/kept_text.h"

#include <algorithm>

KeptText::~KeptText() {
    for (Block* block = first_.next.load(); block != nullptr;) {
        const std::unique_ptr<Block> owned(block);
        block = owned->next.load();
    }
}

void KeptText::Append(std::string_view text) {
    while (!text.empty()) {
        const std::size_t offset = written_ % kBlockSize;
        if (offset == 0 && written_ > 0) {
            auto block = std::make_unique<Block>();
            last_->next.store(block.get(), std::memory_order_release);
            last_ = block.release();
        }
        const std::size_t here = std::min(text.size(), kBlockSize - offset);
        std::copy_n(text.data(), here, last_->bytes.data() + offset);
        written_ += here;
        text.remove_prefix(here);
    }
    published_.store(written_, std::memory_order_release);
}

std::string KeptText::Copy() const {
    std::string text;
    text.reserve(size());
    ForEachPiece([&text](std::string_view piece) { text += piece; });
    return text;
}
