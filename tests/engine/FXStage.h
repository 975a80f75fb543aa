#pragma once

#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXMaterial.h"
#include "engine/fx/FXMaterialParameter.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXSceneEffect.h"
#include "tests/engine/Stage.h"

#include <boost/shared_ptr.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace halvern::test {

/// An effect file in a folder of its own that goes with it.
class EffectFile
{
public:
    explicit EffectFile(const std::string& text, const std::string& name = "test.fx");
    ~EffectFile();
    EffectFile(const EffectFile&) = delete;
    EffectFile& operator=(const EffectFile&) = delete;

    void write(const std::string& text);
    std::string path() const { return (folder / name).string(); }

    const std::filesystem::path folder;

private:
    const std::string name;
};

/// A stage that effects are loaded on as a view does it.
struct FXStage : Stage
{
    explicit FXStage(Eigen::Vector2i size = {100, 100});

    boost::shared_ptr<engine::fx::FXManager> manager() { return window->getFXManager(); }

    /// A new material of the effect in a file; the effect is added when it is not known yet.
    MaterialPtr makeMaterial(const std::string& file);

    /// The material as the window draws it.
    boost::shared_ptr<engine::fx::FXMaterial> fxMaterial(const MaterialPtr& material);

    /// Puts a scene effect at the end of the pipeline.
    MaterialPtr addSceneEffect(const std::string& file);

    void setFloats(const MaterialPtr& material, const std::string& parameter, std::vector<float> numbers);

    /// The texts that views were asked to show.
    std::vector<std::string> messages() const;

    bool lastAdded = false; ///< what the manager said of the last effect
};

/// An effect of objects whose fragments have a colour, an expression in GLSL.
std::string objectEffect(const std::string& color, const std::string& declarations = "");

/// An effect of the scene whose pixels have a colour.
std::string sceneEffect(const std::string& color, const std::string& declarations = "");

/// A ball of radius 1 with normals and texture coordinates.
MeshPtr ballMesh();

} // namespace halvern::test
