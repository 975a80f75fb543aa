#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXSceneEffect.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Evaluator.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/Render.h"
#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"

#include <QOpenGLContext>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using namespace halvern::test;
using halvern::engine::fx::FXEffect;
using halvern::engine::fx::FXManager;
using halvern::engine::fx::FXPipeline;
using halvern::engine::fx::FXSceneEffect;
using halvern::scene::Effect;
using halvern::scene::Evaluator;
using halvern::scene::Material;
using halvern::scene::Node;
using halvern::scene::Render;
using halvern::scene::SceneManager;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string number(unsigned int value)
{
    return ' ' + std::to_string(value);
}

/// Notes the materials it gets.
class LoggedNode : public Node
{
public:
    LoggedNode(CallLog& log, std::string id) : Node(id, id), log(log) {}

    void setMaterial(boost::shared_ptr<Material> material, unsigned int first, unsigned int second) override
    {
        log.add(getID() + " takes " + material->getMaterialID() + number(first) + number(second));
        Node::setMaterial(material, first, second);
    }

private:
    CallLog& log;
};

/// Notes its steps.
class LoggedEvaluator : public Evaluator
{
public:
    explicit LoggedEvaluator(CallLog& log) : Evaluator("mine"), log(log) {}

    void addRender(boost::shared_ptr<Render> render) override
    {
        log.add("render step of " + render->getMaterial()->getMaterialID());
        Evaluator::addRender(render);
    }

private:
    CallLog& log;
};

/// A scene that notes what is looked up in it and added to it; its IDs are "1", "2", ...
class EffectScene : public SceneManager
{
public:
    explicit EffectScene(CallLog& log) : SceneManager(nullptr), log(log) {}

    boost::shared_ptr<Effect> getEffectByFilename(std::string fileName) override
    {
        log.add("effect of " + fileName + "?");
        return SceneManager::getEffectByFilename(fileName);
    }
    std::string generateID() override
    {
        log.add("new ID");
        return std::to_string(++lastID);
    }
    void addEffect(boost::shared_ptr<Effect> effect) override
    {
        log.add("scene effect " + effect->getID() + " of " + effect->getFileName());
        SceneManager::addEffect(effect);
    }
    void addMaterial(boost::shared_ptr<Material> material) override
    {
        log.add("scene material " + material->getMaterialID() + " of " + material->getEffectID());
        SceneManager::addMaterial(material);
    }
    boost::shared_ptr<Node> getNodeByID(std::string id) override
    {
        log.add("node " + id + "?");
        return SceneManager::getNodeByID(id);
    }
    boost::shared_ptr<Evaluator> getEvaluatorAt(unsigned int index) override
    {
        log.add("evaluator" + number(index) + "?");
        return SceneManager::getEvaluatorAt(index);
    }
    void addEvaluator(boost::shared_ptr<Evaluator> evaluator) override
    {
        log.add("evaluator " + evaluator->getName());
        SceneManager::addEvaluator(evaluator);
    }

private:
    CallLog& log;
    int lastID = 0;
};

class FakeEffect : public FXEffect
{
public:
    FakeEffect(std::string id, std::string scriptClass) : id(id), scriptClass(scriptClass) {}

    const std::string& getID() override { return id; }
    const std::string& getScriptClass() override { return scriptClass; }
    const std::string& getEffectCode() override { return id; }
    unsigned int getTechniqueCount() override { return 0; }
    std::string getTechniqueNameAt(unsigned int /*index*/) override { return {}; }

private:
    const std::string id;
    const std::string scriptClass;
};

class FakeStage : public FXSceneEffect
{
public:
    explicit FakeStage(std::string material) : material(material) {}
    const std::string material;
};

/// Takes every effect, but "broken" ones, as one of the script class it is told.
class FakeFXManager : public FXManager
{
public:
    explicit FakeFXManager(CallLog& log) : FXManager(nullptr, nullptr), log(log) {}

    bool addEffect(boost::shared_ptr<Effect> effect) override
    {
        log.add("fx effect " + effect->getID());
        if (effect->getFileName() == "broken.fx")
            return false;
        effects[effect->getID()] = boost::make_shared<FakeEffect>(effect->getID(), scriptClass);
        return true;
    }
    bool addMaterial(boost::shared_ptr<Material> material) override
    {
        log.add("fx material " + material->getMaterialID());
        return true;
    }
    boost::shared_ptr<FXSceneEffect> addSceneEffectInstance(boost::shared_ptr<Material> material) override
    {
        log.add("fx stage of " + material->getMaterialID());
        return boost::make_shared<FakeStage>(material->getMaterialID());
    }
    boost::shared_ptr<FXEffect> getFXEffect(std::string id) override
    {
        log.add("fx effect " + id + "?");
        return effects[id];
    }

