#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace halvern::scene {

/// A decoded picture: rows from top to bottom, 8 bits per channel, no padding.
struct Image
{
    std::string name;            ///< the file it came from, or the name of the embedded texture
    int width = 0;               ///< pixels
    int height = 0;              ///< pixels
    int channels = 0;            ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    std::vector<uint8_t> pixels; ///< width * height * channels bytes
};

} // namespace halvern::scene
