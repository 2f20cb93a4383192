// Opens the pages in headless Chromium and looks at what a reader would see: figures that are there, labels that
// are neither cut nor on top of each other, a silent console, nothing fetched.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <regex>

#include "host/reports/pages.h"
#include "sample_reports.h"
#include "tests/host/command_runner.h"

using namespace reports;

namespace {

// Runs when the page is there and leaves what it found in an attribute of the document.
constexpr std::string_view kProbe = R"(<script>
// The load of the page waits for these copies of the images inside the figures.
addEventListener('DOMContentLoaded', () => {
  for (const element of document.querySelectorAll('svg image')) {
    const copy = document.body.appendChild(new Image());
    copy.src = element.href.baseVal;
    copy.className = element.closest('figure').id;
  }
});
addEventListener('load', () => {
  const figures = [];
  for (const svg of document.querySelectorAll('figure svg')) {
    const whole = svg.getBoundingClientRect(), marks = svg.querySelector('g').getBBox();
    const labels = [...svg.querySelectorAll('text')].map(t => ({text: t.textContent, box: t.getBoundingClientRect()}));
    const cut = labels.filter(({box}) => box.left < whole.left - 1 || box.right > whole.right + 1 ||
                                         box.top < whole.top - 1 || box.bottom > whole.bottom + 1);
    const met = [];
    labels.forEach((a, i) => labels.slice(0, i).forEach(b => {
      const wide = Math.min(a.box.right, b.box.right) - Math.max(a.box.left, b.box.left);
      const high = Math.min(a.box.bottom, b.box.bottom) - Math.max(a.box.top, b.box.top);
      if (wide > 2 && high > 4) met.push(b.text + ' | ' + a.text);
    }));
    const id = svg.closest('figure').id;
    const images = [...document.querySelectorAll('img.' + id)].filter(image => image.naturalWidth > 1).length;
    figures.push({name: id, width: marks.width, height: marks.height,
                  shown: whole.width, elements: svg.querySelectorAll('g *').length, images,
                  cut: cut.map(label => label.text), met});
  }
  const outside = [...document.querySelectorAll('[src],[href]')].map(e => e.getAttribute('src') ?? e.getAttribute('href'))
                                                               .filter(to => !/^(#|data:)/.test(to));
  document.documentElement.dataset.found = JSON.stringify({
    figures, outside, links: [...document.querySelectorAll('nav a')].filter(a => !document.querySelector(a.getAttribute('href'))).length,
    wide: document.querySelector('main').scrollWidth > innerWidth});
});
</script>)";

struct Seen {
  nlohmann::json page;
  std::vector<std::string> console;
};

std::string Unescaped(std::string text) {
  for (const auto& [from, to] : {std::pair{"&quot;", "\""}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}}) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += std::string(to).size()) {
      text.replace(at, std::string(from).size(), to);
    }
  }
  return text;
}

Seen Look(const Sandbox& sandbox, std::string page, int width = 1100) {
  page.insert(page.find("<meta"), kProbe);
  const std::filesystem::path file = sandbox.Write("page.html", page);
  const std::string command =
      "timeout 120 chromium --headless --no-sandbox --disable-gpu --no-first-run --enable-logging=stderr "
      "--window-size=" +
      std::to_string(width) + ",900 --user-data-dir='" + (sandbox.scratch / "browser").string() +
      "' --dump-dom 'file://" + file.string() + "' >'" + (sandbox.folder / "dom").string() + "' 2>'" +
      (sandbox.folder / "log").string() + "'";
  const int status = std::system(command.c_str());
  Seen seen;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "chromium did not run:\n"
                                                             << sandbox.Read("log");
  const std::string dom = sandbox.Read("dom");
  std::smatch found;
  const std::size_t start = dom.find("data-found=\""), end = dom.find('"', start + 12);
  if (start == std::string::npos) {
    ADD_FAILURE() << "the page was not looked at";
    return seen;
  }
  seen.page = nlohmann::json::parse(Unescaped(dom.substr(start + 12, end - start - 12)));
  const std::string log = sandbox.Read("log");
  const std::regex console("[^\n]*:CONSOLE[^\n]*");
  for (auto line = std::sregex_iterator(log.begin(), log.end(), console); line != std::sregex_iterator();
       ++line) {
    seen.console.push_back(line->str());
  }
  return seen;
}

