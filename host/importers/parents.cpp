#include "host/importers/parents.h"

#include <algorithm>

#include "host/exit_code.h"
#include "host/importers/calls.h"
#include "host/population_catalogue.h"

namespace importers {
namespace {

using host::ExitCode;
using host::Failure;

std::string SomeOf(std::span<const std::string> samples) {
  constexpr std::size_t most = 8;
  std::string list;
  for (std::size_t i = 0; i < std::min(most, samples.size()); ++i) list += (i == 0 ? "" : ", ") + samples[i];
  return list + (samples.size() > most ? ", ..." : "");
}

}  // namespace

SampleColumns PartSamples(const Request& request, const std::string& path,
                          std::span<const std::string> samples) {
  const std::size_t needed = ParentsNeeded(request);
  if (request.parents.size() != needed) {
    const std::string population(host::CatalogueRowOf(request.kind, request.population).name);
    throw Failure{ExitCode::UsageWrong, "population " + population + " needs --parents with " +
                                            std::to_string(needed) + " sample names, parted by commas; " +
                                            std::to_string(request.parents.size()) +
                                            " are given. The samples of " + path + " are " + SomeOf(samples)};
  }
  SampleColumns columns;
  for (const std::string& parent : request.parents) {
    const auto found = std::find(samples.begin(), samples.end(), parent);
    const bool once = found != samples.end() && std::find(found + 1, samples.end(), parent) == samples.end();
    const auto place = static_cast<std::size_t>(found - samples.begin());
    const bool taken =
        std::find(columns.parents.begin(), columns.parents.end(), place) != columns.parents.end();
    if (!once || taken) {
      const std::string why = found == samples.end() ? " is not among the samples of "
                              : taken                ? " is named twice as a parent of "
                                                     : " is the name of two samples of ";
      std::string words = "--parents: ";
      words.append(parent).append(why).append(path).append(": ").append(SomeOf(samples));
      throw Failure{ExitCode::UsageWrong, words};
    }
    columns.parents.push_back(place);
  }
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (std::find(columns.parents.begin(), columns.parents.end(), i) == columns.parents.end()) {
      columns.lines.push_back(i);
    }
  }
  return columns;
}

}  // namespace importers
