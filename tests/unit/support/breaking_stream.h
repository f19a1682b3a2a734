// A file that has been opened but cannot be read.
#pragma once

#include <ios>
#include <istream>
#include <streambuf>

class BreakingStream : private std::streambuf, public std::istream {
  public:
    BreakingStream() : std::istream(this) {}

  private:
    /// Fails as a file's buffer does when the system refuses to read.
    std::streambuf::int_type underflow() override { throw std::ios_base::failure("error reading the file"); }
};