    std::string scriptClass;

private:
    CallLog& log;
    std::map<std::string, boost::shared_ptr<FXEffect>> effects;
};

/// Notes its stages.
class FakePipeline : public FXPipeline
{
public:
    explicit FakePipeline(CallLog& log) : log(log) {}

    void pushBack(boost::shared_ptr<FXSceneEffect> effect) override
    {
        log.add("stage " + boost::dynamic_pointer_cast<FakeStage>(effect)->material);
    }

private:
    CallLog& log;
};

/// A window with effects.
class EffectWindow : public FakeWindow
{
public:
    explicit EffectWindow(CallLog& log) :
        FakeWindow(log),
        fxManager(boost::make_shared<FakeFXManager>(log)),
        pipeline(boost::make_shared<FakePipeline>(log))
    {}

    boost::shared_ptr<FXManager> getFXManager() override { return fxManager; }
    boost::shared_ptr<FXPipeline> getFXPipeline() override { return pipeline; }

    boost::shared_ptr<FakeFXManager> fxManager;
    boost::shared_ptr<FXPipeline> pipeline;
};

/// A view of 200 x 100 over a scene with the nodes "ball" and "box", all of which note what is done to them.
class QtViewEffectTest : public testing::Test
{
protected:
    QtViewEffectTest()
    {
        root->addChildNode(ball);
        root->addChildNode(box);
        scene->setRoot(root);
        window->sceneManager = scene;
        view.resize(200, 100);
        view.setWindow(window);
        log.take();
    }

    /// What is done to load the effect.
    std::vector<std::string> load(const std::string& file, const std::string& node = "ball")
    {
        view.internalLoadEffect(file, node, 3, 4);
        return log.take();
    }

    void setScriptClass(const std::string& scriptClass) { window->fxManager->scriptClass = scriptClass; }

    CallLog log;
    const boost::shared_ptr<Node> root = boost::make_shared<Node>("root", "root");
    const boost::shared_ptr<Node> ball = boost::make_shared<LoggedNode>(log, "ball");
    const boost::shared_ptr<Node> box = boost::make_shared<LoggedNode>(log, "box");
    const boost::shared_ptr<EffectScene> scene = boost::make_shared<EffectScene>(log);
    const boost::shared_ptr<EffectWindow> window = boost::make_shared<EffectWindow>(log);
    WindowlessView view;
};

} // namespace

// Effects of an object

TEST_F(QtViewEffectTest, AnObjectEffectGoesToTheNodeWithANewMaterial)
{
    EXPECT_THAT(load("toon.fx"),
                ElementsAre("effect of toon.fx?", "new ID", "scene effect 1 of toon.fx", "fx effect 1",
                            "new ID", "scene material 2 of 1", "fx material 2", "fx effect 1?", "node ball?",
                            "ball takes 2 3 4"));
    EXPECT_EQ(scene->getEffectByFilename("toon.fx")->getID(), "1");
    EXPECT_EQ(scene->getMaterialWithID("2"), ball->getMaterial(3, 4));
}

TEST_F(QtViewEffectTest, AKnownEffectIsReusedWithAnotherNewMaterial)
{
    load("toon.fx");
    EXPECT_THAT(load("toon.fx", "box"),
                ElementsAre("effect of toon.fx?", "new ID", "scene material 3 of 1", "fx material 3",
                            "fx effect 1?", "node box?", "box takes 3 3 4"));
}

TEST_F(QtViewEffectTest, AnotherFileIsAnotherEffect)
{
    load("toon.fx");
    EXPECT_THAT(load("checker.fx"), testing::Contains("scene effect 3 of checker.fx"));
}

TEST_F(QtViewEffectTest, TheNumbersReachTheNodeUnchanged)
{
    view.internalLoadEffect("toon.fx", "ball", 4294967295u, 0);
    EXPECT_EQ(log.take().back(), "ball takes 2 4294967295 0");
}

TEST_F(QtViewEffectTest, ForAnUnknownNodeEffectAndMaterialAreMadeAllTheSame)
{
    EXPECT_THAT(load("toon.fx", "nobody"),
                ElementsAre("effect of toon.fx?", "new ID", "scene effect 1 of toon.fx", "fx effect 1",
                            "new ID", "scene material 2 of 1", "fx material 2", "fx effect 1?",
                            "node nobody?"));
    EXPECT_TRUE(scene->getMaterialWithID("2"));
}

