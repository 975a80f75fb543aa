#include "qt/QtView.h"

#include "engine/core/event/Event.h"
#include "engine/core/event/EventManager.h"
#include "engine/core/interfaces/IOpenGLHandler.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/logic/LogicManager.h"
#include "engine/renderer/IRenderer.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Evaluator.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/Render.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "engine/window/Window.h"
#include "qt/OverlayText.h"
#include "qt/QtMaterialPanel.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineF>
#include <QMenu>
#include <QMetaObject>
#include <QMimeData>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLTexture>
#include <QPainter>
#include <QSignalMapper>
#include <QSurfaceFormat>
#include <QThread>
#include <QTimer>
#include <QWheelEvent>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/bind/bind.hpp>
#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>

namespace halvern::qt {

using core::interfaces::IOpenGLHandler;
using engine::logic::LogicManager;
using engine::window::Window;

namespace {

/// The boundary towards Qt: no exception may reach its event loop.
template <class Work>
void guarded(Work work)
{
    try {
        work();
    } catch (...) { // NOLINT(bugprone-empty-catch): failures of the engine are ignored silently
    }
}

constexpr char StatsStyle[] = "* { color: #FFFFFF; font-family: Verdana, Times }";
constexpr char StatsHtml[] =
    "<h4 align=\"center\">Studio Stats</h4><p align=\"center\"><table width=\"100%\" height=\"180\">"
    "<tr><td align=\"left\">Triangles:</td><td align=\"right\">%1</td></tr>"
    "<tr><td align=\"left\">Vertices:</td><td align=\"right\">%2</td></tr>"
    "<tr><td align=\"left\">Timing:</td><td align=\"right\">%3</td></tr>"
    "<tr><td colspan=\"2\" width=\"150\"></td></tr></table>";
constexpr char CursorStyle[] = "* { color: #FFFFFF; font-family: Verdana, Times; font-size:16pt; }";
constexpr char CursorHtml[] =
    "<p align=\"center\"><table width=\"100%\" ><tr><td align=\"left\">%1</td></tr></table>";

/// Marks the answer to a pick that a dropped material asked for.
constexpr char DropTag[] = "DropMaterial";

// The statistics graph, in pixels.
constexpr int GraphWidth = 150;
constexpr int GraphHeight = 100;
constexpr int GraphStep = 3;   // from one frame to the next, and between the lines of the grid
constexpr int PeakLife = 1000; // frames that an old peak keeps the graph's scale

/// The zero line of the statistics graph: 50 segments, the newest (rightmost) first.
QVector<QPointF> flatGraph()
{
    QVector<QPointF> points;
    for (int x = 0; x < GraphWidth; x += GraphStep) {
        points.prepend(QPointF(x, 0));
        points.prepend(QPointF(x + GraphStep, 0));
    }
    return points;
}

/// Upright lines from the graph's left edge to its right one.
QVector<QLineF> uprightGridLines()
{
    QVector<QLineF> lines;
    for (int x = 0; x <= GraphWidth; x += GraphStep)
        lines.append(QLineF(x, -GraphHeight, x, 0));
    return lines;
}

/// Level lines from the graph's base upwards; the top edge has none.
QVector<QLineF> levelGridLines()
{
    QVector<QLineF> lines;
    for (int y = 0; y > -GraphHeight; y -= GraphStep)
        lines.append(QLineF(0, y, GraphWidth, y));
    return lines;
}

GLuint colorTextureOf(Window* window)
{
    const auto target = window ? window->getColorRenderTarget() : nullptr;
    return target ? target->getTextureID() : 0;
}

/// Covers the whole viewport while both matrices are the identity.
void drawFullScreenQuad()
{
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(-1, -1);
    glTexCoord2f(1, 0);
    glVertex2f(1, -1);
    glTexCoord2f(1, 1);
    glVertex2f(1, 1);
    glTexCoord2f(0, 1);
    glVertex2f(-1, 1);
    glEnd();
}

/// Leaves the painter to OpenGL calls while it lives.
class NativePainting
{
public:
    explicit NativePainting(QPainter& painter) : painter(painter)
    {
        painter.save();
        painter.beginNativePainting();
    }
    ~NativePainting()
    {
        painter.endNativePainting();
        painter.restore();
    }
    Q_DISABLE_COPY(NativePainting)

private:
    QPainter& painter;
};

/// Saves the attributes of server and client while it lives.
class SavedAttributes
{
public:
    SavedAttributes()
    {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    }
    ~SavedAttributes()
    {
        glPopClientAttrib();
        glPopAttrib();
    }
    Q_DISABLE_COPY(SavedAttributes)
};

/// Puts the bindings that are no attributes back at its end. What a handler leaves bound would draw into
/// the wrong place, or garble the painter's texts.
class RestoredBindings
{
public:
    explicit RestoredBindings(GLuint framebuffer) : framebuffer(framebuffer) {}
    ~RestoredBindings()
    {
        QOpenGLContext* context = QOpenGLContext::currentContext();
        if (!context)
            return;
        QOpenGLExtraFunctions* gl = context->extraFunctions();
        gl->glUseProgram(0);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        if (context->format().majorVersion() >= 3)
            gl->glBindVertexArray(0);
        for (const GLenum target :
             {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER})
            gl->glBindBuffer(target, 0);
    }
    Q_DISABLE_COPY(RestoredBindings)

private:
    const GLuint framebuffer;
};

void initializeHandler(IOpenGLHandler& handler)
{
    if (!handler.isInitialized())
        handler.initialize();
}

void renderHandler(IOpenGLHandler& handler)
{
    initializeHandler(handler);
    const SavedAttributes saved;
    handler.render();
}

} // namespace

QtView::QtView(QWidget* /*parent*/, std::string name) :
    QOpenGLWidget(nullptr),
    HCE::EventBase(boost::make_shared<HCE::EventManager>(false)),
    viewName(std::move(name)),
    statsGraph(flatGraph()),
    statsText(std::make_unique<OverlayText>(StatsStyle)),
    cursorText(std::make_unique<OverlayText>(CursorStyle))
{
    requestFormat();
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_MouseTracking);

