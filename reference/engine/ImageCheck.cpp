#include "reference/engine/ImageCheck.h"

#include <algorithm>
#include <cstring>

namespace halvern::engine {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint64_t mostPixels = uint64_t(1) << 27;

/// A number at a place of the file; 0 behind its end.
uint32_t little(const Bytes& file, size_t at, int count)
{
    uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | (at + i < file.size() ? file[at + i] : 0);
    return value;
}

uint32_t big(const Bytes& file, size_t at, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | (at + i < file.size() ? file[at + i] : 0);
    return value;
}

bool isSensible(uint64_t width, uint64_t height)
{
    return width > 0 && height > 0 && width <= 65535 && height <= 65535 && width * height <= mostPixels;
}

bool isSafePng(const Bytes& file)
{
    constexpr size_t signature = 8;
    constexpr size_t frame = 12; // length, type and checksum round the data of a chunk
    if (!isSensible(big(file, 16, 4), big(file, 20, 4)))
        return false;
    for (size_t at = signature; at + frame <= file.size();) {
        const size_t length = big(file, at, 4);
        if (length > file.size() - at - frame)
            return false;
        if (std::memcmp(&file[at + 4], "IEND", 4) == 0)
            return true;
        at += length + frame;
    }
    return false;
}

/// Looks for the segment that has the size.
bool isSafeJpeg(const Bytes& file)
{
    for (size_t at = 2; at + 9 < file.size() && file[at] == 0xFF;) {
        const int marker = file[at + 1];
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame)
            return isSensible(big(file, at + 7, 2), big(file, at + 5, 2));
        at += marker == 0xFF ? 1 : 2 + std::max(big(file, at + 2, 2), 2u);
    }
    return false;
}

bool isSafeGif(const Bytes& file)
{
    return isSensible(little(file, 6, 2), little(file, 8, 2));
}

bool isSafeBmp(const Bytes& file)
{
    const uint32_t width = little(file, 18, 4);
    const uint32_t height = little(file, 22, 4); // the sign says where the first row is
    const uint32_t rows = height & 0x80000000u ? 0u - height : height;
    const uint32_t bits = little(file, 28, 2);
    const uint32_t colors = little(file, 46, 4);
    const bool known = little(file, 14, 4) >= 40 && little(file, 26, 2) == 1 && little(file, 30, 4) == 0 &&
                       (bits == 8 || bits == 24 || bits == 32) && colors <= 256;
    const uint64_t rowBytes = (uint64_t(width) * bits / 8 + 3) / 4 * 4;
    return known && isSensible(width, rows) && little(file, 10, 4) >= 54 &&
           little(file, 10, 4) + rowBytes * rows <= file.size();
}

/// Walks over the packets of run-length encoded pixels.
bool hasRuns(const Bytes& file, size_t at, uint64_t pixels, size_t pixelBytes)
{
    while (pixels > 0) {
        if (at >= file.size())
            return false;
        const uint64_t count = (file[at] & 0x7F) + 1u;
        at += 1 + (file[at] & 0x80 ? 1 : count) * pixelBytes;
        if (count > pixels)
            return false;
        pixels -= count;
    }
    return at <= file.size();
}

bool isSafeTga(const Bytes& file)
{
    const uint32_t type = little(file, 2, 1);
    const uint32_t bits = little(file, 16, 1);
    const uint64_t width = little(file, 12, 2);
    const uint64_t height = little(file, 14, 2);
    const bool isGrey = type == 3 || type == 11;
    const bool isColor = type == 2 || type == 10;
    const bool known =
        little(file, 1, 1) == 0 && ((isGrey && bits == 8) || (isColor && (bits == 24 || bits == 32)));
    if (!known || !isSensible(width, height))
        return false;
    const size_t begin = 18 + little(file, 0, 1);
    if (type >= 10)
        return hasRuns(file, begin, width * height, bits / 8);
    return begin + width * height * (bits / 8) <= file.size();
}

struct Format
{
    const char* name;
    const char* signature;
    bool (*isSafe)(const Bytes&);
};

const Format formats[] = {{"png", "\x89PNG", isSafePng},
                          {"jpeg", "\xFF\xD8\xFF", isSafeJpeg},
                          {"gif", "GIF8", isSafeGif},
                          {"bmp", "BM", isSafeBmp},
                          {"tga", nullptr, isSafeTga}};

bool beginsWith(const Bytes& file, const char* signature)
{
    const size_t length = std::strlen(signature);
    return file.size() >= length && std::memcmp(file.data(), signature, length) == 0;
}

} // namespace

std::string imageFormat(const std::vector<uint8_t>& encoded, const std::string& hint)
{
    for (const Format& format : formats)
        if (format.signature ? beginsWith(encoded, format.signature) : hint == format.name)
            return format.name;
    return {};
}

bool isSafeToDecode(const std::vector<uint8_t>& encoded, const std::string& format)
{
    for (const Format& each : formats)
        if (format == each.name)
            return each.isSafe(encoded);
    return false;
}

} // namespace halvern::engine
