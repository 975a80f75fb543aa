#pragma once

#include "engine/core/event/EventBase.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXMaterial.h"
#include "engine/fx/FXMaterialParameter.h"
#include "engine/logic/LogicManager.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/window/Window.h"

#include <boost/any.hpp>
#include <boost/make_shared.hpp>

#include <Eigen/Geometry>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class QOpenGLFramebufferObject;

/// A whole engine of the host's own, as small as one can be: boxes in plain colours, drawn with plain OpenGL,
/// that can be picked, moved and painted. The widgets know it only by the contract.
namespace own {

using Color = Eigen::Vector3f;

/// A material that is one colour, and glows in it. Any thread.
class Paint : public halvern::scene::Material
{
public:
    Paint(std::string name, Color color);

    Color getColor() const;
    float getGlow() const;

    /// By the name of the parameter: three numbers from 0 to 1 for "color", one for "glow", none for others.
    std::vector<float> getValues(const std::string& parameter) const;

    /// What is too much is left out, such as the opacity of a colour. False, and nothing changes, for another
    /// parameter or too few numbers.
    bool setValues(const std::string& parameter, const std::vector<float>& newValues);

private:
    mutable std::mutex lock;
    std::map<std::string, std::vector<float>> values;
};

/// A node that is a box, two units wide before it is scaled. Keeps its own place; any thread.
class Box : public halvern::scene::Node
{
public:
    Box(std::string name, boost::shared_ptr<Paint> paint, Eigen::Vector3f place);

    Eigen::Translation3f getTranslation() const override;
    void setTranslation(Eigen::Translation3f translation) override;

    /// What it is drawn with, which is a Paint or empty.
    boost::shared_ptr<Paint> getPaint();

private:
    mutable std::mutex lock;
    Eigen::Vector3f place;
};

/// One parameter of a Paint, as the material editor sees it.
class PaintParameter : public halvern::engine::fx::FXMaterialParameter
{
public:
    PaintParameter(boost::shared_ptr<Paint> paint, std::string name);

    std::string getParameterName() override;
    std::string getParameterType() override;
    std::vector<boost::any> getParameterValues() override;
    bool setParameterValue(std::vector<boost::any> values) override;
    bool setParameterValue(std::string value) override;
    boost::shared_ptr<halvern::engine::fx::FXAnnotation> getAnnotationByName(std::string name) override;

private:
    const boost::shared_ptr<Paint> paint;
    const std::string name;
};

class PlainEffect : public halvern::engine::fx::FXEffect
{
public:
    const std::string& getID() override;
    const std::string& getScriptClass() override;
    const std::string& getEffectCode() override;
    unsigned int getTechniqueCount() override;
    std::string getTechniqueNameAt(unsigned int index) override;
};

class PaintLook : public halvern::engine::fx::FXMaterial
{
public:
    PaintLook(boost::shared_ptr<Paint> paint, boost::shared_ptr<PlainEffect> effect);

    std::string getID() override;
    boost::shared_ptr<halvern::engine::fx::FXEffect> getFXEffect() override;
    int getParameterCount() override;
    boost::shared_ptr<halvern::engine::fx::FXMaterialParameter> getParameterAt(unsigned int index) override;
    boost::shared_ptr<halvern::engine::fx::FXMaterialParameter> getParameterByName(std::string name) override;
    unsigned int getTechnique() override;
    void setTechnique(unsigned int index) override;

private:
    const boost::shared_ptr<Paint> paint;
    const boost::shared_ptr<PlainEffect> effect;
    const std::vector<boost::shared_ptr<PaintParameter>> parameters;
};

/// Gives the editor a look for each paint of the scene, always the same.
class Looks : public halvern::engine::fx::FXManager
{
public:
    Looks();

    void setSceneManager(boost::shared_ptr<halvern::scene::SceneManager> newSceneManager);

    boost::shared_ptr<halvern::engine::fx::FXEffect> getFXEffect(std::string id) override;
    boost::shared_ptr<halvern::engine::fx::FXMaterial> getFXMaterial(std::string id) override;
    bool reloadEffect(boost::shared_ptr<halvern::engine::fx::FXEffect> effect) override;

private:
    boost::shared_ptr<halvern::scene::SceneManager> sceneManager;
    const boost::shared_ptr<PlainEffect> effect = boost::make_shared<PlainEffect>();
    std::map<std::string, boost::shared_ptr<PaintLook>> looks;
};

/// Turns the picture while the left button is held, and knows a click from that.
class Turntable : public halvern::engine::logic::LogicManager
{
public:
    void mousePressed(int button, int x, int y, int modifiers) override;
    void mouseReleased(int button, int x, int y, int modifiers) override;
    void mouseMoved(int x, int y, int modifiers) override;

    float getDegrees() const;

    /// Where the last click was; only the first call after it has it.
    std::optional<Eigen::Vector2i> takeClick();

private:
    float degrees = 30;
    bool held = false;
    Eigen::Vector2i pressed = Eigen::Vector2i::Zero();
    int lastX = 0;
    std::optional<Eigen::Vector2i> click;
};

/// Draws the boxes of a scene, and answers what the widgets say with events.
class Picture : public halvern::engine::window::Window
{
public:
    explicit Picture(boost::shared_ptr<HCE::EventManager> eventManager);
    ~Picture() override;

    void init() override;
    void update() override;
    void render() override;
    void resize(Eigen::Vector2i newSize) override;
    void attach(boost::shared_ptr<halvern::scene::SceneManager> newSceneManager) override;
    void setEventManager(boost::shared_ptr<HCE::EventManager> eventManager) override;
    boost::shared_ptr<halvern::engine::window::ILayout> getLayout() override;
    boost::shared_ptr<halvern::engine::logic::LogicManager> getLogicManager() override;
    boost::shared_ptr<halvern::scene::SceneManager> getSceneManager() override;
    boost::shared_ptr<halvern::engine::fx::FXManager> getFXManager() override;
    boost::shared_ptr<halvern::engine::fx::FXPipeline> getFXPipeline() override;
    boost::shared_ptr<halvern::engine::scenegraph::IRenderScene> getRenderScene() override;
    boost::shared_ptr<halvern::engine::fx::FXRenderTarget> getColorRenderTarget() override;
    std::string getName() const override;
    Eigen::Vector2i getSize() const override;

private:
    class Events;

    void drawScene();
    Eigen::Affine3f placeOfScene() const;
    Eigen::Array2f halfExtent() const;
    std::string findNode(int x, int y) const;

    const boost::shared_ptr<Events> events;
    const boost::shared_ptr<Turntable> turntable = boost::make_shared<Turntable>();
    const boost::shared_ptr<Looks> looks = boost::make_shared<Looks>();
    boost::shared_ptr<halvern::scene::SceneManager> sceneManager;
    std::unique_ptr<QOpenGLFramebufferObject> target;
    Eigen::Vector2i size = Eigen::Vector2i::Ones();
};

} // namespace own
