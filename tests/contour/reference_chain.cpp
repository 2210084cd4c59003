#include "contour/reference_chain.h"

#include <deque>
#include <list>

namespace orvane::testing {

CLineList ReferenceChain(const CLineList& input) {
  std::list<CLine> remaining(input.Lines().begin(), input.Lines().end());
  std::vector<CLine> out;
  std::vector<std::int32_t> starts;
  while (!remaining.empty()) {
    std::deque<CLine> polyline{remaining.front()};
    remaining.pop_front();
    bool joined = true;
    while (joined) {
      joined = false;
      for (auto it = remaining.begin(); it != remaining.end(); ++it) {
        const CLine s = *it;
        const CLine& end = polyline.back();
        const CLine& start = polyline.front();
        const CLine reversed{s.x2, s.y2, s.z2, s.x1, s.y1, s.z1};
        if (Coincide(end.x2, end.y2, end.z2, s.x1, s.y1, s.z1)) {
          polyline.push_back(s);
        } else if (Coincide(end.x2, end.y2, end.z2, s.x2, s.y2, s.z2)) {
          polyline.push_back(reversed);
        } else if (Coincide(start.x1, start.y1, start.z1, s.x2, s.y2, s.z2)) {
          polyline.push_front(s);
        } else if (Coincide(start.x1, start.y1, start.z1, s.x1, s.y1, s.z1)) {
          polyline.push_front(reversed);
        } else {
          continue;
        }
        remaining.erase(it);
        joined = true;
        break;
      }
    }
    starts.push_back(static_cast<std::int32_t>(out.size()));
    out.insert(out.end(), polyline.begin(), polyline.end());
  }
  return CLineList::FromPolylines(std::move(out), std::move(starts));
}

}  // namespace orvane::testing
