#include <cmath>
#include <concepts>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "recombination/layouts.h"
#include "recombination/map_functions.h"
#include "recombination/pair_lanes.h"
#include "recombination/pair_lanes_body.h"
#include "recombination/two_class_models.h"
#include "stats/roots.h"

namespace recombination {

void EstimatePortable(const LaneJob& job) { Estimate<Float4>(job); }

}  // namespace recombination
