#pragma once

// The small layer under all figures: marks on a sheet, written as SVG. Lengths are CSS pixels, y downwards.

#include <cstddef>
#include <string>
#include <string_view>

namespace reports {

struct Drawing {
  double width = 0, height = 0;
  std::string marks;
};

// Styles are attribute texts, such as R"(fill="#333")". `hover` becomes the <title> of the mark, none if empty.
void AddLine(Drawing& drawing, double x1, double y1, double x2, double y2, std::string_view style);
void AddRect(Drawing& drawing, double x, double y, double width, double height, std::string_view style,
             std::string_view hover = "");
void AddCircle(Drawing& drawing, double x, double y, double radius, std::string_view style,
               std::string_view hover = "");
void AddPath(Drawing& drawing, std::string_view commands, std::string_view style);
// Text of `size` pixels that starts at x; style may hold text-anchor, font-weight, transform. y is the baseline.
void AddText(Drawing& drawing, double x, double y, std::string_view text, std::string_view style = "");
// Text turned by 90 degrees that ends (reads upwards) at its middle.
void AddUpright(Drawing& drawing, double x, double y, std::string_view text, std::string_view style = "");
void AddImage(Drawing& drawing, double x, double y, double width, double height, std::string_view png,
              std::string_view hover);

// Commands of a path: "M12.3 4".
std::string MoveTo(double x, double y);
std::string LineTo(double x, double y);
// A dot of a path that is drawn with round caps: far shorter than an element of its own.
std::string Dot(double x, double y);

// At most two decimals, no trailing zeros, never an exponent; what is not finite would break the drawing and
// stands as 0.
std::string Number(double value);
// Text that may stand in XML and HTML, in attributes too; bytes that are no UTF-8 and control characters become
// the replacement character.
std::string Escaped(std::string_view text);
// Estimated width in pixels of a text in the font of the figures.
double TextWidth(std::string_view text, double size);
// The text, or its first characters and an ellipsis, within `width`.
std::string Shortened(std::string_view text, double size, double width);

// The whole document. `name` makes the ids unique in a page.
std::string Document(const Drawing& drawing, std::string_view name, std::string_view title,
                     std::string_view description);

inline constexpr double kTextSize = 11;
inline constexpr double kSmallText = 9;

inline constexpr std::string_view kAxisStyle = R"(stroke="#555")";
inline constexpr std::string_view kGridStyle = R"(stroke="#ddd" stroke-width=".7")";
inline constexpr std::string_view kMiddle = R"(text-anchor="middle")";
inline constexpr std::string_view kEnd = R"(text-anchor="end")";
inline constexpr std::string_view kSmall = R"(font-size="9")";
inline constexpr std::string_view kSmallMiddle = R"(font-size="9" text-anchor="middle")";
inline constexpr std::string_view kSmallEnd = R"(font-size="9" text-anchor="end")";
inline constexpr std::string_view kBold = R"(font-weight="bold")";
inline constexpr std::string_view kBoldMiddle = R"(font-weight="bold" text-anchor="middle")";

}  // namespace reports
