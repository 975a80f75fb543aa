#pragma once

#include <QObject>
#include <QThread>

namespace halvern::qt {

/// The deleter of an object that is shared with other threads: the last reference may be dropped on one.
inline void deleteOnItsThread(QObject* object)
{
    if (QThread::currentThread() == object->thread())
        delete object;
    else
        object->deleteLater();
}

} // namespace halvern::qt
