#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"

#include <QImage>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QString>
#include <QVector>

#ifndef Q_MOC_RUN
#    include <boost/function.hpp>
#    include <boost/shared_ptr.hpp>
#endif

#include <atomic>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

class QInputEvent;
class QMenu;
class QOpenGLTexture;
class QPainter;
class QSignalMapper;

namespace halvern::core::interfaces {
class IOpenGLHandler;
}
namespace halvern::engine::logic {
class LogicManager;
}
namespace halvern::engine::window {
class Window;
}
namespace halvern::scene {
class AnimationManager;
class SceneManager;
} // namespace halvern::scene

namespace halvern::qt {

class OverlayText;

/// The viewport: shows what an engine window renders, draws overlays over it and hands its input to the
/// window's logic manager.
///
/// It repaints on "SyncScene" and "UpdateViews", shows a text on "DisplayMessageAt", and sends "ActiveCamera"
/// from its context menu. A material dragged onto it from a QtMaterialPanel goes to the node under the mouse,
/// which it asks the window's layout for ("ObjectPicked").
///
/// Every operation belongs to the GUI thread, except those that say otherwise. Other widgets find the view
/// by its object name "Halvern_Rendering_QtView", which the host sets (QtFXMaterial::getHalvernQtView). It
/// needs a compatibility profile, and asks for one.
/// A derived class calls the qualified setEventManager(empty) first in its own destructor.
class HALVERN_QT_API QtView : public QOpenGLWidget, protected QOpenGLFunctions, public HCE::EventBase
{
    Q_OBJECT

public:
    /// The parent is not used, on purpose: whoever creates a view lays it out, reparents it or deletes it.
    /// The engine window is called after the name. Until setEventManager the view sends into a manager of
    /// its own.
    explicit QtView(QWidget* parent = nullptr, std::string name = "QtView");
    ~QtView() override;

    /// 400 x 400.
    QSize sizeHint() const override;

    /// 50 x 50.
    QSize minimumSizeHint() const override;

    /// Moves the view's and its window's registrations; when this returns, no delivery of the old manager
    /// to them runs.
    void setEventManager(boost::shared_ptr<HCE::EventManager> eventManager) override;

    /// Shows another window from the next frame on and tells it the view's size. An empty pointer is
    /// ignored. The first show replaces it by a window of the view's own: show first, then set. The
    /// window keeps the event manager it has.
    void setWindow(boost::shared_ptr<engine::window::Window> newWindow);

    /// Empty before the first show, unless one was set. Any thread.
    boost::shared_ptr<engine::window::Window> getWindow();

    /// Shows the scene in the window. Without a window it is dropped: show first, then attach. Leaves the
    /// view's context current.
    void attach(boost::shared_ptr<scene::SceneManager> sceneManager);

    /** @{ */
    /// Repaints per second that whoever drives repainting is asked for, 60 unless set. The view itself
    /// does not read it.
    virtual int getUpdateFrequency();
    virtual void setUpdateFrequency(int frequency);
    /** @} */

    /// A view in presentation mode shows no context menu.
    void setPresentationMode(bool enabled);

    /// Shows the image in the bottom right corner, a logical pixel for each of its own. A null image is
    /// ignored.
    void setLogo(const QImage& image);

    /// Appends a drawer that runs in every frame, once for each time it was added. It is initialised in
    /// the next frame at the latest. An empty pointer is ignored.
    void addOpenGLHandler(boost::shared_ptr<core::interfaces::IOpenGLHandler> handler);

    /// Removes every entry of the handler, with the view's context current if it has one, so that the
    /// handler may release what it holds there.
    void removeOpenGLHandler(boost::shared_ptr<core::interfaces::IOpenGLHandler> handler);

    /// Loads an effect file in the next frame: an object effect goes to the node's geometry `first`,
    /// material slot `second`, a scene effect to the whole view. Any thread.
    void loadEffect(std::string effectFile, std::string nodeID, unsigned int first, unsigned int second);

    /// Puts a material of the scene on a node's geometry `first`, material slot `second`, at once and in
    /// the caller's thread. Unknown IDs are ignored. Any thread.
    void loadMaterial(std::string materialID, std::string nodeID, unsigned int first, unsigned int second);

signals:
    /// Asks for a repaint. May be emitted from any thread.
    void needsUpdate();

public slots:
    /// Sends "ActiveCamera" with the SID of a camera instance.
    virtual void activateCamera(QString sid);

    /// Shows or hides the image of setLogo, which turns it on.
    void enableLogo(bool enabled);

    /// Shows the statistics box and the thumbnails of the shadow maps.
    void setShowStats(bool enabled);

    /// Shows a text, taken as HTML, beside the mouse cursor; an empty one shows nothing.
    void showStringAtCursor(QString text);

    /** @{ */
    /// Of the scene in the window; without one nothing happens.
    void pauseAnimations();
    void resumeAnimations();
    /** @} */

    /// One step of the messages' life: takes in the new ones, ages all, removes the old. A timer runs it
    /// every 50 ms.
    void updateMessageDisplay();

    /// Does nothing: what lives in the context is released by the destructor.
    void cleanup();

protected:
    /// Makes an engine window for each new context, which takes over the scene of the one before.
    void initializeGL() override;

    /// Tells the window the size, in logical pixels.
    void resizeGL(int w, int h) override;

    /// One frame without the painted overlays. Exceptions of the engine, of tasks and of handlers leave
    /// it.
    void paintGL() override;

    /// A whole frame: paintGL, then the overlays. No exception leaves it.
    void paintEvent(QPaintEvent* event) override;

    /// Asks for a new frame, but for the first time, when one comes anyway.
    void showEvent(QShowEvent* event) override;

