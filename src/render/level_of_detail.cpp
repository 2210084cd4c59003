#include "level_of_detail.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/parallel.h"

namespace orvane::detail {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// The first and last node of the block a kept node stands for; the blocks of an axis's
// kept nodes tile it.
struct Span {
  std::size_t first = 0, last = 0;
};

std::vector<Span> Blocks(const std::vector<std::size_t>& kept, std::size_t count) {
  std::vector<Span> blocks(kept.size());
  for (std::size_t k = 0; k < kept.size(); ++k) {
    // From just past the midpoint to the previous kept node up to the midpoint to the next.
    blocks[k].first = k == 0 ? 0 : (kept[k - 1] + kept[k]) / 2 + 1;
    blocks[k].last = k + 1 == kept.size() ? count - 1 : (kept[k] + kept[k + 1]) / 2;
  }
  return blocks;
}

}  // namespace

std::size_t DetailStride(std::size_t triangles, std::size_t pixels) {
  const auto t = static_cast<double>(triangles), p = static_cast<double>(pixels);
  if (pixels == 0 || t <= kDetailTrianglesPerPixel * p) return 1;
  auto s = static_cast<std::size_t>(std::ceil(std::sqrt(t / (kDetailTargetPerPixel * p))));
  while (s > 1 && t / static_cast<double>((s - 1) * (s - 1)) <= kDetailTargetPerPixel * p) --s;
  while (t / static_cast<double>(s * s) > kDetailTargetPerPixel * p) ++s;
  return std::max<std::size_t>(s, 2);
}

std::vector<std::size_t> KeptNodes(std::size_t count, std::size_t stride) {
  std::vector<std::size_t> kept;
  if (count == 0) return kept;
  stride = std::max<std::size_t>(stride, 1);
  for (std::size_t k = 0; k < count; k += stride) kept.push_back(k);
  if (kept.back() != count - 1) kept.push_back(count - 1);
  return kept;
}

ReducedGrid ReduceGrid(std::span<const double> z, std::size_t nx, std::size_t ny, std::size_t stride) {
  ReducedGrid out;
  if (nx == 0 || ny == 0 || z.size() < nx * ny) return out;
  out.columns = KeptNodes(nx, stride);
  out.rows = KeptNodes(ny, stride);
  const std::vector<Span> blockX = Blocks(out.columns, nx), blockY = Blocks(out.rows, ny);
  const std::size_t cols = out.columns.size(), rows = out.rows.size();
  out.z.resize(cols * rows);
  // Columns of kept nodes in fixed parts: each part writes only its own nodes.
  constexpr std::size_t kPart = 16;
  RunTasks((cols + kPart - 1) / kPart, [&](std::size_t part) {
    for (std::size_t c = part * kPart; c < std::min(cols, (part + 1) * kPart); ++c) {
      const Span bx = blockX[c];
      const std::size_t ex0 = bx.first > 0 ? bx.first - 1 : 0, ex1 = std::min(bx.last + 1, nx - 1);
      for (std::size_t r = 0; r < rows; ++r) {
        const double own = z[out.columns[c] * ny + out.rows[r]];
        double& kept = out.z[c * rows + r];
        kept = own;
        if (std::isnan(own) || stride <= 1) continue;
        const Span by = blockY[r];
        const std::size_t ey0 = by.first > 0 ? by.first - 1 : 0, ey1 = std::min(by.last + 1, ny - 1);
        double high = -kInf, low = kInf, ringHigh = -kInf, ringLow = kInf;
        for (std::size_t i = ex0; i <= ex1; ++i) {
          const double* column = z.data() + i * ny;
          const bool ringColumn = i < bx.first || i > bx.last;
          for (std::size_t j = ey0; j <= ey1; ++j) {
            const double v = column[j];
            if (std::isnan(v)) continue;
            if (ringColumn || j < by.first || j > by.last) {
              ringHigh = std::max(ringHigh, v);
              ringLow = std::min(ringLow, v);
            } else {
              high = std::max(high, v);
              low = std::min(low, v);
            }
          }
        }
        const bool peak = high > ringHigh, pit = low < ringLow;
        if (peak && pit) {
          kept = high - own >= own - low ? high : low;
        } else if (peak) {
          kept = high;
        } else if (pit) {
          kept = low;
        }
      }
    }
  });
  return out;
}

