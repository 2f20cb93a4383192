// The drawing layer: texts, numbers, ticks, spread labels, images, digests.

#include "host/reports/drawing.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "host/reports/axes.h"
#include "host/reports/sha256.h"
#include "host/reports/shades.h"

using namespace reports;

namespace {

const std::string kReplaced = "\xEF\xBF\xBD";

TEST(Drawing, EscapesWhatMarkupCannotHold) {
  const std::pair<std::string, std::string> cases[] = {
      {"a<b>&\"c'", "a&lt;b&gt;&amp;&quot;c&#39;"},
      {"caf\xC3\xA9 \xE6\xB0\xB4 \xF0\x9F\x8C\xBE", "caf\xC3\xA9 \xE6\xB0\xB4 \xF0\x9F\x8C\xBE"},
      {"caf\xE9", "caf" + kReplaced},                                                   // Latin-1
      {std::string("a\0b\x01\x7F", 5), "a" + kReplaced + "b" + kReplaced + kReplaced},  // controls
      {"\xC0\xAF", kReplaced + kReplaced},                                              // overlong
      {"\xED\xA0\x80", kReplaced + kReplaced + kReplaced},                              // surrogate
      {"\xEF\xBF\xBF", kReplaced},                                                      // no character of XML
      {"\xE6\xB0", kReplaced + kReplaced},                                              // cut short
      {"\xF4\x90\x80\x80", kReplaced + kReplaced + kReplaced + kReplaced}};             // above the last one
  for (const auto& [text, expected] : cases) EXPECT_EQ(Escaped(text), expected) << text;
}

TEST(Drawing, WritesNumbersThatEveryReaderTakes) {
  const std::pair<double, std::string> cases[] = {
      {0, "0"},     {-0.001, "0"},       {1.5, "1.5"},        {-12.345678, "-12.35"},
      {100, "100"}, {1e9, "1000000000"}, {std::nan(""), "0"}, {std::numeric_limits<double>::infinity(), "0"}};
  for (const auto& [value, expected] : cases) EXPECT_EQ(Number(value), expected);
  EXPECT_LT(Number(-1e308).size(), 400U);
}

TEST(Drawing, ShortensWholeCharacters) {
  EXPECT_EQ(Shortened("short", 10, 100), "short");
  const std::string cut = Shortened("\xE6\xB0\xB4\xE6\xB0\xB4\xE6\xB0\xB4\xE6\xB0\xB4", 10, 35);
  EXPECT_EQ(cut, "\xE6\xB0\xB4\xE6\xB0\xB4\xE2\x80\xA6");
  EXPECT_LE(TextWidth(cut, 10), 35);
}

TEST(Axes, TicksAreRoundAndInside) {
  struct Case {
    double low, high;
    std::vector<std::string> labels;
  };
  const Case cases[] = {{0, 100, {"0", "20", "40", "60", "80", "100"}},
                        {-0.31, 0.42, {"-0.2", "0.0", "0.2", "0.4"}},
                        {0, 0.5, {"0.0", "0.1", "0.2", "0.3", "0.4", "0.5"}},
                        {98765, 98768, {"98765", "98766", "98767", "98768"}},
                        {5, 5, {}},
                        {1, std::nextafter(1, 2), {}},
                        {0, std::numeric_limits<double>::infinity(), {}}};
  for (const Case& one : cases) EXPECT_EQ(TickLabels(NiceTicks(one.low, one.high, 5)), one.labels) << one.low;
  std::mt19937 random(1);
  for (int k = 0; k < 500; ++k) {
    const double low = std::ldexp(static_cast<double>(random()) - 2e9, static_cast<int>(random() % 60) - 60);
    const double high =
        low + std::ldexp(static_cast<double>(random()) + 1, static_cast<int>(random() % 60) - 60);
    const std::vector<double> ticks = NiceTicks(low, high, 6);
    EXPECT_LE(ticks.size(), 13U);
    for (const double tick : ticks) {
      EXPECT_GE(tick, low - 1e-9 * (high - low));
      EXPECT_LE(tick, high + 1e-9 * (high - low));
    }
  }
}

double Moved(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return sum;
}

TEST(Axes, SpreadLabelsKeepTheirGapAndMoveLeast) {
  EXPECT_EQ(SpreadLabels({10, 10, 10}, 9, -100, 100), (std::vector<double>{1, 10, 19}));
  EXPECT_EQ(SpreadLabels({10, 10, 50}, 9, 8, 100), (std::vector<double>{8, 17, 50}));
  EXPECT_EQ(SpreadLabels({95, 96}, 9, 0, 96), (std::vector<double>{87, 96}));
  EXPECT_TRUE(SpreadLabels({}, 9, 0, 1).empty());
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    std::vector<double> wanted(1 + random() % 12);
    for (double& place : wanted) place = static_cast<double>(random() % 1000) / 10;
    std::sort(wanted.begin(), wanted.end());
    const std::vector<double> places = SpreadLabels(wanted, 9, -1000, 1000);
    for (std::size_t i = 1; i < places.size(); ++i) EXPECT_GE(places[i] - places[i - 1], 9 - 1e-9);
    // No other spread that keeps the gap is nearer: pushing any run of labels a little either way is worse.
    for (std::size_t first = 0; first < places.size(); ++first) {
      for (std::size_t last = first; last < places.size(); ++last) {
        for (const double push : {-0.01, 0.01}) {
          std::vector<double> other = places;
          for (std::size_t i = first; i <= last; ++i) other[i] += push;
          const bool apart = (first == 0 || other[first] - other[first - 1] >= 9 - 1e-9) &&
                             (last + 1 == other.size() || other[last + 1] - other[last] >= 9 - 1e-9);
          if (apart) {
            EXPECT_GE(Moved(other, wanted), Moved(places, wanted));
          }
        }
      }
    }
  }
}

