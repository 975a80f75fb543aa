#pragma once

#include <QStringMatcher>
#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace halvern::studio {

/// A line that leaves of a tree only the rows whose text contains all of its words, in either case, and the
/// rows above them. Beside it stands how many rows match.
///
/// Branches that hide a match are unfolded and folded again when the line is cleared. A rebuilt tree is
/// filtered anew before it is painted. A selection made by the program shows its row, matching or not.
class TreeFilter : public QWidget
{
    Q_OBJECT
public:
    /// The tree outlives the filter. Column 0 counts.
    explicit TreeFilter(QTreeWidget* tree, QWidget* parent = nullptr);

    /// Takes the keyboard, with the text selected.
    void begin();

protected:
    /// Escape in the line clears it.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Row
    {
        QTreeWidgetItem* item;
        bool shown;
        bool aboveWanted;
    };

    void schedule();
    void apply();
    bool collect(QTreeWidgetItem* item);
    bool matches(const QTreeWidgetItem& item) const;
    void showRows(const std::vector<Row>& rows);
    void unfold(QTreeWidgetItem* item);
    void foldAgain();
    void keepCurrent();
    void forget();

    QTreeWidget* const tree;
    QLineEdit* line;
    QLabel* count;

    bool scheduled = false;
    bool filtering = false; ///< rows may be hidden
    std::vector<QStringMatcher> words;
    std::vector<Row> rows; ///< of the run: all that may be seen, and the topmost of what may not
    int matchCount = 0;
    int rowCount = 0;
    std::vector<QTreeWidgetItem*> unfolded;
    QTreeWidgetItem* kept = nullptr; ///< shown in the next run, matching or not
};

} // namespace halvern::studio
