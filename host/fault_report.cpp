#include "host/fault_report.h"

#include <nlohmann/json.hpp>

namespace host {

std::vector<Fault> FaultsOf(const InputFile& file, std::string_view module,
                            const std::vector<std::string>& log) {
  std::vector<Fault> faults = LocateFaults(log, ReadWhole(file.absolute), module);
  if (faults.empty()) faults.push_back({log, {}, "the library refused the file without a report"});
  return faults;
}

nlohmann::json FaultJson(const Fault& fault) {
  return {{"report", fault.report}, {"lines", fault.lines}, {"hint", fault.hint}};
}

std::string FaultText(const InputFile& file, const std::vector<Fault>& faults) {
  std::string text;
  for (const Fault& fault : faults) {
    for (const std::string& line : fault.report) text += line + '\n';
    std::string place = file.given.string();
    for (std::size_t i = 0; i < fault.lines.size(); ++i) {
      place += (i == 0 ? ", line " : " and line ") + std::to_string(fault.lines[i]);
    }
    if (!fault.hint.empty()) place += ": " + fault.hint;
    text += place + '\n';
  }
  return text;
}

}  // namespace host
