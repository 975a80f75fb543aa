#include "reference/scene/import/MaterialReader.h"

#include "reference/scene/import/TextureLoader.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>

namespace halvern::scene {

namespace {

template <class Value>
std::optional<Value> get(const aiMaterial& material, const char* key, unsigned type = 0, unsigned index = 0)
{
    Value value;
    if (material.Get(key, type, index, value) != AI_SUCCESS)
        return {};
    return value;
}

/// A number of the file, or the fallback where there is none or none that is finite.
float number(const aiMaterial& material, float fallback, const char* key, unsigned type = 0,
             unsigned index = 0)
{
    const float value = get<ai_real>(material, key, type, index).value_or(fallback);
    return std::isfinite(value) ? value : fallback;
}

Eigen::Vector4f color(const aiMaterial& material, const Eigen::Vector4f& fallback, const char* key,
                      unsigned type, unsigned index)
{
    const auto value = get<aiColor4D>(material, key, type, index);
    if (!value)
        return fallback;
    const Eigen::Vector4f result(value->r, value->g, value->b, value->a);
    return result.allFinite() ? result : fallback;
}

float toSRGB(float linear)
{
    if (linear <= 0.0031308f)
        return 12.92f * linear;
    return 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
}

Eigen::Vector3f toSRGB(const Eigen::Vector3f& linear)
{
    return linear.unaryExpr([](float value) { return toSRGB(value); });
}

bool isMetallicRoughness(const aiMaterial& material)
{
    return get<aiString>(material, AI_MATKEY_GLTF_ALPHAMODE).has_value();
}

/// The first of the types that the material has a texture of.
aiTextureType findTexture(const aiMaterial& material, std::initializer_list<aiTextureType> types)
{
    for (const aiTextureType type : types) {
        if (material.GetTextureCount(type) > 0)
            return type;
    }
    return aiTextureType_NONE;
}

unsigned channelOf(const aiMaterial& material, aiTextureType type)
{
    return static_cast<unsigned>(std::max(get<int>(material, AI_MATKEY_UVWSRC(type, 0)).value_or(0), 0));
}

/// Meshes keep one set of texture coordinates; a map that uses another one is left out.
std::shared_ptr<const Image> map(const aiMaterial& material, TextureLoader& textures,
                                 std::initializer_list<aiTextureType> types)
{
    const aiTextureType type = findTexture(material, types);
    if (type == aiTextureType_NONE || channelOf(material, type) != readTextureCoordinates(material).channel)
        return {};
    const auto name = get<aiString>(material, AI_MATKEY_TEXTURE(type, 0));
    return name ? textures.load(name->C_Str()) : nullptr;
}

void readMetallicRoughness(StandardMaterial& values, const aiMaterial& material, TextureLoader& textures)
{
    using Alpha = StandardMaterial::Alpha;
    values.baseColor = color(material, Eigen::Vector4f::Ones(), AI_MATKEY_BASE_COLOR);
    values.baseColor.head<3>() = toSRGB(values.baseColor.head<3>());
    values.metalness = number(material, 1, AI_MATKEY_METALLIC_FACTOR);
    values.roughness = number(material, 1, AI_MATKEY_ROUGHNESS_FACTOR);
    values.emissive = toSRGB(color(material, {0, 0, 0, 1}, AI_MATKEY_COLOR_EMISSIVE).head<3>());
    values.normalScale = number(material, 1, AI_MATKEY_GLTF_TEXTURE_SCALE(aiTextureType_NORMALS, 0));
    values.twoSided = get<bool>(material, AI_MATKEY_TWOSIDED).value_or(false);
    values.unlit = get<int>(material, AI_MATKEY_SHADING_MODEL).value_or(0) == aiShadingMode_Unlit;
    const std::string alpha = get<aiString>(material, AI_MATKEY_GLTF_ALPHAMODE)->C_Str();
    values.alpha = alpha == "BLEND" ? Alpha::Blend : alpha == "MASK" ? Alpha::Mask : Alpha::Opaque;
    values.alphaCutoff = number(material, 0.5f, AI_MATKEY_GLTF_ALPHACUTOFF);

    if (const auto glossiness = get<ai_real>(material, AI_MATKEY_GLOSSINESS_FACTOR)) {
        // The specular-glossiness extension: Assimp puts its colour and map over the diffuse ones.
        values.baseColor = color(material, values.baseColor, AI_MATKEY_COLOR_DIFFUSE);
        values.baseColor.head<3>() = toSRGB(values.baseColor.head<3>());
        values.metalness = 0;
        values.roughness = 1 - *glossiness;
    }
    values.metalRoughMap = map(material, textures, {aiTextureType_METALNESS, aiTextureType_UNKNOWN});
    values.occlusionMap = map(material, textures, {aiTextureType_LIGHTMAP});
}

/// From the width of the highlight; wide where the file has no highlight at all.
float estimateRoughness(const aiMaterial& material)
{
    const Eigen::Vector4f specular = color(material, Eigen::Vector4f::Ones(), AI_MATKEY_COLOR_SPECULAR);
    if (specular.head<3>().isZero())
        return 0.9f;
    const float shininess = number(material, 0, AI_MATKEY_SHININESS);
    return shininess > 0 ? std::sqrt(2 / (shininess + 2)) : 0.6f;
}

/// A picture that is see-through in places: cut out where it is so wholly, blended where it is so partly.
StandardMaterial::Alpha alphaOf(const Image& image)
{
    using Alpha = StandardMaterial::Alpha;
    if (image.channels != 2 && image.channels != 4)
        return Alpha::Opaque;
    size_t clear = 0;
    size_t partly = 0;
    for (size_t i = image.channels - 1; i < image.pixels.size(); i += image.channels) {
        clear += image.pixels[i] < 16 ? 1 : 0;
        partly += image.pixels[i] >= 16 && image.pixels[i] < 240 ? 1 : 0;
    }
    if (partly > clear)
        return Alpha::Blend;
    return clear > 0 ? Alpha::Mask : Alpha::Opaque;
}

/// The classic models know no metalness and no sides: surfaces are dielectric and seen from both sides.
void readClassic(StandardMaterial& values, const aiMaterial& material, TextureLoader& textures)
{
    const Eigen::Vector4f grey(0.8f, 0.8f, 0.8f, 1);
    values.baseColor = color(material, grey, AI_MATKEY_COLOR_DIFFUSE);
    if (values.baseColorMap && values.baseColor.head<3>().isZero())
        values.baseColor.head<3>().setOnes(); // black times a picture: nobody meant that

    // Many files say 0 where they mean 1; a wholly invisible surface makes no sense either way.
    const float opacity = number(material, 1, AI_MATKEY_OPACITY);
    values.baseColor.w() = opacity > 0 ? std::min(opacity, 1.0f) : 1.0f;
    if (values.baseColor.w() < 1)
        values.alpha = StandardMaterial::Alpha::Blend;
    else if (values.baseColorMap)
        values.alpha = alphaOf(*values.baseColorMap);

    const float estimate = estimateRoughness(material);
    values.metalness = number(material, 0, AI_MATKEY_METALLIC_FACTOR);
    values.roughness = number(material, estimate, AI_MATKEY_ROUGHNESS_FACTOR);
    values.emissive = color(material, {0, 0, 0, 1}, AI_MATKEY_COLOR_EMISSIVE).head<3>();
    if (!values.emissiveMap)
        values.emissiveMap = values.baseColorMap; // these models light a surface before they colour it
    values.normalScale = number(material, 1, AI_MATKEY_BUMPSCALING);
    values.twoSided = get<bool>(material, AI_MATKEY_TWOSIDED).value_or(true);
    values.occlusionMap = map(material, textures, {aiTextureType_AMBIENT_OCCLUSION});
}

Eigen::Vector3f clamped(const Eigen::Vector3f& value)
{
    return value.cwiseMax(0.0f).cwiseMin(1.0f);
}

} // namespace

StandardMaterial readMaterial(const aiMaterial& material, TextureLoader& textures)
{
    StandardMaterial values;
    if (const auto name = get<aiString>(material, AI_MATKEY_NAME))
        values.name = name->C_Str();
    values.baseColorMap = map(material, textures, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE});
    values.normalMap = map(material, textures, {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA});
    values.emissiveMap = map(material, textures, {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR});
    if (isMetallicRoughness(material))
        readMetallicRoughness(values, material, textures);
    else
        readClassic(values, material, textures);

