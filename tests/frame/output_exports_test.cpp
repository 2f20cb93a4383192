// The exports that write result files, as a host meets them: each argument reaches its place.

#include <string>
#include <vector>

#include "frame/exports.h"
#include "platform/unit.h"
#include "tests/support/scratch.h"

namespace {

using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

std::string Field(const std::string& name) { return name + std::string(19 - name.size(), ' '); }

// The value of the only pair in a table of two markers.
std::string OnlyValue(const std::string& file) {
  const std::string text = ReadFile(file);
  const std::size_t last = text.find_last_of(' ');
  return text.substr(last + 1, text.size() - last - 2);
}

TEST(CdmOutput, EveryArgumentReachesItsFile) {
  const ScratchFolder folder;
  WriteFile("in.cdm", "1\n1\n2\n3\n2\nABCD m1 AC BD\nABCD m2 AC BD\nA=B m3 XC XD\nm1 0\nm2 0\nm3 0\n");
  const int32_t on = 1, off = 0, fileLength = 6, stemLength = 3, two = 2, one = 1, three = 3;
  const int32_t places[] = {2}, order[] = {1, 2}, deleted[] = {3}, phase[] = {4, 1, 1};
  const float position[] = {0, 5};
  float pairs[9][3];
  for (int k = 0; k < 9; ++k) {
    pairs[k][0] = 0.01F * static_cast<float>(k + 1);  // the pair of m2 and m1
    pairs[k][1] = pairs[k][2] = 9;
  }
  CDMOUTPUT(&on, &off, &on, &fileLength, "in.cdm", &stemLength, "out", &two, &one, Field("LG1").data(),
            places, order, position, &three, deleted, pairs[0], pairs[1], pairs[2], pairs[3], pairs[4],
            pairs[5], pairs[6], pairs[7], pairs[8], phase);
  EXPECT_EQ(OnlyValue("out.recf"), "0.0100");
  EXPECT_EQ(OnlyValue("out.recm"), "0.0200");
  EXPECT_EQ(OnlyValue("out.rec"), "0.0300");
  EXPECT_FALSE(Exists("out.lod"));
  EXPECT_EQ(OnlyValue("out.disf"), "0.0700");
  EXPECT_EQ(OnlyValue("out.dism"), "0.0800");
  EXPECT_EQ(OnlyValue("out.dis"), "0.0900");
  EXPECT_NE(ReadFile("out.cdq").find("m2" + std::string(33, ' ') + " BD AC"), std::string::npos)
      << "repulsion in both";
  EXPECT_NE(ReadFile("out.sum").find("m3"), std::string::npos) << "deleted";
  EXPECT_FALSE(Exists("CDM.log") || platform::IsConnected(100));
  CDMOUTPUT(&off, &on, &off, &fileLength, "in.cdm", &stemLength, "two", &two, &one, Field("LG1").data(),
            places, order, position, &three, deleted, pairs[0], pairs[1], pairs[2], pairs[3], pairs[4],
            pairs[5], pairs[6], pairs[7], pairs[8], phase);
  EXPECT_EQ(OnlyValue("two.lodf"), "0.0400");
  EXPECT_EQ(OnlyValue("two.lodm"), "0.0500");
  EXPECT_EQ(OnlyValue("two.lod"), "0.0600");
}

TEST(PlmOutput, EveryArgumentReachesItsFile) {
  const ScratchFolder folder;
  WriteFile("in.plm", "1\n1\n2\n3\n2\nABCD m1 A B\nABCD m2 C D\nABAB m3 A B\nm1 0\nm2 0\nm3 0\n");
  const int32_t on = 1, fileLength = 6, stemLength = 3, two = 2, one = 1, three = 3;
  const int32_t places[] = {2}, order[] = {1, 2}, deleted[] = {3};
  const float position[] = {0, 5}, rec[] = {0.01F, 9, 9}, lod[] = {0.02F, 9, 9}, distance[] = {0.03F, 9, 9};
  PLMOUTPUT(&on, &on, &on, &fileLength, "in.plm", &stemLength, "out", &two, &one, Field("LG1").data(), places,
            order, position, &three, deleted, rec, lod, distance);
  EXPECT_EQ(OnlyValue("out.rec"), "0.0100");
  EXPECT_EQ(OnlyValue("out.lod"), "0.0200");
  EXPECT_EQ(OnlyValue("out.dis"), "0.0300");
  EXPECT_NE(ReadFile("out.plq").find("m2" + std::string(33, ' ') + " C D"), std::string::npos);
  EXPECT_NE(ReadFile("out.sum").find("m3"), std::string::npos);
}

TEST(ToolAnova, TellsTheLogTheConsoleAndTheCaller) {
  const support::ScratchFolder folder;
  const int32_t columns = 4, classes = 5;
  const auto call = [&](const std::string& name, int32_t rows) {
    const auto length = static_cast<int32_t>(name.size());
    int32_t status = 7;
    testing::internal::CaptureStdout();
    TOOLANOVA(&length, name.data(), &rows, &columns, &classes, &status);
    return std::to_string(status) + testing::internal::GetCapturedStdout() + "|" +
           support::ReadFile("ANOVA.log");
  };
  support::WriteFile("t.txt", "e g b y\nE A 1 1\nE B 1 2\nE A 2 4\nE B 2 9\n");
  EXPECT_EQ(call("t.txt  ", 4), "0 t.txt runs successfully!\n|t.txt runs successfully!\n");
  const std::string frequencies = ReadFile("t.frq");
  const std::size_t second = frequencies.find('\n') + 1;
  EXPECT_EQ(frequencies.find('\n', second) - second, 80U + 12U * 5U) << "five classes";
  EXPECT_EQ(
      call("t.txt", 5),
      "100 --Error found. Please check AVOVA.log for details!\n|--Input error: can't read the    5th row!\n"
      "--Input error: Please check the LOG file for error messages!\n");
  EXPECT_EQ(call("t.txt" + std::string(300, ' ') + "x", 4),
            "0 t.txt runs successfully!\n|t.txt runs successfully!\n")
      << "256 characters count";
}

}  // namespace
