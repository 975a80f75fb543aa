#include "qt/QtAnimationDock.h"

#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtAnimationSlider.h"
#include "qt/QtNewAnimationDialog.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QSpinBox>
#include <QToolBar>
#include <QVBoxLayout>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace halvern::qt {

namespace {

using Library = std::vector<boost::shared_ptr<scene::Animation>>;

const char* const resumeIcon = ":/icons/resume.png";
const char* const pauseIcon = ":/icons/pause.png";

boost::posix_time::time_duration toDuration(std::int64_t milliseconds)
{
    return boost::posix_time::microseconds(milliseconds * 1000);
}

std::int64_t getDuration(const scene::Animation& animation)
{
    return animation.getDuration().ticks() / 1000;
}

bool isValid(const boost::shared_ptr<scene::Animation>& animation)
{
    return animation && animation->isValid();
}

bool isInside(const Library& library, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < library.size();
}

const boost::shared_ptr<scene::Animation>& at(const Library& library, int index)
{
    if (!isInside(library, index))
        throw std::out_of_range("invalid vector<T> subscript");
    return library[static_cast<std::size_t>(index)];
}

/// Whether the user said yes.
bool confirm(const QString& question, const QString& details = QString())
{
    QMessageBox box;
    box.setText(question);
    box.setInformativeText(details);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Ok); // on purpose one that the box does not have
    return box.exec() == QMessageBox::Yes;
}

} // namespace

QtAnimationDock::QtAnimationDock(QWidget* parent) : QDockWidget(parent)
{
    setWindowTitle(tr("Animation"));
    setMinimumHeight(150);
    setFocusPolicy(Qt::NoFocus);
    mainWindow = new QMainWindow;
    centralWidget = new QWidget;
    createBoxes();
    slider = new QtAnimationSlider(mainWindow);
    slider->setRange(0, 10000);
    slider->setFocusPolicy(Qt::NoFocus);
    mainWindow->setCentralWidget(centralWidget);
    setWidget(mainWindow);

    createActions();
    createToolBar();
    connectAll();

    auto* layout = new QVBoxLayout;
    layout->addWidget(toolBar);
    layout->addWidget(slider);
    centralWidget->setLayout(layout);
    toggleEditing(false);
}

QtAnimationDock::~QtAnimationDock() = default;

void QtAnimationDock::setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    if (!newSceneManager)
        return;
    sceneManager = std::move(newSceneManager);
    animationManager = sceneManager->getAnimationManager();
    if (animationManager) {
        const QPointer<QtAnimationDock> self(this);
        slider->setAnimationManager(animationManager);
        updateComboBox();
        validateAnimations();
        if (!self)
            return;
    }
    leaveEditMode();
}

void QtAnimationDock::pause()
{
    if (!animationManager)
        return;
    animationManager->pause();
    pauseAction->setIcon(QIcon(resumeIcon));
    emit animationPaused(true);
}

void QtAnimationDock::unPause()
{
    if (!animationManager)
        return;
    animationManager->resume();
    pauseAction->setIcon(QIcon(pauseIcon));
    emit animationPaused(false);
}

void QtAnimationDock::toggleEditing(bool on)
{
    currentTimeSpinBox->setEnabled(on);
    animationTimeSpinBox->setEnabled(on);
    insertKeyframeAction->setEnabled(on);
    deleteKeyframeAction->setEnabled(on);
}

void QtAnimationDock::slot_pauseAnimations()
{
    if (!sceneManager || !animationManager)
        return;
    if (animationManager->paused())
        unPause();
    else
        pause();
}

void QtAnimationDock::slot_setAnimationTarget(int milliseconds)
{
    if (sceneManager && animationManager)
        animationManager->setTimeTarget(toDuration(milliseconds));
}

void QtAnimationDock::slot_comboBoxChanged(int index)
{
    if (index < 0 || !sceneManager || !animationManager)
        return;
    const Library library = sceneManager->getAnimationsLibrary();
    pause();
    currentAnimation = index;
    animationManager->setAnimation(at(library, index));
    const auto animation = getAnimation();
    if (!animation)
        return;
    const int range = animation->getTimeRange();
    setTimeRange(range);
    slider->setValue(0);
    animationTimeSpinBox->setValue(range);
    if (!isValid(at(library, index)))
        leaveEditMode();
}

void QtAnimationDock::slot_addKeyFrame()
{
    if (animationManager)
        addKeyFrame(static_cast<float>(slider->value()));
}

void QtAnimationDock::slot_animationTime()
{
    const auto animation = getAnimation();
    const int length = animationTimeSpinBox->value();
    if (!animation || length <= getDuration(*animation))
        return;
    animation->setTimeRange(length);
    setTimeRange(length);
}

