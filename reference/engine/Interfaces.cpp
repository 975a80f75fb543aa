// The destructors and defaults of the classes that declare what a renderer offers.
#include "engine/fx/FXAnnotation.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXMaterial.h"
#include "engine/fx/FXMaterialParameter.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXSceneEffect.h"
#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/logic/CameraInputHandler.h"
#include "engine/logic/IKeyboardListener.h"
#include "engine/logic/IMouseListener.h"
#include "engine/renderer/IRenderer.h"
#include "engine/scenegraph/IRenderScene.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"

namespace halvern::engine {

fx::FXAnnotation::~FXAnnotation() = default;
fx::FXEffect::~FXEffect() = default;
fx::FXMaterial::~FXMaterial() = default;
fx::FXMaterialParameter::~FXMaterialParameter() = default;
fx::FXPipeline::~FXPipeline() = default;
fx::FXSceneEffect::~FXSceneEffect() = default;
light::LightManager::~LightManager() = default;
light::RenderLight::~RenderLight() = default;
logic::CameraInputHandler::~CameraInputHandler() = default;
logic::IKeyboardListener::~IKeyboardListener() = default;
logic::IMouseListener::~IMouseListener() = default;
renderer::IRenderer::~IRenderer() = default;
scenegraph::IRenderScene::~IRenderScene() = default;
scenegraph::RenderSceneGraph::~RenderSceneGraph() = default;
window::ILayout::~ILayout() = default;
window::Viewport::~Viewport() = default;

boost::shared_ptr<light::LightManager> scenegraph::RenderSceneGraph::getLightManager()
{
    return {};
}

boost::shared_ptr<renderer::IRenderer> window::Viewport::getSceneRenderer()
{
    return {};
}

} // namespace halvern::engine
