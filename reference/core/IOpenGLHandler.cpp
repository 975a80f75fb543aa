#include "engine/core/interfaces/IOpenGLHandler.h"

namespace halvern::core::interfaces {

IOpenGLHandler::~IOpenGLHandler() = default;

} // namespace halvern::core::interfaces
