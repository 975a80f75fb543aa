#include "engine/logic/LogicManager.h"
#include "engine/renderer/IRenderer.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "reference/scene/Skin.h"
#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace halvern;
using namespace halvern::test;

namespace {

constexpr int Unit = 24; ///< pixels of the picture at the origin

/// A strip of two squares upwards from the origin, 0.6 wide, towards the camera.
std::shared_ptr<scene::Mesh> stripMesh()
{
    auto mesh = std::make_shared<scene::Mesh>();
    for (const float y : {0.0f, 1.0f, 2.0f}) {
        mesh->positions.emplace_back(-0.3f, y, 0);
        mesh->positions.emplace_back(0.3f, y, 0);
    }
    mesh->normals.assign(6, Eigen::Vector3f::UnitZ());
    mesh->indices = {0, 1, 3, 0, 3, 2, 2, 3, 5, 2, 5, 4};
    for (const Eigen::Vector3f& position : mesh->positions)
        mesh->bounds.extend(position);
    return mesh;
}

/// Binds the strip: its foot to the lower bone, its top to the upper one, the middle to both.
std::shared_ptr<scene::Skin> stripSkin(const NodePtr& lower, const NodePtr& upper)
{
    auto skin = std::make_shared<scene::Skin>();
    skin->bones.push_back({lower, Eigen::Affine3d::Identity()});
    skin->bones.push_back({upper, Eigen::Affine3d(Eigen::Translation3d(0, -1, 0))});
    for (const Eigen::Vector2f& weights :
         {Eigen::Vector2f(1, 0), Eigen::Vector2f(0.5f, 0.5f), Eigen::Vector2f(0, 1)}) {
        for (int side = 0; side < 2; ++side) {
            skin->joints.insert(skin->joints.end(), {0, 1, 2, 2});
            skin->weights.insert(skin->weights.end(), {weights.x(), weights.y(), 0, 0});
        }
    }
    return skin;
}

void turn(scene::Node& node, double angle)
{
    node.setRotation(Eigen::Affine3f(Eigen::AngleAxisf(float(angle), Eigen::Vector3f::UnitZ())));
}

/// A skeleton of two bones, the upper one a unit above the lower one, and a strip that follows them.
struct Figure
{
    explicit Figure(const std::string& name, const MaterialPtr& material = unlitMaterial(Qt::red)) :
        top(makeNode(name)),
        lower(makeNode(name + ".lower")),
        upper(makeNode(name + ".upper")),
        body(makeNode(name + ".body", {}, material))
    {
        moveTo(*upper, 0, 1, 0);
        lower->addChildNode(upper);
        top->addChildNode(body);
        top->addChildNode(lower);
        setGeometries(*body, {stripMesh()}, {stripSkin(lower, upper)});
    }

    const NodePtr top, lower, upper, body;
};

struct FigureStage : Stage
{
    FigureStage() { scene.root->addChildNode(figure.top); }

    /// A pixel of the next frame, by its place in the plane of the strip.
    bool isRed(double x, double y)
    {
        return draw(int(std::lround(x * Unit)), int(std::lround(y * Unit))) == QColor(Qt::red);
    }

    bool stands() { return isRed(0, 1.8) && !isRed(-0.9, 1); }

    /// With the upper bone turned to the left.
    bool isBent() { return isRed(-0.9, 1) && !isRed(0, 1.8); }

    unsigned int triangles()
    {
        draw();
        return window->getLayout()->getViewport()->getSceneRenderer()->getTriangleCount();
    }

    std::string pick(double x, double y)
    {
        scene.events->clear();
        window->getLayout()->requestPick(50 + int(std::lround(x * Unit)), 50 + int(std::lround(y * Unit)),
                                         "T");
        window->update();
        const std::string answer = scene.events->getData("ObjectPicked").at(0);
        return answer.substr(0, answer.find(','));
    }

    Figure figure{"figure"};
};

} // namespace

