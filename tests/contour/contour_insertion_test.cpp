// Ordered insertion of contour levels: Add's bisection and AddLevels' merge against the
// insertion as it reads, on random, tie-heavy, NaN-holding and unsorted collections.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "orvane/contour/contouring.h"
#include "orvane/core/property_bag.h"

namespace orvane {
namespace {

using Levels = std::vector<std::shared_ptr<Contour>>;

// The ordered insertion as it reads: find the first level above the value by scanning
// from the start, move it and every later level up one place as a fresh copy of value and
// colours (so its line format is reset), and store the new level in the gap.
struct LiteralInsertion {
  Levels items;
  void Add(double value, Color color = 0, Color colorBelow = 0) {
    std::size_t i = 0;
    while (i < items.size() && !(items[i]->Value() > value)) ++i;
    items.emplace_back();
    for (std::size_t k = items.size() - 1; k > i; --k) {
      const Contour& old = *items[k - 1];
      items[k] = std::make_shared<Contour>(old.Value(), old.Color(), old.ColorBelow());
    }
    items[i] = std::make_shared<Contour>(value, color, colorBelow);
  }
};

Levels Items(const Contours& levels) {
  Levels items;
  for (std::int32_t i = 0; i < levels.Count(); ++i) items.push_back(levels.Item(i));
  return items;
}

// A collection holding initial (added one by one, with colours), and the oracle holding
// the very same level objects; some of them are given a line format, which a level loses
// when it moves.
struct Pair {
  Contours real;
  LiteralInsertion oracle;
  Levels held;  // keeps the original objects alive, so that no new one takes an address
  std::set<const Contour*> originals;

  void Hold(const Levels& levels) {
    for (const auto& level : levels) {
      held.push_back(level);
      originals.insert(level.get());
    }
  }

  explicit Pair(const std::vector<double>& initial) {
    for (std::size_t k = 0; k < initial.size(); ++k) {
      real.Add(initial[k], static_cast<std::int64_t>(k + 1), static_cast<std::int64_t>(1000 + k));
    }
    oracle.items = Items(real);
    Hold(oracle.items);
    for (std::size_t k = 0; k < oracle.items.size(); ++k) {
      oracle.items[k]->SetLineWidth(static_cast<std::int32_t>(2 + k % 3));
      oracle.items[k]->SetLineDrawStyle(static_cast<std::int32_t>(k % 5));
    }
  }

  // The same values to both, one by one or all in one call.
  void Add(double value) {
    real.Add(value);
    oracle.Add(value);
  }
  void AddLevels(const std::vector<double>& values) {
    real.AddLevels(values);
    for (double v : values) oracle.Add(v);
  }

