// What does the view cost round an engine that draws nothing? The floor is a bare QOpenGLWidget that draws
// the same quad: the difference is the painter round the frame, the task queue and the handlers.
#include "bench/Measure.h"
#include "bench/QuadFrames.h"
#include "qt/QtView.h"

#include <QApplication>
#include <QScreen>

using namespace halvern;

namespace {

constexpr int Rounds = 1000;

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    bench::BareWidget bare;
    bare.setFormat(qt::QtView().format());
    const int middle = QGuiApplication::primaryScreen()->geometry().center().x();
    bench::show(bare, middle - 800);
    qt::QtView view;
    bench::show(view, middle);
    view.makeCurrent();
    view.setWindow(boost::make_shared<bench::EmptyEngine>(bench::makeTexture()));

    const bool holds = bench::compare(
        "a frame of the view against a bare widget", 1.15, Rounds, [&] { bench::drawFrame(view); },
        [&] { bench::drawFrame(bare); });
    return holds ? 0 : 1;
}
