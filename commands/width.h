// The optional fifth text of "&", "|", "<<", ">>", "&=" and "|=": a width in bits.
#pragma once

#include "commands/call.h"

namespace omrel {

// The width that the call gives, 0 when it gives none or one below 1.
std::int32_t width_of(const Call& call);

}  // namespace omrel
