#pragma once

// Chaining exactly as first described, kept as the oracle for CLineList::Chain: every
// step walks the remaining segments in list order and restarts after each join.

#include "contour/line_list.h"

namespace orvane::testing {

CLineList ReferenceChain(const CLineList& input);

}  // namespace orvane::testing
