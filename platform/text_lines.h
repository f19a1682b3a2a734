// Reads text line by line in bounded memory, for lines of any length.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string_view>
#include <vector>

// The fuzzing build makes the buffer small, so that short inputs are longer than it.
#ifndef VISTREL_TEXT_BUFFER_BYTES
#define VISTREL_TEXT_BUFFER_BYTES 262144
#endif

/// Splits a stream opened in binary mode in the way of Windows' text mode: a line ends at a line feed, a
/// carriage return right before that is dropped, and the character 0x1A ends the text. Ill-formed text and
/// zero bytes are kept.
class TextLines {
  public:
    /// A whole line, or a part of one that is longer than the buffer.
    struct Piece {
        std::string_view text;  ///< without the line end; valid until the next call of Next
        std::size_t repeated;   ///< how many bytes at the front repeat the end of the piece before
        bool begins;            ///< the first piece of its line
        bool ends;              ///< the last piece of its line

        std::string_view Fresh() const { return text.substr(repeated); }
    };

    /// How many bytes the pieces of one line overlap by. A search in each piece therefore finds every text of
    /// up to one byte more than this.
    static constexpr std::size_t kOverlap = 64;

    static constexpr std::size_t kBufferBytes = VISTREL_TEXT_BUFFER_BYTES;

    /// `file` must outlive this.
    explicit TextLines(std::istream& file, std::size_t buffer_bytes = kBufferBytes);

    /// Empty at the end of the text.
    std::optional<Piece> Next();

  private:
    bool Refill();
    Piece Cut(std::size_t text_end, std::size_t next_begin, bool ends);

    std::istream& file_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;     // The start of what has not been returned yet...
    std::size_t end_ = 0;       // ...and the end of the text in the buffer.
    std::size_t repeated_ = 0;  // Bytes before begin_ that the next piece repeats.
    bool within_line_ = false;
    bool at_end_ = false;
};
