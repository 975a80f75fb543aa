#pragma once

#include <string>

namespace halvern::scene {

/// Throws ImportError for a file that Assimp cannot, or must not, be given: one that is not there, that is
/// no file, that is empty, whose header would have Assimp take all memory there is, or whose skins would have
/// it look beyond a mesh.
void checkFile(const std::string& fileName);

} // namespace halvern::scene
