#include "tests/reference/consensus_plain.h"

#include <cmath>
#include <cstddef>

#include "tests/reference/ordering_plain.h"

namespace reference {
namespace {

std::size_t Pair(std::size_t i, std::size_t j) {  // rows from 0, i above j
  return i * (i - 1) / 2 + j;
}

float Between(const float* dist, int32_t a, int32_t b) {
  const auto high = static_cast<std::size_t>(a > b ? a : b), low = static_cast<std::size_t>(a > b ? b : a);
  return dist[Pair(high - 1, low - 1)];
}

}  // namespace

PlainConsensus UnitePlainly(const std::vector<PlainMap>& maps) {
  PlainConsensus c;
  std::vector<std::vector<int32_t>> columns;  // of each row: its place on each map
  for (std::size_t k = 0; k < maps[0].names.size(); ++k) {
    c.names.push_back(maps[0].names[k]);
    columns.emplace_back(maps.size(), 0)[0] = static_cast<int32_t>(k) + 1;
  }
  for (std::size_t m = 1; m < maps.size(); ++m) {
    for (std::size_t k = 0; k < maps[m].names.size(); ++k) {
      std::size_t u = 0;
      while (u < c.names.size() && c.names[u] != maps[m].names[k]) {
        ++u;
      }
      if (u == c.names.size()) {
        c.names.push_back(maps[m].names[k]);
        columns.emplace_back(maps.size(), 0);
      }
      columns[u][m] = static_cast<int32_t>(k) + 1;
    }
  }
  const std::size_t n = c.names.size();
  for (const auto& row : columns) {
    int32_t count = 0;
    for (const int32_t place : row) {
      count += place > 0 ? 1 : 0;
    }
    c.mapCount.push_back(count);
    c.common = c.common || count == static_cast<int32_t>(maps.size());
  }
  for (std::size_t row = 0; row < n; ++row) {
    c.mapIndex.push_back(static_cast<int32_t>(row) + 1);
  }
  for (std::size_t m = 0; m < maps.size(); ++m) {
    for (std::size_t row = 0; row < n; ++row) {
      c.mapIndex.push_back(columns[row][m]);
    }
  }
  if (!c.common) {
    return c;
  }
  const auto place = [&](std::size_t m, std::size_t row) {
    return maps[m].positions[static_cast<std::size_t>(columns[row][m]) - 1];
  };
  for (std::size_t i = 1; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      float sum = 0;
      int32_t shared = 0;
      for (std::size_t m = 0; m < maps.size(); ++m) {
        if (columns[i][m] > 0 && columns[j][m] > 0) {
          sum += std::fabs(place(m, i) - place(m, j));
          ++shared;
        }
      }
      c.distance.push_back(shared > 0 ? sum / static_cast<float>(shared) : 1000.0F);
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    c.position.push_back(i == 0 ? 0 : c.position[i - 1] + c.distance[Pair(i, i - 1)]);
  }
  for (std::size_t m = 0; m < maps.size(); ++m) {
    for (std::size_t row = 0; row < n; ++row) {
      c.position.push_back(columns[row][m] > 0 ? place(m, row) : -1.0F);
    }
  }
  return c;
}

void OrderPlainly(int32_t n, const int32_t* anchorInfo, const float* dist, int32_t* order, float* position) {
  std::vector<int32_t> selected, numbering;
  for (int32_t i = 1; i <= n; ++i) {
    if (anchorInfo[i - 1] > 1) {
      selected.push_back(i);
    }
  }
  const auto subTable = [&](const std::vector<int32_t>& markers) {
    std::vector<float> table;
    for (std::size_t i = 1; i < markers.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        table.push_back(Between(dist, markers[i], markers[j]));
      }
    }
    table.push_back(0);
    return table;
  };
  std::vector<int32_t> subOrder(selected.size());
  if (!selected.empty()) {
    NnTwoOpt(static_cast<int32_t>(selected.size()), subTable(selected).data(), subOrder.data());
  }
  for (const int32_t k : subOrder) {
    numbering.push_back(selected[static_cast<std::size_t>(k) - 1]);
  }
  for (int32_t i = 1; i <= n; ++i) {
    if (anchorInfo[i - 1] <= 1) {
      numbering.push_back(i);
    }
  }
  std::vector<int32_t> work(static_cast<std::size_t>(n), 0);
  for (std::size_t i = 0; i < selected.size(); ++i) {
    work[i] = static_cast<int32_t>(i) + 1;
  }
  InsertByAnchors(n, subTable(numbering).data(), work.data());
  for (int32_t i = 0; i < n; ++i) {
    order[i] = numbering[static_cast<std::size_t>(work[static_cast<std::size_t>(i)]) - 1];
    position[i] = i == 0 ? 0 : position[i - 1] + Between(dist, order[i - 1], order[i]);
  }
}

}  // namespace reference
