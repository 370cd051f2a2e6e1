// bench_ranks.h: Nearest-rank percentiles of a benchmark's samples.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace corvetta::testing {

// Nearest rank: the smallest sample at or above the fraction of all samples.
inline double rank(std::vector<double> samples, double fraction) {
    std::sort(samples.begin(), samples.end());
    const auto index = static_cast<std::size_t>(
        std::max(0.0, fraction * static_cast<double>(samples.size()) - 1e-9));
    return samples[std::min(index, samples.size() - 1)];
}

}  // namespace corvetta::testing
