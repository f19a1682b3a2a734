// One argument of a command line as the C runtime of the started program reads it.
#pragma once

#include <string>
#include <string_view>

namespace lab {

/// The argument in quotes, with the quotes and the backslashes before them escaped.
std::wstring QuotedArgument(std::wstring_view argument);

}  // namespace lab