    values.baseColor.head<3>() = clamped(values.baseColor.head<3>());
    values.baseColor.w() = std::clamp(values.baseColor.w(), 0.0f, 1.0f);
    values.emissive = clamped(values.emissive);
    values.metalness = std::clamp(values.metalness, 0.0f, 1.0f);
    values.roughness = std::clamp(values.roughness, 0.0f, 1.0f);
    return values;
}

TextureCoordinates readTextureCoordinates(const aiMaterial& material)
{
    const aiTextureType type =
        findTexture(material, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE, aiTextureType_NORMALS,
                               aiTextureType_METALNESS, aiTextureType_EMISSIVE, aiTextureType_LIGHTMAP});
    TextureCoordinates coordinates;
    if (type == aiTextureType_NONE)
        return coordinates;
    coordinates.channel = channelOf(material, type);

    const auto stored = get<aiUVTransform>(material, AI_MATKEY_UVTRANSFORM(type, 0));
    if (!stored)
        return coordinates;
    const Eigen::Vector2f scale(stored->mScaling.x, stored->mScaling.y);
    Eigen::Vector2f offset(stored->mTranslation.x, stored->mTranslation.y);
    const Eigen::Rotation2Df rotation(stored->mRotation);
    const Eigen::Affine2f scaling(Eigen::Scaling(scale.x(), scale.y()));
    Eigen::Affine2f transform;
    if (isMetallicRoughness(material)) {
        // Undoes what Assimp made of the offset in its own, upright coordinates.
        const float c = std::cos(stored->mRotation);
        const float s = -std::sin(stored->mRotation);
        offset.x() -= 0.5f * scale.x() * (1 - c + s);
        offset.y() = 1 - scale.y() + 0.5f * scale.y() * (s + c - 1) - offset.y();
        transform = Eigen::Translation2f(offset) * rotation * scaling;
    } else {
        const Eigen::Affine2f flip =
            Eigen::Translation2f(0, 1) * Eigen::Affine2f(Eigen::Scaling(1.0f, -1.0f));
        transform = flip * scaling * rotation * Eigen::Translation2f(offset) * flip;
    }
    if (transform.matrix().allFinite())
        coordinates.transform = transform;
    return coordinates;
}

} // namespace halvern::scene
