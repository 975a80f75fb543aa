#include "OwnEngine.h"

#include "engine/fx/FXAnnotation.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/IRenderScene.h"
#include "engine/window/ILayout.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>

#include <locale>
#include <sstream>

using namespace halvern;

namespace own {

namespace {

constexpr char ColorName[] = "color";

/// The keys of the widgets' texts: annotations tell the editor how to edit a parameter.
class Annotation : public engine::fx::FXAnnotation
{
public:
    explicit Annotation(std::string value) : value(std::move(value)) {}
    boost::any getFirstValue() override { return value; }

private:
    const std::string value;
};

void drawBox()
{
    static const float axes[6][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    glBegin(GL_QUADS);
    for (const auto& axis : axes) {
        const Eigen::Vector3f normal(axis);
        const Eigen::Vector3f u(normal.z(), normal.x(), normal.y());
        const Eigen::Vector3f v = normal.cross(u);
        glNormal3fv(normal.data());
        for (const auto& [x, y] : {std::pair(-1.0f, -1.0f), {1.0f, -1.0f}, {1.0f, 1.0f}, {-1.0f, 1.0f}})
            glVertex3fv(Eigen::Vector3f(normal + x * u + y * v).eval().data());
    }
    glEnd();
}

void drawNode(scene::Node& node)
{
    if (!node.isVisible() || node.inLayer("hidden"))
        return;
    glPushMatrix();
    const Eigen::Affine3f place = node.getTranslation() * Eigen::Affine3f(node.getRotation()) *
                                  Eigen::Scaling(Eigen::Vector3f(node.getScale()));
    glMultMatrixf(place.data());
    auto* box = dynamic_cast<Box*>(&node);
    if (const auto paint = box ? box->getPaint() : nullptr) {
        glColor3fv(paint->getColor().data());
        drawBox();
    }
    for (unsigned int i = 0; i < node.getChildCount(); ++i)
        drawNode(*node.getChildNode(i));
    glPopMatrix();
}

} // namespace

Paint::Paint(std::string name, Color color) : Material(std::move(name), "plain"), color(color) {}

Color Paint::getColor() const
{
    const std::lock_guard<std::mutex> guard(lock);
    return color;
}

void Paint::setColor(Color newColor)
{
    const std::lock_guard<std::mutex> guard(lock);
    color = newColor;
}

Box::Box(std::string name, boost::shared_ptr<Paint> paint, Eigen::Vector3f place) :
    Node(name, name), place(std::move(place))
{
    setMaterial(paint, 0, 0);
}

Eigen::Translation3f Box::getTranslation() const
{
    const std::lock_guard<std::mutex> guard(lock);
    return Eigen::Translation3f(place);
}

void Box::setTranslation(Eigen::Translation3f translation)
{
    const std::lock_guard<std::mutex> guard(lock);
    place = translation.vector();
}

boost::shared_ptr<Paint> Box::getPaint()
{
    return boost::dynamic_pointer_cast<Paint>(getMaterial(0, 0));
}

PaintParameter::PaintParameter(boost::shared_ptr<Paint> paint) : paint(std::move(paint)) {}

std::string PaintParameter::getParameterName()
{
    return ColorName;
}

std::string PaintParameter::getParameterType()
{
    return "float3";
}

std::vector<boost::any> PaintParameter::getParameterValues()
{
    const Color color = paint->getColor();
    return {color.x(), color.y(), color.z()};
}

bool PaintParameter::setParameterValue(std::vector<boost::any> values)
{
    Color color;
    for (int i = 0; i < 3; ++i) {
        const auto* value = size_t(i) < values.size() ? boost::any_cast<float>(&values[i]) : nullptr;
        if (!value)
            return false;
        color[i] = *value;
    }
    paint->setColor(color);
    return true;
}

bool PaintParameter::setParameterValue(std::string /*value*/)
{
    return false; // texts are for textures
}

boost::shared_ptr<engine::fx::FXAnnotation> PaintParameter::getAnnotationByName(std::string name)
{
    if (name == "UIWidget")
        return boost::make_shared<Annotation>("Color");
    if (name == "UIName")
        return boost::make_shared<Annotation>("Paint");
    return {};
}

const std::string& PlainEffect::getID()
{
    static const std::string id = "plain";
    return id;
}

const std::string& PlainEffect::getScriptClass()
{
    static const std::string scriptClass = "object";
    return scriptClass;
}

const std::string& PlainEffect::getEffectCode()
{
    static const std::string code = "One colour, lit by one light.";
    return code;
}

unsigned int PlainEffect::getTechniqueCount()
{
    return 1;
}

std::string PlainEffect::getTechniqueNameAt(unsigned int index)
{
    return index == 0 ? "Plain" : "";
}

PaintLook::PaintLook(boost::shared_ptr<Paint> paint, boost::shared_ptr<PlainEffect> effect) :
    paint(paint), effect(std::move(effect)), parameter(boost::make_shared<PaintParameter>(paint))
{}

std::string PaintLook::getID()
{
    return paint->getMaterialID();
}

boost::shared_ptr<engine::fx::FXEffect> PaintLook::getFXEffect()
{
    return effect;
}

int PaintLook::getParameterCount()
{
    return 1;
}

boost::shared_ptr<engine::fx::FXMaterialParameter> PaintLook::getParameterAt(unsigned int index)
{
    return index == 0 ? parameter : nullptr;
}

boost::shared_ptr<engine::fx::FXMaterialParameter> PaintLook::getParameterByName(std::string name)
{
    return name == ColorName ? parameter : nullptr;
}

unsigned int PaintLook::getTechnique()
{
    return 0;
}

void PaintLook::setTechnique(unsigned int /*index*/) {}

Looks::Looks() : FXManager(nullptr, nullptr) {}

void Looks::setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    looks.clear();
    sceneManager = newSceneManager;
}

boost::shared_ptr<engine::fx::FXEffect> Looks::getFXEffect(std::string id)
{
    return id == effect->getID() ? effect : nullptr;
}

boost::shared_ptr<engine::fx::FXMaterial> Looks::getFXMaterial(std::string id)
{
    const auto material = sceneManager ? sceneManager->getMaterialWithID(id) : nullptr;
    const auto paint = boost::dynamic_pointer_cast<Paint>(material);
    if (!paint)
        return {};
    auto& look = looks[id];
    if (!look)
        look = boost::make_shared<PaintLook>(paint, effect);
    return look;
}

bool Looks::reloadEffect(boost::shared_ptr<engine::fx::FXEffect> /*effect*/)
{
    return false; // it has no file
}

void Turntable::mousePressed(int button, int x, int y, int modifiers)
{
    LogicManager::mousePressed(button, x, y, modifiers);
    held = true;
    lastX = x;
}

void Turntable::mouseReleased(int button, int x, int y, int modifiers)
{
    LogicManager::mouseReleased(button, x, y, modifiers);
    held = false;
}

void Turntable::mouseMoved(int x, int y, int modifiers)
{
    LogicManager::mouseMoved(x, y, modifiers);
    if (held)
        degrees += 0.5f * float(x - lastX);
    lastX = x;
}

/// The engine's side of the event system. Its handlers run on the event manager's thread, so they touch
/// nothing but what may be used from any thread.
class Picture::Events : public HCE::EventBase
{
public:
    explicit Events(boost::shared_ptr<HCE::EventManager> eventManager) : EventBase(std::move(eventManager))
    {
        registerHandler(std::string("SelectObject"), [this](const HCE::Event& event) {
            triggerEvent("ObjectSelected", event.getEventData().getArg(0));
        });
        registerHandler(std::string("ChangeMaterialParameter"),
                        [this](const HCE::Event& event) { changeParameter(event.getEventData()); });
    }
    ~Events() override { EventBase::setEventManager(nullptr); }

    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
    {
        const std::lock_guard<std::mutex> guard(lock);
        sceneManager = newSceneManager;
    }

private:
    void changeParameter(const HCE::EventData& data)
    {
        const auto scene = getSceneManager();
        const auto material = scene ? scene->getMaterialWithID(data.getArg(1)) : nullptr;
        const auto paint = boost::dynamic_pointer_cast<Paint>(material);
        if (!paint || data.getArg(2) != ColorName)
            return;
        Color color;
        for (int i = 0; i < 3; ++i) {
            std::istringstream text(data.getArg(3 + i));
            text.imbue(std::locale::classic());
            if (!(text >> color[i]))
                return;
        }
        paint->setColor(color);
        triggerEvent("MaterialParameterUpdated", data.getArg(1) + ", " + ColorName);
        triggerEvent("SyncScene", "");
    }