    connect(this, SIGNAL(needsUpdate()), this, SLOT(update()));
    registerHandlers();
    startMessageTimer();
}

QtView::~QtView()
{
    // The handlers and the window, members that die below, release their OpenGL objects in this context.
    makeCurrent();
    delete logoTexture;
    // From here on no event handler runs; qualified because a derived part is gone already.
    QtView::setEventManager(nullptr);
}

void QtView::requestFormat()
{
    QSurfaceFormat format;
    format.setDepthBufferSize(24);
    format.setStencilBufferSize(8);
    format.setAlphaBufferSize(8);
    format.setRedBufferSize(8);
    format.setBlueBufferSize(8);
    format.setGreenBufferSize(8);
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    setFormat(format);
}

void QtView::registerHandlers()
{
    using namespace boost::placeholders;
    registerHandler(HCE::EventType("ObjectPicked"), boost::bind(&QtView::handleObjectPicked, this, _1));
    registerHandler(HCE::EventType("DisplayMessageAt"),
                    boost::bind(&QtView::handleDisplayMessageAt, this, _1));
    registerHandler(HCE::EventType("SyncScene"), boost::bind(&QtView::handleSyncScene, this));
    registerHandler(HCE::EventType("UpdateViews"), boost::bind(&QtView::handleSyncScene, this));
}

void QtView::startMessageTimer()
{
    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(updateMessageDisplay()));
    timer->start(50);
}

QSize QtView::sizeHint() const
{
    return QSize(400, 400);
}

QSize QtView::minimumSizeHint() const
{
    return QSize(50, 50);
}

void QtView::setEventManager(boost::shared_ptr<HCE::EventManager> eventManager)
{
    HCE::EventBase::setEventManager(eventManager);
    if (const auto shown = getWindow())
        shown->setEventManager(eventManager);
}

void QtView::setWindow(boost::shared_ptr<Window> newWindow)
{
    if (!newWindow)
        return;
    replaceWindow(newWindow);
    newWindow->resize(Eigen::Vector2i(width(), height()));
}

boost::shared_ptr<Window> QtView::getWindow()
{
    const std::lock_guard<std::mutex> lock(taskLock);
    return window;
}

/// Returns the window that was there, so that it never dies under the lock.
boost::shared_ptr<Window> QtView::replaceWindow(boost::shared_ptr<Window> newWindow)
{
    const std::lock_guard<std::mutex> lock(taskLock);
    window.swap(newWindow);
    return newWindow;
}

/// Never hands out the window: a caller on another thread must not become its last owner.
boost::shared_ptr<scene::SceneManager> QtView::getSceneManager()
{
    const std::lock_guard<std::mutex> lock(taskLock);
    return window ? window->getSceneManager() : nullptr;
}

boost::shared_ptr<LogicManager> QtView::getLogicManager()
{
    const auto shown = getWindow();
    return shown ? shown->getLogicManager() : nullptr;
}

void QtView::attach(boost::shared_ptr<scene::SceneManager> sceneManager)
{
    makeCurrent();
    if (const auto shown = getWindow())
        shown->attach(sceneManager);
}

int QtView::getUpdateFrequency()
{
    return updateFrequency;
}

