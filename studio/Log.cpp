#include "studio/Log.h"

namespace halvern::studio {

Q_LOGGING_CATEGORY(log, "halvern.studio", QtInfoMsg)

} // namespace halvern::studio