    boost::shared_ptr<scene::SceneManager> getSceneManager()
    {
        const std::lock_guard<std::mutex> guard(lock);
        return sceneManager.lock();
    }

    std::mutex lock;
    boost::weak_ptr<scene::SceneManager> sceneManager;
};

Picture::Picture(boost::shared_ptr<HCE::EventManager> eventManager) :
    Window(nullptr, "picture"), events(std::make_unique<Events>(std::move(eventManager)))
{}

// The framebuffer object knows its context: it is freed there, or with it.
Picture::~Picture() = default;

void Picture::init() {}

void Picture::update() {}

void Picture::render()
{
    const QSize wanted(size.x(), size.y());
    GLint framebuffer = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
    if (!target || target->size() != wanted)
        target = std::make_unique<QOpenGLFramebufferObject>(wanted,
                                                            QOpenGLFramebufferObject::CombinedDepthStencil);

    glPushAttrib(GL_ALL_ATTRIB_BITS);
    target->bind();
    drawScene();
    glPopAttrib();
    QOpenGLContext::currentContext()->functions()->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(framebuffer));
}

void Picture::drawScene()
{
    glViewport(0, 0, size.x(), size.y());
    glClearColor(0.93f, 0.91f, 0.86f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const auto root = sceneManager ? sceneManager->getRoot() : nullptr;
    if (!root)
        return;
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);

    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    const double height = 0.4;
    const double width = height * size.x() / size.y();
    glFrustum(-width, width, -height, height, 1, 100);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    const float fromTheEye[] = {0.3f, 0.6f, 1, 0};
    glLightfv(GL_LIGHT0, GL_POSITION, fromTheEye);
    glTranslatef(0, -1, -16);
    glRotatef(20, 1, 0, 0);
    glRotatef(turntable->degrees, 0, 1, 0);
    drawNode(*root);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
}

