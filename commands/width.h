// The optional fifth text of "&", "|", "<<", ">>", "&=" and "|=": a width in bits.
#pragma once

#include "commands/call.h"

namespace omrel {

// The width that the call gives, 0 when it gives none or one below 1.
std::int32_t width_of(const Call& call);

// Cuts the value to its lowest bits, width of them; leaves it as it is for a width of 0.
void narrow(bignum& a, std::int32_t width);

}  // namespace omrel
