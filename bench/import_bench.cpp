// A VCF of many sites: the importer and the project file's text, against splitting the same lines at tabs without a
// look at the genotypes. The ratio is splitting over importing.
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "bench/side_by_side.h"
#include "host/importers/formats.h"

namespace {

constexpr int kLines = 200;

std::string Vcf(int sites) {
  std::mt19937 random(1);
  std::string text = "##fileformat=VCFv4.2\n#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT\tP1\tP2";
  for (int line = 1; line <= kLines; ++line) text += "\tF" + std::to_string(line);
  text += '\n';
  constexpr const char* kCalls[] = {"0/0", "0/1", "0/1", "1/1", "./."};
  for (int site = 1; site <= sites; ++site) {
    text += "chr1\t" + std::to_string(site) + "\t.\tA\tC\t50\tPASS\t.\tGT\t0/0\t1/1";
    for (int line = 0; line < kLines; ++line) text.append("\t").append(kCalls[random() % 5]);
    text += '\n';
  }
  return text;
}

struct Work {
  explicit Work(int count) : sites(static_cast<std::size_t>(count)) {
    std::ofstream(file, std::ios::binary) << Vcf(count);
  }
  ~Work() { std::filesystem::remove(file); }
  void Plain() {
    std::ifstream in(file);
    fields = 0;
    for (std::string line; std::getline(in, line);) {
      if (line.starts_with('#')) continue;
      for (std::size_t at = 0; at != std::string::npos; at = line.find('\t', at + 1)) ++fields;
    }
  }
  void Library() {
    importers::Request request;
    request.population = 7;
    request.parents = {"P1", "P2"};
    const importers::Import import = importers::ReadVcf(file, request);
    kept = import.table.markers.size();
    bytes = host::ProjectText(import.table).size();
  }
  bool Same() const { return kept == sites && fields == sites * (kLines + 11) && bytes > 2 * sites * kLines; }

  std::size_t sites, fields = 0, kept = 0, bytes = 0;
  const std::filesystem::path file = std::filesystem::temp_directory_path() / "tessarmont_import_bench.vcf";
};

}  // namespace

int main(int argc, char** argv) {
  for (const int sites : {12500, 25000, 50000}) {
    bench::Add<Work>("VCF import over splitting: " + std::to_string(sites), sites, sites, {});
  }
  return bench::Run(argc, argv);
}