void QtView::setUpdateFrequency(int frequency)
{
    updateFrequency = frequency;
}

void QtView::setPresentationMode(bool enabled)
{
    presentationMode = enabled;
}

void QtView::enableLogo(bool enabled)
{
    logoEnabled = enabled;
}

void QtView::setShowStats(bool enabled)
{
    showStats = enabled;
}

void QtView::showStringAtCursor(QString text)
{
    cursorMessage = text;
}

/// Before the first show there is no context yet: drawLogo makes the texture then. A texture that is
/// replaced is not released, on purpose.
void QtView::setLogo(const QImage& image)
{
    if (image.isNull())
        return;
    logoImage = image;
    logoSize = image.size();
    logoEnabled = true;
    logoTexture = nullptr;
    if (!isValid())
        return;
    makeCurrent();
    makeLogoTexture();
}

/// In the view's own context.
void QtView::makeLogoTexture()
{
    logoTexture = new QOpenGLTexture(logoImage, QOpenGLTexture::GenerateMipMaps);
}

void QtView::addOpenGLHandler(boost::shared_ptr<IOpenGLHandler> handler)
{
    if (handler)
        openGLHandlers.push_back(handler);
}

void QtView::removeOpenGLHandler(boost::shared_ptr<IOpenGLHandler> handler)
{
    if (isValid())
        makeCurrent();
    openGLHandlers.remove(handler);
}

void QtView::cleanup() {}

// OpenGL

/// False where no context is current: platforms without OpenGL, previews of forms. Renews the function
/// table because a subclass may have skipped initializeGL.
bool QtView::useCurrentContext()
{
    if (!QOpenGLContext::currentContext())
        return false;
    initializeOpenGLFunctions();
    return true;
}

void QtView::initializeGL()
{
    if (!useCurrentContext())
        return;
    connect(QOpenGLContext::currentContext(), SIGNAL(aboutToBeDestroyed()), this, SLOT(cleanup()));
    logoTexture = nullptr; // of an earlier context, and abandoned to it
    guarded([this] {
        createWindow();
        initializeHandlers();
    });
}

/// Always a new one, also in place of a window that was set before.
void QtView::createWindow()
{
    const auto created = boost::make_shared<Window>(getEventManager(), viewName + "::window");
    const auto old = replaceWindow(created);
    created->init();
    // Qt does not call resizeGL when only the context is new.
    created->resize(Eigen::Vector2i(width(), height()));

    // A view that was reparented into a new context goes on with its scene.
    const bool carriesOver = std::exchange(initializedBefore, true) && old;
    if (const auto sceneManager = carriesOver ? old->getSceneManager() : nullptr)
        created->attach(sceneManager);
}

void QtView::resizeGL(int w, int h)
{
    if (!useCurrentContext())
        return;
    if (const auto shown = getWindow())
        guarded([&] { shown->resize(Eigen::Vector2i(w, h)); });
    else
        glViewport(0, 0, w, h == 0 ? 1 : h);
}

void QtView::paintGL()
{
    if (!useCurrentContext())
        return;
    runTasks();
    const auto shown = getWindow();
    if (shown)
        renderWindow(*shown);
    drawWindow(shown.get());
    if (logoEnabled)
        drawLogo();
    if (showStats)
        drawShadowMaps();
    renderHandlers();
}

void QtView::queueTask(boost::function<void()> task)
{
    {
        const std::lock_guard<std::mutex> lock(taskLock);
        tasks.push_back(std::move(task));
    }
    emit needsUpdate();
}

/// Runs what is queued by now; what is queued meanwhile waits for the next frame and its sender for
/// nothing. A task that throws is gone, the ones behind it stay queued.
void QtView::runTasks()
{
    std::list<boost::function<void()>> due;
    {
        const std::lock_guard<std::mutex> lock(taskLock);
        due.swap(tasks);
    }
    try {
        while (!due.empty()) {
            const boost::function<void()> task = std::move(due.front());
            due.pop_front();
            task();
        }
    } catch (...) {
        requeueTasks(due);
        throw;
    }
}

void QtView::requeueTasks(std::list<boost::function<void()>>& rest)
{
    {
        const std::lock_guard<std::mutex> lock(taskLock);
        tasks.splice(tasks.begin(), rest);
    }
    emit needsUpdate();
}

void QtView::renderWindow(Window& shown)
{
    shown.update();
    QElapsedTimer timer;
    timer.start();
    shown.render();
    lastRenderTime = int(timer.elapsed());
}

void QtView::drawWindow(Window* shown)
{
    glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    glClearColor(1, 0, 0, 1); // on purpose: red shows where the quad is missing
    glClearDepthf(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();

    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, colorTextureOf(shown));
    drawFullScreenQuad();
    glDisable(GL_TEXTURE_2D);
}

