#include "reference/engine/fx/EffectFiles.h"
#include "tests/engine/FXStage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace halvern;
using namespace halvern::test;

namespace {

/// The effects that come with the library, by their file names.
std::vector<std::string> effectNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(engine::fx::getEffectFolder()))
        if (entry.path().extension() == ".fx")
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// Two balls and a box on a floor, with shadows, and a lamp.
struct Gallery : FXStage
{
    Gallery() : FXStage({400, 300})
    {
        scene::LightSource sun;
        sun.kind = scene::LightSource::Kind::Directional;
        sun.direction = {-0.5f, -1, -0.6f};
        scene.addLight("sun", sun);
        scene.addCamera("side", {2.6f, 2.2f, 5.2f}, {0, -0.2f, 0});
        scene.events->triggerEvent("ActiveCamera", "side");
        moveTo(*scene.add("floor", groundMesh(6), litMaterial(QColor(190, 185, 178))), 0, -1, 0);
        addThing("middle", ballMesh(), QColor(200, 60, 40), 0, 0, 0);
        addThing("left", boxMesh(0.7f), QColor(60, 130, 90), -2, -0.3f, -0.6f);
        addThing("back", ballMesh(), QColor(70, 90, 190), 1.6f, 0, -2.4f);
        const NodePtr lamp = scene.add("lamp", ballMesh(), unlitMaterial(Qt::white));
        lamp->setScale({0.25f, 0.25f, 0.25f});
        moveTo(*lamp, -0.6f, 1.6f, -0.8f);
        plain = draw();
    }

    void addThing(const std::string& id, MeshPtr mesh, QColor color, float x, float y, float z)
    {
        things.push_back(scene.add(id, mesh, litMaterial(color)));
        things.back()->addToLayer("cast_shadow");
        moveTo(*things.back(), x, y, z);
    }

    void show(const std::string& effect)
    {
        const MaterialPtr material = makeMaterial(effect);
        if (manager()->getFXEffect(material->getEffectID())->getScriptClass() == "scene")
            window->getFXPipeline()->pushBack(manager()->addSceneEffectInstance(material));
        else
            for (const NodePtr& thing : things)
                thing->setMaterial(material, 0, 0);
    }

    std::vector<NodePtr> things;
    QImage plain;
};

/// The share of pixels that differ clearly.
double difference(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += isNear(a.pixelColor(x, y), b.pixelColor(x, y), 4) ? 0 : 1;
    return double(count) / (a.width() * a.height());
}

/// For looking at: into the folder that HALVERN_PICTURES names.
void keep(const QImage& image, const std::string& name)
{
    if (const char* folder = std::getenv("HALVERN_PICTURES"))
        image.save(QString("%1/%2.png").arg(folder, QString::fromStdString(name)));
}

} // namespace

TEST(FXGalleryTest, ThereAreEffectsOfObjectsAndOfTheScene)
{
    EXPECT_GE(effectNames().size(), 8u);
}

TEST(FXGalleryTest, EveryEffectChangesThePictureWithoutAMessage)
{
    for (const std::string& name : effectNames()) {
        Gallery gallery;
        keep(gallery.plain, "plain");
        gallery.show(name);
        EXPECT_TRUE(gallery.lastAdded) << name;
        const QImage image = gallery.draw();
        keep(image, name);
        EXPECT_GT(difference(image, gallery.plain), 0.02) << name;
        EXPECT_TRUE(gallery.messages().empty()) << name << ": " << gallery.messages().front();
    }
}

TEST(FXGalleryTest, TheExampleOfTheDocumentationWorks)
{
    std::ifstream stream("docs/effects.md");
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const size_t begin = text.find("```\n") + 4;
    const EffectFile file(text.substr(begin, text.find("```", begin) - begin));
    Gallery gallery;
    gallery.show(file.path());
    EXPECT_TRUE(gallery.lastAdded);
    const QImage image = gallery.draw();
    keep(image, "example");
    EXPECT_GT(difference(image, gallery.plain), 0.02);
}

TEST(FXGalleryTest, EveryTechniqueDraws)
{
    for (const std::string& name : effectNames()) {
        Gallery gallery;
        gallery.show(name);
        const auto material = gallery.fxMaterial(gallery.scene.manager->getMaterialList().back());
        for (unsigned int i = 0; i < material->getFXEffect()->getTechniqueCount(); ++i) {
            material->setTechnique(i);
            keep(gallery.draw(), name + "-" + material->getFXEffect()->getTechniqueNameAt(i));
            EXPECT_TRUE(gallery.messages().empty()) << name << ": " << gallery.messages().front();
        }
    }
}
