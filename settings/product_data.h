// The folder in which the product stores the user's data.
#pragma once

#include <string>
#include <string_view>

/// The product's folder in the user's local application data (UTF-8), created when it does not exist. "."
/// when Windows does not report its location. Queried again on every call.
std::string ProductDataFolder();

/// The path of `file_name` in ProductDataFolder.
std::string ProductDataPath(std::string_view file_name);
