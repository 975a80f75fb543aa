#pragma once

#include "engine/Export.h"
#include "reference/scene/Image.h"

#include <cstdint>
#include <string>
#include <vector>

namespace halvern::engine {

/// Decodes a picture file held in memory: PNG, JPEG, TGA, BMP, GIF and what else OpenSceneGraph reads. The
/// hint is the file extension, lower case, or empty to go by the first bytes. The width is 0 when the
/// data cannot be decoded. Any thread.
HALVERN_ENGINE_API scene::Image decodeImage(const std::vector<uint8_t>& encoded, const std::string& hint);

} // namespace halvern::engine
