// The depth models that the product offers, in the product's own order.
#pragma once

#include <array>
#include <cstdint>

/// One depth model of the product.
struct DepthModelPreset {
    const wchar_t* model_path;  ///< relative to the install folder, with '/' separators
    std::int32_t input_width;   ///< pixels
    std::int32_t input_height;  ///< pixels
    const char* item_key;       ///< the product's interface text for this choice
    const char* display_name;   ///< as the report names it
};

/// The list; an index into it is a value of DiagSettings::depth_model_quality.
const std::array<DepthModelPreset, 12>& DepthModelPresets();

/// The row that `quality` selects; null for every value that is not an index, which means a custom model.
const DepthModelPreset* FindDepthModelPreset(std::int32_t quality);
