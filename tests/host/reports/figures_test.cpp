// Figures and pages hold the data that they were given: as many marks, in their places.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>

#include "host/marker_data.h"
#include "host/reports/pages.h"
#include "host/reports/shades.h"
#include "sample_reports.h"
#include "svg_reader.h"
#include "tests/host/command_runner.h"

using namespace reports;

namespace {

const Figure& Find(const std::vector<Figure>& figures, const std::string& name) {
  const auto found =
      std::find_if(figures.begin(), figures.end(), [&](const Figure& figure) { return figure.name == name; });
  EXPECT_NE(found, figures.end()) << name;
  static const Figure none;
  return found == figures.end() ? none : *found;
}

std::vector<Element> MarksOf(const std::vector<Figure>& figures, const std::string& name) {
  return Marks(Find(figures, name).svg);
}

std::vector<std::string> NamesOf(const std::vector<Figure>& figures) {
  std::vector<std::string> names;
  names.reserve(figures.size());
  for (const Figure& figure : figures) names.push_back(figure.name);
  return names;
}

std::size_t Count(const std::vector<Element>& marks, const std::string& name, const std::string& attribute,
                  const std::string& part) {
  return static_cast<std::size_t>(std::count_if(marks.begin(), marks.end(), [&](const Element& mark) {
    return mark.name == name && mark.Has(attribute, part);
  }));
}

TEST(MapFigures, TicksStandAtTheirPositions) {
  const SampleMap sample = SampleMapReport({{12, 7, 1}, 20});
  const std::vector<Figure> figures = MapFigures(sample.report);
  for (const std::string name : {"map_overview", "map_ladder"}) {
    const std::vector<Place> ticks = Starts(MarksOf(figures, name), "stroke", "#333");
    ASSERT_EQ(ticks.size(), 20U) << name;
    // One scale for all groups; its axis is as long as the longest of them.
    const std::vector<Element> lines = Named(MarksOf(figures, name), "line");
    const auto axis = std::find_if(lines.begin(), lines.end(),
                                   [](const Element& line) { return line.Place("x1") == line.Place("x2"); });
    ASSERT_NE(axis, lines.end());
    EXPECT_NEAR(ticks[0].y, axis->Place("y1"), 0.01);
    EXPECT_NEAR(ticks[11].y, axis->Place("y2"), 0.01);
    const auto& first = sample.report.groups[0].markers;
    const double scale = (ticks[11].y - ticks[0].y) / first.back().position;
    std::size_t k = 0;
    for (const ReportGroup& group : sample.report.groups) {
      for (const ReportMarker& marker : group.markers) {
        const double wanted = ticks[0].y + (marker.position - group.markers[0].position) * scale;
        EXPECT_NEAR(ticks[k++].y, wanted, 0.02) << name << " " << marker.name;
      }
    }
  }
  const std::vector<std::string> texts = Texts(MarksOf(figures, "map_ladder"));
  for (const ReportGroup& group : sample.report.groups) {
    for (const ReportMarker& marker : group.markers)
      EXPECT_EQ(std::count(texts.begin(), texts.end(), marker.name), 1);
  }
}

TEST(MapFigures, GapsAreBrokenAndNotToScale) {
  SampleMap sample = SampleMapReport({{6}, 20});
  auto& markers = sample.report.groups[0].markers;
  for (std::size_t k = 3; k < markers.size(); ++k) markers[k].position += 1000;
  const std::vector<Figure> figures = MapFigures(sample.report);
  const std::vector<Element> marks = MarksOf(figures, "map_ladder");
  EXPECT_EQ(Count(marks, "line", "stroke-dasharray", "1.5 2"), 1U);
  const std::vector<Place> ticks = Starts(marks, "stroke", "#333");
  ASSERT_EQ(ticks.size(), 6U);
  const double scale = (ticks[5].y - ticks[4].y) / (markers[5].position - markers[4].position);
  EXPECT_NEAR((ticks[2].y - ticks[0].y) / scale, markers[2].position, 0.05);
  EXPECT_LT((ticks[3].y - ticks[2].y) / scale, 10);
  EXPECT_NE(Find(figures, "map_ladder").caption.find("without linkage"), std::string::npos);
}

TEST(MapFigures, NamesAreThinnedAndTold) {
  const SampleMap sample = SampleMapReport({{400, 10}, 1, false, false});
  const std::vector<Figure> figures = MapFigures(sample.report);
  const Figure& ladder = Find(figures, "map_ladder");
  std::smatch told;
  ASSERT_TRUE(
      std::regex_search(ladder.caption, told, std::regex("Names where there is room: ([0-9]+) of 410")))
      << ladder.caption;
  const std::vector<std::string> texts = Texts(Marks(ladder.svg));
  const auto named = std::count_if(texts.begin(), texts.end(), [](const std::string& text) {
    return std::regex_match(text, std::regex("m[0-9]+"));
  });
  EXPECT_EQ(std::to_string(named), told[1].str());
  EXPECT_GT(named, 40);
}

std::string Decoded(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  uint32_t bits = 0, count = 0;
  for (const char c : text.substr(0, text.find('='))) {
    bits = bits << 6 | static_cast<uint32_t>(digits.find(c));
    count += 6;
    if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
  }
  return bytes;
}

TEST(MapFigures, HeatMapPaintsEachPair) {
  SampleMap sample = SampleMapReport({{2, 1}, 20});
  // Another order than the file's: m2, m1 | m3, with a close pair, one in repulsion, and one without a value.
  std::swap(sample.report.groups[0].markers[0], sample.report.groups[0].markers[1]);
  const std::vector<float> rec = {0.0F, 0.75F, std::nanf("")},
                           lod = {10.0F, 5.0F, 1.0F};  // (2,1), (3,1), (3,2)
  sample.report.rec = rec;
  sample.report.lod = lod;
  const std::vector<Figure> figures = MapFigures(sample.report);
  const std::vector<Element> images = Named(MarksOf(figures, "pair_heat_map"), "image");
  ASSERT_EQ(images.size(), 1U);
  const std::string& href = images[0].attributes.at("href");
  Raster expected{3, 3, std::vector<uint8_t>(9, 48), {}};
  for (int k = 0; k < 24; ++k) expected.palette.push_back(ShadeAt(Ramp::Blue, k / 23.0));
  for (int k = 0; k < 24; ++k) expected.palette.push_back(ShadeAt(Ramp::Orange, k / 23.0));
  expected.palette.push_back({255, 255, 255});
  expected.pixels[3] = 23;       // m1 below m2: frequency 0 is darkest
  expected.pixels[1] = 24 + 23;  // and LOD 10 the highest
  expected.pixels[7] = 12;       // m3 below m1: 0.75 counts as 0.25
  expected.pixels[5] = 24 + 12;
  EXPECT_EQ(Decoded(href.substr(href.find(',') + 1)), Png(expected, 166));
}

TEST(MapFigures, StatisticsStandAlongTheGroups) {
  SampleMap sample = SampleMapReport({{12, 7}, 20});
  sample.report.groups[0].markers[4].p = kNone;
  sample.report.groups[1].markers[2].p = 0;
  const std::vector<Figure> figures = MapFigures(sample.report);
  const std::vector<Element> marks = MarksOf(figures, "segregation");
  const std::vector<Element> hovers = Named(marks, "circle");
  ASSERT_EQ(hovers.size(), 18U);  // one was not tested
  const std::vector<Place> dots = Starts(marks, "stroke-linecap", "round");
  ASSERT_EQ(dots.size(), 18U);
  const auto& group = sample.report.groups[0].markers;
  const double unit = (dots[1].y - dots[0].y) / (-std::log10(group[1].p) + std::log10(group[0].p));
  EXPECT_NEAR(dots[2].y - dots[0].y, unit * (-std::log10(group[2].p) + std::log10(group[0].p)), 0.5);
  EXPECT_TRUE(std::is_sorted(dots.begin(), dots.begin() + 11,
                             [](const Place& a, const Place& b) { return a.x < b.x; }));
  EXPECT_EQ(hovers[17 - 4].hover.substr(0, 5), "m15: ");
  EXPECT_NE(Find(figures, "segregation").caption.find("1 with p below 1e-45"), std::string::npos);
  EXPECT_EQ(Starts(MarksOf(figures, "missing"), "stroke-linecap", "round").size(), 19U);
  // Two groups of three codes, each an area; the legend.
  const std::vector<Element> shares = MarksOf(figures, "genotype_shares");
  EXPECT_EQ(Named(shares, "path").size(), 6U);
  const std::vector<std::string> texts = Texts(shares);
  for (const std::string code : {"A", "H", "B"}) EXPECT_EQ(std::count(texts.begin(), texts.end(), code), 1);
}

TEST(MapFigures, NothingMissingIsToldAsNothing) {
  SampleMap sample = SampleMapReport({{12, 7}, 20});
  for (ReportGroup& group : sample.report.groups) {
    for (ReportMarker& marker : group.markers) marker.missing = 0;
  }
  for (ReportLine& line : sample.report.lines) line.crossovers = kNone;
  const std::vector<Figure> figures = MapFigures(sample.report);
  EXPECT_NE(Find(figures, "missing").caption.find("mean 0.0 %, highest 0.0 %"), std::string::npos);
  EXPECT_EQ(Find(figures, "lines").title, "Missing genotypes per line");
}

TEST(MapFigures, RowsOfShortGroupsTakeLittleRoom) {
  std::vector<std::size_t> groups(12, 30);
  groups.resize(24, 6);
  const SampleMap sample = SampleMapReport({groups, 20});
  for (const std::string name : {"map_overview", "map_ladder"}) {
    std::vector<double> axes;  // heights; an axis stands on the left of each row
    double left = 1e9;
    const std::vector<Element> lines = Named(MarksOf(MapFigures(sample.report), name), "line");
    for (const Element& line : lines) left = std::min(left, line.Place("x2"));
    for (const Element& line : lines) {
      if (line.Place("x1") == line.Place("x2") && line.Place("x1") < left + 5)
        axes.push_back(line.Place("y2") - line.Place("y1"));
    }
    ASSERT_GE(axes.size(), 2U) << name;
    std::vector<double> lengths;
    for (const ReportGroup& group : sample.report.groups) lengths.push_back(group.length);
    const double scale =
        *std::max_element(axes.begin(), axes.end()) / *std::max_element(lengths.begin(), lengths.end());
    EXPECT_LE(axes.back(), *std::max_element(lengths.begin() + 12, lengths.end()) * scale + 0.1) << name;
  }
}

TEST(MapFigures, LinesAndSweepAreCounted) {
  const SampleMap sample = SampleMapReport({{12, 7}, 40});
  const std::vector<Figure> figures = MapFigures(sample.report);
  const std::vector<Element> lines = MarksOf(figures, "lines");
  EXPECT_EQ(Named(lines, "rect").size(), 80U);
  const std::vector<std::string> texts = Texts(lines);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "line 18"), 1);  // the one with 60 crossovers
  const std::vector<Element> sweep = MarksOf(figures, "lod_sweep");
  EXPECT_EQ(Named(sweep, "circle").size(), sample.report.sweep.size());
  std::size_t groups = 0;
  for (const SweepStep& step : sample.report.sweep) groups += step.sizes.size();
  EXPECT_EQ(Named(sweep, "rect").size(), groups);
}