void Picture::resize(Eigen::Vector2i newSize)
{
    size = newSize.cwiseMax(1);
}

void Picture::attach(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    sceneManager = newSceneManager;
    looks->setSceneManager(newSceneManager);
    events->setSceneManager(newSceneManager);
    events->triggerEvent("SceneAttached", "");
}

void Picture::setEventManager(boost::shared_ptr<HCE::EventManager> eventManager)
{
    events->setEventManager(eventManager);
}

// Empty pointers stand for what this engine does not have: picking, effects of the whole picture, shadows.
boost::shared_ptr<engine::window::ILayout> Picture::getLayout()
{
    return {};
}

boost::shared_ptr<engine::fx::FXPipeline> Picture::getFXPipeline()
{
    return {};
}

boost::shared_ptr<engine::scenegraph::IRenderScene> Picture::getRenderScene()
{
    return {};
}

boost::shared_ptr<engine::logic::LogicManager> Picture::getLogicManager()
{
    return turntable;
}

boost::shared_ptr<scene::SceneManager> Picture::getSceneManager()
{
    return sceneManager;
}

boost::shared_ptr<engine::fx::FXManager> Picture::getFXManager()
{
    return looks;
}

boost::shared_ptr<engine::fx::FXRenderTarget> Picture::getColorRenderTarget()
{
    return boost::make_shared<engine::fx::FXRenderTarget>(target ? target->texture() : 0);
}

std::string Picture::getName() const
{
    return "picture";
}

Eigen::Vector2i Picture::getSize() const
{
    return size;
}

} // namespace own
