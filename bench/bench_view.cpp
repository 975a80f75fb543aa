// What does the view cost round an engine that draws nothing? The floor is a bare QOpenGLWidget that draws
// the same quad: the difference is the painter round the frame, the task queue and the handlers.
#include "bench/Measure.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/window/Window.h"
#include "qt/QtView.h"

#include <QApplication>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QScreen>

#include <boost/make_shared.hpp>

using namespace halvern;

namespace {

constexpr int Rounds = 1000;

GLuint makeTexture()
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
void drawFrame(QWidget& widget)
{
    widget.update();
    QCoreApplication::sendPostedEvents(&widget, QEvent::UpdateRequest);
}

/// The two stand side by side, as much of each on the screen: what is covered costs less.
void show(QWidget& widget, int left)
{
    widget.setGeometry(left, 0, 800, 600);
    widget.show();
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
        qApp->sync();
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    BareWidget bare;
    bare.setFormat(qt::QtView().format());
    const int middle = QGuiApplication::primaryScreen()->geometry().center().x();
    show(bare, middle - 800);
    qt::QtView view;
    show(view, middle);
    view.makeCurrent();
    view.setWindow(boost::make_shared<EmptyEngine>(makeTexture()));

    const bool holds = bench::compare(
        "a frame of the view against a bare widget", 1.15, Rounds, [&] { drawFrame(view); },
        [&] { drawFrame(bare); });
    return holds ? 0 : 1;
}
