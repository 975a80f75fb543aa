/// What rebuilding the rows of the effect-material editor costs, compared with the same rows made by hand.
#include "bench/Measure.h"
#include "qt/QtFXMaterial.h"
#include "tests/support/FakeEffects.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QVBoxLayout>

#include <boost/make_shared.hpp>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace halvern;
using namespace halvern::bench;
using namespace halvern::test;

QStringList unusedLog;

/// Sliders, colours and textures in turns.
boost::shared_ptr<FakeMaterial> makeMaterial(int rows)
{
    const auto effect = boost::make_shared<FakeEffect>("fx", std::vector<std::string>{"plain", "rich"});
    auto material = boost::make_shared<FakeMaterial>(unusedLog, "material", effect);
    for (int i = 0; i < rows; ++i) {
        const std::string name = "parameter" + std::to_string(i);
        AnyValues values{0.5f};
        Annotations annotations{{"UIName", "Row " + std::to_string(i)}};
        if (i % 3 == 0)
            annotations["UIWidget"] = text("slider");
        if (i % 3 == 1) {
            annotations["UIWidget"] = text("color");
            values = {1.0f, 0.5f, 0.0f};
        }
        if (i % 3 == 2)
            values = {text("picture.png")};
        material->parameters.push_back(boost::make_shared<FakeParameter>(unusedLog, name, values, annotations,
                                                                         i % 3 == 2 ? "texture" : "float"));
    }
    return material;
}

/// The floor: the same widgets from values that stand ready, in a container that is hidden meanwhile.
class HandMade : public QWidget
{
public:
    explicit HandMade(int newRows) : rows(newRows)
    {
        auto* layout = new QVBoxLayout(this);
        container = new QWidget;
        grid = new QGridLayout(container);
        grid->setSizeConstraint(QLayout::SetMinimumSize);
        area = new QScrollArea;
        area->setWidget(container);
        area->setWidgetResizable(true);
        layout->addWidget(area);
    }

    void rebuild()
    {
        container->hide();
        clear();
        auto* box = new QComboBox;
        box->addItems({"plain", "rich"});
        connect(box, SIGNAL(activated(int)), this, SLOT(update()));
        add(0, "Technique", box);
        for (int i = 0; i < rows; ++i)
            add(i + 1, "Row " + QString::number(i), makeEditor(i));
        grid->setRowStretch(grid->count(), 1);
        container->show();
    }

private:
    void clear()
    {
        std::vector<QWidget*> widgets;
        while (const std::unique_ptr<QLayoutItem> item{grid->takeAt(0)})
            widgets.push_back(item->widget());
        for (QWidget* widget : widgets)
            delete widget;
    }

    void add(int row, const QString& text, QWidget* editor)
    {
        auto* label = new QLabel(text);
        label->setTextFormat(Qt::PlainText);
        grid->addWidget(label, row, 0);
        grid->addWidget(editor, row, 1);
    }

    QWidget* makeEditor(int i)
    {
        QWidget* editor = i % 3 == 0 ? makeSlider() : i % 3 == 1 ? makeColor() : makeTexture(i);
        editor->setProperty("FXParameterName", "parameter" + QString::number(i));
        editor->setProperty("FXWidgetType", "Widget");
        return editor;
    }

    QWidget* makeSlider()
    {
        auto* slider = new QSlider(Qt::Horizontal);
        slider->setRange(0, 10);
        slider->setTickInterval(1);
        slider->setValue(5);
        connect(slider, SIGNAL(valueChanged(int)), this, SLOT(update()));
        return slider;
    }

    QWidget* makeColor()
    {
        auto* button = new QPushButton("#ff8000");
        button->setStyleSheet("background-color: #ff8000");
        connect(button, SIGNAL(clicked()), this, SLOT(update()));
        return button;
    }

    QWidget* makeTexture(int i)
    {
        auto* editor = new QWidget;
        auto* layout = new QHBoxLayout(editor);
        auto* label = new QLabel;
        label->setObjectName("ImageLabel");
        auto* button = new QPushButton("...");
        button->setProperty("FXParameterName", "parameter" + QString::number(i));
        connect(button, SIGNAL(clicked()), this, SLOT(update()));
        layout->addWidget(label);
        layout->addWidget(button);
        return editor;
    }

    const int rows;
    QScrollArea* area;
    QWidget* container;
    QGridLayout* grid;
};

struct Times
{
    double rebuild;
    double picture; ///< until the new rows are on the screen
};

template <class Work>
Times measureOnce(Work rebuild)
{
    const double rebuilt = getProcessorMilliseconds(rebuild);
    return {rebuilt, rebuilt + getProcessorMilliseconds([] { QCoreApplication::processEvents(); })};
}

bool ok = true;

/// Returns the milliseconds of a rebuild.
double compareRows(int rows, int rounds)
{
    qt::QtFXMaterial editor;
    HandMade floor(rows);
    const auto material = makeMaterial(rows);
    for (QWidget* widget : {static_cast<QWidget*>(&editor), static_cast<QWidget*>(&floor)}) {
        widget->resize(400, 700);
        widget->show();
    }
    const auto rebuild = [&] { editor.setFXMaterial(material); };
    const auto rebuildFloor = [&] { floor.rebuild(); };
    measureOnce(rebuild);
    measureOnce(rebuildFloor);
    std::vector<double> times;
    std::vector<double> floors;
    std::vector<double> pictures;
    std::vector<double> floorPictures;
    for (int i = 0; i < rounds; ++i) {
        const Times mine = measureOnce(rebuild);
        const Times bare = measureOnce(rebuildFloor);
        times.push_back(mine.rebuild);
        floors.push_back(bare.rebuild);
        pictures.push_back(mine.picture);
        floorPictures.push_back(bare.picture);
    }
    std::printf("%d rows: rebuild %.2f ms, by hand %.2f ms; with the picture %.2f ms, by hand %.2f ms\n",
                rows, getMedian(times), getMedian(floors), getMedian(pictures), getMedian(floorPictures));
    ok &= report("rebuild, to the same rows made by hand", getMedian(times) / getMedian(floors), 1.3, "x");
    ok &= report("the same with the picture", getMedian(pictures) / getMedian(floorPictures), 1.3, "x");
    return getMedian(times);
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const double small = compareRows(100, 101);
    const double large = compareRows(1000, 15);
    ok &= report("growth exponent of a rebuild, 100 to 1000 rows", std::log10(large / small), 1.2, "");
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
