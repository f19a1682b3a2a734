// A file of any size that is never in memory as a whole.
#pragma once

#include <cstddef>
#include <streambuf>
#include <string>
#include <string_view>

/// The same text, repeated.
class RepeatedText : public std::streambuf {
  public:
    RepeatedText(std::string_view text, std::size_t times) : text_(text), times_(times) {}

  private:
    int_type underflow() override {
        if (times_ == 0) {
            return traits_type::eof();
        }
        --times_;
        setg(text_.data(), text_.data(), text_.data() + text_.size());
        return traits_type::to_int_type(text_.front());
    }

    std::string text_;
    std::size_t times_;
};