TEST(Axes, LabelStepsLeaveRoom) {
  for (const std::size_t n : {1U, 7U, 40U, 999U, 100000U}) {
    const std::size_t step = LabelStep(n, 300, 10);
    EXPECT_LE(static_cast<double>(n) / static_cast<double>(step) * 10, 301);
    if (n * 10 <= 300) {
      EXPECT_EQ(step, 1U);
    }
  }
}

TEST(Shades, DarkenStepByStep) {
  for (const Ramp ramp : {Ramp::Blue, Ramp::Orange}) {
    double last = 256;
    for (int k = 0; k <= 20; ++k) {
      const Colour colour = ShadeAt(ramp, k / 20.0);
      const double light = 0.3 * colour.red + 0.59 * colour.green + 0.11 * colour.blue;
      EXPECT_LT(light, last) << k;
      last = light;
    }
    EXPECT_EQ(Hex(ShadeAt(ramp, std::nan(""))), Hex(ShadeAt(ramp, 0)));
    EXPECT_EQ(Hex(ShadeAt(ramp, 7)), Hex(ShadeAt(ramp, 1)));
  }
}

uint32_t Big(const std::string& bytes, std::size_t at) {
  uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

TEST(Shades, PngHoldsThePixels) {
  const Raster raster{3, 2, {0, 1, 2, 2, 1, 0}, {{1, 2, 3}, {40, 50, 60}, {255, 0, 9}}};
  const std::string file = Png(raster, 2);
  ASSERT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1a\n");
  std::string types, pixels;
  for (std::size_t at = 8; at < file.size();) {
    const uint32_t length = Big(file, at);
    const std::string type = file.substr(at + 4, 4), body = file.substr(at + 4, 4 + length);
    types += type;
    EXPECT_EQ(Big(file, at + 8 + length), crc32(0, reinterpret_cast<const Bytef*>(body.data()), length + 4));
    if (type == "IHDR") {
      EXPECT_EQ(Big(body, 4), 6U);
      EXPECT_EQ(Big(body, 8), 4U);
    }
    if (type == "PLTE") {
      EXPECT_EQ(body.substr(4), std::string("\x01\x02\x03\x28\x32\x3c\xff\x00\x09", 9));
    }
    if (type == "IDAT") {
      uLongf size = 100;
      pixels.resize(size);
      ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(pixels.data()), &size,
                           reinterpret_cast<const Bytef*>(body.data() + 4), length),
                Z_OK);
      pixels.resize(size);
    }
    at += length + 12;
  }
  EXPECT_EQ(types, "IHDRPLTEIDATIEND");
  const std::string row1("\0\0\0\1\1\2\2", 7), row2("\0\2\2\1\1\0\0", 7);
  EXPECT_EQ(pixels, row1 + row1 + row2 + row2);
}

TEST(Sha256, AgreesWithPublishedDigests) {
  // FIPS 180-4 examples, and a million times "a".
  EXPECT_EQ(Sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(Sha256(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
