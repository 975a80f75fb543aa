#include "OwnEngine.h"

#include "engine/fx/FXAnnotation.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/IRenderScene.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>

#include <algorithm>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

using namespace halvern;

namespace own {

namespace {

/// The annotations of each parameter tell the editor how to edit it.
const std::map<std::string, std::map<std::string, std::string>>& annotations()
{
    static const std::map<std::string, std::map<std::string, std::string>> table = {
        {"color", {{"UIWidget", "Color"}, {"UIName", "Paint"}}},
        {"glow", {{"UIWidget", "Slider"}, {"UIName", "Glow"}}},
    };
    return table;
}

class Annotation : public engine::fx::FXAnnotation
{
public:
    explicit Annotation(std::string value) : value(std::move(value)) {}
    boost::any getFirstValue() override { return value; }

private:
    const std::string value;
};

void drawBox(const Paint& paint)
{
    const Color color = paint.getColor();
    const Color glow = color * paint.getGlow();
    glColor3fv(color.data());
    glMaterialfv(GL_FRONT, GL_EMISSION, glow.data());
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

/// How far along the way the ray meets the cube from -1 to 1, as a part of the way; infinite if it does not.
float distanceToCube(const Eigen::Array3f& start, const Eigen::Array3f& way)
{
    const Eigen::Array3f lower = (-1 - start) / way;
    const Eigen::Array3f upper = (1 - start) / way;
    const float in = lower.min(upper).maxCoeff();
    const float out = lower.max(upper).minCoeff();
    return 0 < in && in <= out ? in : std::numeric_limits<float>::infinity();
}

/// Calls visit(box, place) for each box that shows at or below the node.
template <class Visit>
void forEachBox(scene::Node& node, const Eigen::Affine3f& placeOfParent, const Visit& visit)
{
    if (!node.isVisible() || node.inLayer("hidden"))
        return;
    const Eigen::Affine3f place = placeOfParent * node.getTranslation() *
                                  Eigen::Affine3f(node.getRotation()) *
                                  Eigen::Scaling(Eigen::Vector3f(node.getScale()));
    if (auto* box = dynamic_cast<Box*>(&node))
        visit(*box, place);
    for (unsigned int i = 0; const auto child = node.getChildNode(i); ++i)
        forEachBox(*child, place, visit);
}

} // namespace

Paint::Paint(std::string name, Color color) :
    Material(std::move(name), "plain"), values{{"color", {color.x(), color.y(), color.z()}}, {"glow", {0}}}
{}

Color Paint::getColor() const
{
    return Color(getValues("color").data());
}

float Paint::getGlow() const
{
    return getValues("glow").front();
}

std::vector<float> Paint::getValues(const std::string& parameter) const
{
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = values.find(parameter);
    return found == values.end() ? std::vector<float>() : found->second;
}

bool Paint::setValues(const std::string& parameter, const std::vector<float>& newValues)
{
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = values.find(parameter);
    if (found == values.end() || newValues.size() < found->second.size())
        return false;
    std::copy_n(newValues.begin(), found->second.size(), found->second.begin());
    return true;
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
    {
        const std::lock_guard<std::mutex> guard(lock);
        place = translation.vector();
    }
    Node::setTranslation(translation); // which tells the property editor
}

boost::shared_ptr<Paint> Box::getPaint()
{
    return boost::dynamic_pointer_cast<Paint>(getMaterial(0, 0));
}

PaintParameter::PaintParameter(boost::shared_ptr<Paint> paint, std::string name) :
    paint(std::move(paint)), name(std::move(name))
{}

std::string PaintParameter::getParameterName()
{
    return name;
}

std::string PaintParameter::getParameterType()
{
    return name == "color" ? "float3" : "float";
}

std::vector<boost::any> PaintParameter::getParameterValues()
{
    const std::vector<float> values = paint->getValues(name);
    return std::vector<boost::any>(values.begin(), values.end());
}

bool PaintParameter::setParameterValue(std::vector<boost::any> values)
{
    std::vector<float> numbers;
    for (const boost::any& value : values) {
        const auto* number = boost::any_cast<float>(&value);
        if (!number)
            return false;
        numbers.push_back(*number);
    }
    return paint->setValues(name, numbers);
}

bool PaintParameter::setParameterValue(std::string /*value*/)
{
    return false; // texts are for textures
}

boost::shared_ptr<engine::fx::FXAnnotation> PaintParameter::getAnnotationByName(std::string key)
{
    const auto& mine = annotations().at(name);
    const auto found = mine.find(key);
    return found == mine.end() ? nullptr : boost::make_shared<Annotation>(found->second);
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
    paint(paint),
    effect(std::move(effect)),
    parameters{boost::make_shared<PaintParameter>(paint, "color"),
               boost::make_shared<PaintParameter>(paint, "glow")}
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
    return int(parameters.size());
}

boost::shared_ptr<engine::fx::FXMaterialParameter> PaintLook::getParameterAt(unsigned int index)
{
    return index < parameters.size() ? parameters[index] : nullptr;
}

boost::shared_ptr<engine::fx::FXMaterialParameter> PaintLook::getParameterByName(std::string name)
{
    for (const auto& parameter : parameters) {
        if (parameter->getParameterName() == name)
            return parameter;
    }
    return {};
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
    held = held || button == Qt::LeftButton;
    pressed = {x, y};
    lastX = x;
}

void Turntable::mouseReleased(int button, int x, int y, int modifiers)
{
    LogicManager::mouseReleased(button, x, y, modifiers);
    if (button != Qt::LeftButton)
        return;
    held = false;
    const Eigen::Vector2i released(x, y);
    if ((released - pressed).lpNorm<1>() < 4)
        click = released;
}

void Turntable::mouseMoved(int x, int y, int modifiers)
{
    LogicManager::mouseMoved(x, y, modifiers);
    if (held)
        degrees += 0.5f * float(x - lastX);
    lastX = x;
}

float Turntable::getDegrees() const
{
    return degrees;
}

std::optional<Eigen::Vector2i> Turntable::takeClick()
{
    return std::exchange(click, std::nullopt);
}

/// What other threads want of the engine: events and picks. Event handlers run on the event manager's thread,
/// so they touch nothing but what may be used from any thread; picks wait for the next update.
class Picture::Events : public HCE::EventBase, public engine::window::ILayout
{
public:
    struct Pick
    {
        int x;
        int y;
        std::string tag;
    };

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

