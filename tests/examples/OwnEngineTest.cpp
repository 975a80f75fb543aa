#include "OwnEngine.h"
#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtFXMaterial.h"
#include "qt/QtMaterialPanel.h"
#include "qt/QtProperties.h"
#include "qt/QtScene.h"
#include "qt/QtView.h"

#include <QPushButton>
#include <QTest>
#include <QTreeView>
#include <QTreeWidgetItem>

#include <gtest/gtest.h>

using namespace halvern;

namespace {

/// The widgets over an engine that is not the one they are linked with.
class OwnEngineTest : public testing::Test
{
protected:
    void SetUp() override
    {
        auto root = boost::make_shared<scene::Node>("root", "Root");
        root->addChildNode(box);
        sceneManager->setRoot(root);
        sceneManager->addMaterial(red);
        sceneManager->addMaterial(blue);
    }

    void TearDown() override { view.setEventManager(nullptr); }

    void showView()
    {
        view.setEventManager(events);
        view.resize(200, 200);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        view.setWindow(picture);
        view.attach(sceneManager);
    }

    void showEditor(qt::QtFXMaterial& editor)
    {
        picture->attach(sceneManager);
        editor.setEventManager(events);
        editor.setFXManager(picture->getFXManager());
        editor.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&editor));
    }

    QColor middleOfView() { return view.grabFramebuffer().pixelColor(100, 100); }

    /// Waits for the widgets, which follow in the scene's cycle and in their own event loop.
    template <class Condition>
    bool waitFor(Condition condition)
    {
        return QTest::qWaitFor(
            [&] {
                sceneManager->update();
                return condition();
            },
            20000);
    }

    const boost::shared_ptr<HCE::EventManager> events = boost::make_shared<HCE::EventManager>(true);
    const boost::shared_ptr<scene::SceneManager> sceneManager =
        boost::make_shared<scene::SceneManager>(events);
    const boost::shared_ptr<own::Paint> red = boost::make_shared<own::Paint>("Red", own::Color(1, 0, 0));
    const boost::shared_ptr<own::Paint> blue = boost::make_shared<own::Paint>("Blue", own::Color(0, 0, 1));
    const boost::shared_ptr<own::Box> box =
        boost::make_shared<own::Box>("box", red, Eigen::Vector3f(0, -1, 0));
    const boost::shared_ptr<own::Picture> picture = boost::make_shared<own::Picture>(events);
    qt::QtView view;
};

QString colorText(QWidget& editor)
{
    for (const auto* button : editor.findChildren<QPushButton*>()) {
        if (button->text().startsWith('#'))
            return button->text();
    }
    return QString();
}

} // namespace

TEST_F(OwnEngineTest, ViewShowsItsPicture)
{
    box->setTranslation(Eigen::Translation3f(0, 1, 0));
    showView();
    EXPECT_GT(middleOfView().red(), 100);
    EXPECT_LT(middleOfView().blue(), 50);
    box->setTranslation(Eigen::Translation3f(5, 1, 0));
    EXPECT_GT(middleOfView().blue(), 200) << "the background";
}

TEST_F(OwnEngineTest, MaterialOnANodeIsDrawn)
{
    box->setTranslation(Eigen::Translation3f(0, 1, 0));
    showView();
    view.loadMaterial("Blue", "box", 0, 0);
    EXPECT_EQ(box->getPaint(), blue);
    EXPECT_GT(middleOfView().blue(), 100);
    EXPECT_LT(middleOfView().red(), 50);
}

TEST_F(OwnEngineTest, TreeShowsItsNodesAndPropertiesWriteToThem)
{
    qt::QtScene tree;
    tree.setEventManager(events);
    tree.setSceneManager(sceneManager);
    qt::QtProperties properties;
    properties.setEventManager(events);
    properties.setSceneManager(sceneManager);
    auto* item = tree.findItem("box", 0);
    ASSERT_TRUE(item);
    item->setSelected(true);

    // The rows of the node's place come when the engine has answered the selection.
    QAbstractItemModel* model = properties.findChild<QTreeView*>()->model();
    const auto findRow = [&](const QString& text, const QModelIndex& parent = QModelIndex()) {
        for (int row = 0; row < model->rowCount(parent); ++row) {
            if (model->index(row, 0, parent).data() == text)
                return model->index(row, 1, parent);
        }
        return QModelIndex();
    };
    const auto y = [&] {
        const QModelIndex translation = findRow("Translation");
        return findRow("Y", translation.siblingAtColumn(0));
    };
    ASSERT_TRUE(waitFor([&] { return y().data().toFloat() == -1; }));
    ASSERT_TRUE(model->setData(y(), 4.0f));
    EXPECT_TRUE(waitFor([&] { return box->getTranslation().y() == 4; }));
}

TEST_F(OwnEngineTest, PanelSelectsItsMaterialForTheEditor)
{
    qt::QtFXMaterial editor;
    showEditor(editor);
    qt::QtMaterialPanel panel;
    panel.setEventManager(events);
    panel.setSceneManager(sceneManager);
    panel.resize(400, 200);
    panel.show();
    ASSERT_TRUE(waitFor([&] { return panel.model()->index(0, 1).data() == "Blue"; }));

    panel.selectionModel()->select(panel.model()->index(0, 1), QItemSelectionModel::ClearAndSelect);
    EXPECT_TRUE(waitFor([&] { return colorText(editor) == "#0000ff"; })) << qPrintable(colorText(editor));
}

TEST_F(OwnEngineTest, ChangeOfItsMaterialReachesPaintAndEditor)
{
    qt::QtFXMaterial editor;
    showEditor(editor);
    editor.setFXMaterial(picture->getFXManager()->getFXMaterial("Red"));
    EXPECT_EQ(colorText(editor), "#ff0000");

    events->triggerEvent("ChangeMaterialParameter", "Red, color, 0, 1, 0");
    EXPECT_TRUE(waitFor([&] { return red->getColor() == own::Color(0, 1, 0); }));
    EXPECT_TRUE(waitFor([&] { return colorText(editor) == "#00ff00"; })) << qPrintable(colorText(editor));
}
