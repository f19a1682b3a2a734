// The bytes of a fuzz input as numbers and texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

/// Takes the bytes one after the other; behind their end, zeros. The bytes must outlive it.
class FuzzInput {
  public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool IsAtEnd() const { return left_ == 0; }

    /// From 0 to 255.
    std::size_t Number() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *data_++;
    }

    /// At most `longest` bytes; the first byte says how many.
    std::string Text(std::size_t longest) {
        const std::size_t length = std::min(Number() % (longest + 1), left_);
        const std::string text(reinterpret_cast<const char*>(data_), length);
        data_ += length;
        left_ -= length;
        return text;
    }

  private:
    const std::uint8_t* data_;
    std::size_t left_;
};
