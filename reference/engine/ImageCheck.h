#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace halvern::engine {

/// The format of a picture file: "png", "jpeg", "gif", "bmp" or "tga"; empty for any other. The first bytes
/// are right where they and the hint, a file extension, differ: files are often named wrongly. Only TGA,
/// which begins with nothing of its own, needs the hint.
std::string imageFormat(const std::vector<uint8_t>& encoded, const std::string& hint);

/// Whether a picture file is of a sensible size and complete as far as its reader relies on it. The readers
/// of OpenSceneGraph hang, or write out of bounds, where a file that breaks off or lies about its size makes
/// them.
bool isSafeToDecode(const std::vector<uint8_t>& encoded, const std::string& format);

} // namespace halvern::engine
