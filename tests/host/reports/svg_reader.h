#pragma once

#include <map>
#include <string>
#include <vector>

// An element of a drawing: enough of a reader to count marks and look at where they stand.
struct Element {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;   // of a <text>, unescaped
  std::string hover;  // of its <title>
  double Place(const std::string& attribute) const { return std::stod(attributes.at(attribute)); }
  bool Has(const std::string& attribute, const std::string& part) const {
    const auto found = attributes.find(attribute);
    return found != attributes.end() && found->second.find(part) != std::string::npos;
  }
};

// The marks of a drawing in their order; fails the test where a number is no number.
std::vector<Element> Marks(const std::string& svg);
std::vector<Element> Named(const std::vector<Element>& marks, const std::string& name);
std::vector<std::string> Texts(const std::vector<Element>& marks);

// Pairs of coordinates behind each "M" of the paths whose attribute holds that text.
struct Place {
  double x, y;
};
std::vector<Place> Starts(const std::vector<Element>& marks, const std::string& attribute,
                          const std::string& part);
