// Applies the product's keys of a settings file over the defaults.
#pragma once

#include <istream>

#include "settings/diag_settings.h"

/// Reads one JSON value from `file` and stores the product's keys in `settings`, one after another; anything
/// after that value is ignored. Throws what the JSON library throws, always of the std::exception family: for
/// text that is not JSON, for a value that is not an object, for a key whose value has the wrong type. Keys
/// stored before that stay stored.
///
/// No value is checked or clamped. An integer outside the range of int is taken modulo 2^32. For an int key,
/// a number with a fraction or an exponent outside that range becomes the smallest int, -2147483648. For a
/// float key, a number outside the range of float becomes an infinity of the same sign.
void OverlaySettings(std::istream& file, DiagSettings& settings);
