#include "tests/qt/ViewProbe.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QScreen>
#include <QTest>
#include <QWindow>

#include <cstring>

namespace halvern::test {

namespace {

/// Sees the X server answer: a change of a window's property comes back after everything that was asked
/// for before it.
class XFence : public QAbstractNativeEventFilter
{
public:
    XFence()
    {
        window.create();
        id = static_cast<quint32>(window.winId());
        qApp->installNativeEventFilter(this);
    }

    bool wait()
    {
        window.setTitle("fence");
        return waitFor([this] { return passed; });
    }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message, long* /*result*/) override
    {
        constexpr int PropertyNotify = 28;
        struct Event // the head of xcb_property_notify_event_t
        {
            quint8 type;
            quint8 pad;
            quint16 sequence;
            quint32 window;
        } event;
        std::memcpy(&event, message, sizeof event);
        passed |= (event.type & 0x7f) == PropertyNotify && event.window == id;
        return false;
    }

private:
    QWindow window;
    quint32 id = 0;
    bool passed = false;
};

} // namespace

void showView(QWidget& view, int width, int height)
{
    view.setGeometry(100, 100, width, height);
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        qWarning("a view is not exposed");
    settle();
}

void settle()
{
    if (QGuiApplication::platformName() == "xcb" && !XFence().wait())
        qWarning("the X server does not answer");
    QCoreApplication::processEvents();
    QCoreApplication::processEvents(); // what the first round posted
}

bool waitFor(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, 10000);
}

void repaintView(ViewProbe& view)
{
    const int before = view.paints;
    view.update();
    waitFor([&] { return view.paints > before; });
}

QImage grabScreen(const QWidget& view)
{
    settle();
    const QPoint origin = view.mapToGlobal(QPoint(0, 0));
    return view.screen()
        ->grabWindow(0, origin.x(), origin.y(), view.width(), view.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

unsigned int makeTexture(const std::vector<QColor>& texels)
{
    std::vector<unsigned char> bytes;
    for (const QColor& texel : texels)
        for (const int channel : {texel.red(), texel.green(), texel.blue(), texel.alpha()})
            bytes.push_back(static_cast<unsigned char>(channel));
    const int side = texels.size() == 4 ? 2 : 1;

    QOpenGLFunctions* gl = QOpenGLContext::currentContext()->functions();
    GLuint texture = 0;
    gl->glGenTextures(1, &texture);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, side, side, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

boost::shared_ptr<FakeWindow> showWithFakeWindow(ViewProbe& view, CallLog& log, int width, int height)
{
    showView(view, width, height);
    const auto window = boost::make_shared<FakeWindow>(log);
    view.setWindow(window);
    log.take();
    return window;
}

core::event::Event makeEvent(const std::string& type, const std::string& data)
{
    return core::event::Event(core::event::EventType(type), core::event::EventData(data), "id");
}

} // namespace halvern::test
