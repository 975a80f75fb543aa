#include "reference/engine/MaterialStates.h"

#include "engine/scene/Material.h"
#include "reference/engine/ShaderPrograms.h"

#include <osg/BlendFunc>
#include <osg/Depth>
#include <osg/Image>

#include <algorithm>
#include <cmath>

namespace halvern::engine {

using scene::StandardMaterial;

namespace {

/// Of a surface in the layer "transparent" whose material does not say how much shines through.
constexpr float seeThroughOpacity = 0.45f;

/// Halves a picture by averaging two by two pixels; of an odd side the last row or column is left out.
void halve(const uint8_t* from, int width, int height, int channels, uint8_t* to)
{
    const int right = width > 1 ? channels : 0;
    const int below = height > 1 ? width * channels : 0;
    for (int y = 0; y < std::max(1, height / 2); ++y)
        for (int x = 0; x < std::max(1, width / 2); ++x)
            for (int c = 0; c < channels; ++c) {
                const uint8_t* p = from + (2 * y * width + 2 * x) * channels + c;
                *to++ = uint8_t((p[0] + p[right] + p[below] + p[right + below] + 2) / 4);
            }
}

/// A scene image with its smaller levels. They are made here because software OpenGL compiles shaders of
/// its own to make them, anew in each process, which takes many times longer.
class MipmappedImage : public osg::Image
{
public:
    explicit MipmappedImage(const scene::Image& source)
    {
        static const GLenum formats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
        const GLenum format = formats[source.channels - 1];
        const auto sizeOf = [&](int width, int height) { return size_t(width) * height * source.channels; };
        const auto half = [](int side) { return std::max(1, side / 2); };

        MipmapDataType offsets;
        size_t total = sizeOf(source.width, source.height);
        for (int w = source.width, h = source.height; w > 1 || h > 1;) {
            w = half(w);
            h = half(h);
            offsets.push_back(unsigned(total));
            total += sizeOf(w, h);
        }
        auto* levels = new uint8_t[total];
        std::copy_n(source.pixels.data(), sizeOf(source.width, source.height), levels);
        const uint8_t* from = levels;
        int w = source.width;
        int h = source.height;
        for (const unsigned offset : offsets) {
            halve(from, w, h, source.channels, levels + offset);
            from = levels + offset;
            w = half(w);
            h = half(h);
        }
        setImage(source.width, source.height, 1, format, format, GL_UNSIGNED_BYTE, levels, USE_NEW_DELETE);
        setMipmapLevels(offsets);
    }
};

bool isUsable(const std::shared_ptr<const scene::Image>& image)
{
    return image && image->width > 0 && image->height > 0 && image->channels >= 1 && image->channels <= 4 &&
           image->pixels.size() >= size_t(image->width) * image->height * image->channels;
}

// As the shader does it.
osg::Vec3f toLinear(const Eigen::Vector3f& c)
{
    return {c.x() * c.x(), c.y() * c.y(), c.z() * c.z()};
}

osg::Vec4f toLinear(const Eigen::Vector4f& c)
{
    return {c.x() * c.x(), c.y() * c.y(), c.z() * c.z(), c.w()};
}

std::shared_ptr<const StandardMaterial> valuesOf(const boost::shared_ptr<scene::Material>& material)
{
    return material ? getStandardMaterial(*material) : nullptr;
}

unsigned int featuresOf(const StandardMaterial& values)
{
    unsigned int features = 0;
    if (values.unlit)
        features |= ShaderFeature::Unlit;
    if (values.alpha == StandardMaterial::Alpha::Mask)
        features |= ShaderFeature::AlphaMask;
    if (isUsable(values.baseColorMap))
        features |= ShaderFeature::BaseColorMap;
    if (values.unlit)
        return features;
    if (isUsable(values.metalRoughMap))
        features |= ShaderFeature::MetalRoughMap;
    if (isUsable(values.normalMap))
        features |= ShaderFeature::NormalMap;
    if (isUsable(values.emissiveMap))
        features |= ShaderFeature::EmissiveMap;
    if (isUsable(values.occlusionMap))
        features |= values.occlusionMap == values.metalRoughMap ? ShaderFeature::PackedOcclusion
                                                                : ShaderFeature::OcclusionMap;
    return features;
}

void setBlending(osg::StateSet& state)
{
    // The target's alpha stays what it is: 1.
    state.setAttributeAndModes(new osg::BlendFunc(osg::BlendFunc::SRC_ALPHA,
                                                  osg::BlendFunc::ONE_MINUS_SRC_ALPHA, osg::BlendFunc::ONE,
                                                  osg::BlendFunc::ONE_MINUS_SRC_ALPHA));
    state.setAttribute(new osg::Depth(osg::Depth::LEQUAL, 0, 1, false));
    state.setRenderBinDetails(1, "DepthSortedBin");
}

} // namespace

const MaterialState& MaterialStates::get(const boost::shared_ptr<scene::Material>& material, bool seeThrough)
{
    const auto [it, isNew] = entries.try_emplace(material.get());
    Entry& entry = it->second;
    if (isNew) {
        entry.material = material;
        entry.values = valuesOf(material);
    }
    entry.used = true;
    MaterialState& look = seeThrough ? entry.seeThrough : entry.plain;
    if (!look.state)
        look = make(entry.values ? *entry.values : StandardMaterial(), seeThrough);
    return look;
}

bool MaterialStates::refresh()
{
    bool changed = false;
    for (auto& [key, entry] : entries) {
        const auto values = valuesOf(entry.material);
        if (values == entry.values)
            continue;
        entry.values = values;
        entry.plain = {};
        entry.seeThrough = {};
        changed = true;
    }
    return changed;
}

void MaterialStates::sweep()
{
    for (auto it = entries.begin(); it != entries.end();) {
        if (!it->second.used) {
            it = entries.erase(it);
            continue;
        }
        it->second.used = false;
        ++it;
    }
    for (auto it = textures.begin(); it != textures.end();)
        it = it->second->referenceCount() == 1 ? textures.erase(it) : std::next(it);
}

MaterialState MaterialStates::make(const StandardMaterial& values, bool seeThrough)
{
    MaterialState look;
    look.features = featuresOf(values);
    const bool blends = values.alpha == StandardMaterial::Alpha::Blend;
    look.blended = seeThrough || blends;
    look.state = new osg::StateSet;
    osg::StateSet& state = *look.state;
    state.addUniform(new osg::Uniform("baseColor", toLinear(values.baseColor)));
    state.addUniform(new osg::Uniform(
        "surface", osg::Vec4f(values.metalness, values.roughness, values.normalScale, values.alphaCutoff)));
    state.addUniform(new osg::Uniform("emissive", toLinear(values.emissive)));
    state.addUniform(new osg::Uniform("opacity", look.blended ? osg::Vec2f(blends ? 1 : seeThroughOpacity, 0)
                                                              : osg::Vec2f(1, 1)));
    if (look.blended)
        setBlending(state);

    const std::pair<unsigned int, const std::shared_ptr<const scene::Image>&> maps[] = {
        {TextureUnit::BaseColor, values.baseColorMap},
        {TextureUnit::MetalRough, values.metalRoughMap},
        {TextureUnit::Normal, values.normalMap},
        {TextureUnit::Emissive, values.emissiveMap},
        {TextureUnit::Occlusion, values.occlusionMap}};
    for (const auto& [unit, image] : maps)
        if (isUsable(image))
            state.setTextureAttribute(unit, texture(image));
    return look;
}

osg::Texture2D* MaterialStates::texture(const std::shared_ptr<const scene::Image>& image)
{
    osg::ref_ptr<osg::Texture2D>& texture = textures[image.get()];
    if (!texture) {
        texture = new osg::Texture2D(new MipmappedImage(*image));
        texture->setResizeNonPowerOfTwoHint(false);
        texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_NEAREST);
        texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
        texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
        texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    }
    return texture.get();
}

} // namespace halvern::engine
