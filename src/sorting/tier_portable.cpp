// The tier of every processor.
#include "sorting/lanes_portable.h"
#include "sorting/reals.h"
#include "sorting/tier.h"

namespace qxport::sorting {

using portable::Single;

constinit const Tier PORTABLE_TIER = {
    "portable",
    false,
    sort<Single<int32_t>>,
    sort<Single<int64_t>>,
    sort<Single<Wide>>,
    sort_reals<Single<int32_t>>,
    sort_reals<Single<int64_t>>,
};

}  // namespace qxport::sorting
