#pragma once

#include <QMenu>

namespace halvern::studio {

/// The menu of the files that were opened last, the newest first, kept in the user's settings.
class RecentFiles : public QMenu
{
    Q_OBJECT
public:
    explicit RecentFiles(const QString& title, QWidget* parent = nullptr);

    /// Puts the file first.
    void add(const QString& file);

signals:
    void chosen(const QString& file);

private slots:
    void fill();
    void choose(QAction* action);
};

} // namespace halvern::studio
