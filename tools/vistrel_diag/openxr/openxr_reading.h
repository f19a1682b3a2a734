// Reads what an OpenXR runtime returns, with bounds checks. A runtime is another vendor's code: its names may
// lack a terminator and its counts may be wrong.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// More entries than this are never asked for, whatever a runtime claims to have. Real runtimes list a few
/// views and some hundred extensions.
inline constexpr std::uint32_t kMostOpenXrEntries = 4096;

/// The text in a fixed-size name field: it ends at the first zero, or at the field's end when there is none.
template <std::size_t Size>
std::string_view OpenXrName(const char (&field)[Size]) {
    const std::string_view whole(field, Size);
    return whole.substr(0, whole.find('\0'));
}

/// The runtime's name, a space and its version as major.minor.patch. Bytes of the name that are not UTF-8
/// become U+FFFD. `version` is packed the way OpenXR packs versions.
std::string OpenXrRuntimeText(std::string_view name, std::uint64_t version);

/// Makes OpenXR's two calls for a list: `enumerate(capacity, count, elements)` once for the count and once
/// more for the elements, each starting as `empty`. Returns an empty list when either call fails (a negative
/// result, by OpenXR's convention) or the count is 0; an element that the runtime did not fill stays `empty`.
template <typename Element, typename Enumerate>
std::vector<Element> EnumerateOpenXr(const Element& empty, const Enumerate& enumerate) {
    std::uint32_t count = 0;
    if (enumerate(std::uint32_t{0}, &count, static_cast<Element*>(nullptr)) < 0 || count == 0) {
        return {};
    }
    const std::uint32_t capacity = std::min(count, kMostOpenXrEntries);
    std::vector<Element> elements(capacity, empty);
    if (enumerate(capacity, &count, elements.data()) < 0) {
        return {};
    }
    return elements;
}
