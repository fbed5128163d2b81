// The tier of processors with AVX-512.
#include "sorting/lanes_avx512.h"
#include "sorting/reals.h"
#include "sorting/tier.h"

namespace qxport::sorting {

constinit const Tier AVX512_TIER = {
    "AVX512",
    true,
    sort<avx512::Int32>,
    sort<avx512::Int64>,
    sort<avx512::Int128>,
    sort_reals<avx512::Real32>,
    sort_reals<avx512::Real64>,
};

}  // namespace qxport::sorting
