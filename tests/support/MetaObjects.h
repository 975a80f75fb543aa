#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QObject>

#include <string>
#include <vector>

namespace halvern::test {

/// Signatures of the signals and slots that a class itself declares, in the order of declaration.
inline std::vector<std::string> ownMethods(const QMetaObject& meta)
{
    std::vector<std::string> signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.push_back(meta.method(i).methodSignature().toStdString());
    return signatures;
}

/// Undoes the connection to find out: the first disconnect finds it, the second does not.
inline bool isConnectedOnce(QObject* sender, const char* signal, QObject* receiver, const char* slot)
{
    return QObject::disconnect(sender, signal, receiver, slot) &&
           !QObject::disconnect(sender, signal, receiver, slot);
}

} // namespace halvern::test
