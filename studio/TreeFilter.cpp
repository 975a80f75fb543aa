#include "studio/TreeFilter.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

namespace halvern::studio {

TreeFilter::TreeFilter(QTreeWidget* newTree, QWidget* parent) :
    QWidget(parent), tree(newTree), line(new QLineEdit), count(new QLabel)
{
    line->setClearButtonEnabled(true);
    line->setPlaceholderText(tr("Filter by name"));
    line->installEventFilter(this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(line);
    layout->addWidget(count);
    count->hide();

    connect(line, &QLineEdit::textChanged, this, &TreeFilter::schedule);
    connect(tree->model(), &QAbstractItemModel::rowsInserted, this, &TreeFilter::schedule);
    connect(tree->model(), &QAbstractItemModel::modelReset, this, &TreeFilter::schedule);
    connect(tree->model(), &QAbstractItemModel::modelAboutToBeReset, this, [this] { unfolded.clear(); });
    connect(tree->model(), &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { unfolded.clear(); });
    // Not the tree's own signal: who selects by program may block that.
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { reveal(tree->currentItem()); });
}

void TreeFilter::begin()
{
    line->setFocus(Qt::ShortcutFocusReason);
    line->selectAll();
}

bool TreeFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QWidget::eventFilter(watched, event);
    line->clear();
    return true;
}

/// One run serves all changes of this turn of the event loop. It comes before the next painting, which is
/// posted with a lower priority.
void TreeFilter::schedule()
{
    if (!std::exchange(scheduled, true))
        QMetaObject::invokeMethod(this, &TreeFilter::apply, Qt::QueuedConnection);
}

void TreeFilter::apply()
{
    scheduled = false;
    words.clear();
    for (const QString& word : line->text().split(QRegularExpression("\\s+"), Qt::SkipEmptyParts))
        words.emplace_back(word, Qt::CaseInsensitive);
    count->setVisible(!words.empty());
    if (words.empty() && !filtering)
        return;

    filtering = !words.empty();
    rows.clear();
    matchCount = rowCount = 0;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        collect(tree->topLevelItem(i));
    show(std::exchange(rows, {}));
    count->setText(tr("%1 of %2").arg(matchCount).arg(rowCount));
    if (filtering)
        return;
    foldAgain();
    if (QTreeWidgetItem* current = tree->currentItem())
        tree->scrollToItem(current);
}

/// Whether a row matches here or below.
bool TreeFilter::collect(QTreeWidgetItem* item)
{
    const bool isMatch = matches(*item);
    matchCount += isMatch;
    ++rowCount;
    const std::size_t place = rows.size();
    rows.push_back({item, true, false});
    bool aboveMatch = false;
    for (int i = 0; i < item->childCount(); ++i)
        aboveMatch |= collect(item->child(i));
    if (!isMatch && !aboveMatch)
        rows.resize(place + 1); // what is below a hidden row is not seen anyway
    rows[place] = {item, isMatch || aboveMatch, aboveMatch};
    return isMatch || aboveMatch;
}

bool TreeFilter::matches(const QTreeWidgetItem& item) const
{
    const QString text = item.text(0);
    return std::all_of(words.begin(), words.end(),
                       [&text](const QStringMatcher& word) { return word.indexIn(text) >= 0; });
}

void TreeFilter::show(const std::vector<Row>& newRows)
{
    for (const Row& row : newRows) {
        if (row.item->isHidden() == row.shown)
            row.item->setHidden(!row.shown);
        if (filtering && row.aboveMatch)
            unfold(row.item);
    }
}

void TreeFilter::unfold(QTreeWidgetItem* item)
{
    if (item->isExpanded())
        return;
    item->setExpanded(true);
    unfolded.push_back(item);
}

void TreeFilter::foldAgain()
{
    for (QTreeWidgetItem* item : std::exchange(unfolded, {}))
        item->setExpanded(false);
}

void TreeFilter::reveal(QTreeWidgetItem* item)
{
    if (!item || !filtering || scheduled)
        return;
    for (; item; item = item->parent()) {
        item->setHidden(false);
        if (item->parent())
            unfold(item->parent());
    }
    tree->scrollToItem(tree->currentItem());
}

} // namespace halvern::studio
