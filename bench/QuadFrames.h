#pragma once

#include "engine/fx/FXRenderTarget.h"
#include "engine/window/Window.h"

#include <QApplication>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>

#include <boost/make_shared.hpp>

namespace halvern::bench {

inline GLuint makeTexture()
{
    const GLubyte texels[] = {40, 80, 120, 255, 80, 120, 40, 255, 120, 40, 80, 255, 90, 90, 90, 255};
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    return texture;
}

/// An engine that draws nothing: its picture is a fixed texture.
class EmptyEngine : public engine::window::Window
{
public:
    explicit EmptyEngine(GLuint texture) :
        Window(nullptr, "empty"), target(boost::make_shared<engine::fx::FXRenderTarget>(texture))
    {}
    void update() override {}
    void render() override {}
    void resize(Eigen::Vector2i /*size*/) override {}
    boost::shared_ptr<engine::fx::FXRenderTarget> getColorRenderTarget() override { return target; }

private:
    const boost::shared_ptr<engine::fx::FXRenderTarget> target;
};

/// The floor of a view's frame: the same quad, and nothing round it.
class BareWidget : public QOpenGLWidget
{
protected:
    void initializeGL() override { texture = makeTexture(); }
    void paintGL() override
    {
        glClearColor(1, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, texture);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex2f(-1, -1);
        glTexCoord2f(1, 0);
        glVertex2f(1, -1);
        glTexCoord2f(1, 1);
        glVertex2f(1, 1);
        glTexCoord2f(0, 1);
        glVertex2f(-1, 1);
        glEnd();
        glDisable(GL_TEXTURE_2D);
    }

private:
    GLuint texture = 0;
};

/// A whole frame, on the screen when it returns. repaint() would put it off to keep to 60 frames a second.
inline void drawFrame(QWidget& widget)
{
    widget.update();
    QCoreApplication::sendPostedEvents(&widget, QEvent::UpdateRequest);
}

/// Widgets that are compared stand side by side, as much of each on the screen: what is covered costs less.
inline void show(QWidget& widget, int left)
{
    widget.setGeometry(left, 0, 800, 600);
    widget.show();
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
        qApp->sync();
    }
}

} // namespace halvern::bench
