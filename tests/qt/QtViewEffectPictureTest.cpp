#include "engine/core/event/EventManager.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Evaluator.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtMaterialPanel.h"
#include "reference/scene/Mesh.h"
#include "tests/qt/Dragging.h"
#include "tests/qt/ViewProbe.h"

#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace halvern::test;
using halvern::qt::QtMaterialPanel;

namespace {

constexpr char Red[] = "technique red { fragment { void main() { fragment = vec4(1.0, 0.0, 0.0, 1.0); } } }";
constexpr char Green[] =
    "technique green { fragment { void main() { fragment = vec4(0.0, 1.0, 0.0, 1.0); } } }";
constexpr char Half[] = "string ScriptClass = \"Scene\";"
                        "technique half { fragment { void main()"
                        "{ fragment = texture(sceneColor, place) * vec4(0.5, 0.5, 0.5, 1.0); } } }";

std::shared_ptr<const HS::Mesh> makeSquare()
{
    auto mesh = std::make_shared<HS::Mesh>();
    mesh->positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    mesh->normals.assign(4, Eigen::Vector3f::UnitZ());
    mesh->indices = {0, 1, 2, 0, 2, 3};
    for (const auto& position : mesh->positions)
        mesh->bounds.extend(position);
    return mesh;
}

/// A view of 100 x 100 in which an engine shows a square, called "square", in the middle.
class QtViewEffectPictureTest : public testing::Test
{
protected:
    QtViewEffectPictureTest()
    {
        const auto root = boost::make_shared<HS::Node>("root", "root");
        root->addChildNode(square);
        setGeometries(*square, {makeSquare()});
        const auto eye = boost::make_shared<HS::Node>("eye", "eye");
        eye->setTranslation(Eigen::Translation3f(0, 0, 5));
        root->addChildNode(eye);
        const auto camera = boost::make_shared<HS::Camera>("camera");
        camera->setZNear(0.1F);
        camera->setZFar(100);
        camera->setYFov(45);
        scene->setRoot(root);
        scene->addCameraInstance(boost::make_shared<HS::CameraInstance>("camera", eye, camera));
        view.setEventManager(events);
        showView(view, 100, 100);
        view.attach(scene);
        repaintView(view);
    }

    /// The probe is no longer whole when the view's own destructor leaves the events.
    ~QtViewEffectPictureTest() override { view.setEventManager(nullptr); }

    /// Path of a new effect file.
    std::string write(const QString& name, const char* text)
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(text);
        return file.fileName().toStdString();
    }

    QColor middle() { return view.grabFramebuffer().pixelColor(50, 50); }
    QColor corner() { return view.grabFramebuffer().pixelColor(2, 2); }

    QTemporaryDir folder;
    const boost::shared_ptr<HCE::EventManager> events = boost::make_shared<HCE::EventManager>(true);
    const boost::shared_ptr<HS::SceneManager> scene = boost::make_shared<HS::SceneManager>(events);
    const boost::shared_ptr<HS::Node> square = boost::make_shared<HS::Node>("square", "square");
    ViewProbe view;
};

} // namespace

TEST_F(QtViewEffectPictureTest, AnObjectEffectChangesThePictureOfItsNodeAlone)
{
    const QColor background = corner();
    EXPECT_NE(middle(), QColor(Qt::red));
    view.loadEffect(write("red.fx", Red), "square", 0, 0);
    repaintView(view);
    EXPECT_EQ(middle(), QColor(Qt::red));
    EXPECT_EQ(corner(), background);
    view.loadEffect(write("green.fx", Green), "square", 0, 0);
    repaintView(view);
    EXPECT_EQ(middle(), QColor(Qt::green));
}

TEST_F(QtViewEffectPictureTest, SceneEffectsAreLaidOverTheWholePictureOneAfterTheOther)
{
    view.loadEffect(write("red.fx", Red), "square", 0, 0);
    repaintView(view);
    const QColor background = corner();
    const std::string half = write("half.fx", Half);
    view.loadEffect(half, "", 0, 0);
    repaintView(view);
    EXPECT_NEAR(middle().red(), 128, 2);
    EXPECT_NEAR(corner().green(), 0.5 * background.green(), 2);
    view.loadEffect(half, "", 0, 0);
    repaintView(view);
    EXPECT_NEAR(middle().red(), 64, 2);
    EXPECT_EQ(scene->getEvaluatorAt(0)->getRenderCount(), 2u);
    view.resize(160, 120);
    settle();
    EXPECT_NEAR(view.grabFramebuffer().pixelColor(80, 60).red(), 64, 2);
}

TEST_F(QtViewEffectPictureTest, ABrokenEffectLeavesItsNodeVisible)
{
    const QColor background = corner();
    for (const char* text : {"technique {", "technique t { fragment { void main() { nonsense } } }", ""}) {
        view.loadEffect(write("broken.fx", text), "square", 0, 0);
        repaintView(view);
        EXPECT_NE(middle(), background);
        EXPECT_NE(middle(), QColor(Qt::red));
    }
    view.loadEffect("/nowhere/at/all.fx", "square", 0, 0);
    repaintView(view);
    EXPECT_NE(middle(), background);
}

TEST_F(QtViewEffectPictureTest, AMaterialDroppedOnANodeChangesItsPicture)
{
    view.loadEffect(write("red.fx", Red), "nobody", 0, 0);
    repaintView(view);
    EXPECT_NE(middle(), QColor(Qt::red));
    const auto materials = scene->getMaterialList();
    ASSERT_EQ(materials.size(), 1u);

    QtMaterialPanel panel;
    QMimeData mime;
    mime.setText(QString::fromStdString(materials[0]->getMaterialID()));
    whileDraggedFrom(&panel, [&] {
        QDropEvent drop(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        view.dropEvent(&drop);
    });
    EXPECT_TRUE(waitFor([&] {
        view.update();
        return square->getMaterial(0, 0) == materials[0];
    }));
    repaintView(view);
    EXPECT_EQ(middle(), QColor(Qt::red));
}