void QtView::initializeHandlers()
{
    const auto snapshot = openGLHandlers; // a handler may add or remove handlers
    for (const auto& handler : snapshot) {
        const RestoredBindings restored(defaultFramebufferObject());
        initializeHandler(*handler);
    }
}

void QtView::renderHandlers()
{
    const auto snapshot = openGLHandlers; // a handler may add or remove handlers
    for (const auto& handler : snapshot) {
        const RestoredBindings restored(defaultFramebufferObject());
        renderHandler(*handler);
    }
}

// Painting

/// Takes the place of the base's way to paintGL: a painter spans the whole frame.
void QtView::paintEvent(QPaintEvent* event)
{
    if (!isValid())
        return;
    makeCurrent(); // another context, or none, may be current
    guarded([&] { paintFrame(event); });
}

/// Qt would show the frame of before again, and drops what asks a hidden view for another.
void QtView::showEvent(QShowEvent* event)
{
    QOpenGLWidget::showEvent(event);
    if (std::exchange(shownBefore, true))
        update();
}

void QtView::paintFrame(QPaintEvent* event)
{
    if (!useCurrentContext())
        return;
    glEnable(GL_MULTISAMPLE);
    glEnable(GL_LINE_SMOOTH);

    QPainter painter(this);
    if (!painter.isActive())
        return;
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::HighQualityAntialiasing);
    paintNatively(painter);
    painter.setBackgroundMode(Qt::TransparentMode);
    paintOverlays(painter, event);
}

void QtView::paintNatively(QPainter& painter)
{
    const NativePainting native(painter);
    paintGL();
}

void QtView::paintOverlays(QPainter& painter, QPaintEvent* event)
{
    if (showStats)
        drawStats(painter, event);
    if (!cursorMessage.isEmpty())
        drawMessageAtCursor(painter, event);
    for (const ShownMessage& message : shownMessages)
        drawMessageAtPosition(painter, event, message.position, QString::fromStdString(message.text),
                              message.level);
}

// Overlays drawn with OpenGL

namespace {

/// The view's pixels as coordinates, y upwards, while it lives; textures are drawn by their alpha, over
/// everything.
class PixelDrawing
{
public:
    explicit PixelDrawing(const QWidget& view)
    {
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, view.width(), 0, view.height(), -1, 1);
        const QSize device = view.size() * view.devicePixelRatioF();
        glViewport(0, 0, device.width(), device.height());
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_TEXTURE_2D);
        glColor4f(1, 1, 1, 1);
    }
    ~PixelDrawing()
    {
        glDisable(GL_BLEND);
        glBindTexture(GL_TEXTURE_2D, 0);
        glDisable(GL_TEXTURE_2D);
    }
    Q_DISABLE_COPY(PixelDrawing)

    /// Draws the bound texture between two corners, with these t coordinates at the lower and upper one.
    void drawTexture(QPoint lower, QPoint upper, int lowerT, int upperT) const
    {
        glBegin(GL_QUADS);
        glTexCoord2i(0, lowerT);
        glVertex2i(lower.x(), lower.y());
        glTexCoord2i(1, lowerT);
        glVertex2i(upper.x(), lower.y());
        glTexCoord2i(1, upperT);
        glVertex2i(upper.x(), upper.y());
        glTexCoord2i(0, upperT);
        glVertex2i(lower.x(), upper.y());
        glEnd();
    }
};

boost::shared_ptr<engine::light::LightManager> lightManagerOf(Window* window)
{
    using engine::scenegraph::RenderSceneGraph;
    const auto scene = window ? window->getRenderScene() : nullptr;
    const auto graph = boost::dynamic_pointer_cast<RenderSceneGraph>(scene);
    return graph ? graph->getLightManager() : nullptr;
}

/// 0 where there is nothing to show.
GLuint shadowTextureOf(engine::light::RenderLight* light)
{
    const auto map = light && light->isInited() ? light->getShadowMap() : nullptr;
    return map ? map->getTextureID() : 0;
}

/// Draws the depths of a shadow map, slot 0 in the top right corner, the others below it.
void drawShadowMap(GLuint texture, int slot, const QWidget& view)
{
    const PixelDrawing drawing(view);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_NONE);
    const int top = view.height() - 10 - 200 * slot;
    drawing.drawTexture(QPoint(view.width() - 210, top - 200), QPoint(view.width() - 10, top - 1), 0, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
}

} // namespace

