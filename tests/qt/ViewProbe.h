#pragma once

#include "engine/core/event/Event.h"
#include "qt/QtView.h"
#include "tests/support/FakeWindow.h"

#include <QImage>
#include <QPainter>

#include <functional>
#include <string>
#include <vector>

namespace halvern::test {

/// A view whose protected parts are open, and which counts its paint events.
class ViewProbe : public qt::QtView
{
public:
    using QtView::QtView;

    using QtView::contextMenuEvent;
    using QtView::dragEnterEvent;
    using QtView::dragMoveEvent;
    using QtView::dropEvent;
    using QtView::handleDisplayMessageAt;
    using QtView::handleObjectPicked;
    using QtView::handleSyncScene;
    using QtView::initializeGL;
    using QtView::internalLoadEffect;
    using QtView::mouseDoubleClickEvent;
    using QtView::paintGL;
    using QtView::queueTask;
    using QtView::receivers;
    using QtView::resizeGL;
    using QtView::validateMessagePosition;

    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QtView::paintEvent(event);
    }

    int paints = 0;
};

/// A view that initialises nothing: it has no window but the one that is set, and nothing of an engine
/// asks it for repaints.
class WindowlessView : public ViewProbe
{
public:
    using ViewProbe::ViewProbe;
    void initializeGL() override {}
};

/// Shows a view at a fixed place of the screen and waits for its first frame.
void showView(QWidget& view, int width = 200, int height = 100);

/// Runs the event loop until the X server has answered everything and nothing is left to do.
void settle();

/// Runs the event loop until the condition holds; false when ten seconds were not enough.
bool waitFor(const std::function<bool()>& condition);

/// Asks for a repaint and waits until it is done.
void repaintView(ViewProbe& view);

/// What of the view is on the screen, painted overlays included.
QImage grabScreen(const QWidget& view);

/// A texture in the current context, linear and clamped; four colours give 2 x 2 texels, bottom row first.
unsigned int makeTexture(const std::vector<QColor>& texels);

/// Shows the view, puts a fake window into it and clears the log.
boost::shared_ptr<FakeWindow> showWithFakeWindow(ViewProbe& view, CallLog& log, int width = 200,
                                                 int height = 100);

core::event::Event makeEvent(const std::string& type, const std::string& data = "");

} // namespace halvern::test
