#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/importers/request.h"

namespace importers {

// Which columns of a table are parents and which are lines of the population, from 0.
struct SampleColumns {
  std::vector<std::size_t> parents, lines;
};

// Failure UsageWrong when the number of --parents is not what the population needs or one is not among the
// samples (or there twice).
SampleColumns PartSamples(const Request& request, const std::string& path,
                          std::span<const std::string> samples);

}  // namespace importers
