#include "reference/engine/ImageDecoder.h"

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QImageWriter>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using halvern::engine::decodeImage;

namespace {

/// Red above blue, six pixels wide.
QImage testImage(QImage::Format format = QImage::Format_RGB888)
{
    QImage image(6, 4, QImage::Format_ARGB32);
    image.fill(Qt::red);
    for (int y = 2; y < 4; ++y)
        for (int x = 0; x < 6; ++x)
            image.setPixelColor(x, y, Qt::blue);
    return image.convertToFormat(format);
}

std::vector<uint8_t> encode(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, 100));
    return {bytes.begin(), bytes.end()};
}

/// An uncompressed 2 x 2 picture whose lower row, the first in the file, is blue and the upper red.
std::vector<uint8_t> tga()
{
    return {0, 0,  2, 0,   0, 0, 0,   0, 0, 0, 0, 0,   2, 0, 2,
            0, 24, 0, 255, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 255};
}

} // namespace

TEST(ImageDecoderTest, TheFirstRowIsTheTopOne)
{
    for (const char* format : {"png", "jpeg", "bmp"}) {
        const auto image = decodeImage(encode(testImage(), format), format);
        ASSERT_EQ(image.width, 6) << format;
        ASSERT_EQ(image.height, 4);
        ASSERT_GE(image.channels, 3);
        ASSERT_EQ(image.pixels.size(), size_t(6 * 4 * image.channels));
        EXPECT_GT(image.pixels[0], 240) << format;
        EXPECT_LT(image.pixels[2], 20) << format;
        const uint8_t* last = &image.pixels[(6 * 4 - 1) * image.channels];
        EXPECT_LT(last[0], 20) << format;
        EXPECT_GT(last[2], 240) << format;
    }
}

TEST(ImageDecoderTest, GoesByTheFirstBytes)
{
    for (const char* format : {"png", "jpeg", "bmp"})
        for (const char* hint : {"", "png", "tga", "nonsense"})
            EXPECT_EQ(decodeImage(encode(testImage(), format), hint).width, 6) << format << ' ' << hint;
}

TEST(ImageDecoderTest, ReadsTgaByItsHint)
{
    const auto image = decodeImage(tga(), "tga");
    ASSERT_EQ(image.width, 2);
    EXPECT_EQ(image.pixels[0], 255);
    EXPECT_EQ(image.pixels[2], 0);
    EXPECT_EQ(decodeImage(tga(), "").width, 0);
}

TEST(ImageDecoderTest, KeepsAlphaAndGrey)
{
    QImage transparent = testImage(QImage::Format_ARGB32);
    transparent.setPixelColor(0, 0, QColor(255, 0, 0, 100));
    const auto rgba = decodeImage(encode(transparent, "png"), "png");
    ASSERT_EQ(rgba.channels, 4);
    EXPECT_EQ(rgba.pixels[3], 100);
    const auto grey = decodeImage(encode(testImage(QImage::Format_Grayscale8), "png"), "png");
    EXPECT_EQ(grey.channels, 1);
    EXPECT_EQ(grey.width, 6);
}

TEST(ImageDecoderTest, OfSixteenBitsTheUpperOnesCount)
{
    QImage color(3, 2, QImage::Format_RGBA64);
    color.fill(QColor(QRgba64::fromRgba64(0x1234, 0x5678, 0x9ABC, 0xDEF0)));
    const auto rgba = decodeImage(encode(color, "png"), "png");
    ASSERT_EQ(rgba.channels, 4);
    ASSERT_EQ(rgba.pixels.size(), 3u * 2 * 4);
    for (size_t i = 0; i < rgba.pixels.size(); i += 4)
        EXPECT_EQ(std::vector<uint8_t>(&rgba.pixels[i], &rgba.pixels[i] + 4),
                  std::vector<uint8_t>({0x12, 0x56, 0x9A, 0xDE}));
    QImage grey(3, 2, QImage::Format_Grayscale16);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            reinterpret_cast<quint16*>(grey.scanLine(y))[x] = quint16(y ? 0x4321 : 0xC0DE);
    const auto read = decodeImage(encode(grey, "png"), "png");
    ASSERT_EQ(read.channels, 1);
    EXPECT_EQ(read.pixels, std::vector<uint8_t>({0xC0, 0xC0, 0xC0, 0x43, 0x43, 0x43}));
}

TEST(ImageDecoderTest, BrokenDataHasNoWidth)
{
    EXPECT_EQ(decodeImage({}, "png").width, 0);
    EXPECT_EQ(decodeImage({1, 2, 3}, "png").width, 0);
    EXPECT_EQ(decodeImage({1, 2, 3}, "").width, 0);
    for (const char* format : {"png", "jpeg", "bmp"}) {
        auto data = encode(testImage(), format);
        data.resize(20);
        EXPECT_EQ(decodeImage(data, format).width, 0) << format;
    }
}

TEST(ImageDecoderTest, EveryPrefixOfAFileIsSafe)
{
    for (const char* format : {"png", "jpeg", "bmp"}) {
        const auto data = encode(testImage(), format);
        for (size_t length = 0; length < data.size(); length += 3) {
            const auto image = decodeImage({data.begin(), data.begin() + length}, format);
            EXPECT_EQ(image.pixels.size(), size_t(image.width) * image.height * image.channels);
        }
    }
}

TEST(ImageDecoderTest, AnyThreadMayDecode)
{
    const auto png = encode(testImage(), "png");
    const auto jpeg = encode(testImage(), "jpeg");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i)
                EXPECT_EQ(decodeImage(t % 2 ? png : jpeg, "").width, 6);
        });
    for (std::thread& thread : threads)
        thread.join();
}
