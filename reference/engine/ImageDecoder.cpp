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

/// Of 16 bits, the 8 that count.
void copyRow(const uint8_t* source, GLenum type, uint8_t* row, size_t count)
{
    if (type == GL_UNSIGNED_BYTE) {
        std::memcpy(row, source, count);
        return;
    }
    for (size_t i = 0; i < count; ++i)
        row[i] = uint8_t(reinterpret_cast<const uint16_t*>(source)[i] >> 8);
}

scene::Image toSceneImage(const osg::Image& source)
{
    scene::Image image;
    const int channels = channelsOf(source.getPixelFormat());
    const GLenum type = source.getDataType();
    if (channels == 0 || (type != GL_UNSIGNED_BYTE && type != GL_UNSIGNED_SHORT) || source.r() != 1)
        return image;
    image.width = source.s();
    image.height = source.t();
    image.channels = channels;
    const size_t rowBytes = size_t(image.width) * channels;
    image.pixels.resize(rowBytes * image.height);
    const bool topFirst = source.getOrigin() == osg::Image::TOP_LEFT;
    for (int row = 0; row < image.height; ++row)
        copyRow(source.data(0, topFirst ? row : image.height - 1 - row), type, &image.pixels[row * rowBytes],
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
