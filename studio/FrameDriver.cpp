#include "studio/FrameDriver.h"

#include "studio/Log.h"

#include <QEvent>
#include <QOpenGLWidget>
#include <QWindow>

namespace halvern::studio {

FrameDriver::FrameDriver(QOpenGLWidget* newView, std::function<bool()> newIsMoving, int framesPerSecond) :
    QObject(newView), view(newView), isMoving(std::move(newIsMoving))
{
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(1000 / framesPerSecond);

    view->installEventFilter(this);
    connect(view, &QOpenGLWidget::frameSwapped, this, &FrameDriver::handleSwap);
    connect(&timer, &QTimer::timeout, view, QOverload<>::of(&QWidget::update));
}

void FrameDriver::setContinuous(bool newContinuous)
{
    continuous = newContinuous;
    if (continuous)
        view->update();
}

void FrameDriver::forgetFrame()
{
    painted = false;
}

bool FrameDriver::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Paint)
        return QObject::eventFilter(watched, event);
    // Qt paints once more before the window is on screen, which would hold up the first frame.
    const QWindow* window = view->window()->windowHandle();
    painted = window && window->isExposed();
    return !painted;
}

void FrameDriver::handleSwap()
{
    // The window is also swapped when only another widget of it was painted.
    if (!painted)
        return;
    painted = false;
    qCDebug(log) << "frame shown";
    if (!isMoving())
        timer.stop();
    else if (!timer.isActive())
        timer.start();
    emit frameShown();
    if (continuous)
        view->update();
}

} // namespace halvern::studio
