#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process if a condition fails, so that the fuzzer keeps the input.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition);     \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
