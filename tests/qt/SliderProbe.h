#pragma once

#include "qt/QtAnimationSlider.h"
#include "tests/qt/FakeAnimations.h"
#include "tests/qt/LiteralTimeline.h"

#include <QApplication>
#include <QMouseEvent>

namespace halvern::test {

/// A slider of 500 x 80 pixels that counts its paints.
class SliderProbe : public qt::QtAnimationSlider
{
public:
    SliderProbe() : QtAnimationSlider(nullptr)
    {
        setRange(0, 10000);
        resize(500, 80);
    }

    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QtAnimationSlider::paintEvent(event);
    }
};

/// Returns whether the slider kept the event for itself.
inline bool sendMouse(QWidget& slider, QEvent::Type type, int x, Qt::MouseButton button = Qt::NoButton,
                      Qt::MouseButtons buttons = Qt::NoButton)
{
    QMouseEvent event(type, QPointF(x, 10), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(&slider, &event);
    return event.isAccepted();
}

inline bool moveMouse(QWidget& slider, int x, Qt::MouseButtons buttons = Qt::NoButton)
{
    return sendMouse(slider, QEvent::MouseMove, x, Qt::NoButton, buttons);
}

inline bool releaseMouse(QWidget& slider, int x, Qt::MouseButton button = Qt::LeftButton)
{
    return sendMouse(slider, QEvent::MouseButtonRelease, x, button);
}

inline bool doubleClick(QWidget& slider, int x, Qt::MouseButton button = Qt::LeftButton)
{
    return sendMouse(slider, QEvent::MouseButtonDblClick, x, button, button);
}

/// What the slider shows, in the format of the pictures that are painted literally.
inline QImage pictureOf(QWidget& slider)
{
    return slider.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace halvern::test
