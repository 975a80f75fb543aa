#include "studio/MainWindow.h"

#include "qt/QtView.h"
#include "reference/engine/fx/EffectFiles.h"
#include "studio/FrameDriver.h"
#include "studio/Log.h"
#include "studio/Panels.h"
#include "studio/RecentFiles.h"
#include "studio/Session.h"
#include "studio/UndoHistory.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace halvern::studio {

namespace {

const char GeometryKey[] = "geometry";
const char StateKey[] = "state";
const int ProgressDelay = 250; // milliseconds

QString describe(const scene::ImportCounts& counts)
{
    //: The code of the language, for how it writes numbers.
    const QLocale locale(MainWindow::tr("en"));
    return MainWindow::tr("%1 nodes, %2 triangles")
        .arg(locale.toString(counts.nodes), locale.toString(qulonglong(counts.triangles)));
}

QString modelFilter()
{
    QStringList patterns;
    for (const std::string& extension : scene::importExtensions())
        patterns.append("*." + QString::fromStdString(extension));
    return MainWindow::tr("Models (%1)").arg(patterns.join(' '));
}

QStringList droppedFiles(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    return files;
}

bool isEffect(const QString& file)
{
    return QFileInfo(file).suffix().compare("fx", Qt::CaseInsensitive) == 0;
}

} // namespace

MainWindow::MainWindow(SceneLoader* newLoader, bool newRemembers) : loader(newLoader), remembers(newRemembers)
{
    createView();
    createDocks();
    createMenus();
    createStatusBar();
    connectLoader();

    setWindowTitle(tr("Halvern Studio"));
    setAcceptDrops(true);
    resize(1280, 800);
    if (remembers) {
        restoreGeometry(QSettings().value(GeometryKey).toByteArray());
        arranged = restoreState(QSettings().value(StateKey).toByteArray());
    }
}

void MainWindow::createView()
{
    view = new qt::QtView(nullptr, "View");
    view->setObjectName("Halvern_Rendering_QtView");
    session = new Session(view);
    session->setParent(this);
    frameDriver = new FrameDriver(
        view, [this] { return session->isMoving(); }, view->getUpdateFrequency());

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    setCentralWidget(central);
}

void MainWindow::createDocks()
{
    panels = new Panels(this, view, session->getEventManager());
    // Queued, so that the frame is on screen before the panels are filled.
    connect(frameDriver, &FrameDriver::frameShown, panels, &Panels::fill, Qt::QueuedConnection);
}

void MainWindow::createMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Open..."), this, &MainWindow::chooseFile, QKeySequence::Open);
    recentFiles = new RecentFiles(tr("Open &Recent"), this);
    recentFiles->menuAction()->setVisible(remembers);
    connect(recentFiles, &RecentFiles::chosen, loader, &SceneLoader::load);
    file->addMenu(recentFiles);
    file->addAction(tr("Load &Effect..."), this, &MainWindow::chooseEffect);
    file->addAction(tr("Set &Logo..."), this, &MainWindow::chooseLogo);
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    undoHistory = new UndoHistory(session->getEventManager(), this);
    edit->addAction(undoHistory->createUndoAction(this));
    edit->addAction(undoHistory->createRedoAction(this));

    QMenu* viewMenu = menuBar()->addMenu(tr("&View"));
    statistics = addSwitch(*viewMenu, tr("&Statistics"), &qt::QtView::setShowStats);
    logo = addSwitch(*viewMenu, tr("&Logo"), &qt::QtView::enableLogo);
    logo->setEnabled(false); // until there is one
    addSwitch(*viewMenu, tr("&Presentation Mode"), &qt::QtView::setPresentationMode);
    viewMenu->addSeparator();
    panels->addActions(*viewMenu);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About Halvern Studio"), this, &MainWindow::about);
}

/// The view asks for no repaint by itself when one of its switches is turned.
QAction* MainWindow::addSwitch(QMenu& menu, const QString& text, void (qt::QtView::*turn)(bool))
{
    QAction* action = menu.addAction(text);
    action->setCheckable(true);
    connect(action, &QAction::toggled, this, [this, turn](bool on) {
        (view->*turn)(on);
        view->update();
    });
    return action;
}

void MainWindow::createStatusBar()
{
    counts = new QLabel;
    note = new QLabel;
    progress = new QProgressBar;
    progress->setMaximumWidth(240);
    progress->hide();
    cancel = new QPushButton(tr("Cancel"));
    cancel->hide();
    progressDelay.setSingleShot(true);
    statusBar()->addWidget(counts);
    statusBar()->addPermanentWidget(note);
    statusBar()->addPermanentWidget(progress);
    statusBar()->addPermanentWidget(cancel);
}

