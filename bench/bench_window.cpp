/// What a window's update costs in a scene of 100,000 nodes.
#include "bench/Measure.h"
#include "engine/core/event/EventManager.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "reference/scene/Mesh.h"

#include <boost/make_shared.hpp>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace halvern;
using bench::getMilliseconds;

constexpr int nodeCount = 100000;

std::shared_ptr<const scene::Mesh> makeTriangle()
{
    auto mesh = std::make_shared<scene::Mesh>();
    mesh->positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh->indices = {0, 1, 2};
    mesh->bounds = Eigen::AlignedBox3f(Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(1, 1, 0));
    return mesh;
}

/// A root, groups of a hundred nodes below it, and a triangle on each.
boost::shared_ptr<scene::SceneManager> makeScene()
{
    const auto events = boost::make_shared<core::event::EventManager>(false);
    const auto manager = boost::make_shared<scene::SceneManager>(events);
    const auto triangle = makeTriangle();
    const auto root = boost::make_shared<scene::Node>("root", "root");
    boost::shared_ptr<scene::Node> group;
    for (int i = 1; i < nodeCount; ++i) {
        const auto node = boost::make_shared<scene::Node>(std::to_string(i), "node");
        node->setTranslation(Eigen::Translation3f(i % 100, i / 100 % 100, i / 10000));
        setGeometries(*node, {triangle});
        if (i % 100 == 1)
            root->addChildNode(group = node);
        else
            group->addChildNode(node);
    }
    manager->setRoot(root);
    return manager;
}

double updateTime(engine::window::Window& window, int rounds)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(getMilliseconds([&] { window.update(); }));
    return bench::getMedian(times);
}

} // namespace

int main()
{
    const auto manager = makeScene();
    engine::window::Window window(manager->getEventManager(), "window");
    window.attach(manager);
    std::printf("    %.1f ms for the first update of %d nodes\n", getMilliseconds([&] { window.update(); }),
                nodeCount);
    bool holds = bench::report("update of 100,000 nodes, none changed", updateTime(window, 1000), 0.2, " ms");

    const auto group = manager->getRoot()->getChildNode(500);
    std::vector<double> moves;
    for (int i = 0; i < 200; ++i) {
        group->setTranslation(Eigen::Translation3f(0, i, 0));
        moves.push_back(getMilliseconds([&] { window.update(); }));
    }
    holds &=
        bench::report("update of 100,000 nodes, a group of 100 moved", bench::getMedian(moves), 0.5, " ms");
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}