TEST(SkinnedGeometryTest, AStripBendsAsItsBonesTurn)
{
    FigureStage stage;
    EXPECT_TRUE(stage.stands());
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
    // The top is at (-1, 0.7) and (-1, 1.3), the middle at half of the way from (-0.3, 1) to (0, 0.7) and
    // from (0.3, 1) to (0, 1.3).
    const QImage image = stage.draw();
    const auto isRed = [&](double x, double y) {
        return pixel(image, int(std::lround(x * Unit)), int(std::lround(y * Unit))) == QColor(Qt::red);
    };
    EXPECT_TRUE(isRed(-0.93, 0.76));
    EXPECT_TRUE(isRed(-0.93, 1.24));
    EXPECT_FALSE(isRed(-1.1, 1));
    EXPECT_FALSE(isRed(-0.93, 1.4));
    EXPECT_TRUE(isRed(0.08, 1.08));
    EXPECT_FALSE(isRed(0.25, 1.1));
    EXPECT_TRUE(isRed(0.25, 0.05));
    turn(*stage.figure.upper, 0);
    EXPECT_TRUE(stage.stands());
    moveTo(*stage.figure.lower, 1, 0, 0);
    EXPECT_TRUE(stage.isRed(1, 1.8));
    EXPECT_FALSE(stage.isRed(0, 1.8));
}

TEST(SkinnedGeometryTest, AsItWasBoundThePictureIsThatOfTheMesh)
{
    for (const MaterialPtr& material : {unlitMaterial(Qt::red), litMaterial(Qt::red)}) {
        FigureStage stage;
        stage.figure.body->setMaterial(material, 0, 0);
        const QImage skinned = stage.draw();
        setGeometries(*stage.figure.body, {stripMesh()});
        EXPECT_EQ(stage.draw(), skinned);
    }
}

TEST(SkinnedGeometryTest, NormalsTurnToo)
{
    FigureStage stage;
    stage.figure.body->setMaterial(litMaterial(Qt::white), 0, 0);
    scene::LightSource source;
    source.kind = scene::LightSource::Kind::Directional;
    stage.scene.addLight("light", source);
    const int before = stage.draw(0, 12).red();
    const Eigen::AngleAxisf aside(float(M_PI / 3), Eigen::Vector3f::UnitY());
    stage.figure.lower->setRotation(Eigen::Affine3f(aside));
    const int turned = stage.draw(0, 12).red();
    EXPECT_LT(turned, before - 25);
    // As a node does that is turned as a whole.
    setGeometries(*stage.figure.body, {stripMesh()});
    stage.figure.body->setRotation(Eigen::Affine3f(aside));
    EXPECT_NEAR(stage.draw(0, 12).red(), turned, 2);
}

TEST(SkinnedGeometryTest, PickingHitsTheDeformedPlace)
{
    FigureStage stage;
    EXPECT_EQ(stage.pick(0, 1.8), "figure.body");
    EXPECT_EQ(stage.pick(-0.9, 1), "");
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_EQ(stage.pick(0, 1.8), "");
    EXPECT_EQ(stage.pick(-0.9, 1), "figure.body");
}

TEST(SkinnedGeometryTest, BonesMoveMeshesIntoSightAndOutOfIt)
{
    FigureStage stage;
    EXPECT_EQ(stage.triangles(), 4u);
    moveTo(*stage.figure.lower, 100, 0, 0);
    EXPECT_EQ(stage.triangles(), 0u);
    moveTo(*stage.figure.lower, 0, 0, 0);
    EXPECT_EQ(stage.triangles(), 4u);
    EXPECT_TRUE(stage.stands());
}

TEST(SkinnedGeometryTest, FBringsTheDeformedMeshIntoView)
{
    FigureStage stage;
    moveTo(*stage.figure.lower, 100, 0, 0);
    EXPECT_EQ(stage.triangles(), 0u);
    stage.window->getLogicManager()->keyPressed('F', 0);
    EXPECT_EQ(stage.triangles(), 4u);
    EXPECT_TRUE(stage.isRed(0, 0));
}

