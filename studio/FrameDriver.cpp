#include "studio/FrameDriver.h"

#include "studio/Log.h"

#include <QEvent>
#include <QOpenGLWidget>

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
    view->update();
}

void FrameDriver::forgetFrame()
{
    painted = false;
}

bool FrameDriver::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Paint)
        painted = true;
    return QObject::eventFilter(watched, event);
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
