#include "project/reader.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/unit.h"
#include "tests/support/scratch.h"

namespace project {
namespace {

using support::ScratchFolder;
using support::WriteFile;

constexpr int32_t kUnit = 102;

void Open(const std::string& text) {
  WriteFile("in.txt", text);
  platform::OpenUnit(kUnit, "in.txt", platform::OpenStatus::Old);
}

std::string NextRecord() {
  std::string_view record;
  return platform::ReadRecord(kUnit, record) ? std::string(record) : "(end)";
}

// Reads a text of four characters ("keep" before), an integer (7 before), two reals (0.5 and 1.5 before) and
// two cells of two characters, and writes what came of it and the record behind the read.
std::string Read(const std::string& text) {
  Open(text);
  char word[] = "keep";
  int32_t integer = 7;
  float first = 0.5F;
  std::vector<float> rest = {1.5F};
  std::string cells;
  const bool good = ReadTokens(kUnit, {TextItem(word, 4), IntegerItem(integer), RealItem(first),
                                       RealItems(rest, 1), CellItems(cells, 2, 2)}) == 0;
  std::string result = "failed";
  if (good) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "|%d|%g|%g|", integer, static_cast<double>(first),
                  static_cast<double>(rest[0]));
    result = word + std::string(numbers) + cells + "; " + NextRecord();
  }
  platform::CloseUnit(kUnit);
  return result;
}

TEST(ReadTokens, TakesItemsByTheRulesOfTheList) {
  const ScratchFolder folder;
  struct Case {
    const char* rule;
    std::string text, result;
  };
  const Case cases[] = {
      {"blanks part tokens, the rest of the record is dropped", "ab 1 2 3 A B rest\nnext\n",
       "ab  |1|2|3|A B ; next"},
      {"tabs and commas part them too", "ab\t1,2 , 3\t,A,B\nnext\n", "ab  |1|2|3|A B ; next"},
      {"texts are cut", "abcdef 1 2 3 ABC -1\n", "abcd|1|2|3|AB-1; (end)"},
      {"rows run on over records, blank ones are passed over", "ab\n\n  \n1 2\n3 A\nB no\nnext",
       "ab  |1|2|3|A B ; next"},
      {"two commas are a null", "ab,,2,,A,B", "ab  |7|2|1.5|A B ; (end)"},
      {"a comma in front is a null", ",1,2,3,A,B", "keep|1|2|3|A B ; (end)"},
      {"a comma at the end of a record parts only", "ab,\n1,2,3,A,B", "ab  |1|2|3|A B ; (end)"},
      {"commas on either side of a line end are a null", "ab,\n,2,3,A,B", "ab  |7|2|3|A B ; (end)"},
      {"a null cell is blank where nothing stood", "ab 1 2 3 ,,B", "ab  |1|2|3|  B ; (end)"},
      {"a slash ends the read", "ab 1/2 3 A B\nnext", "ab  |1|0.5|1.5|; next"},
      {"a slash ends a text", "a/b 1 2 3 A B\nnext", "a   |7|0.5|1.5|; next"},
      {"a repeated value", "ab 3*2 2*A\n", "ab  |2|2|2|A A ; (end)"},
      {"a repeated null", "3* 5 2*A", "keep|7|0.5|5|A A ; (end)"},
      {"a repeated null ends at its comma", "2*,2,3,A,B", "keep|7|2|3|A B ; (end)"},
      {"twelve nulls", "12*", "keep|7|0.5|1.5|    ; (end)"},
      {"a repeat left over is dropped", "ab 1 2 3 9*A\nnext", "ab  |1|2|3|A A ; next"},
      {"a star that repeats nothing is text", "a*b 1 2 3 * *A", "a*b |1|2|3|* *A; (end)"},
      {"a zero repeats nothing", "0*ab 1 2 3 A B", "failed"},
      {"quotes hold blanks, commas and slashes", "'a ,/' 1 2 3 \"A\" 'B'", "a ,/|1|2|3|A B ; (end)"},
      {"a doubled quote stands for one", "'''a' 1 2 3 '\"' \"\"\"\"", "'a  |1|2|3|\" \" ; (end)"},
      {"a quoted text runs on over a line end", "'a\nb' 1 2 3 A B", "ab  |1|2|3|A B ; (end)"},
      {"a repeated quoted text", "ab 1 2 3 2*'x y'", "ab  |1|2|3|x x ; (end)"},
      {"a quote inside a token is text", "a'b 1 2 3 A B", "a'b |1|2|3|A B ; (end)"},
      {"an empty quoted text", "'' 1 2 3 A B", "    |1|2|3|A B ; (end)"},
      {"a quote without end", "'ab 1 2 3 A B\nnext", "failed"},
      {"something behind the closing quote", "'ab'1 2 3 A B", "failed"},
      {"a quoted number is none", "ab '1' 2 3 A B", "failed"},
      {"nor is a quoted real", "ab 1 '2' 3 A B", "failed"},
      {"nor one of a row of reals", "ab 1 2 '3' A B", "failed"},
      {"a semicolon parts nothing", "a;b 1 2 3 A B", "a;b |1|2|3|A B ; (end)"},
      {"an exclamation mark is not special", "!a 1 2 3 A !", "!a  |1|2|3|A ! ; (end)"},
      {"a point where an integer belongs", "ab 1.0 2 3 A B", "failed"},
      {"a letter where an integer belongs", "ab x 2 3 A B", "failed"},
      {"a letter where a real belongs", "ab 1 2 x A B", "failed"},
      {"the end of the file", "ab 1 2 3 A\n\n", "failed"},
      {"CR LF", "ab 1 2 3\r\nA B\r\nnext\r\n", "ab  |1|2|3|A B ; next"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Read(c.text), c.result) << c.rule;
  }
}

