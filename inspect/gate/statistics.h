#pragma once

// The gate's statistics: a rank test and a shift for samples, an exact test
// and a difference for shares, and the false discovery rate across metrics.
// Each is the textbook definition, computed so that a million values a side
// take a fraction of a second: no pairs are ever listed.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace inspect::gate {

// The standard normal's upper tail and quantile.
double normal_sf(double z);
double normal_quantile(double p);

// Two-sided Mann-Whitney U, asymptotic, with the tie and continuity
// corrections. Both samples sorted ascending.
struct rank_test {
  double u = 0;  // of the first sample
  double p = 1;
};
rank_test mann_whitney(std::span<const double> first, std::span<const double> second);

// The k-th smallest (from 1) of all differences second[j] - first[i], both
// sorted ascending; k in [1, n*m].
double kth_difference(std::span<const double> first, std::span<const double> second,
                      std::uint64_t k);

// The Hodges-Lehmann shift of second from first (the median of all
// differences) and its distribution-free interval: the differences of rank
// C and nm + 1 - C, C = floor(nm/2 - z sqrt(nm(n+m+1)/12)). No bounds when
// C < 1 (too few values for the level).
struct shift_estimate {
  double shift = 0;
  std::optional<double> low, high;
};
shift_estimate hodges_lehmann(std::span<const double> first, std::span<const double> second,
                              double level = 0.95);

// Fisher's exact test of a 2x2 table, two-sided: the probability of every
// table with the same margins no likelier than this one.
double fisher_exact(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d);

struct interval {
  double low = 0, high = 0;
};
// Wilson's score interval of the share hits/n (n > 0).
interval wilson(std::uint64_t hits, std::uint64_t n, double level = 0.95);

// The difference of shares hits2/n2 - hits1/n1 and Newcombe's hybrid score
// interval from the two Wilson intervals (n1, n2 > 0).
struct share_difference {
  double difference = 0;
  interval bounds;
};
share_difference newcombe(std::uint64_t hits1, std::uint64_t n1, std::uint64_t hits2,
                          std::uint64_t n2, double level = 0.95);

// Benjamini-Hochberg adjusted p-values, in the order given.
std::vector<double> benjamini_hochberg(std::span<const double> p);

}  // namespace inspect::gate
