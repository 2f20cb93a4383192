#include "frame/exports.h"

#include <algorithm>
#include <vector>

#include "frame/call_frame.h"
#include "ordering/anchor_order.h"
#include "ordering/consensus_order.h"
#include "ordering/driver.h"
#include "platform/fatal.h"
#include "project/genomic_selection.h"
#include "recombination/clonal_tables.h"
#include "recombination/multi_parent_tables.h"
#include "recombination/pair_tables.h"
#include "recombination/two_point.h"
#include "results/clonal_results.h"
#include "results/multi_parent_results.h"
#include "results/project_writer.h"

// Each export is a thin shell. What is thrown inside (memory that cannot be had) ends on the fatal path.

using frame::FileText;
using project::Module;

namespace {

// A load of markers in a population, as the check hands it on.
struct MarkerLoad {
  int32_t *PopulationType, *MappingFunction, *MarkerSpaceType, *PopulationSize;
  int32_t *Names, *AnchorInfo, *MarkerCategory;
};
recombination::Genotypes CopyLoad(Module module, int32_t callersMarkers, const MarkerLoad& out) {
  const project::ProjectBlock& block = project::Store(module);
  *out.PopulationType = block.Header.PopulationType;
  *out.MappingFunction = block.Header.MappingFunction;
  *out.MarkerSpaceType = block.Header.MarkerSpaceType;
  *out.PopulationSize = block.Header.PopulationSize;
  frame::WidenNames(block, callersMarkers, out.Names);
  frame::CopyAnchors(block, callersMarkers, out.AnchorInfo);
  const int32_t markers = std::max(frame::MarkersToCopy(block, callersMarkers), 0);
  std::copy_n(block.MarkerCategory.items.begin(), markers, out.MarkerCategory);
  return {block.Header.PopulationType,       block.Header.MappingFunction,
          block.Header.PopulationSize,       markers,
          block.MarkerCategory.items.data(), block.Genotype.items.data()};
}

void EndMarkerCheck(const frame::Check& check) {
  frame::TellRun(check);
  if (check.logWasOpen) {
    return;  // the store stays allocated: required as it stands
  }
  frame::CloseLog(check);
  project::ReleaseStore(check.module);
}

}  // namespace

extern "C" {

void MAPFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                       int32_t* Status) noexcept try {
  frame::PreRead(Module::Map, project::kHeaderOnlyCode, FileText(NameLength, FileName), NumMarkers, Status);
} catch (...) {
  platform::FatalException();
}

void PLMFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                       int32_t* Status) noexcept try {
  frame::PreRead(Module::Plm, project::kMultiParentCode, FileText(NameLength, FileName), NumMarkers, Status);
} catch (...) {
  platform::FatalException();
}

void CDMFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                       int32_t* Status) noexcept try {
  frame::PreRead(Module::Cdm, project::kClonalCode, FileText(NameLength, FileName), NumMarkers, Status);
} catch (...) {
  platform::FatalException();
}