TEST_F(QtViewEffectTest, EveryScriptClassButSceneIsAnObjects)
{
    int file = 0;
    for (const char* scriptClass : {"", "object", "Object", "scenes", "scen", " scene", "scene ", "x"}) {
        setScriptClass(scriptClass);
        EXPECT_THAT(load(std::to_string(++file)), testing::Contains("node ball?")) << scriptClass;
    }
}

TEST_F(QtViewEffectTest, AnEffectThatCannotBeReadCountsAsAnObjects)
{
    setScriptClass("scene");
    EXPECT_THAT(load("broken.fx"),
                ElementsAre("effect of broken.fx?", "new ID", "scene effect 1 of broken.fx", "fx effect 1",
                            "new ID", "scene material 2 of 1", "fx material 2", "fx effect 1?", "node ball?",
                            "ball takes 2 3 4"));
}

// Effects of the scene

TEST_F(QtViewEffectTest, ASceneEffectBecomesARenderStepAndAStageAndTheWindowIsResized)
{
    setScriptClass("scene");
    EXPECT_THAT(load("bloom.fx"),
                ElementsAre("effect of bloom.fx?", "new ID", "scene effect 1 of bloom.fx", "fx effect 1",
                            "new ID", "scene material 2 of 1", "fx material 2", "fx effect 1?",
                            "evaluator 0?", "evaluator Halvern_Evaluator", "fx stage of 2", "stage 2",
                            "resize 200 100"));
}

TEST_F(QtViewEffectTest, TheRenderStepHasNoNodeButTheMaterial)
{
    setScriptClass("scene");
    load("bloom.fx");
    const auto evaluator = scene->getEvaluatorAt(0);
    ASSERT_TRUE(evaluator);
    EXPECT_EQ(evaluator->getName(), "Halvern_Evaluator");
    ASSERT_EQ(evaluator->getRenderCount(), 1u);
    EXPECT_FALSE(evaluator->getRenderAt(0)->getNode());
    EXPECT_EQ(evaluator->getRenderAt(0)->getMaterial(), scene->getMaterialWithID("2"));
}

TEST_F(QtViewEffectTest, AnEvaluatorThatIsThereIsUsedAndOnlyTheFirst)
{
    scene->addEvaluator(boost::make_shared<LoggedEvaluator>(log));
    scene->addEvaluator(boost::make_shared<Evaluator>("other"));
    log.take();
    setScriptClass("scene");
    EXPECT_THAT(load("bloom.fx"),
                ElementsAre("effect of bloom.fx?", "new ID", "scene effect 1 of bloom.fx", "fx effect 1",
                            "new ID", "scene material 2 of 1", "fx material 2", "fx effect 1?",
                            "evaluator 0?", "render step of 2", "fx stage of 2", "stage 2",
                            "resize 200 100"));
}

TEST_F(QtViewEffectTest, ASecondSceneEffectGoesBehindTheFirst)
{
    setScriptClass("scene");
    load("bloom.fx");
    EXPECT_THAT(load("ink.fx"),
                ElementsAre("effect of ink.fx?", "new ID", "scene effect 3 of ink.fx", "fx effect 3",
                            "new ID", "scene material 4 of 3", "fx material 4", "fx effect 3?",
                            "evaluator 0?", "fx stage of 4", "stage 4", "resize 200 100"));
    EXPECT_EQ(scene->getEvaluatorAt(0)->getRenderCount(), 2u);
    EXPECT_FALSE(scene->getEvaluatorAt(1));
}

TEST_F(QtViewEffectTest, TheSameSceneEffectTwiceIsTwoStages)
{
    setScriptClass("scene");
    load("bloom.fx");
    EXPECT_THAT(load("bloom.fx"),
                ElementsAre("effect of bloom.fx?", "new ID", "scene material 3 of 1", "fx material 3",
                            "fx effect 1?", "evaluator 0?", "fx stage of 3", "stage 3", "resize 200 100"));
}

TEST_F(QtViewEffectTest, TheScriptClassIsComparedWithoutCase)
{
    int file = 0;
    for (const char* scriptClass : {"Scene", "SCENE", "sCeNe"}) {
        setScriptClass(scriptClass);
        EXPECT_EQ(load(std::to_string(++file)).back(), "resize 200 100");
    }
}