// What is wrong with a page, in words; empty when all is well.
std::vector<std::string> Faults(const Seen& seen, std::size_t figures) {
  std::vector<std::string> faults = seen.console;
  if (!seen.page.is_object()) return {"nothing seen"};
  if (seen.page["figures"].size() != figures)
    faults.push_back("figures: " + std::to_string(seen.page["figures"].size()));
  if (!seen.page["outside"].empty()) faults.push_back("from outside " + seen.page["outside"].dump());
  if (seen.page["links"] != 0) faults.emplace_back("a link leads nowhere");
  if (seen.page["wide"] == true) faults.emplace_back("the page scrolls sideways");
  for (const auto& figure : seen.page["figures"]) {
    const std::string name = figure["name"].get<std::string>() + ": ";
    if (figure["width"] < 60 || figure["height"] < 40 || figure["elements"] < 8 || figure["shown"] < 100) {
      faults.push_back(name + "empty");
    }
    if (!figure["cut"].empty()) faults.push_back(name + "cut labels " + figure["cut"].dump());
    if (!figure["met"].empty()) faults.push_back(name + "labels that meet " + figure["met"].dump());
    if (figure["name"] == "pair_heat_map" && figure["images"] != 1) faults.push_back(name + "no image");
  }
  return faults;
}

struct Page {
  std::string html;
  std::size_t figures;
};
Page MapPageOf(const MapShape& shape) {
  const SampleMap sample = SampleMapReport(shape);
  const std::vector<Figure> figures = MapFigures(sample.report);
  return {MapPage(sample.report, figures), figures.size()};
}
Page TrialPageOf(const TrialShape& shape) {
  const TrialReport report = SampleTrialReport(shape);
  const std::vector<Figure> figures = TrialFigures(report);
  return {TrialPage(report, figures), figures.size()};
}

void ExpectGood(const Page& page, std::size_t figures) {
  const Sandbox sandbox;
  EXPECT_EQ(page.figures, figures);
  EXPECT_EQ(Faults(Look(sandbox, page.html), figures), std::vector<std::string>());
}

TEST(Browser, ShowsMaps) { ExpectGood(MapPageOf({{28, 22, 18, 15, 12, 9, 2}, 150, true}), 9); }
TEST(Browser, ShowsTheSmallestMap) { ExpectGood(MapPageOf({{2}, 1, false}), 8); }
TEST(Browser, ShowsManyMarkersWithHostileNames) {
  ExpectGood(MapPageOf({std::vector<std::size_t>(30, 100), 300, true, true,
                        "</svg><script>alert(1)</script> & \"\xC3\xA9\" ", 1.2}),
             9);
}
TEST(Browser, ShowsTrials) { ExpectGood(TrialPageOf({}), 17); }
TEST(Browser, ShowsLargeTrials) {
  ExpectGood(TrialPageOf({24, 120, 2, 2, "a long name of an entry <&> "}), 17);
}
TEST(Browser, ShowsConsensusMapsOnANarrowScreen) {
  const ConsensusReport report = SampleConsensusReport(3, 40);
  const std::vector<Figure> figures = ConsensusFigures(report);
  const Sandbox sandbox;
  EXPECT_EQ(Faults(Look(sandbox, ConsensusPage(report, figures), 500), 2), std::vector<std::string>());
}

// The look itself finds an empty figure, a broken image, a message on the console, a missing file, and labels that
// are cut or on top of each other.
TEST(Browser, FindsWhatIsWrong) {
  const SampleMap sample = SampleMapReport({{5, 4}, 10});
  std::vector<Figure> figures = MapFigures(sample.report);
  ASSERT_EQ(figures.size(), 8U);
  figures[0].svg.replace(figures[0].svg.find("<line"),
                         figures[0].svg.rfind("</g>") - figures[0].svg.find("<line"), "");
  figures[1].svg.insert(figures[1].svg.rfind("</g>"), "<text x=\"-20\" y=\"30\">left</text>");
  figures[2].svg.replace(figures[2].svg.find("base64,") + 7, 8, "AAAAAAAA");
  figures[3].svg.insert(figures[3].svg.rfind("</g>"),
                        "<text x=\"9\" y=\"30\">one</text><text x=\"9\" y=\"31\">two</text>");
  std::string page = MapPage(sample.report, figures);
  page.insert(page.find("<main>"), "<img src=\"gone.png\"><script>console.error('broken')</script>");
  const Sandbox sandbox;
  const std::vector<std::string> faults = Faults(Look(sandbox, page), 8);
  std::string all;
  for (const std::string& fault : faults) all += fault + "\n";
  for (const std::string expected :
       {"broken", "gone.png", "map_overview: empty", "pair_heat_map: no image",
        "map_ladder: cut labels [\"left\"]", "lod_sweep: labels that meet [\"one | two\"]"}) {
    EXPECT_NE(all.find(expected), std::string::npos) << expected << "\n" << all;
  }
}

}  // namespace
