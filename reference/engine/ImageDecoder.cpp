#include "reference/engine/ImageDecoder.h"

#include "reference/engine/ImageCheck.h"
#include "reference/engine/Quiet.h"

#include <osg/Image>
#include <osgDB/Registry>

#include <cstring>
#include <sstream>

namespace halvern::engine {

namespace {

int channelsOf(GLenum format)
{
    switch (format) {
    case GL_LUMINANCE:
    case GL_ALPHA:
    case GL_RED:
        return 1;
    case GL_LUMINANCE_ALPHA:
        return 2;
    case GL_RGB:
    case GL_BGR:
        return 3;
    case GL_RGBA:
    case GL_BGRA:
        return 4;
    default:
        return 0;
    }
}

void swapRedAndBlue(scene::Image& image)
{
    for (size_t i = 0; i + 2 < image.pixels.size(); i += image.channels)
        std::swap(image.pixels[i], image.pixels[i + 2]);
}

scene::Image toSceneImage(const osg::Image& source)
{
    scene::Image image;
    const int channels = channelsOf(source.getPixelFormat());
    if (channels == 0 || source.getDataType() != GL_UNSIGNED_BYTE || source.r() != 1)
        return image;
    image.width = source.s();
    image.height = source.t();
    image.channels = channels;
    const size_t rowBytes = size_t(image.width) * channels;
    image.pixels.resize(rowBytes * image.height);
    const bool topFirst = source.getOrigin() == osg::Image::TOP_LEFT;
    for (int row = 0; row < image.height; ++row)
        std::memcpy(&image.pixels[row * rowBytes], source.data(0, topFirst ? row : image.height - 1 - row),
                    rowBytes);
    if (source.getPixelFormat() == GL_BGR || source.getPixelFormat() == GL_BGRA)
        swapRedAndBlue(image);
    return image;
}

} // namespace

scene::Image decodeImage(const std::vector<uint8_t>& encoded, const std::string& hint)
{
    const std::string format = imageFormat(encoded, hint);
    if (!isSafeToDecode(encoded, format))
        return {};
    quietenOpenSceneGraph();
    osgDB::ReaderWriter* reader = osgDB::Registry::instance()->getReaderWriterForExtension(format);
    if (!reader)
        return {};
    std::istringstream stream(std::string(reinterpret_cast<const char*>(encoded.data()), encoded.size()));
    osgDB::ReaderWriter::ReadResult result = reader->readImage(stream, nullptr);
    if (!result.validImage())
        return {};
    return toSceneImage(*result.getImage());
}

} // namespace halvern::engine
