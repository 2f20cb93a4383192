#pragma once

// Colours that keep their order when printed in grey, and images of coloured cells.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace reports {

struct Colour {
  uint8_t red = 0, green = 0, blue = 0;
};

// Ramps from light to dark, whose lightness falls steadily.
enum class Ramp { Blue, Orange };
// share is cut to 0 to 1.
Colour ShadeAt(Ramp ramp, double share);
std::string Hex(Colour colour);  // "#08306b"
// Shade k of n for classes side by side, dark to light.
Colour ClassShade(std::size_t k, std::size_t n);

// An image of up to 256 colours, a byte a pixel, rows from the top.
struct Raster {
  std::size_t width = 0, height = 0;
  std::vector<uint8_t> pixels;
  std::vector<Colour> palette;
};
// Bytes of a PNG file. Pixels are repeated `times` in both directions.
std::string Png(const Raster& raster, std::size_t times = 1);

}  // namespace reports
