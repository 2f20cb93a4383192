// From here to instructions_end.h code is made for this instruction set: nothing but templates over Float16 may
// follow. Included by files that have included wide_lanes.h.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f,avx512vl,avx512dq,avx512bw"))), \
                             apply_to = function)
#else
#pragma GCC target("avx512f,avx512vl,avx512dq,avx512bw")
#endif