TEST_F(QtViewEffectTest, ASceneEffectAsksForNoNode)
{
    setScriptClass("scene");
    EXPECT_THAT(load("bloom.fx"), testing::Not(testing::Contains("node ball?")));
    EXPECT_FALSE(ball->getMaterial(3, 4));
}

TEST_F(QtViewEffectTest, TheWindowIsResizedToTheSizeThatTheViewHasNow)
{
    setScriptClass("scene");
    view.resize(321, 123);
    EXPECT_EQ(load("bloom.fx").back(), "resize 321 123");
}

TEST_F(QtViewEffectTest, AWindowWithoutAPipelineTakesTheRestOfASceneEffect)
{
    setScriptClass("scene");
    window->pipeline.reset();
    const auto calls = load("bloom.fx");
    EXPECT_EQ(calls.back(), "resize 200 100");
    EXPECT_EQ(calls[calls.size() - 2], "fx stage of 2");
}

// Nothing to load

TEST_F(QtViewEffectTest, AnEmptyFileNameDoesNothing)
{
    EXPECT_THAT(load(""), IsEmpty());
}

TEST_F(QtViewEffectTest, WithoutAWindowNothingHappens)
{
    WindowlessView bare;
    EXPECT_NO_THROW(bare.internalLoadEffect("toon.fx", "ball", 0, 0));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(QtViewEffectTest, WithoutASceneNothingHappens)
{
    window->sceneManager.reset();
    EXPECT_THAT(load("toon.fx"), IsEmpty());
}

TEST_F(QtViewEffectTest, WithoutAnFXManagerNothingHappens)
{
    window->fxManager.reset();
    EXPECT_THAT(load("toon.fx"), IsEmpty());
}

// In a frame

TEST_F(QtViewEffectTest, AnEffectIsLoadedInTheNextFrameWithTheViewsContextCurrent)
{
    showView(view);
    log.take();
    view.doneCurrent();
    QOpenGLContext* context = nullptr;
    log.onCall = [&](const std::string& call) {
        if (call == "fx effect 1")
            context = QOpenGLContext::currentContext();
    };
    view.loadEffect("toon.fx", "ball", 3, 4);
    EXPECT_THAT(log.take(), IsEmpty());
    settle();
    EXPECT_EQ(context, view.context());
    EXPECT_EQ(ball->getMaterial(3, 4), scene->getMaterialWithID("2"));
}

TEST_F(QtViewEffectTest, LoadingMakesTheViewsContextCurrentByItself)
{
    showView(view);
    view.doneCurrent();
    view.internalLoadEffect("toon.fx", "ball", 3, 4);
    EXPECT_EQ(QOpenGLContext::currentContext(), view.context());
}

TEST_F(QtViewEffectTest, NothingToLoadLeavesTheContextAlone)
{
    showView(view);
    view.doneCurrent();
    view.internalLoadEffect("", "ball", 3, 4);
    window->fxManager.reset();
    view.internalLoadEffect("toon.fx", "ball", 3, 4);
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
}

TEST_F(QtViewEffectTest, AnEmptyFileNameIsQueuedLikeAnyOther)
{
    showView(view);
    const int paints = view.paints;
    log.take();
    view.loadEffect("", "ball", 3, 4);
    settle();
    EXPECT_EQ(view.paints, paints + 1);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

// Materials

TEST_F(QtViewEffectTest, AMaterialOfTheSceneIsPutOnTheNodeAtOnce)
{
    scene->addMaterial(boost::make_shared<Material>("gold", "effect"));
    log.take();
    view.loadMaterial("gold", "ball", 5, 6);
    EXPECT_THAT(log.take(), ElementsAre("node ball?", "ball takes gold 5 6"));
}

TEST_F(QtViewEffectTest, AnUnknownMaterialOrNodeChangesNothing)
{
    scene->addMaterial(boost::make_shared<Material>("gold", "effect"));
    view.loadMaterial("silver", "ball", 0, 0);
    view.loadMaterial("gold", "nobody", 0, 0);
    view.loadMaterial("", "", 0, 0);
    EXPECT_FALSE(ball->getMaterial(0, 0));
}

TEST_F(QtViewEffectTest, AMaterialWithoutAWindowOrASceneIsDropped)
{
    WindowlessView bare;
    EXPECT_NO_THROW(bare.loadMaterial("gold", "ball", 0, 0));
    window->sceneManager.reset();
    EXPECT_NO_THROW(view.loadMaterial("gold", "ball", 0, 0));
    EXPECT_THAT(log.take(), IsEmpty());
}
