#pragma once

#include "engine/Export.h"
#include "reference/scene/Image.h"

#include <cstdint>
#include <string>
#include <vector>

namespace halvern::engine {

/// Decodes a picture file held in memory: PNG, JPEG, GIF, BMP (8, 24 or 32 bits, not compressed) or TGA
/// (grey, 24 or 32 bits). The hint is the file extension, lower case; only TGA needs it, the others are
/// told by their first bytes. The width is 0 when the data cannot be decoded. Any thread.
HALVERN_ENGINE_API scene::Image decodeImage(const std::vector<uint8_t>& encoded, const std::string& hint);

} // namespace halvern::engine
