#pragma once

#include "studio/SceneLoader.h"

#include <QMainWindow>
#include <QTimer>

class QAction;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;

namespace halvern::qt {
class QtView;
}

namespace halvern::studio {

class FrameDriver;
class Panels;
class RecentFiles;
class Session;
class UndoHistory;

/// The window of the studio: the view, the docks, the menus and the status bar.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// Remembers: keeps its geometry and the recent files from run to run. The loader outlives the window.
    MainWindow(SceneLoader* loader, bool remembers);

    qt::QtView* getView() const { return view; }
    FrameDriver* getFrameDriver() const { return frameDriver; }

    void showStatistics(bool shown);

    /// Shows at once what otherwise waits for the first frame of a scene.
    void fillDocks();

    /// Shows the picture in the corner of the view; a message tells why it cannot be read.
    void setLogo(const QString& file);

    /// Puts an object effect on the selected node, a scene effect on the view. The view's messages tell what
    /// is wrong with the file.
    void loadEffect(const QString& file);

public slots:
    void chooseFile();
    void chooseEffect();
    void chooseLogo();
    void about();

signals:
    /// The scene is attached; the next frame shows it.
    void opened(const halvern::studio::LoadedScene& loaded);

    /// The first file cannot be opened, so that there is nothing to show.
    void nothingToShow(const QString& message);

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

    /// Takes files from the desktop: effects and models.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private slots:
    void showStart(const QString& file);
    void showLoaded(const halvern::studio::LoadedScene& loaded);
    void showFailure(const QString& message);
    void showCancelled();

private:
    void createView();
    void createDocks();
    void createMenus();
    QAction* addSwitch(QMenu& menu, const QString& text, void (qt::QtView::*turn)(bool));
    void warn(const QString& message);
    void createStatusBar();
    void connectLoader();
    void startLoading(const QString& file);
    void endLoading(const QString& note);
    void showWarnings(const std::vector<std::string>& warnings);

    SceneLoader* const loader;
    const bool remembers;
    qt::QtView* view;
    Session* session;
    FrameDriver* frameDriver;
    Panels* panels;
    UndoHistory* undoHistory;
    RecentFiles* recentFiles;
    QAction* statistics;
    QAction* logo;
    QLabel* counts;
    QLabel* note;
    QProgressBar* progress;
    QPushButton* cancel;
    QTimer progressDelay;  ///< most files are read before a progress bar would be noticed
    bool arranged = false; ///< the docks have their places
    bool first = true;     ///< the file that the program was started with is being read
};

} // namespace halvern::studio
