// The line marker: the source line last marked, printed by diagnostics only.
#pragma once

#include <cstdint>

namespace omrel {

inline std::int32_t line_marker = 0;

// Stores the caller's source line.
inline void mark_line(std::int32_t line = __builtin_LINE()) { line_marker = line; }

}  // namespace omrel