    boost::shared_ptr<engine::window::Viewport> getViewport() override { return {}; }

    void requestPick(int x, int y, std::string tag) override
    {
        {
            const std::lock_guard<std::mutex> guard(lock);
            picks.push_back({x, y, std::move(tag)});
        }
        triggerEvent("SyncScene", "");
    }

    std::vector<Pick> takePicks()
    {
        const std::lock_guard<std::mutex> guard(lock);
        return std::exchange(picks, {});
    }

private:
    void changeParameter(const HCE::EventData& data)
    {
        const auto scene = getSceneManager();
        const auto material = scene ? scene->getMaterialWithID(data.getArg(1)) : nullptr;
        const auto paint = boost::dynamic_pointer_cast<Paint>(material);
        const std::string parameter = data.getArg(2);
        if (!paint || !paint->setValues(parameter, numbersFrom(data, 3)))
            return;
        triggerEvent("MaterialParameterUpdated", data.getArg(1) + ", " + parameter);
        triggerEvent("SyncScene", "");
    }

    static std::vector<float> numbersFrom(const HCE::EventData& data, unsigned int first)
    {
        std::vector<float> numbers;
        for (unsigned int i = first; i <= data.getArgCount(); ++i) {
            std::istringstream text(data.getArg(int(i)));
            text.imbue(std::locale::classic());
            float number = 0;
            if (!(text >> number))
                break;
            numbers.push_back(number);
        }
        return numbers;
    }

    boost::shared_ptr<scene::SceneManager> getSceneManager()
    {
        const std::lock_guard<std::mutex> guard(lock);
        return sceneManager.lock();
    }

    std::mutex lock;
    boost::weak_ptr<scene::SceneManager> sceneManager;
    std::vector<Pick> picks;
};

Picture::Picture(boost::shared_ptr<HCE::EventManager> eventManager) :
    Window(nullptr, "picture"), events(boost::make_shared<Events>(std::move(eventManager)))
{}

// The framebuffer object knows its context: it is freed there, or with it.
Picture::~Picture() = default;

void Picture::init() {}

void Picture::update()
{
    if (const auto click = turntable->takeClick())
        events->triggerEvent("ObjectSelected", findNode(click->x(), click->y()) + ", Window");
    for (const auto& [x, y, tag] : events->takePicks()) {
        const std::string id = findNode(x, y);
        const std::string what = id.empty() ? ", , " : id + ", 0, 0"; // the first and only material
        events->triggerEvent("ObjectPicked",
                             what + ", " + std::to_string(x) + ", " + std::to_string(y) + ", " + tag);
    }
}

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
    const auto half = halfExtent().cast<double>().eval();
    glFrustum(-half.x(), half.x(), -half.y(), half.y(), 1, 100);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    const float fromTheEye[] = {0.3f, 0.6f, 1, 0};
    glLightfv(GL_LIGHT0, GL_POSITION, fromTheEye);
    forEachBox(*root, placeOfScene(), [](Box& box, const Eigen::Affine3f& place) {
        glLoadMatrixf(place.data());
        if (const auto paint = box.getPaint())
            drawBox(*paint);
    });
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
}

/// As the eye sees it.
Eigen::Affine3f Picture::placeOfScene() const
{
    constexpr float Degree = float(EIGEN_PI) / 180;
    return Eigen::Translation3f(0, -1, -16) * Eigen::AngleAxisf(20 * Degree, Eigen::Vector3f::UnitX()) *
           Eigen::AngleAxisf(turntable->getDegrees() * Degree, Eigen::Vector3f::UnitY());
}

/// Half of the width and of the height that is seen at a distance of one.
Eigen::Array2f Picture::halfExtent() const
{
    return {0.4f * float(size.x()) / float(size.y()), 0.4f};
}

/// The ID of the nearest box at the point, or an empty text.
std::string Picture::findNode(int x, int y) const
{
    const Eigen::Array2f point = (2 * Eigen::Array2f(x, y) / size.cast<float>().array() - 1) * halfExtent();
    const Eigen::Vector3f way(point.x(), point.y(), -1);
    float nearest = std::numeric_limits<float>::infinity();
    std::string id;
    const auto root = sceneManager ? sceneManager->getRoot() : nullptr;
    if (!root)
        return id;
    forEachBox(*root, placeOfScene(), [&](Box& box, const Eigen::Affine3f& place) {
        const Eigen::Affine3f toBox = place.inverse();
        const float distance = distanceToCube(toBox.translation(), toBox.linear() * way);
        if (distance < nearest) {
            nearest = distance;
            id = box.getID();
        }
    });
    return id;
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

boost::shared_ptr<engine::window::ILayout> Picture::getLayout()
{
    return events;
}

// Empty pointers stand for what this engine does not have: effects of the whole picture, shadows.
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
