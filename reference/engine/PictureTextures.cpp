#include "reference/engine/PictureTextures.h"

#include <osg/Image>

#include <algorithm>

namespace halvern::engine {

namespace {

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

} // namespace

bool isUsable(const std::shared_ptr<const scene::Image>& picture)
{
    return picture && picture->width > 0 && picture->height > 0 && picture->channels >= 1 &&
           picture->channels <= 4 &&
           picture->pixels.size() >= size_t(picture->width) * picture->height * picture->channels;
}

osg::Texture2D* PictureTextures::get(const std::shared_ptr<const scene::Image>& picture)
{
    Entry& entry = textures[picture.get()];
    if (!entry.texture) {
        entry.picture = picture;
        entry.texture = new osg::Texture2D(new MipmappedImage(*picture));
        entry.texture->setResizeNonPowerOfTwoHint(false);
        entry.texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_NEAREST);
        entry.texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
        entry.texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
        entry.texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    }
    return entry.texture.get();
}

void PictureTextures::sweep()
{
    for (auto it = textures.begin(); it != textures.end();)
        it = it->second.texture->referenceCount() == 1 ? textures.erase(it) : std::next(it);
}

} // namespace halvern::engine
