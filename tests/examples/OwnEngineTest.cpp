#include "OwnEngine.h"
#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/ILayout.h"
#include "qt/QtFXMaterial.h"
#include "qt/QtMaterialPanel.h"
#include "qt/QtProperties.h"
#include "qt/QtScene.h"
#include "qt/QtView.h"
#include "tests/qt/Dragging.h"

#include <QApplication>
#include <QColorDialog>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidgetItem>

#include <gtest/gtest.h>

#include <mutex>

using namespace halvern;

namespace {

/// Keeps the texts of the events of one type.
class Ear : public HCE::EventBase
{
public:
    Ear(boost::shared_ptr<HCE::EventManager> events, const std::string& type) : EventBase(std::move(events))
    {
        registerHandler(type, [this](const HCE::Event& event) {
            const std::lock_guard<std::mutex> guard(lock);
            heard.push_back(event.getEventData().getData());
        });
    }
    ~Ear() override { EventBase::setEventManager(nullptr); }

    std::vector<std::string> getHeard()
    {
        const std::lock_guard<std::mutex> guard(lock);
        return heard;
    }

private:
    std::mutex lock;
    std::vector<std::string> heard;
};

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

    /// With the box in the middle of the picture, which the camera turns about (0, 0, 0).
    void showBox()
    {
        box->setTranslation(Eigen::Translation3f(0, 1, 0));
        showView();
        view.grabFramebuffer();
    }

    /// Runs the window's updates until the events have been heard.
    bool hears(Ear& ear, const std::vector<std::string>& expected)
    {
        return waitFor([&] {
            view.grabFramebuffer();
            return ear.getHeard() == expected;
        });
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

QPushButton* colorButton(QWidget& editor)
{
    for (auto* button : editor.findChildren<QPushButton*>()) {
        if (button->text().startsWith('#'))
            return button;
    }
    return nullptr;
}

QString colorText(QWidget& editor)
{
    const auto* button = colorButton(editor);
    return button ? button->text() : QString();
}

} // namespace

TEST_F(OwnEngineTest, ViewShowsItsPicture)
{
    showBox();
    EXPECT_GT(middleOfView().red(), 100);
    EXPECT_LT(middleOfView().blue(), 50);
    box->setTranslation(Eigen::Translation3f(5, 1, 0));
    EXPECT_GT(middleOfView().blue(), 200) << "the background";
}

TEST_F(OwnEngineTest, MaterialOnANodeIsDrawn)
{
    showBox();
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
    // What moves the box without the property editor is shown there.
    box->setTranslation(Eigen::Translation3f(0, 7, 0));
    ASSERT_TRUE(waitFor([&] { return y().data().toFloat() == 7; }));

    properties.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&properties));
    auto* rows = qobject_cast<QTreeView*>(properties.findChild<QTabWidget*>()->currentWidget());
    ASSERT_TRUE(rows);
    rows->edit(y());
    auto* spinBox = qobject_cast<QDoubleSpinBox*>(rows->indexWidget(y()));
    ASSERT_TRUE(spinBox);
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "4");
    QTest::keyClick(spinBox, Qt::Key_Return);
    EXPECT_TRUE(waitFor([&] { return box->getTranslation().y() == 4; }));
}

TEST_F(OwnEngineTest, ClickSelectsTheBoxUnderItAndABoxlessPlaceNothing)
{
    showBox();
    qt::QtScene tree;
    tree.setEventManager(events);
    tree.setSceneManager(sceneManager);
    Ear selected(events, "ObjectSelected");
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
    EXPECT_TRUE(hears(selected, {"box, Window"}));
    EXPECT_TRUE(waitFor([&] { return tree.findItem("box", 0)->isSelected(); }));
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_TRUE(hears(selected, {"box, Window", ", Window"}));
}

TEST_F(OwnEngineTest, DragTurnsThePictureAndSelectsNothing)
{
    showBox();
    box->setTranslation(Eigen::Translation3f(3, 1, 0));
    const QImage before = view.grabFramebuffer();
    Ear selected(events, "ObjectSelected");
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
    QMouseEvent move(QEvent::MouseMove, QPointF(160, 100), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &move); // QTest moves the pointer, which may be there already
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, QPoint(160, 100));
    ASSERT_TRUE(waitFor([&] { return view.grabFramebuffer() != before; }));
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_TRUE(hears(selected, {", Window"})) << "only of the click";
}

