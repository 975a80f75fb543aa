#include "tests/engine/FXStage.h"

#include "engine/scene/Effect.h"

#include <boost/make_shared.hpp>

#include <atomic>
#include <cmath>
#include <fstream>

#include <unistd.h>

namespace halvern::test {

namespace {

std::filesystem::path newFolder()
{
    static std::atomic<int> count{0};
    const auto folder = std::filesystem::temp_directory_path() /
                        ("halvern-effect-" + std::to_string(getpid()) + "-" + std::to_string(++count));
    std::filesystem::create_directories(folder);
    return folder;
}

} // namespace

EffectFile::EffectFile(const std::string& text, const std::string& newName) :
    folder(newFolder()), name(newName)
{
    write(text);
}

EffectFile::~EffectFile()
{
    std::filesystem::remove_all(folder);
}

void EffectFile::write(const std::string& text)
{
    std::ofstream(path(), std::ios::binary) << text;
}

FXStage::FXStage(Eigen::Vector2i size) : Stage(size)
{
    window->init();
}

MaterialPtr FXStage::makeMaterial(const std::string& file)
{
    auto effect = scene.manager->getEffectByFilename(file);
    if (!effect) {
        effect = boost::make_shared<scene::Effect>(scene.manager->generateID(), file, "");
        scene.manager->addEffect(effect);
        lastAdded = manager()->addEffect(effect);
    }
    const auto material = boost::make_shared<scene::Material>(scene.manager->generateID(), effect->getID());
    scene.manager->addMaterial(material);
    manager()->addMaterial(material);
    return material;
}

boost::shared_ptr<engine::fx::FXMaterial> FXStage::fxMaterial(const MaterialPtr& material)
{
    return manager()->getFXMaterial(material->getMaterialID());
}

MaterialPtr FXStage::addSceneEffect(const std::string& file)
{
    const MaterialPtr material = makeMaterial(file);
    window->getFXPipeline()->pushBack(manager()->addSceneEffectInstance(material));
    return material;
}

void FXStage::setFloats(const MaterialPtr& material, const std::string& parameter, std::vector<float> numbers)
{
    fxMaterial(material)->getParameterByName(parameter)->setParameterValue(
        std::vector<boost::any>(numbers.begin(), numbers.end()));
}

std::vector<std::string> FXStage::messages() const
{
    std::vector<std::string> texts;
    for (const auto& event : scene.events->getEvents())
        if (event.getEventType() == core::event::EventType("DisplayMessageAt"))
            texts.push_back(event.getEventData().getArg(1));
    return texts;
}

std::string objectEffect(const std::string& color, const std::string& declarations)
{
    return declarations + "\nfragment { void main() { fragment = " + color + "; } }\ntechnique plain { }\n";
}

std::string sceneEffect(const std::string& color, const std::string& declarations)
{
    return "string ScriptClass = \"scene\";\n" + objectEffect(color, declarations);
}

MeshPtr ballMesh()
{
    const int rings = 48;
    const int columns = 96;
    auto mesh = std::make_shared<scene::Mesh>();
    for (int i = 0; i <= rings; ++i)
        for (int j = 0; j <= columns; ++j) {
            const float latitude = float(M_PI) * i / rings;
            const float longitude = 2 * float(M_PI) * j / columns;
            const Eigen::Vector3f normal(std::sin(latitude) * std::sin(longitude), std::cos(latitude),
                                         std::sin(latitude) * std::cos(longitude));
            mesh->positions.push_back(normal);
            mesh->normals.push_back(normal);
            mesh->texCoords.emplace_back(2.0f * j / columns, float(i) / rings);
            mesh->bounds.extend(normal);
        }
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < columns; ++j) {
            const uint32_t a = i * (columns + 1) + j;
            const uint32_t b = a + columns + 1;
            for (uint32_t index : {a, b, b + 1, a, b + 1, a + 1})
                mesh->indices.push_back(index);
        }
    return mesh;
}

} // namespace halvern::test
