#include "host/reports/shades.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "host/exit_code.h"

namespace reports {
namespace {

constexpr std::size_t kStops = 5;
// By enum Ramp; stops at equal steps.
constexpr std::array<std::array<Colour, kStops>, 2> kRamps = {{
    {{{247, 251, 255}, {198, 219, 239}, {107, 174, 214}, {33, 113, 181}, {8, 40, 90}}},
    {{{255, 247, 236}, {253, 212, 158}, {252, 141, 89}, {203, 48, 24}, {103, 0, 0}}},
}};

uint8_t Between(uint8_t a, uint8_t b, double share) {
  return static_cast<uint8_t>(std::lround(a + (b - a) * share));
}

void AppendBigEndian(std::string& out, uint64_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift & 0xFF);
}

void AppendChunk(std::string& out, std::string_view type, std::string_view data) {
  AppendBigEndian(out, data.size());
  const std::string body = std::string(type) + std::string(data);
  out += body;
  const auto* bytes = reinterpret_cast<const Bytef*>(body.data());
  AppendBigEndian(out, crc32(0, bytes, static_cast<uInt>(body.size())));
}

std::string Deflated(const std::string& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  std::string packed(size, '\0');
  const int code =
      compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
                static_cast<uLong>(plain.size()), Z_BEST_COMPRESSION);
  if (code != Z_OK) throw host::Failure{host::ExitCode::Other, "no memory to pack an image of the report"};
  packed.resize(size);
  return packed;
}

}  // namespace

Colour ShadeAt(Ramp ramp, double share) {
  const auto& stops = kRamps.at(static_cast<std::size_t>(ramp));
  const double at = std::clamp(std::isnan(share) ? 0.0 : share, 0.0, 1.0) * (kStops - 1);
  const std::size_t k = std::min(kStops - 2, static_cast<std::size_t>(at));
  const Colour &a = stops.at(k), &b = stops.at(k + 1);
  const double part = at - static_cast<double>(k);
  return {Between(a.red, b.red, part), Between(a.green, b.green, part), Between(a.blue, b.blue, part)};
}

std::string Hex(Colour colour) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "#";
  for (const unsigned part : {colour.red, colour.green, colour.blue}) {
    text += digits[part >> 4];
    text += digits[part & 15U];
  }
  return text;
}

Colour ClassShade(std::size_t k, std::size_t n) {
  const double step = n > 1 ? static_cast<double>(k) / static_cast<double>(n - 1) : 0;
  return ShadeAt(k % 2 == 0 ? Ramp::Blue : Ramp::Orange, 0.85 - 0.72 * step);
}

std::string Png(const Raster& raster, std::size_t times) {
  std::string plain;
  plain.reserve((raster.width * times + 1) * raster.height * times);
  for (std::size_t y = 0; y < raster.height; ++y) {
    std::string row(1, '\0');  // filter type 0
    for (std::size_t x = 0; x < raster.width; ++x) {
      row.append(times, static_cast<char>(raster.pixels[y * raster.width + x]));
    }
    for (std::size_t k = 0; k < times; ++k) plain += row;
  }
  std::string header, palette;
  AppendBigEndian(header, raster.width * times);
  AppendBigEndian(header, raster.height * times);
  header +=
      std::string("\x08\x03\x00\x00\x00", 5);  // eight bits, palette, deflate, no filter rule, no interlace
  for (const Colour& colour : raster.palette) {
    for (const unsigned part : {colour.red, colour.green, colour.blue}) palette += static_cast<char>(part);
  }
  std::string file = "\x89PNG\r\n\x1a\n";
  AppendChunk(file, "IHDR", header);
  AppendChunk(file, "PLTE", palette);
  AppendChunk(file, "IDAT", Deflated(plain));
  AppendChunk(file, "IEND", "");
  return file;
}

}  // namespace reports
