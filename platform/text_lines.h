// Reading text line by line in bounded memory, however long a line is.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string_view>
#include <vector>

// The fuzzed build makes it small, so that short inputs are longer than the buffer.
#ifndef VISTREL_TEXT_BUFFER_BYTES
#define VISTREL_TEXT_BUFFER_BYTES 262144
#endif

/// Splits a stream opened in binary mode as the text mode of Windows would: a line ends at a line feed, a
/// carriage return right before that is dropped, and the character 0x1A ends the text. Ill-formed text and
/// zero bytes pass through.
class TextLines {
  public:
    /// A whole line, or a part of one that is longer than the buffer.
    struct Piece {
        std::string_view text;  ///< without the line end; valid until the next call of Next
        std::size_t repeated;   ///< the bytes at the front that the piece before has ended with already
        bool begins;            ///< the first piece of its line
        bool ends;              ///< the last piece of its line

        std::string_view Fresh() const { return text.substr(repeated); }
    };

    /// What the pieces of one line overlap by, so that a search in each piece misses nothing up to one byte
    /// longer than this.
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
    std::size_t begin_ = 0;     // What has not been handed out yet...
    std::size_t end_ = 0;       // ...and where the text in the buffer ends.
    std::size_t repeated_ = 0;  // Bytes before begin_ that the next piece repeats.
    bool within_line_ = false;
    bool at_end_ = false;
};
