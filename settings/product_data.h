// The folder in which the product keeps what belongs to the user.
#pragma once

#include <string>
#include <string_view>

/// The product's folder in the user's local application data (UTF-8), made when it is not there. "." when
/// Windows cannot tell where that is. Asked anew on every call.
std::string ProductDataFolder();

/// The path of `file_name` in ProductDataFolder.
std::string ProductDataPath(std::string_view file_name);
