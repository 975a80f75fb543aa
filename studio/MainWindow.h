#pragma once

#include "studio/SceneLoader.h"

#include <QMainWindow>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace halvern::qt {
class QtView;
}

namespace halvern::studio {

class FrameDriver;
class RecentFiles;
class Session;

/// The window of the studio: the view, the menus and the status bar.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// Remembers: keeps its geometry and the recent files from run to run. The loader outlives the window.
    MainWindow(SceneLoader* loader, bool remembers);

    qt::QtView* getView() const { return view; }
    FrameDriver* getFrameDriver() const { return frameDriver; }

public slots:
    void chooseFile();
    void about();

signals:
    /// The scene is attached; the next frame shows it.
    void opened(const halvern::studio::LoadedScene& loaded);

    /// The first file cannot be opened, so that there is nothing to show.
    void nothingToShow(const QString& message);

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void showStart(const QString& file);
    void showLoaded(const halvern::studio::LoadedScene& loaded);
    void showFailure(const QString& message);
    void showCancelled();

private:
    void createView();
    void createMenus();
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
    RecentFiles* recentFiles;
    QLabel* counts;
    QLabel* note;
    QProgressBar* progress;
    QPushButton* cancel;
    QTimer progressDelay; ///< most files are read before a progress bar would be noticed
    bool first = true;    ///< the file that the program was started with is being read
};

} // namespace halvern::studio
