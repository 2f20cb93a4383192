#include "host/reports/drawing.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace reports {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

void AddAttribute(std::string& marks, std::string_view name, double value) {
  marks += ' ';
  marks += name;
  marks += "=\"";
  marks += Number(value);
  marks += '"';
}

void Close(std::string& marks, std::string_view element, std::string_view style, std::string_view hover) {
  if (!style.empty()) {
    marks += ' ';
    marks += style;
  }
  if (hover.empty()) {
    marks += "/>\n";
    return;
  }
  marks += "><title>" + Escaped(hover) + "</title></";
  marks += element;
  marks += ">\n";
}

// Length of the UTF-8 character at the start of the text, 0 when it is not one.
std::size_t CharacterLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80) return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  // Overlong forms, surrogates, and what lies above the last code point.
  if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
      (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) {
    return 0;
  }
  return length;
}

void AppendEscaped(std::string& out, std::string_view character) {
  switch (character[0]) {
    case '&':
      out += "&amp;";
      return;
    case '<':
      out += "&lt;";
      return;
    case '>':
      out += "&gt;";
      return;
    case '"':
      out += "&quot;";
      return;
    case '\'':
      out += "&#39;";
      return;
    default:
      break;
  }
  const auto first = static_cast<unsigned char>(character[0]);
  const bool control = (first < 0x20 && first != '\t' && first != '\n') || first == 0x7F;
  // U+FFFE and U+FFFF may not stand in XML either.
  const bool refused = character.starts_with("\xEF\xBF\xBE") || character.starts_with("\xEF\xBF\xBF");
  out += control || refused ? kReplacement : character;
}

// Widths of a sans-serif font in parts of its size, on the wide side, so that labels rather stand apart.
double CharacterWidth(std::string_view character) {
  constexpr std::string_view narrow = "iljtfrI.,:;|'!()[] -/";
  constexpr std::string_view wide = "mwMW@%";
  if (character.size() > 2) return 1;  // ideographs are as wide as high
  if (character.size() == 1 && narrow.find(character[0]) != std::string_view::npos) return 0.4;
  if (character.size() == 1 && wide.find(character[0]) != std::string_view::npos) return 0.95;
  const bool upper = character[0] >= 'A' && character[0] <= 'Z';
  return upper ? 0.7 : 0.62;
}

std::string Base64(std::string_view bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t three = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      three = three << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? digits[three >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

}  // namespace

void AddLine(Drawing& drawing, double x1, double y1, double x2, double y2, std::string_view style) {
  drawing.marks += "<line";
  AddAttribute(drawing.marks, "x1", x1);
  AddAttribute(drawing.marks, "y1", y1);
  AddAttribute(drawing.marks, "x2", x2);
  AddAttribute(drawing.marks, "y2", y2);
  Close(drawing.marks, "line", style, "");
}

void AddRect(Drawing& drawing, double x, double y, double width, double height, std::string_view style,
             std::string_view hover) {
  drawing.marks += "<rect";
  AddAttribute(drawing.marks, "x", x);
  AddAttribute(drawing.marks, "y", y);
  AddAttribute(drawing.marks, "width", width);
  AddAttribute(drawing.marks, "height", height);
  Close(drawing.marks, "rect", style, hover);
}

void AddCircle(Drawing& drawing, double x, double y, double radius, std::string_view style,
               std::string_view hover) {
  drawing.marks += "<circle";
  AddAttribute(drawing.marks, "cx", x);
  AddAttribute(drawing.marks, "cy", y);
  AddAttribute(drawing.marks, "r", radius);
  Close(drawing.marks, "circle", style, hover);
}

void AddPath(Drawing& drawing, std::string_view commands, std::string_view style) {
  if (commands.empty()) return;
  drawing.marks += "<path d=\"";
  drawing.marks += commands;
  drawing.marks += '"';
  Close(drawing.marks, "path", style, "");
}

void AddText(Drawing& drawing, double x, double y, std::string_view text, std::string_view style) {
  drawing.marks += "<text";
  AddAttribute(drawing.marks, "x", x);
  AddAttribute(drawing.marks, "y", y);
  if (!style.empty()) {
    drawing.marks += ' ';
    drawing.marks += style;
  }
  drawing.marks += ">" + Escaped(text) + "</text>\n";
}

void AddUpright(Drawing& drawing, double x, double y, std::string_view text, std::string_view style) {
  const std::string turn = "transform=\"rotate(-90 " + Number(x) + " " + Number(y) + ")\" ";
  AddText(drawing, x, y, text, turn + std::string(style));
}

void AddImage(Drawing& drawing, double x, double y, double width, double height, std::string_view png,
              std::string_view hover) {
  drawing.marks += "<image";
  AddAttribute(drawing.marks, "x", x);
  AddAttribute(drawing.marks, "y", y);
  AddAttribute(drawing.marks, "width", width);
  AddAttribute(drawing.marks, "height", height);
  drawing.marks += " preserveAspectRatio=\"none\" href=\"data:image/png;base64," + Base64(png) + "\"";
  Close(drawing.marks, "image", R"(style="image-rendering:pixelated")", hover);
}

std::string MoveTo(double x, double y) { return "M" + Number(x) + " " + Number(y); }
std::string LineTo(double x, double y) { return "L" + Number(x) + " " + Number(y); }
std::string Dot(double x, double y) { return MoveTo(x, y) + "h0"; }

std::string Number(double value) {
  if (!std::isfinite(value)) return "0";
  std::array<char, 340> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 2);
  std::string text(buffer.data(), end.ptr);
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string Escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0)
      out += kReplacement;
    else
      AppendEscaped(out, text.substr(0, length));
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

double TextWidth(std::string_view text, double size) {
  double width = 0;
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    width += length == 0 ? 1 : CharacterWidth(text.substr(0, length));
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return width * size;
}

std::string Shortened(std::string_view text, double size, double width) {
  if (TextWidth(text, size) <= width) return std::string(text);
  double left = width - size;  // the ellipsis
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t length = CharacterLength(text.substr(at));
    left -= (length == 0 ? 1 : CharacterWidth(text.substr(at, length))) * size;
    if (left < 0) break;
    at += length == 0 ? 1 : length;
  }
  return std::string(text.substr(0, at)) + "\xE2\x80\xA6";
}

std::string Document(const Drawing& drawing, std::string_view name, std::string_view title,
                     std::string_view description) {
  const std::string w = Number(drawing.width), h = Number(drawing.height), id = Escaped(name);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h + "\" viewBox=\"0 0 " +
         w + " " + h + "\" role=\"img\" aria-labelledby=\"" + id + "-title " + id + "-desc\">\n<title id=\"" +
         id + "-title\">" + Escaped(title) + "</title>\n<desc id=\"" + id + "-desc\">" +
         Escaped(description) + "</desc>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" +
         "<g font-family=\"'DejaVu Sans',Verdana,Arial,sans-serif\" font-size=\"11\" fill=\"#222\">\n" +
         drawing.marks + "</g>\n</svg>\n";
}

}  // namespace reports
