// A file that breaks off: what can be read of it, and then an error in place of its end.
#pragma once

#include <ios>
#include <istream>
#include <sstream>
#include <string>
#include <utility>

class BreakingStream : private std::stringbuf, public std::istream {
  public:
    explicit BreakingStream(std::string text) : std::stringbuf(std::move(text)), std::istream(this) {}

  private:
    /// As a file's buffer reports that the system's reading failed.
    int_type underflow() override {
        const int_type next = std::stringbuf::underflow();
        if (next == traits_type::eof()) {
            throw std::ios_base::failure("error reading the file");
        }
        return next;
    }
};
