#include "inspect/gate/statistics.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace inspect::gate {

double normal_sf(double z) { return 0.5 * std::erfc(z / std::sqrt(2.0)); }

double normal_quantile(double p) {
  if (!(p > 0 && p < 1)) return p == 0 ? -INFINITY : p == 1 ? INFINITY : NAN;
  // Acklam's rational approximation, then two Newton steps on the exact tail:
  // the approximation alone is good to 1e-9, the steps to the last bits.
  static constexpr double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,
                                 -2.759285104469687e+02, 1.383577518672690e+02,
                                 -3.066479806614716e+01, 2.506628277459239e+00};
  static constexpr double b[] = {-5.447609879822406e+01, 1.615858368580409e+02,
                                 -1.556989798598866e+02, 6.680131188771972e+01,
                                 -1.328068155288572e+01};
  static constexpr double c[] = {-7.784894002430293e-03, -3.223964580411365e-01,
                                 -2.400758277161838e+00, -2.549732539343734e+00,
                                 4.374664141464968e+00,  2.938163982698783e+00};
  static constexpr double d[] = {7.784695709041462e-03, 3.224671290700398e-01,
                                 2.445134137142996e+00, 3.754408661907416e+00};
  const double low = 0.02425;
  double x;
  if (p < low || p > 1 - low) {
    const double q = std::sqrt(-2 * std::log(p < low ? p : 1 - p));
    x = (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
        ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1);
    if (p > 1 - low) x = -x;
  } else {
    const double q = p - 0.5, r = q * q;
    x = (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
        (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1);
  }
  for (int step = 0; step < 2; ++step) {
    const double cdf = 0.5 * std::erfc(-x / std::sqrt(2.0));
    const double density = std::exp(-0.5 * x * x) / std::sqrt(2 * M_PI);
    if (density == 0) break;
    x -= (cdf - p) / density;
  }
  return x;
}

rank_test mann_whitney(std::span<const double> first, std::span<const double> second) {
  const double n1 = static_cast<double>(first.size()), n2 = static_cast<double>(second.size());
  rank_test result;
  if (first.empty() || second.empty()) return result;
  // Merged in order; each run of equal values shares its average rank.
  double rank_sum = 0, tie_term = 0, below = 0;
  std::size_t i = 0, j = 0;
  while (i < first.size() || j < second.size()) {
    const double v = j == second.size() || (i < first.size() && first[i] <= second[j])
                         ? first[i]
                         : second[j];
    std::size_t from_first = 0, from_second = 0;
    while (i < first.size() && first[i] == v) ++i, ++from_first;
    while (j < second.size() && second[j] == v) ++j, ++from_second;
    const double t = static_cast<double>(from_first + from_second);
    rank_sum += static_cast<double>(from_first) * (below + (t + 1) / 2);
    tie_term += t * t * t - t;
    below += t;
  }
  result.u = rank_sum - n1 * (n1 + 1) / 2;
  const double u = std::max(result.u, n1 * n2 - result.u);
  const double n = n1 + n2;
  const double spread = std::sqrt(n1 * n2 / 12 * ((n + 1) - tie_term / (n * (n - 1))));
  if (!(spread > 0)) return result;  // every value the same
  result.p = std::min(1.0, 2 * normal_sf((u - n1 * n2 / 2 - 0.5) / spread));
  return result;
}

namespace {

// Doubles as unsigned integers in the same order, so that a bisection over
// the integers visits every double between two bounds.
std::uint64_t order_key(double v) {
  const auto bits = std::bit_cast<std::uint64_t>(v);
  return bits >> 63 ? ~bits : bits | (std::uint64_t{1} << 63);
}

double key_value(std::uint64_t key) {
  return std::bit_cast<double>(key >> 63 ? key & ~(std::uint64_t{1} << 63) : ~key);
}

// How many differences second[j] - first[i] are at most d: for each j the
// ones that are form a suffix of first, which moves right as j grows.
std::uint64_t count_at_most(std::span<const double> first, std::span<const double> second,
                            double d) {
  std::uint64_t count = 0;
  std::size_t i = 0;
  for (const double y : second) {
    while (i < first.size() && y - first[i] > d) ++i;
    count += first.size() - i;
  }
  return count;
}

}  // namespace

