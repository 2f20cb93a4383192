#pragma once

// Everything that the estimators over lanes include, for the files of an instruction set: it has to stand ahead of
// avx2_begin.h or avx512_begin.h, so that no function which another file also makes is made for that set.

#include <array>
#include <cmath>
#include <concepts>
#include <cstring>
#include <initializer_list>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/layouts.h"
#include "recombination/map_functions.h"
#include "recombination/two_class_models.h"
#include "stats/roots.h"
