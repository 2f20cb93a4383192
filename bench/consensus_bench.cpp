// A consensus of 10 maps x 2,000 markers, all but the reading of the file: union, tables and order. The plain
// transcription stands beside it; tables and order are compared first.

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "bench/side_by_side.h"
#include "ordering/consensus_order.h"
#include "platform/unit.h"
#include "results/consensus.h"
#include "tests/reference/consensus_plain.h"

namespace {

// Every map has a share of the markers of one chromosome, at their places with some noise, in order.
std::vector<reference::PlainMap> Maps(int maps, int perMap, int markers) {
  std::mt19937 random(5);
  std::vector<reference::PlainMap> result(static_cast<std::size_t>(maps));
  for (reference::PlainMap& map : result) {
    float position = 0;
    for (int k = 0; k < markers && static_cast<int>(map.names.size()) < perMap; ++k) {
      position += static_cast<float>(random() % 100) / 1000;
      if (k == 0 || static_cast<int>(random() % static_cast<unsigned>(markers)) < perMap) {
        std::string name = "m" + std::to_string(k);
        map.names.push_back(name.append(35 - name.size(), ' '));
        map.positions.push_back(position);
      }
    }
  }
  return result;
}

struct Answer {
  std::vector<int32_t> count, index;
  std::vector<float> position, distance;
  bool operator==(const Answer&) const = default;
};

Answer Library(const std::vector<reference::PlainMap>& maps) {
  project::ProjectBlock block;
  std::size_t total = 0;
  for (const reference::PlainMap& map : maps) {
    project::ChromosomeTable& table = block.Chromosome.items.emplace_back();
    table.Position = map.positions;
    for (const std::string& name : map.names) {
      std::copy(name.begin(), name.end(), table.MarkerName.emplace_back().begin());
    }
    total += map.names.size();
  }
  int32_t status = 0;
  results::Consensus consensus;
  results::BuildConsensus(block, 100, status, consensus);
  const std::size_t n = consensus.names.size();
  Answer a;
  a.count.resize(n);
  a.index.resize(n * (maps.size() + 1));
  a.position.resize(a.index.size());
  a.distance.resize(n * (n - 1) / 2);
  results::FillTables(consensus, {static_cast<int32_t>(n), static_cast<int32_t>(maps.size()), a.count.data(),
                                  a.index.data(), a.position.data(), a.distance.data()});
  ordering::CmpByAnchorOrder(static_cast<int32_t>(n), a.count.data(), a.distance.data(), a.index.data(),
                             a.position.data());
  return a;
}

Answer Plain(const std::vector<reference::PlainMap>& maps) {
  reference::PlainConsensus c = reference::UnitePlainly(maps);
  reference::OrderPlainly(static_cast<int32_t>(c.names.size()), c.mapCount.data(), c.distance.data(),
                          c.mapIndex.data(), c.position.data());
  return {c.mapCount, c.mapIndex, c.position, c.distance};
}

struct Size {
  int maps, markers;
};
struct Work {
  explicit Work(const Size& size) : maps(Maps(size.maps, size.markers, size.markers * 3 / 2)) {
    platform::OpenUnit(100, "/dev/null", platform::OpenStatus::Replace);
  }
  ~Work() { platform::CloseUnit(100); }
  void Plain() { plain = ::Plain(maps); }
  void Library() { fast = ::Library(maps); }
  bool Same() const { return plain == fast; }

  std::vector<reference::PlainMap> maps;
  Answer plain, fast;
};

}  // namespace

int main(int argc, char** argv) {
  for (const int markers : {150, 500, 2000}) {
    bench::Add<Work>("consensus, 10 maps: " + std::to_string(markers), Size{10, markers}, markers, {20, 20});
  }
  return bench::Run(argc, argv);
}
