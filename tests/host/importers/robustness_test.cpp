// Damaged files: every byte of small samples of all formats is changed, cut and doubled; packed files too. What comes
// is a table that holds together or words that name the file; never a crash.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "host/exit_code.h"
#include "import_text.h"

namespace importers {
namespace {

using std::string;

struct Sample {
  Format format;
  string population;
  std::vector<string> parents;
  string text;
};

const Sample kSamples[] = {
    {Format::Vcf,
     "F2",
     {"P1", "P2"},
     "##fileformat=VCFv4.2\n#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT\tP1\tP2\ta\tb\n"
     "1\t9\t.\tA\tC\t.\tPASS\t.\tGT:DP\t0/0:1\t1|1\t0/1\t./.\n1\t10\tm\tA\tC\t.\t.\t.\tGT\t1/1\t0/0\t1\t12/"
     "0\n"},
    {Format::Vcf,
     "CP",
     {"P1", "P2"},
     "#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT\tP1\tP2\ta\tb\n"
     "1\t9\t.\tA\tC\t.\tPASS\t.\tGT\t0/1\t0/0\t0/1\t0/0\n"},
    {Format::RqtlCsv, "F2", {}, "p,id,m1,m2\n,,1,2\n,,0,1.5\n1,\"i\",A,H\n2,j,-,D\n"},
    {Format::RqtlCsvr, "F2", {}, "p,,1,2\nm1,1,A,H\nm2,1,B,-\n"},
    {Format::RqtlTidy, "F2", {}, "id,i,j\nm1,A,H\nm2,B,-\n"},
    {Format::Raw, "", {}, "data type f2 intercross\n3 2 1 symbols 1=A\n*m1 1HB\n#r\n*m2 A\n H -\n*t 1 2 3\n"},
    {Format::Raw, "", {}, "data type outcross\n2 2 1 0 0\nI1 I2\n*m1 A.1 ac bd\n*m2 B3.7 a ab\n*CHROM 1 2\n"},
    {Format::MstMap,
     "RIL",
     {},
     "population_type DH\nnumber_of_loci 2\n\nlocus_name\ta\tb\t\nm1\tA\tB\t\nm2\tB\tU\t\n"},
    {Format::JoinMap,
     "",
     {},
     "; r\nname = t\npopt = F2\nnloc = 2\nnind = 2\nm1 (a,h) a h\nm2 {0-} b\n-\nindividual names:\ni\nj\n"},
    {Format::JoinMap,
     "",
     {},
     "name = t\npopt = CP\nnloc = 2\nnind = 2\nm1 <abxcd> {01}\nac bd\nm2 <hkxhk> h- kk\n"},
    {Format::Table, "F2", {}, "marker\tchr\ta\tb\nm 1\t1\tA\t12\nm2\t2\t\"H\"\tXX\n"},
    {Format::Table, "RIL", {"P1", "P2"}, "snp,P1,P2,a,b\ns1,A,G,R,G\ns2,AA,TT,A/T,T\ns3,C,G,C,G\n"},
};

// A file in memory: tens of thousands of damaged files would wait for the disk.
struct MemoryFile {
  MemoryFile() : descriptor(memfd_create("sample", 0)), path("/proc/self/fd/" + std::to_string(descriptor)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor); }
  void Hold(const string& text) const {
    ASSERT_EQ(ftruncate(descriptor, 0), 0);
    ASSERT_EQ(pwrite(descriptor, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }

  int descriptor;
  string path;
};

// A table that came of whatever text must be one that its own project file gives back.
void Judge(const MemoryFile& file, const Sample& sample, const string& text, int64_t& taken,
           int64_t& refused) {
  file.Hold(text);
  try {
    const auto [table, ledger] =
        ReadFormat(sample.format, file.path, Asked(sample.population, sample.parents));
    ++taken;
    ASSERT_GT(table.markers.size(), 0U);
    ASSERT_EQ(static_cast<int64_t>(table.markers.size()), ledger.Kept());
    ASSERT_EQ(table.cells.size(), table.markers.size() * table.lines);
    const host::GenotypeTable again = host::ReadGenotypes(host::ProjectText(table), table.kind);
    ASSERT_EQ(again.markers, table.markers) << text;
    ASSERT_EQ(again.cells, table.cells) << text;
    ASSERT_EQ(again.lineNames, table.lineNames) << text;
  } catch (const host::Failure& failure) {
    ++refused;
    ASSERT_NE(failure.message.find(file.path), string::npos) << failure.message;
    ASSERT_NE(failure.code, host::ExitCode::Other) << failure.message;
  }
}

TEST(Robustness, EveryByteOfEveryFormatMayBeAnother) {
  const MemoryFile file;
  int64_t taken = 0, refused = 0;
  for (const Sample& sample : kSamples) {
    refused = 0;
    Judge(file, sample, sample.text, taken, refused);
    ASSERT_EQ(refused, 0) << sample.text;
    for (std::size_t at = 0; at < sample.text.size(); ++at) {
      // Two of the twelve at each place, others at the next.
      constexpr std::string_view others("\0\n\t ,\"9A*-\xC3=", 12);
      for (std::size_t k = 0; k < 2; ++k) {
        string text = sample.text;
        text[at] = others[(5 * at + k) % others.size()];
        Judge(file, sample, text, taken, refused);
      }
      Judge(file, sample, sample.text.substr(0, at), taken, refused);
      Judge(file, sample, sample.text.substr(0, at) + sample.text.substr(at + 1), taken, refused);
      Judge(file, sample, sample.text.substr(0, at) + sample.text.substr(at / 2), taken, refused);
      if (HasFatalFailure()) FAIL() << sample.text << " at " << at;
    }
  }
  EXPECT_GT(taken, 1000);
}

TEST(Robustness, PackedFilesThatAreCutOrBrokenAreRefused) {
  const MemoryFile file;
  string rows;
  for (int i = 0; i < 200; ++i)
    rows += "1\t" + std::to_string(i) + "\t.\tA\tC\t.\t.\t.\tGT\t0/0\t1/1\t0/1\t1/1\n";
  Sample sample = kSamples[0];
  sample.text = sample.text.substr(0, sample.text.find("1\t9")) + rows;
  const string packed = Packed(sample.text);
  int64_t taken = 0, refused = 0, damaged = 0;
  for (std::size_t size = 2; size < packed.size(); ++size, ++damaged) {
    Judge(file, sample, packed.substr(0, size), taken, refused);
  }
  for (std::size_t at = 10; at < packed.size(); ++at, ++damaged) {  // behind the frame's ten bytes
    string broken = packed;
    broken[at] = static_cast<char>(broken[at] ^ 0x55);
    Judge(file, sample, broken, taken, refused);
  }
  EXPECT_EQ(refused, damaged) << "a broken file was taken";
  file.Hold(packed.substr(0, packed.size() / 2));
  try {
    ReadFormat(sample.format, file.path, Asked("F2", sample.parents));
  } catch (const host::Failure& failure) {
    EXPECT_NE(failure.message.find("the packed file is cut short behind line "), string::npos)
        << failure.message;
  }
}

// bgzip names its blocks in an extra field and ends with an empty one.
TEST(Robustness, BgzipNeedsItsEndMark) {
  const MemoryFile file;
  const string frame("\x1F\x8B\x08\x04\0\0\0\0\0\xFF\x06\0BC\x02\0", 16);
  const string block = frame + string(2, '\0') +
                       Packed(kSamples[0].text).substr(10);  // a gzip frame without extras has 10 bytes
  const string end = frame + string("\x1B\0\x03\0\0\0\0\0\0\0\0\0", 12);
  int64_t taken = 0, refused = 0;
  Judge(file, kSamples[0], block + end, taken, refused);
  EXPECT_EQ(taken, 1);
  Judge(file, kSamples[0], block, taken, refused);
  Judge(file, kSamples[0], block + end.substr(0, 20), taken, refused);
  EXPECT_EQ(refused, 2);
}

TEST(Robustness, LongLinesAreReadInWhole) {
  const Sandbox sandbox;
  string heading = "marker", row = "m1";
  for (int i = 0; i < 100000; ++i) {
    heading += ",line" + std::to_string(i);
    row += i % 2 == 0 ? ",A" : ",B";
  }
  const auto [table, ledger] = ImportText(sandbox, Format::Table, heading + "\n" + row + "\n", Asked("RIL"));
  EXPECT_EQ(table.lines, 100000U);
  EXPECT_EQ(table.lineNames.back(), "line99999");
  EXPECT_EQ(table.cells.back(), host::CellOf(host::TableKind::Map, "B"));
}

}  // namespace
}  // namespace importers
