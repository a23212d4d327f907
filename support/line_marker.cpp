#include "support/line_marker.h"

namespace omrel {

std::int32_t line_marker = 0;

}  // namespace omrel
