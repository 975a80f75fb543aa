#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class QOpenGLWidget;

namespace halvern::studio {

/// Repaints a view regularly while something in it moves, and not at all otherwise. Whatever starts a
/// motion (input, an event of the engine) repaints the view once; this looks at each frame whether the
/// motion goes on.
class FrameDriver : public QObject
{
    Q_OBJECT
public:
    FrameDriver(QOpenGLWidget* view, std::function<bool()> isMoving, int framesPerSecond);

    /// While set, each frame is followed by the next at once.
    void setContinuous(bool newContinuous);

    /// A frame whose painting began before this call is not announced.
    void forgetFrame();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// A frame that the view painted is on screen.
    void frameShown();

private slots:
    void handleSwap();

private:
    QOpenGLWidget* const view;
    const std::function<bool()> isMoving;
    QTimer timer;
    bool painted = false;
    bool continuous = false;
};

} // namespace halvern::studio
