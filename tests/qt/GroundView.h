#pragma once

#include "tests/qt/ViewProbe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace halvern::test {

inline const QColor Ground(0, 0, 255);

/// The overlays drawn with OpenGL, alone on a ground of one colour.
template <class View>
class GroundView : public View
{
public:
    using View::View;

    using View::drawLogo;
    using View::drawShadowMaps;

    QImage pictureOfLogo()
    {
        clear();
        this->drawLogo();
        return read();
    }

    QImage pictureOfShadowMaps()
    {
        clear();
        this->drawShadowMaps();
        return read();
    }

    /// Leaves states that must not show in a picture.
    void clear()
    {
        this->makeCurrent();
        glClearColor(0, 0, 1, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glViewport(3, 4, 50, 60);
        glColor4f(1, 0, 0, 0.3F);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_NEVER);
        glBlendFunc(GL_ONE, GL_ONE);
        for (const GLenum matrix : {GL_MODELVIEW, GL_PROJECTION}) {
            glMatrixMode(matrix);
            glLoadIdentity();
            glTranslatef(0.5F, 0.5F, 0);
        }
    }

private:
    QImage read()
    {
        QImage picture(this->size(), QImage::Format_RGBX8888);
        glReadPixels(0, 0, this->width(), this->height(), GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
        return picture.mirrored().convertToFormat(QImage::Format_RGB32);
    }
};

/// The part of the picture that is not ground.
inline QRect drawnPart(const QImage& picture)
{
    QRect found;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y) != Ground)
                found |= QRect(x, y, 1, 1);
    return found;
}

inline bool isNear(const QColor& color, const QColor& expected)
{
    return std::abs(color.red() - expected.red()) <= 2 && std::abs(color.green() - expected.green()) <= 2 &&
           std::abs(color.blue() - expected.blue()) <= 2;
}

/// Nothing of an overlay's states is left for what is drawn after it.
inline void expectCleanStates(const QSize& view)
{
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    GLint bound = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(bound, 0);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, testing::ElementsAre(0, 0, view.width(), view.height()));
}

} // namespace halvern::test

/// Up to the rounding of the blending.
#define EXPECT_COLOR(color, expected)                                                                        \
    EXPECT_TRUE(halvern::test::isNear(color, expected)) << (color).name().toStdString()