void QtAnimationDock::slot_newAnimation()
{
    if (!sceneManager || !animationManager || sceneManager->getNodeArray().empty())
        return;
    const QPointer<QtNewAnimationDialog> dialog(new QtNewAnimationDialog(this));
    dialog->setModal(true);
    dialog->show();
    const bool isAccepted = dialog->exec() == QDialog::Accepted;
    if (!dialog) // and so the dock
        return;
    const std::string name = dialog->getAnimationName().toStdString();
    const int length = dialog->getAnimationLength();
    delete dialog;
    if (isAccepted && animationManager)
        addAnimation(name, length);
}

void QtAnimationDock::slot_deleteKeyFrame()
{
    const double seconds = static_cast<double>(static_cast<float>(slider->value())) / 1000;
    const auto animation = getAnimation();
    if (seconds < 0.01 || !animation)
        return;
    animationManager->removeKeyFrame(animation, static_cast<float>(seconds));
    const std::int64_t duration = getDuration(*animation);
    if (slider->maximum() <= duration)
        return;
    // The milliseconds are taken as seconds, on purpose; their product is one of 32 bits.
    const std::uint32_t target = (static_cast<std::uint32_t>(duration) - 10) * 1000;
    animationManager->setTimeTarget(toDuration(static_cast<std::int32_t>(target)));
}

void QtAnimationDock::slot_editmode()
{
    const Library library = sceneManager ? sceneManager->getAnimationsLibrary() : Library();
    if (!isInside(library, currentAnimation) || !at(library, currentAnimation) ||
        sceneManager->getNodeArray().empty()) {
        editModeAction->setChecked(false);
        return;
    }
    editing = !editing;
    if (isValid(at(library, currentAnimation)))
        toggleEditing(editing);
    else // on purpose nothing but the check mark: what is enabled stays so
        editModeAction->setChecked(false);
}

void QtAnimationDock::slot_cameraAction()
{
    if (animationManager)
        animationManager->addAnimationCamera();
}

void QtAnimationDock::slot_deleteAnimation()
{
    if (!sceneManager || !animationManager || sceneManager->getAnimationsLibrary().empty())
        return;
    const QPointer<QtAnimationDock> self(this);
    const bool isConfirmed = confirm(tr("Do you want to delete the current Animation?"));
    if (!self || !isConfirmed || !animationManager)
        return;
    sceneManager->removeAnimation(static_cast<unsigned int>(currentAnimation));
    animationManager->setAnimation({});
    currentAnimation = 0;
    updateComboBox();
}

void QtAnimationDock::createBoxes()
{
    animationComboBox = new QComboBox;
    animationComboBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    animationLabel = new QLabel(tr("Animation:"));
    currentTimeSpinBox = new QSpinBox;
    currentTimeSpinBox->setRange(0, 0);
    currentTimeSpinBox->setFocusPolicy(Qt::NoFocus);
    currentTimeLabel = new QLabel(tr("Current Time:"));
    animationTimeSpinBox = new QSpinBox;
    animationTimeSpinBox->setRange(0, 120000);
    animationTimeSpinBox->setFocusPolicy(Qt::NoFocus);
    animationTimeLabel = new QLabel(tr("Animation Time:"));
}

void QtAnimationDock::createActions()
{
    pauseAction = createAction(tr("&Pause Animations"), resumeIcon, tr("Pause Animations"));
    editModeAction = createAction(tr("&Edit Mode"), ":/icons/edit_mode.png", tr("Edit Mode"));
    editModeAction->setCheckable(true);
    insertKeyframeAction =
        createAction(tr("&Insert Keyframe"), "://icons/add_keyframe.png", tr("Add keyframe"));
    insertKeyframeAction->setShortcut(QKeySequence(tr("Ctrl+Space"), QKeySequence::NativeText));
    deleteKeyframeAction =
        createAction(tr("&Delete Keyframe"), ":/icons/delete_keyframe.png", tr("Delete keyframe"));
    addCameraAction = createAction(tr("&Add Camera"), "://icons/add_camera.png", tr("Add Camera"));
    deleteAnimationAction = createAction(tr("&Delete Animation"), "", tr("Delete Animation Camera"));
    newAnimationAction = createAction(tr("&New Animation"), "", "");
}

QAction* QtAnimationDock::createAction(const QString& text, const QString& iconPath, const QString& statusTip)
{
    auto* action = new QAction(QIcon(iconPath), text, this);
    action->setStatusTip(statusTip);
    return action;
}

