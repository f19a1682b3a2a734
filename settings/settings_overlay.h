// Laying the product's keys of a settings file over the defaults.
#pragma once

#include <istream>

#include "settings/diag_settings.h"

/// Reads one JSON value from `file` and stores the product's keys in `settings`, one after another; what
/// follows the value is not looked at. Throws what the JSON library throws, always of the std::exception
/// family: for text that is no JSON, for a value that is no object, for a key whose value has the wrong kind.
/// Keys stored before that stay stored.
///
/// No value is checked or clamped. A whole number beyond an int counts modulo 2^32; a number with a fraction
/// or an exponent beyond an int becomes the smallest int, -2147483648; a number beyond a float becomes an
/// infinity of its sign.
void OverlaySettings(std::istream& file, DiagSettings& settings);
