#include "project/store.h"

#include <algorithm>

#include "platform/fatal.h"

namespace project {
namespace {

constexpr NameText kBlankName = Blank<NameText>();

template <class T>
bool Holds(const std::vector<T>& rows, int32_t m) {
  return m >= 1 && static_cast<std::size_t>(m) <= rows.size();
}

}  // namespace

void AllocateOnce(bool& allocated) {
  if (allocated) {
    platform::Fatal("the store still holds the last load of this module");
  }
  allocated = true;
}

ProjectBlock& Store(Module module) {
  static std::array<ProjectBlock, kModules.size()> blocks;  // process-wide
  return blocks[static_cast<std::size_t>(module)];
}

void ReleaseStore(Module module) {
  ProjectBlock& block = Store(module);
  Release(block.ChromName);
  Release(block.Chromosome);
  Release(block.FamilyName);
  Release(block.FamilySize);
  Release(block.Phenotype);
  Release(block.TraitName);
  Release(block.TraitFlag);
  Release(block.Simulation);
  Release(block.Lines.QTLLocation);
  Release(block.Lines.QTLEffect);
  Release(block.Lines.MarkerEffect);
  Release(block.Lines.GenotypicValue);
  Release(block.Lines.PVEGenetic);
  Release(block.Lines.PVEPhenotypic);
  Release(block.MarkerCategory);
  Release(block.MarkerName);
  Release(block.Genotype);
  Release(block.AnchorInfo);
  for (auto& work : block.BinWork) {
    Release(work);
  }
}

std::string_view MarkerNameAt(const ProjectBlock& block, int32_t m) {
  const auto& names = block.MarkerName.items;
  return Text(Holds(names, m) ? names[static_cast<std::size_t>(m) - 1] : kBlankName);
}

int32_t MarkerCategoryAt(const ProjectBlock& block, int32_t m) {
  const auto& categories = block.MarkerCategory.items;
  return Holds(categories, m) ? categories[static_cast<std::size_t>(m) - 1] : 1;
}

std::string_view GenotypesAt(const ProjectBlock& block, int32_t m) {
  const auto size = static_cast<std::size_t>(std::max(block.Header.PopulationSize, 0));
  const auto& codes = block.Genotype.items;
  const std::size_t begin = m < 1 ? codes.size() : (static_cast<std::size_t>(m) - 1) * size;
  if (begin >= codes.size()) {
    return {};
  }
  return {codes.data() + begin, std::min(size, codes.size() - begin)};
}

}  // namespace project