    /** @{ */
    /// Hands the input to the window's logic manager, in logical pixels with y running upwards from the lower
    /// edge, and asks for a repaint.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    /** @} */

    /// Ignored, so that the engine gets no second press.
    void mouseDoubleClickEvent(QMouseEvent* event) override;

    /// Shows a menu of the scene's cameras and of its animations. None in presentation mode, without a scene,
    /// or with a modifier held.
    void contextMenuEvent(QContextMenuEvent* event) override;

    /** @{ */
    /// Takes materials from a QtMaterialPanel, and no other drag.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    /** @} */

    /// Puts the dropped material where the engine says that it fell ("ObjectPicked" with the tag
    /// "DropMaterial"). Runs in whatever thread the event manager calls it.
    virtual void handleObjectPicked(HCE::Event event);

    /// Shows a text at a place ("DisplayMessageAt" text, x, y) for three and a half seconds; y runs
    /// downwards. Throws for places that are no numbers. Runs in whatever thread the event manager calls it.
    virtual void handleDisplayMessageAt(HCE::Event event);

    /// Asks for one repaint ("SyncScene", "UpdateViews"), however often it is called until then. Any thread.
    virtual void handleSyncScene();

    /// Runs work in the next frame, on the GUI thread with the view's context current. Any thread.
    void queueTask(boost::function<void()> task);

    /// loadEffect's work, at once. An effect file that the scene knows is not read again, but each call
    /// makes a new material. Nothing happens without a window, a scene and an FX manager.
    virtual void internalLoadEffect(std::string effectFile, std::string nodeID, unsigned int first,
                                    unsigned int second);

    /** @{ */
    /// Drawn with OpenGL, inside paintGL: the logo in the bottom right corner; the depths of the shadow maps,
    /// 200 pixels each, from the top right corner downwards.
    virtual void drawLogo();
    virtual void drawShadowMaps();
    /** @} */

    /// Drawn with the painter of paintEvent, after paintGL: counts of the last frame, its time in
    /// milliseconds, and a graph of the times of the last 50 frames, as high as the longest.
    virtual void drawStats(QPainter& painter, QPaintEvent* event);

    /// Drawn with the painter: the text of showStringAtCursor, where the logic manager last saw the mouse.
    virtual void drawMessageAtCursor(QPainter& painter, QPaintEvent* event);

    /// Drawn with the painter: a text of "DisplayMessageAt", at twice the position, on purpose. The level is
    /// its opacity; above 1 it is opaque.
    virtual void drawMessageAtPosition(QPainter& painter, QPaintEvent* event, QPoint position, QString text,
                                       float level);

    /// The position, or the first free one below it in steps of 10 pixels, if a shown message is exactly
    /// there. Called with the message lock held.
    virtual QPoint validateMessagePosition(QPoint position);

private:
    struct ShownMessage
    {
        std::string text;
        QPoint position;
        float level;
        int phase;
    };

    void requestFormat();
    void registerHandlers();
    void startMessageTimer();

    boost::shared_ptr<engine::window::Window>
    replaceWindow(boost::shared_ptr<engine::window::Window> newWindow);
    boost::shared_ptr<scene::SceneManager> getSceneManager();
    boost::shared_ptr<scene::AnimationManager> getAnimationManager();
    boost::shared_ptr<engine::logic::LogicManager> getLogicManager();
    void requestPick(const QPoint& position, const std::string& tag);
    void storeDroppedMaterialID(std::string materialID);
    std::string takeDroppedMaterialID();

    bool useCurrentContext();
    void createWindow();
    void initializeHandlers();
    void runTasks();
    void requeueTasks(std::list<boost::function<void()>>& rest);
    void renderWindow(engine::window::Window& shown);
    void drawWindow(engine::window::Window* shown);
    void renderHandlers();
    void paintFrame(QPaintEvent* event);
    void paintNatively(QPainter& painter);
    void paintOverlays(QPainter& painter, QPaintEvent* event);

    template <class Forward>
    void forwardInput(QInputEvent* event, Forward forward);

    void makeLogoTexture();
    void advanceStatsGraph();
    void drawStatsGraph(QPainter& painter);
    void showContextMenu(QContextMenuEvent* event);
    static void addCameras(QMenu& menu, QSignalMapper& mapper, scene::SceneManager& sceneManager);
    void addAnimationActions(QMenu& menu);

    static void age(ShownMessage& message);
    bool isTaken(const QPoint& position) const;
    QPoint freePosition(const QPoint& position);

    std::string viewName;
    boost::shared_ptr<engine::window::Window> window; // written and read under the task lock
    int updateFrequency = 60;
    Qt::KeyboardModifiers lastModifiers = Qt::NoModifier;
    QOpenGLTexture* logoTexture = nullptr;
    QSize logoSize;
    bool logoEnabled = false;
    bool showStats = false;
    bool presentationMode = false;
    QVector<QPointF> statsGraph;
    int lastRenderTime = 0;
    int peakRenderTime = 0;
    int framesSincePeak = 0;
    std::string droppedMaterialID; // written and read under the task lock
    QString cursorMessage;
    std::mutex messageLock;
    std::deque<std::pair<QString, QPoint>> incomingMessages;
    std::vector<ShownMessage> shownMessages;
    std::mutex taskLock;
    std::list<boost::function<void()>> tasks;
    std::list<boost::shared_ptr<core::interfaces::IOpenGLHandler>> openGLHandlers;

    QImage logoImage;
    const std::unique_ptr<OverlayText> statsText;
    const std::unique_ptr<OverlayText> cursorText;
    bool initializedBefore = false;
    bool shownBefore = false;
    std::atomic<bool> updatePending{false};
};

} // namespace halvern::qt
