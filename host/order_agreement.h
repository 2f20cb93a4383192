#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/consensus_data.h"

namespace host {

// Two orders of the same markers, compared pair by pair. Pairs at one position on either side say nothing.
struct OrderAgreement {
  std::size_t shared = 0;  // markers
  int64_t alike = 0, opposite = 0;
  std::optional<double> tau;  // Kendall's tau-b, -1 to 1; none where a side has no two positions
  bool Reversed() const { return opposite > alike; }
  // Pairs in opposite order once one side is turned, if that makes them fewer.
  int64_t Conflicts() const { return Reversed() ? alike : opposite; }
};
OrderAgreement CompareOrders(const std::vector<double>& a, const std::vector<double>& b);

// Map m (from 0) against the consensus, and two maps against each other, over the markers that both have.
OrderAgreement WithConsensus(const Consensus& consensus, std::size_t m);
OrderAgreement BetweenMaps(const Consensus& consensus, std::size_t m, std::size_t n);

}  // namespace host
