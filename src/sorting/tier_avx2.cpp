// The tier of processors with AVX2.
#include "sorting/lanes_avx2.h"
#include "sorting/reals.h"
#include "sorting/tier.h"

namespace qxport::sorting {

constinit const Tier AVX2_TIER = {
    "AVX2",
    true,
    sort<avx2::Int32>,
    sort<avx2::Int64>,
    sort<avx2::Int128>,
    sort_reals<avx2::Real32>,
    sort_reals<avx2::Real64>,
};

}  // namespace qxport::sorting
