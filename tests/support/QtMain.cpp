#include <QApplication>
#include <QCoreApplication>
#include <QLocale>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

/// Runs what a test left in the event queue, deferred deletions too, so that the next starts clean.
class EventDrain : public testing::EmptyTestEventListener
{
    void OnTestEnd(const testing::TestInfo& /*info*/) override
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
};

} // namespace

/// The main of every test program that links Qt. HALVERN_TEST_UNSHARED=1 in the environment leaves the
/// OpenGL contexts unshared, as hosts do that forget the attribute.
int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (qEnvironmentVariableIntValue("HALVERN_TEST_UNSHARED") != 1)
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QLocale::setDefault(QLocale::c()); // they type and read numbers, wherever they run
    const QApplication application(argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new EventDrain);
    return RUN_ALL_TESTS();
}
