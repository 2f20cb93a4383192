#include "host/order_agreement.h"

#include <cmath>

namespace host {

OrderAgreement CompareOrders(const std::vector<double>& a, const std::vector<double>& b) {
  OrderAgreement agreement;
  agreement.shared = a.size();
  int64_t apartA = 0, apartB = 0;
  for (std::size_t i = 1; i < a.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const int signA = (a[i] > a[j]) - (a[i] < a[j]);
      const int signB = (b[i] > b[j]) - (b[i] < b[j]);
      apartA += signA != 0;
      apartB += signB != 0;
      agreement.alike += signA * signB > 0;
      agreement.opposite += signA * signB < 0;
    }
  }
  if (apartA > 0 && apartB > 0) {
    agreement.tau = static_cast<double>(agreement.alike - agreement.opposite) /
                    std::sqrt(static_cast<double>(apartA) * static_cast<double>(apartB));
  }
  return agreement;
}

OrderAgreement WithConsensus(const Consensus& consensus, std::size_t m) {
  std::vector<double> places, positions;
  for (std::size_t place = 0; place < consensus.markers.size(); ++place) {
    if (consensus.markers[place].place[m] == 0) continue;
    places.push_back(static_cast<double>(place));
    positions.push_back(consensus.markers[place].positions[m]);
  }
  return CompareOrders(places, positions);
}

OrderAgreement BetweenMaps(const Consensus& consensus, std::size_t m, std::size_t n) {
  std::vector<double> first, second;
  for (const ConsensusMarker& marker : consensus.markers) {
    if (marker.place[m] == 0 || marker.place[n] == 0) continue;
    first.push_back(marker.positions[m]);
    second.push_back(marker.positions[n]);
  }
  return CompareOrders(first, second);
}

}  // namespace host
