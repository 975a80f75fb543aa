#pragma once

#include "engine/Export.h"

#include <QAbstractSlider>
#include <QPixmap>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

#include <optional>
#include <vector>

class QPainter;

namespace halvern::scene {
class AnimationManager;
}

namespace halvern::qt {

/// The time line of an animation: value and range are milliseconds inside of it.
///
/// A gold line marks each keyframe of the engine's current animation, the handle and a white line the value,
/// a red line the time that the engine plays; keyframes near the mouse or the red line are green. Dragging
/// scrubs the value, a release of the left button snaps it onto a keyframe within a hundredth of the
/// maximum, a double click moves the engine's time. It repaints itself twenty times a second.
class HALVERN_QT_API QtAnimationSlider : public QAbstractSlider
{
    Q_OBJECT

public:
    /// Begins to repaint itself at once.
    explicit QtAnimationSlider(QWidget* parent = nullptr);
    ~QtAnimationSlider() override;

    /// What the next paint shows. With an empty pointer the engine's layers are left out.
    void setAnimationManager(boost::shared_ptr<scene::AnimationManager> newAnimationManager);

protected:
    /// Reads the keyframes and the time from the engine.
    void paintEvent(QPaintEvent* event) override;

    /// With the left button held the value follows the mouse.
    void mouseMoveEvent(QMouseEvent* event) override;

    /// The left button sets the value to that of the place, or of a keyframe close to it.
    void mouseReleaseEvent(QMouseEvent* event) override;

    /// Has the engine jump to the time of the place, and sets the value to it.
    void mouseDoubleClickEvent(QMouseEvent* event) override;

    /// Repaints at once.
    void resizeEvent(QResizeEvent* event) override;

private:
    /// What the face shows, the keyframes excepted.
    struct Look
    {
        QSize size;
        qreal pixelRatio;
        QFont font;
        int minimum;
        int maximum;
        int value;
        bool hasAnimation;

        /// Keyframes stand in the same columns.
        bool hasScaleOf(const Look& other) const;
        bool operator==(const Look& other) const;
    };

    /// Nothing has a place on the time line without an extent.
    bool hasExtent() const;
    int valueAt(int x) const;

    /// The first keyframe in the engine's order that is close to the value, else the value.
    int selectNearestFrame(int value);

    /// Of the marks of keyframes and ticks, in pixels.
    int columnOf(int milliseconds) const;

    /// Returns whether the engine's keyframes are others than before.
    bool takeFrameTimes();

    void placeFrames();

    /// The face is all that neither the mouse nor playback changes. It is painted anew only to look
    /// different.
    void updateFace();
    void paintFace(QPainter& painter);
    void paintHandle(QPainter& painter, int left);
    void paintFrames(QPainter& painter);
    void paintTimeLine(QPainter& painter);
    void paintPlayback(QPainter& painter, int paintedWidth);

    boost::shared_ptr<scene::AnimationManager> animationManager;
    int hoverValue = 0;

    std::vector<float> frameTimes; // seconds, as the engine had them at the last paint
    std::vector<bool> hasFrame;    // by column
    std::optional<Look> look;      // of the face
    QPixmap face;
};

} // namespace halvern::qt
