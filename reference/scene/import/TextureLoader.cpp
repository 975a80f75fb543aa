#include "reference/scene/import/TextureLoader.h"

#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>

namespace halvern::scene {

namespace fs = std::filesystem;

namespace {

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

/// Replaces %41 by A.
std::string unescaped(const std::string& text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size() &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
                              std::isxdigit(static_cast<unsigned char>(text[i + 2]));
        result += isEscape ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
        i += isEscape ? 2 : 0;
    }
    return result;
}

bool isFile(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

/// The entry of the folder with that name in any case, or an empty path.
fs::path findEntry(const fs::path& folder, const fs::path& name)
{
    std::error_code error;
    if (fs::exists(folder / name, error))
        return folder / name;
    const std::string wanted = lowerCase(name.string());
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (lowerCase(entry->path().filename().string()) == wanted)
            return entry->path();
    }
    return {};
}

/// The file at a relative path below the folder, in any case.
fs::path findBelow(const fs::path& folder, const fs::path& relative)
{
    fs::path found = folder;
    for (const auto& part : relative) {
        found = findEntry(found, part);
        if (found.empty())
            return {};
    }
    return isFile(found) ? found : fs::path();
}

Image fromTexels(const aiTexture& texture, const std::string& name)
{
    Image image{name, static_cast<int>(texture.mWidth), static_cast<int>(texture.mHeight), 4, {}};
    const size_t count = size_t(texture.mWidth) * texture.mHeight;
    image.pixels.reserve(count * 4);
    for (size_t i = 0; i < count; ++i) {
        const aiTexel& texel = texture.pcData[i];
        image.pixels.insert(image.pixels.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    return image;
}

} // namespace

fs::path findTextureFile(const fs::path& folder, const std::string& name)
{
    std::string plain = name;
    std::replace(plain.begin(), plain.end(), '\\', '/');
    if (plain.rfind("file://", 0) == 0)
        plain.erase(0, 7);

    for (const std::string& text : {plain, unescaped(plain)}) {
        const fs::path path(text);
        if (path.is_absolute() && isFile(path))
            return path;
        for (const fs::path& relative : {path.relative_path(), path.filename()}) {
            const fs::path found = relative.empty() ? fs::path() : findBelow(folder, relative);
            if (!found.empty())
                return found;
        }
    }
    return {};
}

TextureLoader::TextureLoader(const aiScene& newScene, const fs::path& modelFile,
                             const ImportOptions& newOptions, std::vector<std::string>& newWarnings) :
    scene(newScene),
    folder(modelFile.has_parent_path() ? modelFile.parent_path() : fs::path(".")),
    options(newOptions),
    warnings(newWarnings)
{}

std::shared_ptr<const Image> TextureLoader::load(const std::string& name)
{
    if (name.empty() || !options.decodeImage)
        return {};
    const auto [known, isNew] = byName.try_emplace(name);
    if (isNew) {
        const aiTexture* embedded = scene.GetEmbeddedTexture(name.c_str());
        known->second = embedded ? loadEmbedded(*embedded, name) : loadFile(name);
    }
    return known->second;
}

std::shared_ptr<const Image> TextureLoader::loadEmbedded(const aiTexture& texture, const std::string& name)
{
    const auto [known, isNew] = byTexture.try_emplace(&texture);
    if (!isNew || !texture.pcData)
        return known->second;
    const std::string ownName = texture.mFilename.length > 0 ? texture.mFilename.C_Str() : name;
    if (texture.mHeight > 0) {
        known->second = std::make_shared<Image>(fromTexels(texture, ownName));
    } else {
        const auto* bytes = reinterpret_cast<const uint8_t*>(texture.pcData);
        const size_t hintLength = strnlen(texture.achFormatHint, HINTMAXTEXTURELEN);
        known->second = decode({bytes, bytes + texture.mWidth},
                               lowerCase(std::string(texture.achFormatHint, hintLength)), ownName);
    }
    return known->second;
}

std::shared_ptr<const Image> TextureLoader::loadFile(const std::string& name)
{
    const fs::path file = findTextureFile(folder, name);
    if (file.empty()) {
        warnings.push_back("texture not found: " + name);
        return {};
    }
    std::error_code error;
    const fs::path canonical = fs::canonical(file, error);
    const auto [known, isNew] = byFile.try_emplace(error ? file : canonical);
    if (isNew) {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<uint8_t> encoded{std::istreambuf_iterator<char>(stream), {}};
        const std::string extension = lowerCase(file.extension().string());
        known->second = decode(encoded, extension.empty() ? extension : extension.substr(1), file.string());
    }
    return known->second;
}

std::shared_ptr<const Image> TextureLoader::decode(const std::vector<uint8_t>& encoded,
                                                   const std::string& hint, const std::string& name)
{
    Image image = options.decodeImage(encoded, hint);
    const size_t size =
        size_t(std::max(image.width, 0)) * std::max(image.height, 0) * std::max(image.channels, 0);
    if (size == 0 || image.channels > 4 || image.pixels.size() != size) {
        warnings.push_back("texture cannot be read: " + name);
        return {};
    }
    image.name = name;
    return std::make_shared<Image>(std::move(image));
}

} // namespace halvern::scene