TEST_F(OwnEngineTest, PickNamesTheNearestBox)
{
    const float degree = float(EIGEN_PI) / 180; // the camera looks down and from the side
    const Eigen::Vector3f towardsTheEye =
        Eigen::AngleAxisf(-30 * degree, Eigen::Vector3f::UnitY()) *
        (Eigen::AngleAxisf(-20 * degree, Eigen::Vector3f::UnitX()) * Eigen::Vector3f(0, 1 / 16.0f, 1));
    const auto add = [&](const std::string& name, float distance) {
        const Eigen::Vector3f place = distance * towardsTheEye + Eigen::Vector3f(0, 1, 0);
        auto added = boost::make_shared<own::Box>(name, blue, place);
        sceneManager->getRoot()->addChildNode(added);
        return added;
    };
    const auto nearer = add("nearer", 4);
    add("farther", -4);
    showBox();
    ASSERT_GT(middleOfView().blue(), 100) << "it stands before the other";

    Ear picked(events, "ObjectPicked");
    picture->getLayout()->requestPick(100, 100, "TAG");
    picture->getLayout()->requestPick(5, 195, "TAG");
    EXPECT_TRUE(hears(picked, {"nearer, 0, 0, 100, 100, TAG", ", , , 5, 195, TAG"}));
    nearer->addToLayer("hidden");
    picture->getLayout()->requestPick(100, 100, "");
    EXPECT_TRUE(hears(picked, {"nearer, 0, 0, 100, 100, TAG", ", , , 5, 195, TAG", "box, 0, 0, 100, 100, "}));
}

TEST_F(OwnEngineTest, MaterialDroppedOnABoxIsPutOnIt)
{
    showBox();
    qt::QtMaterialPanel panel;
    QMimeData mime;
    mime.setText("Blue");
    test::whileDraggedFrom(&panel, [&] {
        // Only what was entered before is dropped on.
        QDragEnterEvent enter(QPoint(100, 100), Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &enter);
        QDropEvent drop(QPointF(100, 100), Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &drop);
    });
    EXPECT_TRUE(waitFor([&] {
        view.grabFramebuffer();
        return box->getPaint() == blue;
    }));
    EXPECT_GT(middleOfView().blue(), 100);
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

TEST_F(OwnEngineTest, ChangeThatIsNoneIsLeftOut)
{
    picture->attach(sceneManager);
    Ear updated(events, "MaterialParameterUpdated");
    for (const char* change :
         {"Red, color, 0, 1", "Red, color, 0, x, 1", "Red, gloss, 1", "Green, color, 0, 1, 0"})
        events->triggerEvent("ChangeMaterialParameter", change);
    events->triggerEvent("ChangeMaterialParameter", "Red, glow, 0.5");
    EXPECT_TRUE(hears(updated, {"Red, glow"}));
    EXPECT_EQ(red->getColor(), own::Color(1, 0, 0));
}

TEST_F(OwnEngineTest, SliderOfTheEditorReachesPaintAndPicture)
{
    showBox();
    qt::QtFXMaterial editor;
    showEditor(editor);
    editor.setFXMaterial(picture->getFXManager()->getFXMaterial("Red"));
    const int before = middleOfView().red();
    auto* slider = editor.findChild<QSlider*>();
    ASSERT_TRUE(slider);
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_EQ(red->getGlow(), 1);
    EXPECT_EQ(red->getColor(), own::Color(1, 0, 0));
    EXPECT_GT(middleOfView().red(), before + 20);
}

TEST_F(OwnEngineTest, ColourDialogOfTheEditorReachesPaintAndPicture)
{
    showBox();
    qt::QtFXMaterial editor;
    showEditor(editor);
    editor.setFXMaterial(picture->getFXManager()->getFXMaterial("Red"));
    QTimer watch; // the dialog runs an event loop of its own
    QObject::connect(&watch, &QTimer::timeout, [] {
        if (auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget())) {
            dialog->setCurrentColor(Qt::blue);
            dialog->accept();
        }
    });
    watch.start(1);
    QTest::mouseClick(colorButton(editor), Qt::LeftButton);
    EXPECT_EQ(red->getColor(), own::Color(0, 0, 1));
    EXPECT_EQ(colorText(editor), "#0000ff");
    EXPECT_GT(middleOfView().blue(), 100);
    EXPECT_LT(middleOfView().red(), 50);
}