TEST(SkinnedGeometryTest, TheMeshNodesOwnTransformHasNoEffect)
{
    FigureStage stage;
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
    moveTo(*stage.figure.body, 1, 2, 3);
    stage.figure.body->setScale({2, 3, 4});
    turn(*stage.figure.body, 1);
    EXPECT_TRUE(stage.isBent());
    EXPECT_EQ(stage.pick(-0.9, 1), "figure.body");
    // What moves both moves the figure.
    moveTo(*stage.figure.top, 0.5f, 0, 0);
    EXPECT_TRUE(stage.isRed(-0.4, 1));
    EXPECT_FALSE(stage.isRed(-0.9, 1));
}

TEST(SkinnedGeometryTest, NodesThatShareAMeshFollowSkeletonsOfTheirOwn)
{
    FigureStage stage;
    Figure other("other", unlitMaterial(Qt::blue));
    setGeometries(*other.body, getGeometries(*stage.figure.body), {stripSkin(other.lower, other.upper)});
    stage.scene.root->addChildNode(other.top);
    turn(*other.upper, -M_PI_2);
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
    EXPECT_EQ(stage.draw(int(0.9 * Unit), Unit), QColor(Qt::blue));
}

TEST(SkinnedGeometryTest, ANodeBelowTwoParentsFollowsTheBonesOfEachPlace)
{
    FigureStage stage;
    const NodePtr left = makeNode("left");
    const NodePtr right = makeNode("right");
    moveTo(*left, -1, 0, 0);
    moveTo(*right, 1, 0, 0);
    stage.scene.root->removeChildNode(stage.figure.top);
    for (const NodePtr& parent : {left, right}) {
        parent->addChildNode(stage.figure.top);
        stage.scene.root->addChildNode(parent);
    }
    EXPECT_EQ(stage.triangles(), 8u);
    EXPECT_TRUE(stage.isRed(-1, 1.8));
    EXPECT_TRUE(stage.isRed(1, 1.8));
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isRed(-1.9, 1));
    EXPECT_TRUE(stage.isRed(0.1, 1));
    EXPECT_FALSE(stage.isRed(1, 1.8));
}

TEST(SkinnedGeometryTest, WhatABoneMovedStaysWhenTheBoneIsGone)
{
    FigureStage stage;
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
    stage.figure.lower->removeChildNode(stage.figure.upper);
    EXPECT_TRUE(stage.isBent());
    turn(*stage.figure.upper, 0);
    EXPECT_TRUE(stage.isBent());
    stage.figure.lower->addChildNode(stage.figure.upper);
    EXPECT_TRUE(stage.stands());
    stage.figure.top->removeChildNode(stage.figure.lower);
    EXPECT_TRUE(stage.stands());
    stage.scene.manager->setRoot({});
    EXPECT_FALSE(stage.isRed(0, 1.8));
    stage.scene.manager->setRoot(stage.scene.root);
    EXPECT_TRUE(stage.stands());
}

TEST(SkinnedGeometryTest, BonesThatAreDestroyedDoNoHarm)
{
    FigureStage stage;
    {
        Figure other("other");
        setGeometries(*stage.figure.body, {stripMesh()}, {stripSkin(other.lower, other.upper)});
        EXPECT_TRUE(stage.stands());
    }
    moveTo(*stage.figure.top, 1, 0, 0);
    EXPECT_TRUE(stage.isRed(1, 1.8));
}

TEST(SkinnedGeometryTest, AMeshThatComesBackFollowsWhereItsBonesWent)
{
    FigureStage stage;
    EXPECT_TRUE(stage.stands());
    stage.figure.top->removeChildNode(stage.figure.body);
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_FALSE(stage.isRed(-0.9, 1));
    stage.figure.top->addChildNode(stage.figure.body);
    EXPECT_TRUE(stage.isBent());
}

TEST(SkinnedGeometryTest, AHiddenMeshFollowsOnceItIsShown)
{
    FigureStage stage;
    stage.figure.body->setVisible(false);
    EXPECT_FALSE(stage.isRed(0, 1.8));
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_FALSE(stage.isRed(-0.9, 1));
    stage.figure.body->setVisible(true);
    EXPECT_TRUE(stage.isBent());
}

