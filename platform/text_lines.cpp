#include "platform/text_lines.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr char kEndOfText = '\x1A';

/// Finds `character` between `begin` and `end`, 16 bytes at a time, which every x64 processor supports. The C
/// runtime's memchr may compare byte by byte, as Wine's does; that took longer than all other work on a line.
std::optional<std::size_t> Find(const std::vector<char>& buffer, std::size_t begin, std::size_t end,
                                char character) {
    constexpr std::size_t kBlockBytes = sizeof(__m128i);
    const __m128i wanted = _mm_set1_epi8(character);
    for (; begin + kBlockBytes <= end; begin += kBlockBytes) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buffer.data() + begin));
        const auto equal = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, wanted)));
        if (equal != 0) {
            return begin + static_cast<std::size_t>(std::countr_zero(equal));
        }
    }
    for (; begin < end; ++begin) {
        if (buffer[begin] == character) {
            return begin;
        }
    }
    return {};
}

}  // namespace

TextLines::TextLines(std::istream& file, std::size_t buffer_bytes)
    : file_(file), buffer_(std::max(buffer_bytes, 2 * kOverlap)) {}

std::optional<TextLines::Piece> TextLines::Next() {
    while (true) {
        if (const auto line_feed = Find(buffer_, begin_, end_, '\n')) {
            const bool carriage_return = *line_feed > begin_ && buffer_[*line_feed - 1] == '\r';
            return Cut(*line_feed - (carriage_return ? 1 : 0), *line_feed + 1, true);
        }
        if (!Refill()) {
            break;
        }
    }
    if (!at_end_) {
        // One line fills the buffer. A carriage return at its end is kept: a line feed may follow.
        const std::size_t text_end = end_ - (buffer_[end_ - 1] == '\r' ? 1 : 0);
        return Cut(text_end, text_end, false);
    }
    if (begin_ == end_ && !within_line_) {
        return {};
    }
    return Cut(end_, end_, true);
}

/// Appends to what is left in the buffer. False when the buffer is full or the text has ended.
bool TextLines::Refill() {
    const std::size_t kept_from = begin_ - repeated_;
    const std::size_t kept = end_ - kept_from;
    if (at_end_ || kept == buffer_.size()) {
        return false;
    }
    std::memmove(buffer_.data(), buffer_.data() + kept_from, kept);
    begin_ = repeated_;
    file_.read(buffer_.data() + kept, static_cast<std::streamsize>(buffer_.size() - kept));
    end_ = kept + static_cast<std::size_t>(file_.gcount());
    at_end_ = end_ < buffer_.size();
    if (const auto end_of_text = Find(buffer_, kept, end_, kEndOfText)) {
        end_ = *end_of_text;
        at_end_ = true;
    }
    return true;
}

/// Returns everything up to `text_end` and continues at `next_begin`.
TextLines::Piece TextLines::Cut(std::size_t text_end, std::size_t next_begin, bool ends) {
    const std::string_view text(buffer_.data() + begin_ - repeated_, text_end - begin_ + repeated_);
    const Piece piece = {text, repeated_, !within_line_, ends};
    begin_ = next_begin;
    repeated_ = ends ? 0 : std::min(kOverlap, text.size());
    within_line_ = !ends;
    return piece;
}