TEST(MapFigures, ParentsAreJoinedAndStrayMarkersTold) {
  SampleMap sample = SampleMapReport({{12}, 20, true});
  auto& markers = sample.report.groups[0].markers;
  std::swap(markers[3].female, markers[10].female);  // m4 and m11 change places on one map
  const std::vector<Figure> figures = MapFigures(sample.report);
  const Figure& figure = Find(figures, "parental_maps");
  const std::vector<Element> marks = Marks(figure.svg);
  const std::size_t crossed = Starts(marks, "stroke", "#b5400a").size();
  EXPECT_EQ(crossed, 2U);
  EXPECT_EQ(Starts(marks, "stroke", "#8aa").size() + crossed,
            16U);  // two of three markers on each parent's map
  EXPECT_NE(figure.caption.find("16 joining lines. Dashed: 2 outside"), std::string::npos) << figure.caption;
}

TEST(ConsensusFigures, SourcesAreJoinedAndTurned) {
  ConsensusReport report;
  JointGroup group{"", {{"one", 3, 1, false}, {"back", 3, -1, true}}, {}, {}};
  group.markers = {{"a", 0, {0, 30}}, {"b", 10, {10, 20}}, {"c", 20, {20, 10}}, {"d", 30, {kNone, kNone}}};
  report.groups = {group};
  const std::vector<Figure> figures = ConsensusFigures(report);
  const std::vector<Element> marks = MarksOf(figures, "consensus_1");
  EXPECT_EQ(Starts(marks, "stroke", "#8aa").size(), 6U);
  EXPECT_TRUE(Starts(marks, "stroke", "#b5400a").empty());
  const std::vector<std::string> texts = Texts(marks);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "back (turned)"), 1);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "20.0 cM, 3 markers"), 2);
}