void QtView::drawLogo()
{
    if (!logoTexture && !logoImage.isNull())
        makeLogoTexture();
    if (!logoTexture || !logoTexture->isCreated())
        return;
    const PixelDrawing drawing(*this);
    glBindTexture(GL_TEXTURE_2D, logoTexture->textureId());
    const QPoint lower(width() - logoSize.width() - 10, 10);
    // The image's first row is at the top.
    drawing.drawTexture(lower, lower + QPoint(logoSize.width(), logoSize.height()), 1, 0);
}

/// Every light has its slot; one without a shadow map leaves it empty.
void QtView::drawShadowMaps()
{
    const auto lights = lightManagerOf(getWindow().get());
    const unsigned int count = lights ? lights->getLightCount() : 0;
    for (unsigned int i = 0; i < count; ++i)
        if (const GLuint texture = shadowTextureOf(lights->getLightAt(i).get()))
            drawShadowMap(texture, int(i), *this);
}

// Overlays drawn with the painter

namespace {

boost::shared_ptr<engine::renderer::IRenderer> sceneRendererOf(Window* window)
{
    const auto layout = window ? window->getLayout() : nullptr;
    const auto viewport = layout ? layout->getViewport() : nullptr;
    return viewport ? viewport->getSceneRenderer() : nullptr;
}

void setColors(QPainter& painter, const QColor& pen, const QColor& brush)
{
    painter.setPen(pen);
    painter.setBrush(QBrush(brush, Qt::SolidPattern));
}

/// From the origin to a margin beyond the size.
QRectF boxRound(const QSizeF& size, qreal margin)
{
    return QRectF(QPointF(0, 0), QPointF(size.width() + margin, size.height() + margin));
}

void drawGrid(QPainter& painter)
{
    static const QVector<QLineF> upright = uprightGridLines();
    static const QVector<QLineF> level = levelGridLines();
    painter.setPen(QColor(255, 255, 255, 20));
    painter.drawLines(upright);
    painter.drawLines(level);
}

} // namespace

/// The translations add up: box at (10, 10), text at (16, 16), the graph's base line at (24, 216).
void QtView::drawStats(QPainter& painter, QPaintEvent* /*event*/)
{
    const auto renderer = sceneRendererOf(getWindow().get());
    statsText->setHtml(QString(StatsHtml)
                           .arg(renderer ? renderer->getTriangleCount() : 0)
                           .arg(renderer ? renderer->getVertexCount() : 0)
                           .arg(lastRenderTime));
    painter.translate(10, 10);
    setColors(painter, QColor(220, 220, 255, 255), QColor(100, 100, 255, 20));
    painter.drawRect(boxRound(statsText->size(), 11));
    painter.translate(6, 6);
    statsText->draw(painter);

    advanceStatsGraph();
    painter.translate(8, 200);
    drawGrid(painter);
    drawStatsGraph(painter);
}

/// The new segment starts upright, at the newest point so far.
void QtView::advanceStatsGraph()
{
    statsGraph.remove(statsGraph.size() - 2, 2);
    statsGraph.prepend(QPointF(statsGraph.first()));
    statsGraph.prepend(QPointF(GraphWidth, -lastRenderTime));
    for (QPointF& point : statsGraph)
        point.rx() -= GraphStep;

    if (framesSincePeak > PeakLife) {
        peakRenderTime = 0;
        framesSincePeak = 0;
    }
    const int peakBefore = peakRenderTime;
    for (const QPointF& point : qAsConst(statsGraph))
        peakRenderTime = std::max(peakRenderTime, int(-point.y()));
    if (peakRenderTime == peakBefore)
        ++framesSincePeak;
}

void QtView::drawStatsGraph(QPainter& painter)
{
    if (peakRenderTime == 0)
        return; // divided by it nothing would be drawn either
    QVector<QPointF> scaled = statsGraph;
    for (QPointF& point : scaled)
        point.ry() *= qreal(GraphHeight) / peakRenderTime;
    painter.setPen(QColor(0, 255, 0));
    painter.drawLines(scaled); // a segment for every two points
}

void QtView::drawMessageAtCursor(QPainter& painter, QPaintEvent* /*event*/)
{
    const auto logicManager = getLogicManager();
    if (!logicManager)
        return;
    const Eigen::Vector2i mouse = logicManager->getMousePosition();
    cursorText->setHtml(QString(CursorHtml).arg(cursorMessage));
    painter.resetTransform();
    painter.translate(mouse.x(), height() - mouse.y());
    setColors(painter, QColor(220, 220, 255, 255), QColor(180, 180, 200, 200));
    painter.drawRect(boxRound(cursorText->size(), 1));
    cursorText->draw(painter);
}

