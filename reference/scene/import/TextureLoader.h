#pragma once

#include "reference/scene/Importer.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

struct aiScene;
struct aiTexture;

namespace halvern::scene {

/// Finds and decodes the pictures that the materials of one model file name, each once.
class TextureLoader
{
public:
    TextureLoader(const aiScene& scene, const std::filesystem::path& modelFile, const ImportOptions& options,
                  std::vector<std::string>& warnings);

    /// Empty, with a warning, for a picture that is missing or cannot be decoded.
    std::shared_ptr<const Image> load(const std::string& name);

private:
    std::shared_ptr<const Image> loadEmbedded(const aiTexture& texture, const std::string& name);
    std::shared_ptr<const Image> loadFile(const std::string& name);
    std::shared_ptr<const Image> decode(const std::vector<uint8_t>& encoded, const std::string& hint,
                                        const std::string& name);

    const aiScene& scene;
    const std::filesystem::path folder;
    const ImportOptions& options;
    std::vector<std::string>& warnings;
    std::map<std::string, std::shared_ptr<const Image>> byName;
    std::map<const void*, std::shared_ptr<const Image>> byTexture;
    std::map<std::filesystem::path, std::shared_ptr<const Image>> byFile;
};

/// The file that a model file means by the name of a picture: the name as it stands, then relative to the
/// model, then only its last part next to the model; back slashes, escapes and case are seen through.
/// Empty when there is none.
std::filesystem::path findTextureFile(const std::filesystem::path& folder, const std::string& name);

} // namespace halvern::scene