TrialReport OneTrait() {
  TrialReport report;
  report.environments = {"E1", "E2"};
  report.genotypes = {"G1", "G2"};
  TraitReport trait;
  trait.name = "yield";
  trait.plots = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 40}, {5}};
  trait.means = {3, 1, kNone, 2};
  trait.quantiles = {{"E1", {-1, 0, 1}, {-1.1, 0.1, 1}}};
  trait.histograms = {{"E1", {1, 2, 3}, {4, 0, 2}}};
  trait.correlations = {
      {"Environments", {"E1", "E2", "E3"}, {1, 0.64, kNone, 0.64, 1, -0.16, kNone, -0.16, 1}}};
  trait.biplots = {{"GGE",
                    "environment means",
                    0.7,
                    0.2,
                    {{"G1", 3, 1, 0}, {"G2", 2, -1, 0.5}, {"G3", 2, 0, 0.1}, {"G4", 1, 0, -1}},
                    {{"E1", 4, 1, 0.2}, {"E2", 4, 0.9, -0.1}}}};
  report.traits = {trait};
  return report;
}

TEST(TrialFigures, ShowTheNumbersGiven) {
  const TrialReport report = OneTrait();
  const std::vector<Figure> figures = TrialFigures(report);
  EXPECT_EQ(NamesOf(figures), (std::vector<std::string>{"boxes_1", "means_1", "biplot_gge_1",
                                                        "correlations_1", "quantiles_1", "histograms_1"}));
  const std::vector<Element> boxes = MarksOf(figures, "boxes_1");
  const std::vector<Element> box = Named(boxes, "rect");
  ASSERT_EQ(box.size(), 2U);
  EXPECT_EQ(box[0].hover, "median 5.5, quartiles 3.25 and 7.75, 10 plots");
  EXPECT_EQ(Starts(boxes, "stroke-linecap", "round").size(), 1U);  // 40 lies beyond the whiskers
  const std::vector<Element> means = MarksOf(figures, "means_1");
  std::vector<std::string> cells;
  for (const Element& cell : Named(means, "rect")) {
    if (!cell.hover.empty()) cells.push_back(cell.hover);
  }
  EXPECT_EQ(cells, (std::vector<std::string>{"G1, E1: 3", "G1, E2: 1", "G2, E2: 2"}));
  EXPECT_EQ(Starts(MarksOf(figures, "quantiles_1"), "stroke-linecap", "round").size(), 3U);
  EXPECT_EQ(Count(MarksOf(figures, "histograms_1"), "rect", "fill", "#6baed6"), 2U);
  std::map<std::string, double> circles;
  for (const Element& circle : Named(MarksOf(figures, "correlations_1"), "circle"))
    circles[circle.hover + (circle.Has("fill", "#fff") ? " open" : "")] = circle.Place("r");
  ASSERT_EQ(circles.size(), 2U);
  EXPECT_NEAR(circles["E2, E1: 0.640"] / circles["E3, E2: -0.160 open"], 2, 0.01);  // areas as 4 to 1
}

