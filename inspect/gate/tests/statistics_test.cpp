// The statistics against SciPy 1.10 (Debian 12's python3-scipy). The
// expected values were printed by, for each row's samples:
//   scipy.stats.mannwhitneyu(x, y, method='asymptotic', use_continuity=True)
//   scipy.stats.fisher_exact([[a, b], [c, d]])[1]
//   scipy.stats.norm.ppf / norm.sf
// the Hodges-Lehmann rows by numpy over all pairs y[j] - x[i]: np.median,
// and the sorted differences of rank C and nm+1-C, C = floor(nm/2 -
// norm.ppf(0.975) sqrt(nm(n+m+1)/12)); the Newcombe rows by Wilson's
// formula written out in numpy.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "inspect/gate/statistics.h"

namespace inspect::gate {
namespace {

::testing::AssertionResult close(double actual, double expected) {
  if (std::abs(actual - expected) <= 1e-9 * std::max(std::abs(expected), 1e-300))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << actual << " is not " << expected;
}

std::vector<double> sorted(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v;
}

struct two_samples {
  std::vector<double> x, y;
};

const two_samples samples[] = {
    {{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}},
    {{1, 2, 2, 3, 3, 3}, {2, 3, 3, 4, 4, 5, 6}},
    {{612, 615, 615, 620, 633, 640, 641, 650}, {615, 630, 631, 631, 648, 652, 660, 661, 700}},
    {{5, 5, 5, 5}, {5, 5, 5}},
    {{1.5, 2.25, -3.0, 7.0}, {0.5, 2.25, 2.25, 9.0, 11.0}},
};

TEST(statistics, mann_whitney_as_scipy) {
  const struct {
    double u, p;
  } expected[] = {{0.0, 0.012185780355344813},
                  {7.0, 0.04567124293968339},
                  {19.0, 0.11124994749365989},
                  {6.0, 1.0},
                  {6.0, 0.383220631285644}};
  for (std::size_t c = 0; c < std::size(samples); ++c) {
    const rank_test r = mann_whitney(sorted(samples[c].x), sorted(samples[c].y));
    EXPECT_EQ(r.u, expected[c].u) << "case " << c;
    EXPECT_TRUE(close(r.p, expected[c].p)) << "case " << c;
  }
}

TEST(statistics, hodges_lehmann_as_all_pairs) {
  const struct {
    std::size_t sample;
    double shift, low, high;
  } expected[] = {{0, 5.0, 2.0, 8.0}, {1, 1.0, 0.0, 3.0}, {2, 16.0, -3.0, 41.0}, {4, 2.75, -6.5, 14.0}};
  for (const auto& e : expected) {
    const shift_estimate s = hodges_lehmann(sorted(samples[e.sample].x), sorted(samples[e.sample].y));
    EXPECT_EQ(s.shift, e.shift) << "sample " << e.sample;
    ASSERT_TRUE(s.low && s.high) << "sample " << e.sample;
    EXPECT_EQ(*s.low, e.low) << "sample " << e.sample;
    EXPECT_EQ(*s.high, e.high) << "sample " << e.sample;
  }
  // Two values a side leave no interval at 95%; one difference is its own median.
  const shift_estimate few = hodges_lehmann(std::vector<double>{1, 2}, std::vector<double>{3, 4});
  EXPECT_EQ(few.shift, 2);
  EXPECT_FALSE(few.low || few.high);
}

TEST(statistics, kth_difference_crosses_zero_and_negative_values) {
  const std::vector<double> x = sorted({-5, -1, 0, 3}), y = sorted({-2, 0, 4});
  std::vector<double> all;
  for (const double b : y)
    for (const double a : x) all.push_back(b - a);
  std::sort(all.begin(), all.end());
  for (std::uint64_t k = 1; k <= all.size(); ++k) EXPECT_EQ(kth_difference(x, y, k), all[k - 1]) << k;
}

TEST(statistics, fisher_exact_as_scipy) {
  const struct {
    std::uint64_t a, b, c, d;
    double p;
  } cases[] = {{3, 1, 1, 3, 0.48571428571428565},   {10, 90, 2, 98, 0.03304010932418497},
               {0, 50, 0, 50, 1.0},                  {5, 5, 5, 5, 1.0},
               {12, 388, 25, 375, 0.04203413819474903}, {1, 0, 0, 1, 1.0},
               {7, 13, 13, 7, 0.112833775483096},      {40, 9960, 20, 9980, 0.013351446359771323}};
  for (const auto& c : cases)
    EXPECT_TRUE(close(fisher_exact(c.a, c.b, c.c, c.d), c.p)) << c.a << " " << c.b << " " << c.c << " " << c.d;
}

TEST(statistics, newcombe_from_wilson) {
  const struct {
    std::uint64_t h1, n1, h2, n2;
    double difference, low, high, wilson_low, wilson_high;
  } cases[] = {
      {4, 100, 9, 100, 0.049999999999999996, -0.021868297576903582, 0.12625018027443646,
       0.01566330399154762, 0.0983707143588792},
      {0, 50, 3, 40, 0.075, -0.011646270916476298, 0.19864233524310543, 0.0, 0.07134759913335872},
      {399, 9955, 420, 9900, 0.0023438807969194744, -0.003195226977619747, 0.007890590858565028,
       0.036401324673301545, 0.044114211409511696},
      {10, 10, 0, 7, -1.0, -1.0000000000000002, -0.5499172162654046, 0.7224672001371107,
       0.9999999999999999},
  };
  for (const auto& c : cases) {
    const share_difference d = newcombe(c.h1, c.n1, c.h2, c.n2);
    EXPECT_TRUE(close(d.difference, c.difference));
    EXPECT_TRUE(close(d.bounds.low, c.low));
    EXPECT_TRUE(close(d.bounds.high, c.high));
    const interval w = wilson(c.h1, c.n1);
    EXPECT_TRUE(c.wilson_low == 0 ? w.low == 0 : close(w.low, c.wilson_low));
    EXPECT_TRUE(close(w.high, c.wilson_high));
  }
}

TEST(statistics, normal_tails_as_scipy) {
  EXPECT_TRUE(close(normal_quantile(0.975), 1.959963984540054));
  EXPECT_TRUE(close(normal_quantile(1e-10), -6.361340902404056));
  EXPECT_TRUE(close(normal_quantile(0.3), -0.5244005127080409));
  EXPECT_TRUE(close(normal_sf(3.5), 0.00023262907903552502));
}

TEST(statistics, benjamini_hochberg_by_hand) {
  // p sorted 0.01 0.02 0.03 0.04 0.5 (m = 5): p*m/rank 0.05 0.05 0.05 0.05
  // 0.5, each the least from its rank on.
  const std::vector<double> p = {0.04, 0.01, 0.5, 0.03, 0.02};
  const std::vector<double> q = benjamini_hochberg(p);
  const double expected[] = {0.05, 0.05, 0.5, 0.05, 0.05};
  for (std::size_t i = 0; i < p.size(); ++i) EXPECT_TRUE(close(q[i], expected[i])) << i;
}

}  // namespace
}  // namespace inspect::gate
