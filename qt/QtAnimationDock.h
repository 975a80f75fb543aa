#pragma once

#include "engine/Export.h"

#include <QDockWidget>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

#include <string>

class QAction;
class QComboBox;
class QLabel;
class QMainWindow;
class QSpinBox;
class QToolBar;

namespace halvern::scene {
class Animation;
class AnimationManager;
class SceneManager;
} // namespace halvern::scene

namespace halvern::qt {

class QtAnimationSlider;

/// Chooses, plays and pauses the scene's animations, scrubs their time and, in edit mode, inserts and deletes
/// keyframes. New animations are made and the current one deleted at any time.
///
/// It calls the scene's managers directly, on the GUI thread; it neither sends nor handles events. The icons
/// of its actions are the resources under ":/icons/".
class HALVERN_QT_API QtAnimationDock : public QDockWidget
{
    Q_OBJECT

public:
    /// Without animations, and not editing.
    explicit QtAnimationDock(QWidget* parent = nullptr);
    ~QtAnimationDock() override;

    /// Lists the animations of the scene, chooses the first and pauses. If one of them cannot be edited, it
    /// asks whether all shall be removed. Edit mode is left. An empty pointer is ignored.
    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager);

    /** @{ */
    /// Pauses the scene's animation, or goes on with it, whatever it does now, and emits animationPaused.
    /// Before setSceneManager nothing happens.
    void pause();
    void unPause();
    /** @} */

signals:
    /// Emitting it repaints the time line.
    void updateAnimationSlider();

    /// True when playback was paused, false when it goes on.
    void animationPaused(bool isPaused);

protected:
    /// Enables what only edit mode may use. The edit mode itself stays as it is.
    void toggleEditing(bool on);

private slots:
    void slot_pauseAnimations();
    void slot_setAnimationTarget(int milliseconds);
    void slot_comboBoxChanged(int index);
    void slot_addKeyFrame();
    void slot_animationTime();
    void slot_newAnimation();
    void slot_deleteKeyFrame();
    void slot_editmode();
    void slot_cameraAction();
    void slot_deleteAnimation();

private:
    void createBoxes();
    void createActions();
    QAction* createAction(const QString& text, const QString& iconPath, const QString& statusTip);
    void createToolBar();
    void connectAll();

    void addKeyFrame(float milliseconds);
    void addAnimation(const std::string& name, int length);
    void updateComboBox();
    void validateAnimations();

    /// Of the time line and of the box that shows the value.
    void setTimeRange(int milliseconds);

    /// As a click on the action does. Outside of edit mode nothing.
    void leaveEditMode();

    /// Empty if there is none.
    boost::shared_ptr<scene::Animation> getAnimation() const;

    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<scene::AnimationManager> animationManager;
    QMainWindow* mainWindow;
    QWidget* centralWidget;
    QToolBar* toolBar;
    QtAnimationSlider* slider;
    QAction* pauseAction;
    QAction* insertKeyframeAction;
    QAction* newAnimationAction;
    QAction* deleteKeyframeAction;
    QAction* editModeAction;
    QAction* addCameraAction;
    QAction* deleteAnimationAction;
    QComboBox* animationComboBox;
    QSpinBox* currentTimeSpinBox;
    QSpinBox* animationTimeSpinBox;
    QLabel* currentTimeLabel;
    QLabel* animationLabel;
    QLabel* animationTimeLabel;
    bool editing = false;
    int currentAnimation = 0; // index into the scene's library
};

} // namespace halvern::qt