TEST(ReadTokens, ATokenReadOfNoItemsTakesOneRecord) {
  const ScratchFolder folder;
  Open("first\nsecond\n");
  std::string none;
  EXPECT_EQ(ReadTokens(kUnit, {}), 0);
  EXPECT_EQ(ReadTokens(kUnit, {CellItems(none, 2, 0)}), 0);
  EXPECT_NE(ReadTokens(kUnit, {}), 0) << "at the end of the file";
  platform::CloseUnit(kUnit);
}

TEST(ReadTokens, TablesGrowWithTheTokens) {
  const ScratchFolder folder;
  Open("1 , , 2/\n");
  std::vector<float> reals;
  EXPECT_EQ(ReadTokens(kUnit, {RealItems(reals, 2000000000)}), 0);
  EXPECT_EQ(reals, (std::vector<float>{1.0F, 0.0F, 2.0F}));
  Open("2*7 x\n");
  std::vector<int32_t> integers;
  EXPECT_NE(ReadTokens(kUnit, {IntegerItems(integers, 2000000000)}), 0);
  EXPECT_EQ(std::vector<int32_t>(integers.begin(), integers.begin() + 2), (std::vector<int32_t>{7, 7}));
  Open("'7'\n");
  EXPECT_NE(ReadTokens(kUnit, {IntegerItems(integers, 1)}), 0) << "a quoted number is none";
  platform::CloseUnit(kUnit);
}

TEST(ReadTokens, NullCellsKeepTheRowBefore) {
  const ScratchFolder folder;
  Open("A B C\nH,,2*\n*,/\n,Q , R\n");
  std::string cells;
  for (const char* expected : {"A B C ", "H B C ", "* B C ", "* Q R "}) {
    ASSERT_EQ(ReadTokens(kUnit, {CellItems(cells, 2, 3)}), 0);
    EXPECT_EQ(cells, expected);
  }
  platform::CloseUnit(kUnit);
}

TEST(ParseInteger, TakesSignAndDigitsWithin32Bits) {
  struct Case {
    const char* token;
    bool good;
    int32_t value;
  };
  const Case cases[] = {
      {"0", true, 0},           {"+12", true, 12},
      {"-1", true, -1},         {"2147483647", true, 2147483647},
      {"2147483648", false, 0}, {"-2147483649", false, 0},
      {"", false, 0},           {"+", false, 0},
      {"+-1", false, 0},        {"-2147483648", true, std::numeric_limits<int32_t>::min()},
      {"1e2", false, 0},        {"0x10", false, 0},
  };
  for (const Case& c : cases) {
    int32_t value = 99;
    EXPECT_EQ(ParseInteger(c.token, value), c.good) << c.token;
    EXPECT_EQ(value, c.good ? c.value : 99) << c.token;
  }
}

