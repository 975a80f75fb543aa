#include "StudioHelpers.h"

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"

#include <QTest>

#include <boost/make_shared.hpp>

namespace studiotest {

using namespace halvern;

bool waitFor(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

void processEventsFor(int milliseconds)
{
    QTest::qWait(milliseconds);
}

scene::ImportedScene oneNodeScene()
{
    scene::ImportedScene result;
    result.sceneManager = boost::make_shared<scene::SceneManager>(nullptr);
    result.sceneManager->setRoot(boost::make_shared<scene::Node>("root", "root"));
    result.counts.nodes = 1;
    return result;
}

scene::ImportedScene GatedImport::operator()(const std::string& file, const scene::ImportOptions& options)
{
    ++calls;
    while (opened.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready)
        if (!options.progress(0.5f))
            throw scene::ImportCancelled(file);
    if (!error.empty())
        throw scene::ImportError(file + ": " + error);
    return oneNodeScene();
}

} // namespace studiotest
