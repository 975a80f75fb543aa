/// What the scene's locks and notes of changes cost, and what the importer adds to Assimp's own work.
#include "bench/Measure.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "reference/scene/Importer.h"
#include "reference/scene/SceneChanges.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>

#include <boost/make_shared.hpp>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <unordered_map>

namespace {

using namespace halvern::scene;
using halvern::bench::compare;
using halvern::bench::getMilliseconds;
using halvern::bench::report;

constexpr int NodeCount = 100000;

/// Ten groups of ten groups of a thousand nodes.
boost::shared_ptr<SceneManager> makeScene()
{
    const auto root = boost::make_shared<Node>("root", "root");
    for (int i = 0; i < NodeCount / 1000; ++i) {
        const auto group = boost::make_shared<Node>("group " + std::to_string(i), "");
        root->addChildNode(group);
        for (int k = 0; k < 1000; ++k)
            group->addChildNode(boost::make_shared<Node>("node " + std::to_string(i * 1000 + k), ""));
    }
    auto manager = boost::make_shared<SceneManager>(nullptr);
    manager->setRoot(root);
    return manager;
}

/// What a setter cannot do without: a lock, a copy, and a note in a table behind another lock.
class PlainNotes
{
public:
    void set(const Node* node, const Eigen::Vector3f& newValue)
    {
        {
            const std::lock_guard<std::mutex> lock(valueMutex);
            value = newValue;
        }
        const std::lock_guard<std::mutex> lock(notesMutex);
        notes[node] |= 1;
    }

private:
    std::mutex valueMutex;
    std::mutex notesMutex;
    Eigen::Vector3f value = Eigen::Vector3f::Zero();
    std::unordered_map<const Node*, unsigned> notes;
};

bool measureQuiet(SceneManager& manager)
{
    const auto reader = readChanges(manager);
    manager.update();
    constexpr int Rounds = 1000;
    const double taking = getMilliseconds([&] {
        for (int i = 0; i < Rounds; ++i)
            reader->take();
    });
    const double updating = getMilliseconds([&] {
        for (int i = 0; i < Rounds; ++i)
            manager.update();
    });
    bool holds = report("a look at 100,000 unchanged nodes", taking / Rounds * 1000, 1, " us");
    holds &= report("a cycle over 100,000 unchanged nodes", updating / Rounds * 1000, 20, " us");
    return holds;
}

bool measureSetter(SceneManager& manager)
{
    const auto node = manager.getNodeByID("node 5");
    const Eigen::Vector3f value(1, 2, 3);
    PlainNotes plain;
    constexpr int Rounds = 200000;
    return compare(
        "a setter of a node, against a lock and a noted change", 2, 9,
        [&] {
            for (int i = 0; i < Rounds; ++i)
                node->setScale(value);
            manager.update();
        },
        [&] {
            for (int i = 0; i < Rounds; ++i)
                plain.set(node.get(), value);
        });
}

bool measureLookUp(SceneManager& manager)
{
    const auto nodes = manager.getNodeArray();
    std::unordered_map<std::string, boost::shared_ptr<Node>> table;
    for (const auto& node : nodes)
        table.emplace(node->getID(), node);
    size_t found = 0;
    const bool holds = compare(
        "a look-up by ID while the scene grows, against a plain table", 2, 9,
        [&] {
            for (int i = 0; i < NodeCount; i += 10) {
                if (i % 1000 == 0)
                    manager.getRoot()->addChildNode(boost::make_shared<Node>("new", ""));
                found += manager.getNodeByID("node " + std::to_string(i)) ? 1 : 0;
            }
        },
        [&] {
            for (int i = 0; i < NodeCount; i += 10)
                found += table.count("node " + std::to_string(i));
        });
    return holds && found > 0;
}

/// Against Assimp with the same steps, so that only the making of a scene is counted.
bool measureImport(const std::string& file)
{
    if (!std::filesystem::exists(file)) {
        std::printf("    %s is not installed\n", file.c_str());
        return true;
    }
    const std::string question =
        "import of " + std::filesystem::path(file).filename().string() + ", against Assimp alone";
    return compare(
        question.c_str(), 1.7, 7, [&] { importScene(file, {}); },
        [&] {
            Assimp::Importer importer;
            importer.ReadFile(file, aiProcess_Triangulate | aiProcess_SortByPType |
                                        aiProcess_GenSmoothNormals | aiProcess_RemoveRedundantMaterials);
        });
}

} // namespace

int main()
{
    const auto manager = makeScene();
    bool holds = measureQuiet(*manager);
    holds &= measureSetter(*manager);
    holds &= measureLookUp(*manager);
    const std::string models = "/usr/share/assimp/models/";
    holds &= measureImport(models + "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb");
    holds &= measureImport(models + "OBJ/spider.obj");
    holds &= measureImport(models + "IFC/AC14-FZK-Haus.ifc");
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}