TEST(TrialFigures, BiplotTellsWinnersAndHull) {
  const std::vector<Figure> figures = TrialFigures(OneTrait());
  const Figure& figure = Find(figures, "biplot_gge_1");
  EXPECT_NE(figure.caption.find("G1 in 2 environments"), std::string::npos) << figure.caption;
  EXPECT_NE(figure.caption.find("environment means"), std::string::npos);
  const std::vector<Element> marks = Marks(figure.svg);
  EXPECT_EQ(Count(marks, "circle", "fill", "#1f4e79"), 8U);  // four genotypes in two panels
  EXPECT_EQ(Count(marks, "rect", "stroke", "#b5400a"), 4U);
  std::string hull;
  for (const Element& path : Named(marks, "path")) {
    if (path.attributes.at("d").ends_with('Z')) hull = path.attributes.at("d");
  }
  EXPECT_EQ(std::count(hull.begin(), hull.end(), 'L'), 2) << hull;  // G1, G2 and G4; G3 lies within
  const std::vector<std::string> texts = Texts(marks);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "axis 1 (70.0 %)"), 2);
}

// An independent reader finds every document well-formed, whatever the data.
TEST(Documents, AreWellFormed) {
  const std::string odd = "<b>&\"'\xE9\x01\xE6\xB0\xB4 ";
  const Sandbox sandbox;
  std::size_t written = 0;
  const auto write = [&](const std::vector<Figure>& figures) {
    for (const Figure& figure : figures) sandbox.Write(std::to_string(written++) + ".svg", figure.svg);
  };
  for (const MapShape& shape :
       {MapShape{{2}, 0}, MapShape{{12, 7}, 30, true, true, odd}, MapShape{{1, 1, 1}, 3}, MapShape{{}, 3}})
    write(MapFigures(SampleMapReport(shape).report));
  SampleMap same = SampleMapReport({{5}, 2, true, true, "m", 0});  // all at one place, nothing known
  same.report.groups[0].name = odd;
  for (ReportMarker& marker : same.report.groups[0].markers)
    marker.p = marker.missing = marker.female = kNone;
  for (float& value : same.rec) value = std::nanf("");
  write(MapFigures(same.report));
  write(ConsensusFigures(SampleConsensusReport(1, 4)));
  write(ConsensusFigures(SampleConsensusReport(5, 60)));
  TrialReport trial = SampleTrialReport({1, 1, 1, 1, odd});
  write(TrialFigures(trial));
  trial.traits[0].name = odd;
  trial.environments[0] = odd;
  trial.traits[0].plots[0] = {1e30, -1e30, kNone};
  trial.traits[0].means[0] = std::numeric_limits<double>::infinity();
  trial.traits[0].biplots[0].genotypes[0].axis1 = kNone;
  write(TrialFigures(trial));
  write(TrialFigures(TrialReport{}));
  sandbox.Write(
      "check.py",
      "import glob,xml.etree.ElementTree as e\nf=glob.glob('*.svg')\nfor n in f:\n t=e.parse(n).getroot()\n "
      "assert t.get('role')=='img' and t[0].text and t[1].text,n\nprint(len(f))\n");
  const std::string command = "cd '" + sandbox.folder.string() + "' && python3 check.py >count 2>error";
  EXPECT_EQ(std::system(command.c_str()), 0) << sandbox.Read("error");
  EXPECT_EQ(sandbox.Read("count"), std::to_string(written) + "\n");
  EXPECT_GT(written, 40U);
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(Pages, HoldEveryFigureOnceAndLoadNothing) {
  const SampleMap sample = SampleMapReport({{12, 7}, 30, true});
  const TrialReport trial = SampleTrialReport({});
  const ConsensusReport consensus = SampleConsensusReport(2, 9);
  const std::vector<std::pair<std::string, std::vector<Figure>>> pages = {
      {MapPage(sample.report, MapFigures(sample.report)), MapFigures(sample.report)},
      {TrialPage(trial, TrialFigures(trial)), TrialFigures(trial)},
      {ConsensusPage(consensus, ConsensusFigures(consensus)), ConsensusFigures(consensus)}};
  for (const auto& [page, figures] : pages) {
    for (const Figure& figure : figures) {
      EXPECT_EQ(Occurrences(page, "<figure id=\"" + figure.name + "\">"), 1U) << figure.name;
      EXPECT_NE(page.find(figure.svg), std::string::npos) << figure.name;
    }
    EXPECT_EQ(Occurrences(page, "<figure "), figures.size());
    EXPECT_EQ(Occurrences(page, "http"), figures.size());  // the name space of each drawing
    EXPECT_EQ(page.find("<script"), std::string::npos);
    std::multiset<std::string> ids;
    const std::regex id(" id=\"([^\"]*)\"");
    for (auto found = std::sregex_iterator(page.begin(), page.end(), id); found != std::sregex_iterator();
         ++found)
      ids.insert((*found)[1]);
    for (const std::string& one : ids) EXPECT_EQ(ids.count(one), 1U) << one;
    for (const std::string part :
         {"&lt;m1&gt; &amp; &quot;m2&quot;", "markers dropped", "more than 20 % &lt;missing&gt;",
          "&#39;my cross.map&#39;", "0.1.0", "SHA-256", "name=\"viewport\"", "@media print"}) {
      EXPECT_NE(page.find(part), std::string::npos) << part;
    }
  }
  EXPECT_NE(pages[1].first.find("<td>Genotype</td><td class=\"n\">11</td><td class=\"n\">117.4000</td>"),
            std::string::npos);
  EXPECT_NE(pages[1].first.find("<td>GE interaction</td>"), std::string::npos);
  EXPECT_NE(pages[0].first.find("<td>lonely</td>"), std::string::npos);
}

TEST(Pages, StaySmallHoweverMuchThereIs) {
  const SampleMap map = SampleMapReport(
      {std::vector<std::size_t>(30, 1667), 500, true, false, "snp_", 0.08});  // 50,010 markers
  const std::vector<Figure> mapFigures = MapFigures(map.report);
  EXPECT_LT(MapPage(map.report, mapFigures).size(), 2000000U);
  const TrialReport trial = SampleTrialReport({30, 200, 2, 20});
  const std::vector<Figure> figures = TrialFigures(trial);
  const std::string page = TrialPage(trial, figures);
  // What does not fit is told, figure by figure.
  EXPECT_EQ(Occurrences(page, "<figure ") + Occurrences(page, "is left out to keep the page small"),
            figures.size());
  EXPECT_GT(Occurrences(page, "is left out to keep the page small"), 10U);
  EXPECT_LT(page.size(), 4000000U);
}

}  // namespace