void BINFINDNUMMARKERS(const int32_t* ModuleCode, const int32_t* NameLength, const char* FileName,
                       int32_t* NumMarkers, int32_t* Status) noexcept try {
  frame::PreRead(Module::Bin, *ModuleCode, FileText(NameLength, FileName), NumMarkers, Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORBIP(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Bip, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORCDQ(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Cdq, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORCSL(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Csl, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORMET(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Met, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORNAM(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Nam, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORPLQ(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  frame::PlainCheck(Module::Plq, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORSDL(const int32_t* NameLength, const char* FileName, int32_t* Status) noexcept try {
  *Status = 0;
  frame::PlainCheck(Module::Sdl, FileText(NameLength, FileName), Status);
} catch (...) {
  platform::FatalException();
}

void GSFINDNUMTRAITS(const int32_t* NameLength, const char* FileName, int32_t* NumTraits,
                     int32_t* Status) noexcept try {
  if (!project::ReadSelectionTraits(FileText(NameLength, FileName), *NumTraits)) {
    *Status = -1;
  }
} catch (...) {
  platform::FatalException();
}

void GSFINDTRAITNAMEBPS(const int32_t* NameLength, const char* FileName, const int32_t* NumTraits,
                        int32_t* TraitNames, int32_t* BreedingPopulationSize, int32_t* Status) noexcept try {
  std::vector<project::ShortName> names;
  if (!project::ReadSelectionNames(FileText(NameLength, FileName), names, *BreedingPopulationSize)) {
    *Status = -1;
    return;
  }
  frame::WidenTraitNames(names, *NumTraits, TraitNames);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORBIN(const int32_t* ModuleCode, const int32_t* NameLength, const char* FileName,
                   const int32_t* NumMarkers, int32_t* Names, int32_t* AnchorInfo, float* MissingPercent,
                   int32_t* Status) noexcept try {
  const frame::Check check =
      frame::BeginCheck(Module::Bin, *ModuleCode, FileText(NameLength, FileName), Status);
  if (Failed(check)) {
    return;
  }
  frame::TellRead(check);
  frame::TellRun(check);
  const project::ProjectBlock& block = project::Store(Module::Bin);
  const auto size = static_cast<float>(block.Header.PopulationSize);
  for (int32_t m = 1; m <= frame::MarkersToCopy(block, *NumMarkers); ++m) {
    const std::string_view codes = project::GenotypesAt(block, m);
    const auto missing = static_cast<float>(std::count(codes.begin(), codes.end(), 'X'));
    MissingPercent[m - 1] = missing / size * 100.0F;
  }
  frame::CopyAnchors(block, *NumMarkers, AnchorInfo);
  frame::WidenNames(block, *NumMarkers, Names);
  project::ReleaseStore(Module::Bin);
  frame::CloseLog(check);
} catch (...) {
  platform::FatalException();
}

void CMPFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* MarkerSpaceType,
                       int32_t* MarkerSpaceUnit, int32_t* NumChromosomes, int32_t* NumMarkers,
                       int32_t* Status) noexcept try {
  project::ProjectHeader header;
  int32_t totalMarkers = 0;
  if (!frame::PreReadMaps(FileText(NameLength, FileName), header, totalMarkers)) {
    *Status = frame::kReportedFailure;
    return;
  }
  *MarkerSpaceType = header.MarkerSpaceType;
  *MarkerSpaceUnit = header.MarkerSpaceUnit;
  *NumChromosomes = header.NumChromosomes;
  *NumMarkers = totalMarkers;
} catch (...) {
  platform::FatalException();
}

void CHECKERRORCMP(const int32_t* NameLength, const char* FileName, const int32_t* NumChromosomes,
                   const int32_t* NumMarkers, int32_t* Names, int32_t* AnchorInfo, int32_t* Order,
                   float* Position, float* Distance, int32_t* Status) noexcept try {
  frame::CheckMaps(FileText(NameLength, FileName),
                   {*NumMarkers, *NumChromosomes, AnchorInfo, Order, Position, Distance}, Names, Status);
} catch (...) {
  platform::FatalException();
}

void CMPBYANCHORORDER(const int32_t* n, const int32_t* AnchorInfo, const float* dist, int32_t* order) noexcept
    try {
  std::vector<float> position(static_cast<std::size_t>(std::max(*n, 0)));
  ordering::CmpByAnchorOrder(*n, AnchorInfo, dist, order, position.data());
} catch (...) {
  platform::FatalException();
}

void CHECKERRORMAP(const int32_t* NameLength, const char* FileName, const int32_t* NumMarkers,
                   int32_t* Status, int32_t* PopulationType, int32_t* MappingFunction,
                   int32_t* MarkerSpaceType, int32_t* PopulationSize, int32_t* Names, int32_t* AnchorInfo,
                   int32_t* CountA, int32_t* CountH, int32_t* CountB, int32_t* CountX,
                   int32_t* MarkerCategory, float* SegregationChi, float* SegregationP, float* PairRec,
                   float* PairLOD, float* PairCrossovers, float* PairDistance) noexcept try {
  const frame::Check check =
      frame::BeginCheck(Module::Map, project::kMapCode, FileText(NameLength, FileName), Status);
  if (Failed(check)) {
    return;
  }
  frame::TellRead(check);
  const recombination::Genotypes data = CopyLoad(
      Module::Map, *NumMarkers,
      {PopulationType, MappingFunction, MarkerSpaceType, PopulationSize, Names, AnchorInfo, MarkerCategory});
  recombination::ComputeMarkerResults(data, {CountA, CountH, CountB, CountX, SegregationChi, SegregationP});
  recombination::ComputePairTables(data, {PairRec, PairLOD, PairCrossovers, PairDistance});
  EndMarkerCheck(check);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORCDM(const int32_t* NameLength, const char* FileName, const int32_t* NumMarkers,
                   int32_t* Status, int32_t* PopulationType, int32_t* MappingFunction,
                   int32_t* MarkerSpaceType, int32_t* PopulationSize, int32_t* Names, int32_t* AnchorInfo,
                   int32_t* CountA, int32_t* CountB, int32_t* CountC, int32_t* CountD, int32_t* CountE,
                   int32_t* CountF, int32_t* CountG, int32_t* CountH, int32_t* CountI, int32_t* CountJ,
                   int32_t* CountK, int32_t* CountX, float* SegregationChi, float* SegregationP,
                   int32_t* MarkerCategory, float* RecParent1, float* RecParent2, float* RecMean,
                   float* LODParent1, float* LODParent2, float* LODMean, float* DistanceParent1,
                   float* DistanceParent2, float* DistanceMean, int32_t* PhaseCode) noexcept try {
  const frame::Check check =
      frame::BeginCheck(Module::Cdm, project::kClonalCode, FileText(NameLength, FileName), Status);
  if (Failed(check)) {
    return;
  }
  frame::TellRead(check);
  const recombination::Genotypes data = CopyLoad(
      Module::Cdm, *NumMarkers,
      {PopulationType, MappingFunction, MarkerSpaceType, PopulationSize, Names, AnchorInfo, MarkerCategory});
  recombination::ComputeClonalMarkers(
      data, {{CountA, CountB, CountC, CountD, CountE, CountF, CountG, CountH, CountI, CountJ, CountK, CountX},
             SegregationChi,
             SegregationP});
  recombination::ComputeClonalPairs(data, {{RecParent1, RecParent2, RecMean},
                                           {LODParent1, LODParent2, LODMean},
                                           {DistanceParent1, DistanceParent2, DistanceMean},
                                           PhaseCode});
  EndMarkerCheck(check);
} catch (...) {
  platform::FatalException();
}

void CHECKERRORPLM(const int32_t* NameLength, const char* FileName, const int32_t* NumMarkers,
                   int32_t* Status, int32_t* PopulationType, int32_t* MappingFunction,
                   int32_t* MarkerSpaceType, int32_t* PopulationSize, int32_t* Names, int32_t* AnchorInfo,
                   int32_t* CountA, int32_t* CountB, int32_t* CountC, int32_t* CountD, int32_t* CountE,
                   int32_t* CountF, int32_t* CountG, int32_t* CountH, int32_t* CountX, float* SegregationChi,
                   float* SegregationP, int32_t* MarkerCategory, float* PairRec, float* PairLOD,
                   float* PairDistance) noexcept try {
  const frame::Check check =
      frame::BeginCheck(Module::Plm, project::kMultiParentCode, FileText(NameLength, FileName), Status);
  if (Failed(check)) {
    return;
  }
  frame::TellRead(check);
  const recombination::Genotypes data = CopyLoad(
      Module::Plm, *NumMarkers,
      {PopulationType, MappingFunction, MarkerSpaceType, PopulationSize, Names, AnchorInfo, MarkerCategory});
  recombination::ComputeMultiParentMarkers(
      data, {{CountA, CountB, CountC, CountD, CountE, CountF, CountG, CountH, CountX},
             SegregationChi,
             SegregationP});
  recombination::ComputeMultiParentPairs(data, {PairRec, PairLOD, PairDistance});
  EndMarkerCheck(check);
} catch (...) {
  platform::FatalException();
}

void TOOLTWOPOINTREC(const int32_t* Population, const int32_t* MarkerPair, const float* Table, float* Rec,
                     float* StdErr, float* LOD, float* PValue, float* Haldane, float* Kosambi) noexcept try {
  recombination::TwoPointRec(*Population, *MarkerPair, Table, *Rec, *StdErr, *LOD, *PValue, *Haldane,
                             *Kosambi);
} catch (...) {
  platform::FatalException();
}

void TOOLANOVA(const int32_t* NameLength, const char* FileName, const int32_t* NumRows,
               const int32_t* NumColumns, const int32_t* NumClasses, int32_t* Status) noexcept try {
  const int32_t length = std::min(*NameLength, frame::kTrialPathField);
  frame::RunTrialTool(FileText(&length, FileName), *NumRows, *NumColumns, *NumClasses, Status);
} catch (...) {
  platform::FatalException();
}

void MAPNNTWOOPT(const int32_t* n, const float* dist, int32_t* order) noexcept try {
  ordering::NnTwoOpt(*n, dist, order);
} catch (...) {
  platform::FatalException();
}

void MAPBYANCHORORDER(const int32_t* n, const float* dist, int32_t* order) noexcept try {
  ordering::InsertByAnchors(*n, dist, order);
} catch (...) {
  platform::FatalException();
}

void MAPOUTPUT(const int32_t* NameLength, const char* FileName, const int32_t* StemLength, const char* Stem,
               const int32_t* NumMarkers, const int32_t* NumChromosomes, const char* ChromosomeName,
               const int32_t* ChromosomeMarkers, const int32_t* Order, const float* Position) noexcept try {
  results::WriteProjectFiles(
      FileText(NameLength, FileName), FileText(StemLength, Stem),
      {*NumMarkers, *NumChromosomes, ChromosomeName, ChromosomeMarkers, Order, Position});
} catch (...) {
  platform::FatalException();
}

void CDMOUTPUT(const int32_t* WriteRec, const int32_t* WriteLOD, const int32_t* WriteDistance,
               const int32_t* NameLength, const char* FileName, const int32_t* StemLength, const char* Stem,
               const int32_t* NumMarkers, const int32_t* NumChromosomes, const char* ChromosomeName,
               const int32_t* ChromosomeMarkers, const int32_t* Order, const float* Position,
               const int32_t* FileMarkers, const int32_t* Deleted, const float* RecAB, const float* RecCD,
               const float* RecBoth, const float* LODAB, const float* LODCD, const float* LODBoth,
               const float* DistanceAB, const float* DistanceCD, const float* DistanceBoth,
               const int32_t* PhaseCode) noexcept try {
  results::WriteClonalResults(
      FileText(NameLength, FileName), FileText(StemLength, Stem),
      {{*WriteRec, *WriteLOD, *WriteDistance},
       {*NumMarkers, *NumChromosomes, ChromosomeName, ChromosomeMarkers, Order, Position},
       *FileMarkers,
       Deleted,
       {RecBoth, RecAB, RecCD},  // the whole map first
       {LODBoth, LODAB, LODCD},
       {DistanceBoth, DistanceAB, DistanceCD},
       PhaseCode});
} catch (...) {
  platform::FatalException();
}

void PLMOUTPUT(const int32_t* WriteRec, const int32_t* WriteLOD, const int32_t* WriteDistance,
               const int32_t* NameLength, const char* FileName, const int32_t* StemLength, const char* Stem,
               const int32_t* NumMarkers, const int32_t* NumChromosomes, const char* ChromosomeName,
               const int32_t* ChromosomeMarkers, const int32_t* Order, const float* Position,
               const int32_t* FileMarkers, const int32_t* Deleted, const float* Rec, const float* LOD,
               const float* Distance) noexcept try {
  results::WriteMultiParentResults(
      FileText(NameLength, FileName), FileText(StemLength, Stem),
      {{*WriteRec, *WriteLOD, *WriteDistance},
       {*NumMarkers, *NumChromosomes, ChromosomeName, ChromosomeMarkers, Order, Position},
       *FileMarkers,
       Deleted,
       Rec,
       LOD,
       Distance});
} catch (...) {
  platform::FatalException();
}

}  // extern "C"
