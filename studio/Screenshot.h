#pragma once

#include <QString>

class QWidget;

namespace halvern::studio {

/// Saves a widget as it is on screen, what other programs draw over it left out, as PNG whatever the
/// file's name. Returns why the file cannot be written; empty when it is.
QString saveScreenshot(const QWidget& widget, const QString& fileName);

} // namespace halvern::studio