void MainWindow::connectLoader()
{
    connect(loader, &SceneLoader::started, this, &MainWindow::showStart);
    connect(loader, &SceneLoader::progressed, progress, &QProgressBar::setValue);
    connect(loader, &SceneLoader::loaded, this, &MainWindow::showLoaded);
    connect(loader, &SceneLoader::failed, this, &MainWindow::showFailure);
    connect(loader, &SceneLoader::cancelled, this, &MainWindow::showCancelled);
    connect(cancel, &QPushButton::clicked, loader, &SceneLoader::cancel);
    connect(&progressDelay, &QTimer::timeout, progress, &QWidget::show);
    connect(&progressDelay, &QTimer::timeout, cancel, &QWidget::show);
    if (loader->isLoading())
        startLoading(loader->getFile());
}

void MainWindow::chooseFile()
{
    auto* dialog = new QFileDialog(this, tr("Open a model"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::HideNameFilterDetails); // there are dozens of extensions
    dialog->setNameFilters({modelFilter(), tr("All files (*)")});
    connect(dialog, &QFileDialog::fileSelected, loader, &SceneLoader::load);
    dialog->open();
}

void MainWindow::chooseEffect()
{
    auto* dialog = new QFileDialog(this, tr("Load an effect"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters({tr("Effects (*.fx)"), tr("All files (*)")});
    dialog->setDirectory(QString::fromStdString(engine::fx::getEffectFolder()));
    connect(dialog, &QFileDialog::fileSelected, this, &MainWindow::loadEffect);
    dialog->open();
}

void MainWindow::loadEffect(const QString& file)
{
    view->loadEffect(file.toStdString(), panels->getSelectedID().toStdString(), 0, 0);
}

void MainWindow::chooseLogo()
{
    auto* dialog = new QFileDialog(this, tr("Set the logo"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, &MainWindow::setLogo);
    dialog->open();
}

void MainWindow::setLogo(const QString& file)
{
    QImageReader reader(file);
    const QImage image = reader.read();
    if (image.isNull())
        return warn(tr("%1: %2").arg(file, reader.errorString()));
    view->setLogo(image);
    view->update();
    logo->setEnabled(true);
    logo->setChecked(true);
}

void MainWindow::showStatistics(bool shown)
{
    statistics->setChecked(shown);
}

void MainWindow::fillDocks()
{
    panels->fill();
}

void MainWindow::about()
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, tr("About Halvern Studio"),
                                tr("<h3>Halvern Studio %1</h3><p>Shows and edits 3D scenes with the widgets "
                                   "of halvern_qt.</p>")
                                    .arg(QCoreApplication::applicationVersion()),
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void MainWindow::showEvent(QShowEvent* event)
{
    if (!std::exchange(arranged, true))
        panels->arrange();
    QMainWindow::showEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (remembers) {
        QSettings().setValue(GeometryKey, saveGeometry());
        QSettings().setValue(StateKey, saveState());
    }
    QMainWindow::closeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!droppedFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    for (const QString& file : droppedFiles(*event->mimeData()))
        if (isEffect(file))
            loadEffect(file);
        else
            loader->load(file);
    event->acceptProposedAction();
}

void MainWindow::showStart(const QString& file)
{
    endLoading({});
    startLoading(file);
}

void MainWindow::showLoaded(const LoadedScene& loaded)
{
    endLoading({});
    panels->open(loaded.scene.sceneManager);
    session->open(loaded.scene.sceneManager);
    undoHistory->open(loaded.scene.sceneManager);
    setWindowTitle(tr("%1 - Halvern Studio").arg(QFileInfo(loaded.file).fileName()));
    counts->setText(describe(loaded.scene.counts));
    showWarnings(loaded.scene.warnings);
    if (remembers)
        recentFiles->add(loaded.file);
    emit opened(loaded);
}

void MainWindow::showWarnings(const std::vector<std::string>& warnings)
{
    QStringList texts;
    for (const std::string& warning : warnings) {
        texts.append(QString::fromStdString(warning));
        qCWarning(log).noquote() << texts.last();
    }
    if (!texts.isEmpty())
        note->setText(texts.size() == 1 ? texts.first() : tr("%n warnings", nullptr, texts.size()));
    note->setToolTip(texts.join('\n'));
}

void MainWindow::showFailure(const QString& message)
{
    const bool isFirst = first;
    endLoading({});
    if (isFirst)
        return emit nothingToShow(message);
    warn(message);
}

void MainWindow::warn(const QString& message)
{
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Halvern Studio"), message, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->open();
}

void MainWindow::showCancelled()
{
    endLoading(tr("Cancelled"));
}

void MainWindow::startLoading(const QString& file)
{
    note->setText(tr("Opening %1").arg(QFileInfo(file).fileName()));
    note->setToolTip({});
    progress->setValue(0);
    progressDelay.start(ProgressDelay);
}

void MainWindow::endLoading(const QString& newNote)
{
    first = false;
    progressDelay.stop();
    progress->hide();
    cancel->hide();
    note->setText(newNote);
}

} // namespace halvern::studio