/// Translated to the position and drawn at it once more: twice its coordinates, on purpose.
void QtView::drawMessageAtPosition(QPainter& painter, QPaintEvent* /*event*/, QPoint position, QString text,
                                   float level)
{
    painter.resetTransform();
    painter.translate(position);
    const int alpha = int(std::min(level * 255.0F, 255.0F));
    setColors(painter, QColor(250, 250, 250, alpha), QColor(180, 180, 200, 200));
    painter.setFont(QFont("Verdana", 13));
    painter.drawText(position, text);
}

// Input

template <class Forward>
void QtView::forwardInput(QInputEvent* event, Forward forward)
{
    guarded([&] {
        if (const auto logicManager = getLogicManager())
            forward(*logicManager);
    });
    event->accept();
    update();
}

// y runs upwards in the engine: the top edge is sent as the height, on purpose.

void QtView::mousePressEvent(QMouseEvent* event)
{
    lastModifiers = event->modifiers();
    forwardInput(event, [&](LogicManager& logic) {
        logic.mousePressed(event->button(), event->x(), height() - event->y(), int(event->modifiers()));
    });
}

void QtView::mouseReleaseEvent(QMouseEvent* event)
{
    lastModifiers = event->modifiers();
    forwardInput(event, [&](LogicManager& logic) {
        logic.mouseReleased(event->button(), event->x(), height() - event->y(), int(event->modifiers()));
    });
}

/// Keeps the second press from the engine: the base class would send one.
void QtView::mouseDoubleClickEvent(QMouseEvent* event)
{
    event->ignore();
}

void QtView::mouseMoveEvent(QMouseEvent* event)
{
    lastModifiers = event->modifiers();
    forwardInput(event, [&](LogicManager& logic) {
        logic.mouseMoved(event->x(), height() - event->y(), int(event->modifiers()));
    });
}

/// One step per event, whatever its delta and orientation; a delta of 0 is a step back.
void QtView::wheelEvent(QWheelEvent* event)
{
    lastModifiers = event->modifiers();
    forwardInput(event, [&](LogicManager& logic) {
        const int direction = event->delta() < 1 ? -1 : 1;
        const QPointF position = event->position();
        logic.mouseWheel(0, direction, int(position.x()), height() - int(position.y()),
                         int(event->modifiers()));
    });
}

void QtView::keyPressEvent(QKeyEvent* event)
{
    forwardInput(event,
                 [&](LogicManager& logic) { logic.keyPressed(event->key(), int(event->modifiers())); });
    lastModifiers = event->modifiers();
}

void QtView::keyReleaseEvent(QKeyEvent* event)
{
    forwardInput(event,
                 [&](LogicManager& logic) { logic.keyReleased(event->key(), int(event->modifiers())); });
    lastModifiers = event->modifiers();
}

/// Right clicks with a modifier belong to the engine. The menu and its mapper live as long as the view.
void QtView::contextMenuEvent(QContextMenuEvent* event)
{
    event->ignore();
    if (lastModifiers != Qt::NoModifier || presentationMode)
        return;
    guarded([&] { showContextMenu(event); });
}

void QtView::showContextMenu(QContextMenuEvent* event)
{
    auto* menu = new QMenu(tr("Viewport"), this);
    QMenu* cameras = menu->addMenu(tr("Cameras"));
    menu->addSeparator();
    const auto sceneManager = getSceneManager();
    if (!sceneManager)
        return;
    auto* mapper = new QSignalMapper(this);
    addCameras(*cameras, *mapper, *sceneManager);
    // The menu takes the mouse: no button may stay held in the engine.
    if (const auto logicManager = getLogicManager())
        logicManager->resetInputState();
    connect(mapper, SIGNAL(mapped(QString)), this, SLOT(activateCamera(QString)));
    addAnimationActions(*menu->addMenu(tr("Animations")));
    menu->popup(event->globalPos());
    event->accept();
}

void QtView::addCameras(QMenu& menu, QSignalMapper& mapper, scene::SceneManager& sceneManager)
{
    const unsigned int count = sceneManager.getCameraInstanceCount();
    for (unsigned int i = 0; i < count; ++i) {
        const auto camera = sceneManager.getCameraInstanceAt(i);
        if (!camera)
            continue;
        const QString sid = QString::fromStdString(camera->getSID());
        QAction* action = menu.addAction(sid);
        mapper.setMapping(action, sid);
        connect(action, SIGNAL(triggered()), &mapper, SLOT(map()));
    }
}

void QtView::addAnimationActions(QMenu& menu)
{
    connect(menu.addAction("Resume"), SIGNAL(triggered()), this, SLOT(resumeAnimations()));
    connect(menu.addAction("Pause"), SIGNAL(triggered()), this, SLOT(pauseAnimations()));
}

// Drag and drop

