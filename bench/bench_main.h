// bench_main.h: The command line every X11 benchmark shares: one count, then the run.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>

namespace corvetta::testing {

// `name [COUNT]`: runs `run` with COUNT (`defaultCount` when left out); a count below 1 is a usage
// error (2), a failure of the run is reported with the benchmark's name (1).
inline int benchMain(int argc, char** argv, const char* name, const char* countName,
                     int defaultCount, const std::function<int(int)>& run) {
    const int count = argc > 1 ? std::atoi(argv[1]) : defaultCount;
    if (count < 1) {
        std::fprintf(stderr, "usage: %s [%s]\n", name, countName);
        return 2;
    }
    try {
        return run(count);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return 1;
    }
}

}  // namespace corvetta::testing
