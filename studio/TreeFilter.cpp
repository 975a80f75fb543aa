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

namespace {

bool isSeen(const QTreeWidgetItem& item)
{
    const QTreeWidgetItem* parent = item.parent();
    return !item.isHidden() && (!parent || (parent->isExpanded() && isSeen(*parent)));
}

} // namespace

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
    connect(tree->model(), &QAbstractItemModel::modelAboutToBeReset, this, &TreeFilter::forget);
    connect(tree->model(), &QAbstractItemModel::rowsAboutToBeRemoved, this, &TreeFilter::forget);
    // Not the tree's own signal: who selects by program may block that.
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this, &TreeFilter::keepCurrent);
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
    showRows(std::exchange(rows, {}));
    count->setText(tr("%1 of %2").arg(matchCount).arg(rowCount));
    if (!filtering)
        foldAgain();
    if (!filtering || kept)
        tree->scrollToItem(tree->currentItem());
    kept = nullptr;
}

/// Whether a row is to be seen here or below.
bool TreeFilter::collect(QTreeWidgetItem* item)
{
    const bool isMatch = matches(*item);
    const bool isWanted = isMatch || item == kept;
    matchCount += isMatch;
    ++rowCount;
    const std::size_t place = rows.size();
    rows.push_back({item, true, false});
    bool aboveWanted = false;
    for (int i = 0; i < item->childCount(); ++i)
        aboveWanted |= collect(item->child(i));
    if (!isWanted && !aboveWanted)
        rows.resize(place + 1); // what is below a hidden row is not seen anyway
    rows[place] = {item, isWanted || aboveWanted, aboveWanted};
    return rows[place].shown;
}

bool TreeFilter::matches(const QTreeWidgetItem& item) const
{
    const QString text = item.text(0);
    return std::all_of(words.begin(), words.end(),
                       [&text](const QStringMatcher& word) { return word.indexIn(text) >= 0; });
}

void TreeFilter::showRows(const std::vector<Row>& newRows)
{
    for (const Row& row : newRows) {
        if (row.item->isHidden() == row.shown)
            row.item->setHidden(!row.shown);
        if (filtering && row.aboveWanted)
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

void TreeFilter::keepCurrent()
{
    QTreeWidgetItem* current = tree->currentItem();
    if (!filtering || !current || isSeen(*current))
        return;
    kept = current;
    schedule();
}

void TreeFilter::forget()
{
    kept = nullptr;
    unfolded.clear();
}

} // namespace halvern::studio