void QtAnimationDock::createToolBar()
{
    toolBar = new QToolBar(tr("Animationslider"), mainWindow);
    toolBar->addAction(newAnimationAction);
    toolBar->addAction(pauseAction);
    toolBar->addWidget(animationLabel);
    toolBar->addWidget(animationComboBox);
    toolBar->addWidget(currentTimeLabel);
    toolBar->addWidget(currentTimeSpinBox);
    toolBar->addWidget(animationTimeLabel);
    toolBar->addWidget(animationTimeSpinBox);
    toolBar->addActions(
        {insertKeyframeAction, deleteKeyframeAction, editModeAction, addCameraAction, deleteAnimationAction});
}

void QtAnimationDock::connectAll()
{
    connect(pauseAction, SIGNAL(triggered()), this, SLOT(slot_pauseAnimations()));
    connect(newAnimationAction, SIGNAL(triggered(bool)), this, SLOT(slot_newAnimation()));
    connect(insertKeyframeAction, SIGNAL(triggered(bool)), this, SLOT(slot_addKeyFrame()));
    connect(slider, SIGNAL(valueChanged(int)), this, SLOT(slot_setAnimationTarget(int)));
    connect(this, SIGNAL(updateAnimationSlider()), slider, SLOT(update()));
    connect(animationComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(slot_comboBoxChanged(int)));
    connect(currentTimeSpinBox, SIGNAL(valueChanged(int)), slider, SLOT(setValue(int)));
    connect(slider, SIGNAL(valueChanged(int)), currentTimeSpinBox, SLOT(setValue(int)));
    connect(animationTimeSpinBox, SIGNAL(editingFinished()), this, SLOT(slot_animationTime()));
    connect(deleteKeyframeAction, SIGNAL(triggered()), this, SLOT(slot_deleteKeyFrame()));
    connect(editModeAction, SIGNAL(triggered()), this, SLOT(slot_editmode()));
    connect(addCameraAction, SIGNAL(triggered()), this, SLOT(slot_cameraAction()));
    connect(deleteAnimationAction, SIGNAL(triggered()), this, SLOT(slot_deleteAnimation()));
}

void QtAnimationDock::addKeyFrame(float milliseconds)
{
    const float seconds = milliseconds / 1000;
    animationManager->insertKeyframe(seconds);
    const int reached = static_cast<int>(seconds * 1000); // not always where the slider was, on purpose
    slider->setValue(reached);
    animationManager->setTimeTarget(toDuration(reached));
}

void QtAnimationDock::addAnimation(const std::string& name, int length)
{
    const auto animation = boost::make_shared<scene::Animation>(name, "");
    animation->setTimeRange(length);
    sceneManager->addAnimation(animation);
    updateComboBox();
    animationComboBox->setCurrentIndex(static_cast<int>(sceneManager->getAnimationsLibrary().size()) - 1);
    animationManager->insertKeyframe(0);
    setTimeRange(length);
    animationTimeSpinBox->setValue(length);
}

void QtAnimationDock::updateComboBox()
{
    animationComboBox->clear();
    const Library library = sceneManager->getAnimationsLibrary();
    for (const auto& animation : library) // the first becomes the current one at once
        animationComboBox->addItem(QIcon(), animation ? QString::fromStdString(animation->getID()) : "",
                                   QVariant());
    if (library.empty()) {
        currentTimeSpinBox->setEnabled(false);
        animationTimeSpinBox->setEnabled(false);
        currentTimeSpinBox->setValue(0);
        animationTimeSpinBox->setValue(0);
        slider->setValue(0);
        return;
    }
    animationComboBox->setCurrentIndex(0);
    if (editing) {
        currentTimeSpinBox->setEnabled(true);
        animationTimeSpinBox->setEnabled(true);
    }
}

void QtAnimationDock::validateAnimations()
{
    const Library library = sceneManager->getAnimationsLibrary();
    if (!std::all_of(library.begin(), library.end(), isValid)) {
        const QPointer<QtAnimationDock> self(this);
        const bool isConfirmed =
            confirm(tr("There are invalid animations and they can not be edited in Halvern."),
                    tr("Do you want to delete these animations?"));
        if (!self)
            return;
        if (isConfirmed) { // all of them, on purpose
            sceneManager->removeAllAnimations();
            if (animationManager)
                animationManager->setAnimation({});
        }
    }
    updateComboBox();
}

void QtAnimationDock::setTimeRange(int milliseconds)
{
    slider->setRange(0, milliseconds);
    currentTimeSpinBox->setRange(0, milliseconds);
}

void QtAnimationDock::leaveEditMode()
{
    if (editing)
        editModeAction->activate(QAction::Trigger);
}

boost::shared_ptr<scene::Animation> QtAnimationDock::getAnimation() const
{
    return animationManager ? animationManager->getAnimation() : nullptr;
}

} // namespace halvern::qt