TEST(ParseReal, TakesTheUsualDecimalForms) {
  const float infinity = std::numeric_limits<float>::infinity();
  struct Case {
    std::string token;
    bool good;
    float value;
  };
  const Case cases[] = {
      {"12", true, 12.0F},
      {"-1.5", true, -1.5F},
      {"+.5", true, 0.5F},
      {"1.", true, 1.0F},
      {"1e-3", true, 1e-3F},
      {"2.5D+2", true, 250.0F},
      {"1d2", true, 100.0F},
      {"0.1", true, 0.1F},
      {"-100.0001", true, -100.0001F},
      {"1e39", true, infinity},
      {"-1e400", true, -infinity},
      {"1e-60", true, 0.0F},
      {"1e-4000", true, 0.0F},
      {"1" + std::string(400, '0'), true, infinity},
      {"0." + std::string(400, '0') + "1", true, 0.0F},
      {"1.4e-45", true, 1.4e-45F},
      {".", false, 0},
      {"", false, 0},
      {"-", false, 0},
      {"1.2.3", false, 0},
      {"1e", false, 0},
      {"nan", false, 0},
      {"inf", false, 0},
      {"0x1p3", false, 0},
      {"--1", false, 0},
      {"1,5", false, 0},
      {"NA", false, 0},
  };
  for (const Case& c : cases) {
    float value = 99;
    EXPECT_EQ(ParseReal(c.token, value), c.good) << c.token;
    EXPECT_EQ(value, c.good ? c.value : 99.0F) << c.token;
  }
}

// What NextDataRecord stops on after `reads` earlier stops, each followed by the reading of one record.
std::string DataRecordAfter(const std::string& text, int reads) {
  Open("!\n");  // leaves a remark in the record buffer, whatever was there before
  NextDataRecord(kUnit);
  Open(text);
  for (int k = 0; k < reads; ++k) {
    NextDataRecord(kUnit);
    NextRecord();
  }
  NextDataRecord(kUnit);
  const std::string record = NextRecord();
  platform::CloseUnit(kUnit);
  return record;
}

TEST(NextDataRecord, JudgesRecordsByTheirFirst128Characters) {
  const ScratchFolder folder;
  const std::string blanks(128, ' ');
  struct Case {
    const char* rule;
    std::string text;
    int reads;
    std::string record;
  };
  const Case cases[] = {
      {"remarks and blank lines are skipped", "! remark\n\n   \n!\n1\n", 0, "1"},
      {"a mark further right makes no remark", "1 ! not a remark\n", 0, "1 ! not a remark"},
      {"a blank in front of the mark makes data", " !x\n", 0, " !x"},
      {"a line of tabs is data", "\t\n1\n", 0, "\t"},
      {"data behind 128 blanks is not seen", blanks + "1\n2\n", 0, "2"},
      {"data in column 128 is seen", blanks.substr(1) + "1\n2\n", 0, blanks.substr(1) + "1"},
      {"CR LF", "!\r\n\r\n1\r\n", 0, "1"},
      {"an empty file", "", 0, "(end)"},
      {"only remarks", "!a\n!b", 0, "(end)"},
      {"behind the last record it is met again", "1\n2\n", 2, "2"},
      {"also without a final line end", "1\n2", 2, "2"},
      {"and again", "1\n2\n", 3, "2"},
      {"a remark at the end is not", "1\n!end\n", 1, "(end)"},
      {"nor is what stands before a blank last line", "1\n\n", 1, "(end)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DataRecordAfter(c.text, c.reads), c.record) << c.rule;
  }
}

TEST(NextDataRecord, KeepsItsBufferFromFileToFile) {
  const ScratchFolder folder;
  Open("1\n");
  NextDataRecord(kUnit);
  Open("!a\n");
  NextRecord();  // the new file is at its end, the buffer still holds the data record of the old one
  NextDataRecord(kUnit);
  EXPECT_EQ(NextRecord(), "!a");
  platform::CloseUnit(kUnit);
}

}  // namespace
}  // namespace project