double kth_difference(std::span<const double> first, std::span<const double> second,
                      std::uint64_t k) {
  std::uint64_t low = order_key(second.front() - first.back());
  std::uint64_t high = order_key(second.back() - first.front());
  while (low < high) {
    const std::uint64_t middle = low + (high - low) / 2;
    if (count_at_most(first, second, key_value(middle)) >= k)
      high = middle;
    else
      low = middle + 1;
  }
  return key_value(low);
}

shift_estimate hodges_lehmann(std::span<const double> first, std::span<const double> second,
                              double level) {
  shift_estimate result;
  if (first.empty() || second.empty()) return result;
  const std::uint64_t pairs = std::uint64_t{first.size()} * second.size();
  result.shift = pairs % 2 == 1 ? kth_difference(first, second, pairs / 2 + 1)
                                : (kth_difference(first, second, pairs / 2) +
                                   kth_difference(first, second, pairs / 2 + 1)) / 2;
  const double n = static_cast<double>(first.size()), m = static_cast<double>(second.size());
  const double z = normal_quantile(1 - (1 - level) / 2);
  const double c = std::floor(n * m / 2 - z * std::sqrt(n * m * (n + m + 1) / 12));
  if (c < 1) return result;
  const auto rank = static_cast<std::uint64_t>(c);
  result.low = kth_difference(first, second, rank);
  result.high = kth_difference(first, second, pairs + 1 - rank);
  return result;
}

double fisher_exact(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d) {
  // The top-left cell x over its range, the margins fixed: probabilities
  // from the mode outward by the ratio of neighbours, then normalised.
  const std::uint64_t row = a + b, column = a + c, total = a + b + c + d;
  const std::uint64_t first = column > total - row ? column - (total - row) : 0;
  const std::uint64_t last = std::min(row, column);
  if (first == last) return 1;
  const double r = static_cast<double>(row), k = static_cast<double>(column),
               t = static_cast<double>(total);
  const auto ratio = [&](std::uint64_t x) {  // P(x + 1) / P(x)
    const double v = static_cast<double>(x);
    return (r - v) * (k - v) / ((v + 1) * (t - r - k + v + 1));
  };
  auto mode = static_cast<std::uint64_t>((r + 1) * (k + 1) / (t + 2));
  mode = std::clamp(mode, first, last);
  std::vector<double> weight(last - first + 1);
  weight[mode - first] = 1;
  for (std::uint64_t x = mode; x < last; ++x)
    weight[x + 1 - first] = weight[x - first] * ratio(x);
  for (std::uint64_t x = mode; x > first; --x)
    weight[x - 1 - first] = weight[x - first] / ratio(x - 1);
  const double observed = weight[a - first] * (1 + 1e-7);
  double sum = 0, tail = 0;
  for (const double w : weight) {
    sum += w;
    if (w <= observed) tail += w;
  }
  return std::min(1.0, tail / sum);
}

interval wilson(std::uint64_t hits, std::uint64_t n, double level) {
  const double z = normal_quantile(1 - (1 - level) / 2), z2 = z * z;
  const double x = static_cast<double>(hits), size = static_cast<double>(n);
  const double centre = (x + z2 / 2) / (size + z2);
  const double half = z * std::sqrt(x * (size - x) / size + z2 / 4) / (size + z2);
  return {std::max(0.0, centre - half), std::min(1.0, centre + half)};
}

share_difference newcombe(std::uint64_t hits1, std::uint64_t n1, std::uint64_t hits2,
                          std::uint64_t n2, double level) {
  const double p1 = static_cast<double>(hits1) / static_cast<double>(n1);
  const double p2 = static_cast<double>(hits2) / static_cast<double>(n2);
  const interval w1 = wilson(hits1, n1, level), w2 = wilson(hits2, n2, level);
  share_difference result;
  result.difference = p2 - p1;
  result.bounds.low = result.difference - std::hypot(p2 - w2.low, w1.high - p1);
  result.bounds.high = result.difference + std::hypot(w2.high - p2, p1 - w1.low);
  return result;
}

std::vector<double> benjamini_hochberg(std::span<const double> p) {
  std::vector<std::size_t> order(p.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) { return p[x] < p[y]; });
  std::vector<double> q(p.size());
  double running = 1;
  for (std::size_t r = p.size(); r-- > 0;) {
    const double m = static_cast<double>(p.size());
    running = std::min(running, p[order[r]] * m / static_cast<double>(r + 1));
    q[order[r]] = running;
  }
  return q;
}

}  // namespace inspect::gate
