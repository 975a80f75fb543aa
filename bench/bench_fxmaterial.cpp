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

/// An editor and its floor, both in sight.
class Stage
{
public:
    explicit Stage(int newRows) : rows(newRows), material(makeMaterial(newRows)), floor(newRows)
    {
        for (QWidget* widget : {static_cast<QWidget*>(&editor), static_cast<QWidget*>(&floor)}) {
            widget->resize(400, 700);
            widget->show();
        }
    }

    /// Rebuilds both in turns.
    void measure()
    {
        mine.measure([this] { editor.setFXMaterial(material); });
        bare.measure([this] { floor.rebuild(); });
    }

    void forget() { mine = bare = {}; }

    double getMilliseconds() const { return getMedian(mine.rebuilds); }

    bool report() const
    {
        std::printf("%d rows: rebuild %.2f ms, by hand %.2f ms; with the picture %.2f ms, by hand %.2f ms\n",
                    rows, getMedian(mine.rebuilds), getMedian(bare.rebuilds), getMedian(mine.pictures),
                    getMedian(bare.pictures));
        const bool isRebuilt = bench::report("rebuild, to the same rows made by hand",
                                             getMedian(getRatios(mine.rebuilds, bare.rebuilds)), 1.3, "x");
        return bench::report("the same with the picture", getMedian(getRatios(mine.pictures, bare.pictures)),
                             1.3, "x") &&
               isRebuilt;
    }

private:
    struct Times
    {
        template <class Work>
        void measure(Work rebuild)
        {
            rebuilds.push_back(getProcessorMilliseconds(rebuild));
            pictures.push_back(rebuilds.back() +
                               getProcessorMilliseconds([] { QCoreApplication::processEvents(); }));
        }

        std::vector<double> rebuilds;
        std::vector<double> pictures; ///< until the new rows are on the screen
    };

    static std::vector<double> getRatios(const std::vector<double>& times, const std::vector<double>& floors)
    {
        std::vector<double> ratios;
        for (std::size_t i = 0; i < times.size(); ++i)
            ratios.push_back(times[i] / floors[i]);
        return ratios;
    }

    const int rows;
    const boost::shared_ptr<FakeMaterial> material;
    qt::QtFXMaterial editor;
    HandMade floor;
    Times mine;
    Times bare;
};

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Stage small(100);
    Stage large(1000);
    small.measure();
    large.measure();
    small.forget();
    large.forget();
    for (int round = 0; round < 15; ++round) { // in turns, as the machine may slow down meanwhile
        for (int i = 0; i < 5; ++i)
            small.measure();
        large.measure();
    }
    bool ok = small.report();
    ok &= large.report();
    ok &= report("growth exponent of a rebuild, 100 to 1000 rows",
                 std::log10(large.getMilliseconds() / small.getMilliseconds()), 1.2, "");
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
