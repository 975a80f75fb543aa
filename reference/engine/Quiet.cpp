#include "reference/engine/Quiet.h"

#include <osg/Notify>

#include <cstdlib>

namespace halvern::engine {

void quietenOpenSceneGraph()
{
    static const bool done = [] {
        if (!std::getenv("OSG_NOTIFY_LEVEL") && !std::getenv("OSGNOTIFYLEVEL"))
            osg::setNotifyLevel(osg::FATAL);
        return true;
    }();
    static_cast<void>(done);
}

} // namespace halvern::engine