namespace {

/// What a drag carries does not count, only where it comes from.
bool isFromMaterialPanel(const QDropEvent& event)
{
    return qobject_cast<QtMaterialPanel*>(event.source()) != nullptr;
}

/// A move, on purpose, although the material stays where it is.
void acceptMove(QDropEvent& event)
{
    event.setDropAction(Qt::MoveAction);
    event.accept();
}

} // namespace

void QtView::dragEnterEvent(QDragEnterEvent* event)
{
    if (isFromMaterialPanel(*event))
        acceptMove(*event);
}

void QtView::dragMoveEvent(QDragMoveEvent* event)
{
    if (isFromMaterialPanel(*event))
        acceptMove(*event);
}

/// The ID is stored first: the answer may come at once.
void QtView::dropEvent(QDropEvent* event)
{
    if (!isFromMaterialPanel(*event))
        return;
    storeDroppedMaterialID(event->mimeData()->text().toStdString());
    guarded([&] { requestPick(event->pos(), DropTag); });
    acceptMove(*event);
}

void QtView::requestPick(const QPoint& position, const std::string& tag)
{
    const auto shown = getWindow();
    if (const auto layout = shown ? shown->getLayout() : nullptr)
        layout->requestPick(position.x(), height() - position.y(), tag);
}

void QtView::storeDroppedMaterialID(std::string materialID)
{
    const std::lock_guard<std::mutex> lock(taskLock);
    droppedMaterialID.swap(materialID);
}

// Engine events

/// The numbers are converted first: a malformed one leaves the drop waiting for its answer.
void QtView::handleObjectPicked(HCE::Event event)
{
    const HCE::EventData data = event.getEventData();
    if (data.getArg(6) != DropTag || data.getArg(2).empty())
        return;
    const auto first = boost::lexical_cast<unsigned int>(data.getArg(2));
    const auto second = boost::lexical_cast<unsigned int>(data.getArg(3));
    loadMaterial(takeDroppedMaterialID(), data.getArg(1), first, second);
}

std::string QtView::takeDroppedMaterialID()
{
    const std::lock_guard<std::mutex> lock(taskLock);
    return std::exchange(droppedMaterialID, std::string());
}

void QtView::handleDisplayMessageAt(HCE::Event event)
{
    const HCE::EventData data = event.getEventData();
    const std::string text = data.getArg(1);
    const auto x = boost::lexical_cast<unsigned int>(data.getArg(2));
    const auto y = boost::lexical_cast<unsigned int>(data.getArg(3));
    if (text.empty())
        return;
    const std::lock_guard<std::mutex> lock(messageLock);
    const QPoint position = validateMessagePosition(QPoint(int(x), int(y)));
    incomingMessages.emplace_back(QString::fromStdString(text), position);
}

/// Posts one repaint at a time: update() called off the view's thread would corrupt the heap.
void QtView::handleSyncScene()
{
    if (QThread::currentThread() == thread()) {
        update();
        return;
    }
    if (updatePending.exchange(true))
        return;
    const auto repaint = [this] {
        updatePending = false; // first, so that a request made from now on is not lost
        update();
    };
    QMetaObject::invokeMethod(this, repaint, Qt::QueuedConnection);
}

void QtView::loadEffect(std::string effectFile, std::string nodeID, unsigned int first, unsigned int second)
{
    queueTask(boost::bind(&QtView::internalLoadEffect, this, effectFile, nodeID, first, second));
}

namespace {

bool isSceneEffect(engine::fx::FXEffect* effect)
{
    return effect && boost::algorithm::to_lower_copy(effect->getScriptClass()) == "scene";
}

/// ID of the effect in that file; one that the scene does not know yet is added to it.
std::string provideEffect(const std::string& effectFile, scene::SceneManager& sceneManager,
                          engine::fx::FXManager& fxManager)
{
    if (const auto known = sceneManager.getEffectByFilename(effectFile))
        return known->getID();
    const auto effect = boost::make_shared<scene::Effect>(sceneManager.generateID(), effectFile, "");
    sceneManager.addEffect(effect);
    fxManager.addEffect(effect);
    return effect->getID();
}

/// Always a new one, also for an effect that has materials already.
boost::shared_ptr<scene::Material> addMaterial(const std::string& effectID, scene::SceneManager& sceneManager,
                                               engine::fx::FXManager& fxManager)
{
    auto material = boost::make_shared<scene::Material>(sceneManager.generateID(), effectID);
    sceneManager.addMaterial(material);
    fxManager.addMaterial(material);
    return material;
}

/// The first evaluator, made if there is none.
boost::shared_ptr<scene::Evaluator> provideEvaluator(scene::SceneManager& sceneManager)
{
    auto evaluator = sceneManager.getEvaluatorAt(0);
    if (!evaluator) {
        evaluator = boost::make_shared<scene::Evaluator>("Halvern_Evaluator");
        sceneManager.addEvaluator(evaluator);
    }
    return evaluator;
}

/// Nothing takes the stage out of the pipeline again: it lives as long as the window.
void addSceneEffect(const boost::shared_ptr<scene::Material>& material, scene::SceneManager& sceneManager,
                    engine::fx::FXManager& fxManager, Window& window)
{
    provideEvaluator(sceneManager)
        ->addRender(boost::make_shared<scene::Render>(nullptr, std::list<std::string>(), material));
    const auto stage = fxManager.addSceneEffectInstance(material);
    if (const auto pipeline = window.getFXPipeline())
        pipeline->pushBack(stage);
}

} // namespace

