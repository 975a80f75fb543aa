#include "studio/RecentFiles.h"

#include <QFileInfo>
#include <QSettings>

namespace halvern::studio {

namespace {

const char Key[] = "recentFiles";
const int MostFiles = 8;

} // namespace

RecentFiles::RecentFiles(const QString& title, QWidget* parent) : QMenu(title, parent)
{
    connect(this, &QMenu::aboutToShow, this, &RecentFiles::fill);
    connect(this, &QMenu::triggered, this, &RecentFiles::choose);
}

void RecentFiles::add(const QString& file)
{
    QSettings settings;
    QStringList files = settings.value(Key).toStringList();
    const QString path = QFileInfo(file).absoluteFilePath();
    files.removeAll(path);
    files.prepend(path);
    settings.setValue(Key, QStringList(files.mid(0, MostFiles)));
}

void RecentFiles::fill()
{
    clear();
    const QStringList files = QSettings().value(Key).toStringList();
    for (const QString& file : files)
        addAction(QString(file).replace('&', "&&"))->setData(file);
    if (files.isEmpty())
        addAction(tr("None yet"))->setEnabled(false);
}

void RecentFiles::choose(QAction* action)
{
    emit chosen(action->data().toString());
}

} // namespace halvern::studio
