#pragma once

#include <QLoggingCategory>

namespace halvern::studio {

/// "halvern.studio": what the user may want to know and need not answer. Its debug messages tell each
/// frame; QT_LOGGING_RULES="halvern.studio.debug=true" shows them.
Q_DECLARE_LOGGING_CATEGORY(log)

} // namespace halvern::studio