std::size_t ClusterCells(std::size_t triangles, std::size_t pixels) {
  const auto t = static_cast<double>(triangles), p = static_cast<double>(pixels);
  if (pixels == 0 || t <= kDetailTrianglesPerPixel * p) return 0;
  // A cell a pixel. Cell indices stay below 2^21 so that a triangle's three fit in one
  // 64-bit key.
  return std::clamp<std::size_t>(static_cast<std::size_t>(std::sqrt(p)), 2, 1448);
}

ClusteredMesh ClusterTriangulation(std::span<const double> x, std::span<const double> y,
                                   std::span<const std::int32_t> triangles, std::size_t cells) {
  ClusteredMesh out;
  const std::size_t n = std::min(x.size(), y.size());
  if (n == 0 || cells < 2) return out;
  const auto scale = static_cast<double>(cells);
  const auto cellOf = [&](std::size_t k) {
    const auto cx = static_cast<std::size_t>(std::clamp(x[k] * scale, 0.0, scale - 1.0));
    const auto cy = static_cast<std::size_t>(std::clamp(y[k] * scale, 0.0, scale - 1.0));
    return cy * cells + cx;
  };
  // The mean of each cell's points, then the point nearest it.
  std::vector<std::uint32_t> cell(n);
  std::vector<double> sumX(cells * cells, 0.0), sumY(cells * cells, 0.0);
  std::vector<std::uint32_t> count(cells * cells, 0);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t c = cellOf(k);
    cell[k] = static_cast<std::uint32_t>(c);
    sumX[c] += x[k];
    sumY[c] += y[k];
    ++count[c];
  }
  std::vector<double> best(cells * cells, kInf);
  std::vector<std::int32_t> nearest(cells * cells, -1);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t c = cell[k];
    const double dx = x[k] - sumX[c] / count[c], dy = y[k] - sumY[c] / count[c];
    const double d = dx * dx + dy * dy;
    if (d < best[c]) {
      best[c] = d;
      nearest[c] = static_cast<std::int32_t>(k);
    }
  }
  // Kept points in cell order; a cell's place among them.
  std::vector<std::int32_t> place(cells * cells, -1);
  for (std::size_t c = 0; c < cells * cells; ++c) {
    if (nearest[c] < 0) continue;
    place[c] = static_cast<std::int32_t>(out.kept.size());
    out.kept.push_back(nearest[c]);
  }
  // Each surviving triangle as one key: its cells sorted (21 bits each) and whether the
  // input's order is an even turn of the sorted one, so that the winding comes back.
  std::vector<std::uint64_t> keys;
  for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
    std::uint64_t c[3];
    for (std::size_t e = 0; e < 3; ++e) c[e] = cell[static_cast<std::size_t>(triangles[t + e])];
    if (c[0] == c[1] || c[1] == c[2] || c[0] == c[2]) continue;
    // Counter-clockwise order is kept by a rotation that puts the smallest first; the
    // other two are then either ascending (even) or not.
    const std::size_t first = c[0] < c[1] ? (c[0] < c[2] ? 0 : 2) : (c[1] < c[2] ? 1 : 2);
    const std::uint64_t a = c[first], b = c[(first + 1) % 3], d = c[(first + 2) % 3];
    const bool even = b < d;
    keys.push_back((a << 43) | ((even ? b : d) << 22) | ((even ? d : b) << 1) | (even ? 0 : 1));
  }
  std::sort(keys.begin(), keys.end());
  // Each triangle once: keys of the same cells differing only in winding are one.
  out.triangles.reserve(keys.size());
  std::uint64_t last = ~std::uint64_t{0};
  for (const std::uint64_t key : keys) {
    if ((key >> 1) == last) continue;
    last = key >> 1;
    const std::uint64_t mask = (std::uint64_t{1} << 21) - 1;
    const std::uint64_t a = key >> 43, lo = (key >> 22) & mask, hi = (key >> 1) & mask;
    const bool even = (key & 1) == 0;
    out.triangles.push_back(place[a]);
    out.triangles.push_back(place[even ? lo : hi]);
    out.triangles.push_back(place[even ? hi : lo]);
  }
  return out;
}

}  // namespace orvane::detail
