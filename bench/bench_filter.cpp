/// What a letter in the line over the scene tree costs, compared with hiding and showing the same rows
/// without looking at their texts.
#include "bench/Measure.h"
#include "studio/TreeFilter.h"

#include <QApplication>
#include <QLineEdit>
#include <QTreeWidget>

#include <cstdlib>
#include <vector>

namespace {

using namespace halvern;
using namespace halvern::bench;

/// An unfolded tree on screen.
struct Tree
{
    /// In a branched tree each row has up to eight below it, in a flat one all are below the first.
    Tree(int size, bool branched)
    {
        for (int i = 0; i < size; ++i) {
            rows.push_back(new QTreeWidgetItem(QStringList("Part " + QString::number(i) + " of the model")));
            if (i > 0)
                rows[std::size_t(branched ? (i - 1) / 8 : 0)]->addChild(rows.back());
        }
        widget.resize(300, 800);
        widget.addTopLevelItem(rows[0]);
        for (QTreeWidgetItem* row : rows)
            row->setExpanded(true); // leaves too, as the scene tree does
        widget.show();
        QCoreApplication::processEvents();
    }

    QTreeWidget widget;
    std::vector<QTreeWidgetItem*> rows;
};

bool ok = true;

void compareFilter(int size, bool branched)
{
    Tree filtered(size, branched);
    Tree bare(size, branched);
    studio::TreeFilter filter(&filtered.widget);
    auto* line = filter.findChild<QLineEdit*>();
    const QString last = "part " + QString::number(size - 1);

    std::vector<double> times;
    std::vector<double> floors;
    for (int i = 0; i < 22; ++i) {
        times.push_back(getProcessorMilliseconds([&] {
            line->setText(i % 2 ? QString() : last);
            QCoreApplication::processEvents();
        }));
        std::vector<bool> hidden; // only what changes is touched, as in the filter
        for (const QTreeWidgetItem* row : filtered.rows)
            hidden.push_back(row->isHidden());
        floors.push_back(getProcessorMilliseconds([&] {
            for (std::size_t row = 0; row < hidden.size(); ++row)
                if (bare.rows[row]->isHidden() != hidden[row])
                    bare.rows[row]->setHidden(hidden[row]);
            QCoreApplication::processEvents();
        }));
    }
    std::printf("%d rows, %s: %.1f ms, floor %.1f ms\n", size,
                branched ? "up to 8 below each" : "all below one", getMedian(times), getMedian(floors));
    ok &=
        report("filter, to hiding and showing the same rows", getMedian(times) / getMedian(floors), 1.6, "x");
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    for (const int size : {10000, 100000})
        for (const bool branched : {false, true})
            compareFilter(size, branched);
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