  // Same values bit for bit, same colours and line formats, and the same objects exactly
  // where the oracle kept one.
  ::testing::AssertionResult Same() const {
    const Levels got = Items(real);
    if (got.size() != oracle.items.size()) {
      return ::testing::AssertionFailure() << got.size() << " levels, expected " << oracle.items.size();
    }
    for (std::size_t i = 0; i < got.size(); ++i) {
      const Contour& a = *got[i];
      const Contour& b = *oracle.items[i];
      if (std::bit_cast<std::uint64_t>(a.Value()) != std::bit_cast<std::uint64_t>(b.Value()) ||
          a.Color() != b.Color() || a.ColorBelow() != b.ColorBelow() ||
          a.LineWidth() != b.LineWidth() || a.LineDrawStyle() != b.LineDrawStyle()) {
        return ::testing::AssertionFailure()
               << "level " << i << ": " << a.Value() << " colour " << a.Color() << " width "
               << a.LineWidth() << ", expected " << b.Value() << " colour " << b.Color()
               << " width " << b.LineWidth();
      }
      const bool kept = originals.count(oracle.items[i].get()) > 0;
      if (kept ? got[i] != oracle.items[i] : originals.count(got[i].get()) > 0) {
        return ::testing::AssertionFailure()
               << "level " << i << (kept ? " should be the object it was" : " should be a fresh copy");
      }
    }
    return ::testing::AssertionSuccess();
  }
};

std::vector<double> Uniform(std::mt19937& random, std::size_t n, double lo, double hi) {
  std::uniform_real_distribution<double> u(lo, hi);
  std::vector<double> v(n);
  for (double& x : v) x = u(random);
  return v;
}

// Values drawn from a handful, signed zeros and infinities included, so that most of
// them tie.
std::vector<double> Ties(std::mt19937& random, std::size_t n) {
  const double pool[] = {-1.0, -0.0, 0.0, 1.0, 2.0, 2.0, -std::numeric_limits<double>::infinity(),
                         std::numeric_limits<double>::infinity()};
  std::uniform_int_distribution<std::size_t> pick(0, std::size(pool) - 1);
  std::vector<double> v(n);
  for (double& x : v) x = pool[pick(random)];
  return v;
}

TEST(ContourInsertion, AddLevelsEqualsOneAddAfterTheOther) {
  std::mt19937 random(11);
  struct Case {
    std::vector<double> initial, added;
  };
  std::vector<Case> cases = {
      {{}, {}},
      {{1, 2, 3}, {}},
      {{}, {5, 4, 3, 3, 2, 1}},                    // descending: every new level moves
      {{0, 5, 10}, {5}},                           // after the equal level; 10 moves
      {{0, 5, 10}, {10, 11, 12}},                  // nothing below an existing level
      {{0, 5, 10}, {-1}},                          // everything moves
      {{3, 3, 3}, {3, 3, 2.5, 3}},                 // all tied but one
      {{-0.0, 0.0}, {0.0, -0.0, 0.0}},             // zeros of both signs keep their order
      {Uniform(random, 300, -10, 10), Uniform(random, 2000, -12, 12)},
      {Uniform(random, 50, 0, 1), Uniform(random, 500, 0.5, 2)},
      {Ties(random, 40), Ties(random, 600)},
      {{}, Ties(random, 300)},
  };
  for (std::size_t c = 0; c < cases.size(); ++c) {
    Pair pair(cases[c].initial);
    pair.AddLevels(cases[c].added);
    EXPECT_TRUE(pair.Same()) << "case " << c;
  }
}

TEST(ContourInsertion, AddByBisectionEqualsTheScan) {
  std::mt19937 random(23);
  std::uniform_int_distribution<std::int64_t> colour(-1, 0xFFFFFF);
  for (const std::vector<double>& added :
       {Uniform(random, 400, -5, 5), Ties(random, 400), std::vector<double>{4, 3, 2, 1, 0}}) {
    Pair pair(Uniform(random, 20, -5, 5));
    for (double v : added) {
      const std::int64_t c = colour(random);
      const std::int64_t below = colour(random);
      EXPECT_EQ(pair.real.Add(v, c, below), 0);
      pair.oracle.Add(v, static_cast<Color>(std::max<std::int64_t>(c, 0)),
                      static_cast<Color>(std::max<std::int64_t>(below, 0)));
    }
    EXPECT_TRUE(pair.Same());
  }
}

TEST(ContourInsertion, NaNAndUnsortedLevelsFollowTheScan) {
  // A NaN level is above nothing, so it goes last, and from then on the scan passes over
  // it: 6 goes before 7 but after the NaN, 8 after the second NaN.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::mt19937 random(5);
  {
    Pair pair({5});
    for (double v : {nan, 7.0, 6.0, 4.0, nan, 8.0}) pair.Add(v);
    EXPECT_TRUE(pair.Same());  // 4, 5, NaN, 6, 7, NaN, 8
    pair.AddLevels({6.5, 1.0, 9.0});
    EXPECT_TRUE(pair.Same());
  }
  {
    // NaN among the values of one AddLevels call.
    std::vector<double> added = Uniform(random, 200, 0, 1);
    added[50] = nan;
    added[120] = nan;
    Pair pair(Uniform(random, 30, 0, 1));
    pair.AddLevels(added);
    EXPECT_TRUE(pair.Same());
    // Emptied, the collection is ordered again.
    pair.real.RemoveAll();
    pair.oracle.items.clear();
    pair.AddLevels({3, 1, 2});
    EXPECT_TRUE(pair.Same());
  }
  {
    // Levels read from a bag keep their stored order, sorted or not.
    PropertyBag bag;
    const double stored[] = {5, 1, 3, 3, -2};
    bag.WriteProperty("L.Count", std::int32_t{5});
    for (int k = 0; k < 5; ++k) {
      bag.WriteProperty("L.Contour" + std::to_string(k) + ".Value", stored[k]);
    }
    Pair pair({});
    pair.real.ReadProperties(bag, "L.");
    pair.oracle.items = Items(pair.real);
    pair.Hold(pair.oracle.items);
    for (double v : {2.0, 4.0, -3.0, 3.0}) pair.Add(v);
    pair.AddLevels(Ties(random, 50));
    EXPECT_EQ(pair.real.Count(), 59);
    EXPECT_TRUE(pair.Same());
  }
}

TEST(ContourInsertion, AutomaticLevelsEqualTheInsertionOneByOne) {
  // Levels that stop growing (1 is below half the spacing of doubles near 1e17) tie.
  Contouring c;
  c.SetAutoSetContoursType(orvAutoSetByInterval);
  c.SetAutoSetInterval(1);
  c.AutoSetContours(1e17, 1e17 + 64);
  LiteralInsertion oracle;
  double z = 1e17;
  for (int i = 0; i <= 64; ++i, z += 1) oracle.Add(z);
  ASSERT_EQ(c.Contours().Count(), 65);
  for (std::int32_t i = 0; i < 65; ++i) {
    EXPECT_EQ(c.Contours().Item(i)->Value(), oracle.items[static_cast<std::size_t>(i)]->Value());
    EXPECT_EQ(c.Contours().Item(i)->Value(), 1e17);
  }
}

TEST(ContourInsertion, HundredThousandAutomaticLevelsTakeLessThanTwoSeconds) {
  // Inserting each level with a scan from the start took about half a minute here.
  Contouring c;
  c.SetAutoSetIntervalCount(100000);
  const auto start = std::chrono::steady_clock::now();
  c.AutoSetContours(0, 1);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ASSERT_EQ(c.Contours().Count(), 100001);
  EXPECT_EQ(c.Contours().Item(0)->Value(), 0.0);
  EXPECT_NEAR(c.Contours().Item(100000)->Value(), 1.0, 1e-9);
  EXPECT_LT(seconds, 2.0);
}

}  // namespace
}  // namespace orvane