TEST(SkinnedGeometryTest, HiddenBonesMoveTheMeshAllTheSame)
{
    FigureStage stage;
    stage.figure.lower->setVisible(false);
    EXPECT_TRUE(stage.stands());
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
}

TEST(SkinnedGeometryTest, ASkinThatDoesNotFitHasNoEffect)
{
    FigureStage stage;
    const auto skin = stripSkin(stage.figure.lower, stage.figure.upper);
    skin->joints[2] = 99;
    setGeometries(*stage.figure.body, {stripMesh()}, {skin});
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.stands());
    setGeometries(*stage.figure.body, {stripMesh()}, {nullptr, nullptr});
    EXPECT_TRUE(stage.stands());
}

TEST(SkinnedGeometryTest, ABoneWhosePlaceIsNoneLeavesTheRestAsItIs)
{
    FigureStage stage;
    turn(*stage.figure.upper, M_PI_2);
    EXPECT_TRUE(stage.isBent());
    moveTo(*stage.figure.upper, std::numeric_limits<float>::quiet_NaN(), 0, 0);
    EXPECT_TRUE(stage.isBent());
    moveTo(*stage.figure.upper, 1e38f, 1e38f, 1e38f);
    stage.figure.upper->setScale({1e38f, 1e38f, 1e38f});
    stage.draw();
    stage.pick(0, 1);
    stage.figure.upper->setScale({1, 1, 1});
    moveTo(*stage.figure.upper, 0, 1, 0);
    EXPECT_TRUE(stage.isBent());
    stage.figure.body->setScale({0, 0, 0});
    stage.draw();
    stage.figure.body->setScale({1, 1, 1});
    EXPECT_TRUE(stage.isBent());
}

TEST(SkinnedGeometryTest, ShadowsFollowTheBones)
{
    FigureStage stage;
    lookFrom(*stage.scene.manager->getNodeByID("camera"), {0, 8, 0}, {0, 0, 0});
    stage.scene.add("ground", groundMesh(4), litMaterial(Qt::white));
    scene::LightSource source;
    source.kind = scene::LightSource::Kind::Directional;
    stage.scene.addLight("light", source);
    lookFrom(*stage.scene.manager->getNodeByID("light.node"), {-3, 3, 0}, {0, 0, 0});
    stage.figure.body->addToLayer("cast_shadow");
    // So that the bounds of what casts shadows stay as they are.
    const NodePtr far = stage.scene.add("far", boxMesh(0.05f));
    const NodePtr near = stage.scene.add("near", boxMesh(0.05f));
    for (const NodePtr& corner : {far, near})
        corner->addToLayer("cast_shadow");
    moveTo(*far, -4, 3, -4);
    moveTo(*near, 4, 0.1f, 4);
    moveTo(*stage.figure.lower, -1, 1, 0);
    stage.figure.lower->setRotation(
        Eigen::Affine3f(Eigen::AngleAxisf(-float(M_PI_2), Eigen::Vector3f::UnitX())));
    const int shadowed = stage.draw(0, 10).red();
    moveTo(*stage.figure.lower, -3, 1, 0);
    EXPECT_GT(stage.draw(0, 10).red(), shadowed + 25);
    moveTo(*stage.figure.lower, -1, 1, 0);
    EXPECT_EQ(stage.draw(0, 10).red(), shadowed);
}

TEST(SkinnedGeometryTest, TheOutlineLiesRoundTheDeformedMesh)
{
    FigureStage stage;
    stage.scene.events->triggerEvent("ObjectSelected", "figure.body, test");
    turn(*stage.figure.upper, M_PI_2);
    const QImage image = stage.draw();
    const auto isOrange = [&](double x, double y) {
        const QColor color = pixel(image, int(std::lround(x * Unit)), int(std::lround(y * Unit)));
        return color.red() > 180 && color.green() > 80 && color.green() < 180 && color.blue() < 80;
    };
    EXPECT_TRUE(isOrange(-1.04, 1));
    EXPECT_FALSE(isOrange(0, 2.04));
}
