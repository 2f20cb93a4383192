#include "svg_reader.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

std::string Plain(std::string text) {
  for (const auto& [from, to] :
       {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}}) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; ++at)
      text.replace(at, std::string(from).size(), to);
  }
  return text;
}

}  // namespace

std::vector<Element> Marks(const std::string& svg) {
  std::vector<Element> marks;
  const std::size_t start = svg.find("<g ");
  static const std::regex number("-?[0-9]+(\\.[0-9]+)?");
  for (std::size_t at = svg.find('<', start + 1); at != std::string::npos; at = svg.find('<', at + 1)) {
    const std::size_t end = svg.find('>', at);
    const std::string tag = svg.substr(at + 1, end - at - 1);
    if (tag.starts_with('/')) continue;
    const std::string text = svg.substr(end + 1, svg.find('<', end) - end - 1);
    if (tag == "title") {
      marks.back().hover = Plain(text);
      continue;
    }
    Element element{tag.substr(0, tag.find(' ')), {}, tag.ends_with('/') ? "" : Plain(text), ""};
    for (std::size_t equal = tag.find("=\""); equal != std::string::npos;
         equal = tag.find("=\"", equal + 2)) {
      const std::size_t name = tag.rfind(' ', equal) + 1, close = tag.find('"', equal + 2);
      element.attributes[tag.substr(name, equal - name)] = tag.substr(equal + 2, close - equal - 2);
    }
    for (const std::string key : {"x", "y", "x1", "y1", "x2", "y2", "cx", "cy", "r", "width", "height"}) {
      const auto found = element.attributes.find(key);
      if (found != element.attributes.end()) {
        EXPECT_TRUE(std::regex_match(found->second, number)) << tag;
      }
    }
    marks.push_back(element);
  }
  return marks;
}

std::vector<Element> Named(const std::vector<Element>& marks, const std::string& name) {
  std::vector<Element> named;
  for (const Element& mark : marks) {
    if (mark.name == name) named.push_back(mark);
  }
  return named;
}

std::vector<std::string> Texts(const std::vector<Element>& marks) {
  std::vector<std::string> texts;
  for (const Element& mark : Named(marks, "text")) texts.push_back(mark.text);
  return texts;
}

std::vector<Place> Starts(const std::vector<Element>& marks, const std::string& attribute,
                          const std::string& part) {
  std::vector<Place> places;
  for (const Element& path : Named(marks, "path")) {
    if (!path.Has(attribute, part)) continue;
    const std::string& d = path.attributes.at("d");
    for (std::size_t at = d.find('M'); at != std::string::npos; at = d.find('M', at + 1)) {
      std::size_t used = 0;
      const double x = std::stod(d.substr(at + 1, 20), &used);
      places.push_back({x, std::stod(d.substr(at + 1 + used, 20))});
    }
  }
  return places;
}