void QtView::internalLoadEffect(std::string effectFile, std::string nodeID, unsigned int first,
                                unsigned int second)
{
    const auto shown = getWindow();
    const auto sceneManager = shown ? shown->getSceneManager() : nullptr;
    const auto fxManager = shown ? shown->getFXManager() : nullptr;
    if (!sceneManager || !fxManager || effectFile.empty())
        return;
    makeCurrent();
    const std::string effectID = provideEffect(effectFile, *sceneManager, *fxManager);
    const auto material = addMaterial(effectID, *sceneManager, *fxManager);
    // An effect that could not be read counts as one of an object; the node falls back by itself.
    if (isSceneEffect(fxManager->getFXEffect(effectID).get())) {
        addSceneEffect(material, *sceneManager, *fxManager, *shown);
        shown->resize(Eigen::Vector2i(width(), height()));
    } else if (const auto node = sceneManager->getNodeByID(nodeID)) {
        node->setMaterial(material, first, second);
    }
}

void QtView::loadMaterial(std::string materialID, std::string nodeID, unsigned int first, unsigned int second)
{
    const auto sceneManager = getSceneManager();
    if (!sceneManager)
        return;
    const auto material = sceneManager->getMaterialWithID(materialID);
    const auto node = sceneManager->getNodeByID(nodeID);
    if (material && node)
        node->setMaterial(material, first, second);
}

void QtView::activateCamera(QString sid)
{
    guarded([&] { triggerEvent("ActiveCamera", sid.toStdString()); });
}

void QtView::pauseAnimations()
{
    guarded([this] {
        if (const auto animations = getAnimationManager())
            animations->pause();
    });
}

void QtView::resumeAnimations()
{
    guarded([this] {
        if (const auto animations = getAnimationManager())
            animations->resume();
    });
}

boost::shared_ptr<scene::AnimationManager> QtView::getAnimationManager()
{
    const auto sceneManager = getSceneManager();
    return sceneManager ? sceneManager->getAnimationManager() : nullptr;
}

// Messages

namespace {

enum Phase { FadeIn, Hold, FadeOut };

} // namespace

void QtView::updateMessageDisplay()
{
    const std::lock_guard<std::mutex> lock(messageLock);
    for (const auto& [text, position] : incomingMessages)
        shownMessages.push_back({text.toStdString(), freePosition(position), 0.0F, FadeIn});
    incomingMessages.clear();

    for (ShownMessage& message : shownMessages)
        age(message);
    const auto isOver = [](const ShownMessage& message) { return message.text.empty(); };
    shownMessages.erase(std::remove_if(shownMessages.begin(), shownMessages.end(), isOver),
                        shownMessages.end());
}

/// One step of 50 ms: a quarter of a second to full opacity, three seconds of it, a quarter to none. Levels
/// above one hold it.
void QtView::age(ShownMessage& message)
{
    const auto step = [&message](double change) { message.level = float(message.level + change); };
    switch (message.phase) {
    case FadeIn:
        step(0.2);
        if (message.level >= 1.0)
            message.phase = Hold;
        break;
    case Hold:
        step(0.1);
        if (message.level >= 5.0)
            message.phase = FadeOut;
        break;
    default:
        step(-0.2);
        if (message.level <= 0.0)
            message.text.clear();
    }
}

bool QtView::isTaken(const QPoint& position) const
{
    return position.y() < 2000 &&
           std::any_of(shownMessages.begin(), shownMessages.end(),
                       [&](const ShownMessage& message) { return message.position == position; });
}

/// Of two messages that were queued at one place, the second moves only now. The search is virtual: it is
/// asked only where it has something to find.
QPoint QtView::freePosition(const QPoint& position)
{
    return isTaken(position) ? validateMessagePosition(position + QPoint(0, 10)) : position;
}

QPoint QtView::validateMessagePosition(QPoint position)
{
    return freePosition(position);
}

} // namespace halvern::qt
