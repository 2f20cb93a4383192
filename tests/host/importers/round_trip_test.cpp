// Real crosses written in each format and brought back: the same markers, lines and genotypes.

#include <gtest/gtest.h>

#include <array>

#include "host/input_file.h"
#include "import_text.h"

namespace importers {
namespace {

using host::GenotypeTable;
using std::string;

// The text of a cell in a format, in the order A, H, B, D (not B), R (not A), missing.
using Letters = std::array<string, 6>;

string Joined(const GenotypeTable& table, std::size_t marker, const Letters& letters,
              const string& separator) {
  string text;
  for (const uint8_t cell : table.Row(marker)) text += separator + letters[cell];
  return text;
}

string LineName(std::size_t line) { return "ind" + std::to_string(line + 1); }

string LineHeading(const GenotypeTable& table, const string& separator) {
  string text;
  for (std::size_t i = 0; i < table.lines; ++i) text += separator + LineName(i);
  return text;
}

string AsVcf(const GenotypeTable& table) {
  string text = "##fileformat=VCFv4.2\n#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT\tP1\tP2" +
                LineHeading(table, "\t") + '\n';
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    // Which parent has the reference allele changes from site to site.
    const bool first = m % 2 == 0;
    const Letters letters = first ? Letters{"0/0", "0/1", "1/1", "./.", "./.", "./."}
                                  : Letters{"1|1:3", "1|0", "0|0", "./.", "./.", ".:9"};
    text += "1\t" + std::to_string(m) + '\t' + table.markers[m] + "\tA\tC\t.\t.\t.\tGT:DP\t" +
            (first ? "0/0\t1/1" : "1/1:7\t0/0") + Joined(table, m, letters, "\t") + '\n';
  }
  return text;
}

const Letters kRqtlLetters = {"A", "H", "B", "D", "C", "-"};

string AsCsvr(const GenotypeTable& table) {
  string text = "id," + LineHeading(table, ",") + '\n';
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += table.markers[m] + ",1" + Joined(table, m, kRqtlLetters, ",") + '\n';
  }
  return text;
}

string AsCsv(const GenotypeTable& table) {
  string text = "weight;id", chromosomes = ";", positions = ";";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += ';' + table.markers[m];
    chromosomes += ";1";
    positions += ';' + std::to_string(m) + ",5";
  }
  text += "\r\n" + chromosomes + "\r\n" + positions + "\r\n";
  for (std::size_t i = 0; i < table.lines; ++i) {
    text += "3,5;" + LineName(i);
    for (std::size_t m = 0; m < table.markers.size(); ++m) text += ';' + kRqtlLetters[table.Row(m)[i]];
    text += "\r\n";
  }
  return text;
}

string AsTidy(const GenotypeTable& table) {
  string text = "id" + LineHeading(table, ",") + '\n';
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += table.markers[m] + Joined(table, m, kRqtlLetters, ",") + '\n';
  }
  return text;
}

string AsMapmaker(const GenotypeTable& table) {
  string text = "data type f2 intercross\n" + std::to_string(table.lines) + ' ' +
                std::to_string(table.markers.size()) + " 0\n";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    const string letters = Joined(table, m, kRqtlLetters, "");
    text += '*' + table.markers[m] + ' ' + letters.substr(0, 50) + "\n  " + letters.substr(50) + '\n';
  }
  return text;
}

string AsOneMap(const GenotypeTable& table) {
  string text = "data type f2 intercross\n" + std::to_string(table.lines) + ' ' +
                std::to_string(table.markers.size()) + " 0 0 0\n" + LineHeading(table, " ").substr(1) + '\n';
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += '*' + table.markers[m] + " A.H.B" + Joined(table, m, {"a", "ab", "b", "d", "c", "-"}, " ") + '\n';
  }
  return text;
}

string AsJoinMap(const GenotypeTable& table) {
  string text = "name = cross\npopt = F2\nnloc = " + std::to_string(table.markers.size()) +
                "\nnind = " + std::to_string(table.lines) + "\n";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += '\n' + table.markers[m] + " ; remark\n" + Joined(table, m, {"a", "h", "b", "d", "c", "."}, "  ") +
            '\n';
  }
  return text + "individual names:\n" + LineHeading(table, "\n") + '\n';
}

string AsMstMap(const GenotypeTable& table) {
  string text = "population_type RIL2\nnumber_of_loci " + std::to_string(table.markers.size()) +
                "\nnumber_of_individual " + std::to_string(table.lines) + "\n\nlocus_name" +
                LineHeading(table, "\t") + "\t\n";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += table.markers[m] + Joined(table, m, {"A", "X", "B", "U", "U", "-"}, "\t") + "\t\n";
  }
  return text;
}

string AsTable(const GenotypeTable& table) {
  string text = "line";
  for (const string& marker : table.markers) text += '\t' + marker;
  for (std::size_t i = 0; i < table.lines; ++i) {
    text += '\n' + LineName(i);
    for (std::size_t m = 0; m < table.markers.size(); ++m) {
      text += '\t' + Letters{"2", "1", "0", "12", "10", "-1"}[table.Row(m)[i]];
    }
  }
  return text;
}

struct Way {
  const char* name;
  Format format;
  string (*write)(const GenotypeTable&);
  bool dominance;  // the format has codes for dominant markers
  bool lineNames;
};
constexpr Way kWays[] = {
    {"vcf", Format::Vcf, AsVcf, false, true},
    {"csv", Format::RqtlCsv, AsCsv, true, true},
    {"csvr", Format::RqtlCsvr, AsCsvr, true, true},
    {"tidy", Format::RqtlTidy, AsTidy, true, true},
    {"mapmaker", Format::Raw, AsMapmaker, true, false},
    {"onemap", Format::Raw, AsOneMap, true, true},
    {"joinmap", Format::JoinMap, AsJoinMap, true, true},
    {"mstmap", Format::MstMap, AsMstMap, false, true},
    {"table", Format::Table, AsTable, true, true},
};

TEST(RoundTrip, ARealCrossComesBackFromEveryFormat) {
  const GenotypeTable cross =
      host::ReadGenotypes(host::ReadWhole(EXAMPLES_DIR "/listeria.map"), host::TableKind::Map);
  const uint8_t missing = host::MissingCell(host::TableKind::Map);
  for (const Way& way : kWays) {
    const Sandbox sandbox;
    const auto [table, ledger] = ImportText(
        sandbox, way.format, way.write(cross),
        Asked("F2", way.format == Format::Vcf ? std::vector<string>{"P1", "P2"} : std::vector<string>{}),
        "x_gen.csv");
    std::vector<uint8_t> cells = cross.cells;
    std::vector<string> names = cross.markers;
    if (!way.dominance) {
      // The one recessive marker keeps its A only.
      for (uint8_t& cell : cells) cell = cell == 3 || cell == 4 ? missing : cell;
    }
    EXPECT_EQ(table.markers, names) << way.name;
    EXPECT_EQ(table.cells, cells) << way.name;
    EXPECT_EQ(table.populationType, 7) << way.name;
    ASSERT_EQ(table.lineNames.size(), way.lineNames ? cross.lines : 0) << way.name;
    if (way.lineNames) {
      EXPECT_EQ(table.lineNames.back(), LineName(cross.lines - 1)) << way.name;
    }
    EXPECT_EQ(ledger.Kept(), 130) << way.name;
    EXPECT_EQ(ledger.renamed, 0) << way.name;
  }
}

}  // namespace
}  // namespace importers
