// Built with what pkg-config says, and nothing else.
#include "engine/core/event/EventManager.h"
#include "qt/QtScene.h"

#include <QApplication>

#include <boost/make_shared.hpp>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    halvern::qt::QtScene tree;
    tree.setEventManager(boost::make_shared<HCE::EventManager>(true));
    tree.show();
    return tree.isVisible() ? 0 : 1;
}
