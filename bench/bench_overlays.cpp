// What do the overlays cost? A view whose overlays are switched off is measured against one that never had
// any, and statistics that stay the same against a bare QOpenGLWidget that draws nothing but the quad.
#include "bench/Measure.h"
#include "bench/QuadFrames.h"
#include "qt/QtView.h"

#include <QApplication>
#include <QImage>
#include <QScreen>

using namespace halvern;

namespace {

constexpr int Rounds = 1000;

void showEmptyEngine(qt::QtView& view, int left)
{
    bench::show(view, left);
    view.makeCurrent();
    view.setWindow(boost::make_shared<bench::EmptyEngine>(bench::makeTexture()));
}

/// Everything that can be shown was there once, and is off.
void hideOverlays(qt::QtView& view)
{
    QImage logo(200, 80, QImage::Format_ARGB32);
    logo.fill(Qt::gray);
    view.setLogo(logo);
    view.setShowStats(true);
    view.showStringAtCursor("text");
    bench::drawFrame(view);
    view.enableLogo(false);
    view.setShowStats(false);
    view.showStringAtCursor("");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    const int middle = QGuiApplication::primaryScreen()->geometry().center().x();

    qt::QtView plain;
    showEmptyEngine(plain, middle - 800);
    qt::QtView view;
    showEmptyEngine(view, middle);
    hideOverlays(view);
    bool holds = bench::compare(
        "a frame with hidden overlays against one without any", 1.05, Rounds, [&] { bench::drawFrame(view); },
        [&] { bench::drawFrame(plain); });
    plain.hide();

    bench::BareWidget bare;
    bare.setFormat(view.format());
    bench::show(bare, middle - 800);
    view.setShowStats(true);
    holds &= bench::compare(
        "a frame with unchanged statistics against a bare widget", 1.45, Rounds,
        [&] { bench::drawFrame(view); }, [&] { bench::drawFrame(bare); });
    return holds ? 0 : 1;
}
