#include "host/reports/page.h"

#include <algorithm>
#include <cmath>

#include "host/reports/drawing.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr std::size_t kMostFigureBytes = 1700000;  // in one page; the tables come on top
constexpr std::string_view kDash = "\xE2\x80\x93";

// Light in every setting, since figures are drawn on white. On a narrow screen figures and tables scroll by
// themselves, so that their text stays readable.
constexpr std::string_view kStyle = R"(
:root{color-scheme:light}
*{box-sizing:border-box}
body{margin:0 auto;max-width:1080px;padding:1.2rem;font:16px/1.5 system-ui,"DejaVu Sans",Verdana,sans-serif;color:#222;background:#fff}
h1{font-size:1.6rem;line-height:1.25;margin:.4rem 0;overflow-wrap:anywhere}
h2{font-size:1.25rem;margin:2.2rem 0 .6rem;padding-top:.5rem;border-top:2px solid #1f4e79}
h3{font-size:1.05rem;margin:1.6rem 0 .4rem}
p.kind{margin:0;color:#555}
nav ol{columns:2;padding-left:1.4rem;margin:.4rem 0}
nav{background:#f4f7fa;padding:.5rem 1rem;border-radius:6px;margin:1rem 0}
a{color:#1f4e79}
dl.facts{display:grid;grid-template-columns:repeat(auto-fit,minmax(11rem,1fr));gap:.6rem 1.2rem;margin:1rem 0}
dl.facts div{border-left:3px solid #6baed6;padding-left:.6rem}
dl.facts dt{font-size:.8rem;color:#555}
dl.facts dd{margin:0;font-weight:600;overflow-wrap:anywhere}
figure{margin:1rem 0 1.8rem}
figure svg{display:block;max-width:100%;height:auto;margin:0 auto}
figcaption{font-size:.88rem;color:#333;margin-top:.4rem}
.draw,.table{overflow-x:auto}
table{border-collapse:collapse;font-size:.85rem;margin:.5rem 0}
caption{text-align:left;font-weight:600;padding:.3rem 0}
th,td{padding:.22rem .7rem;border-bottom:1px solid #ddd;text-align:left;vertical-align:top}
thead th{border-bottom:2px solid #888;background:#fff}
th.n,td.n{text-align:right;font-variant-numeric:tabular-nums;white-space:nowrap}
ul.warnings{background:#fff6e5;border-left:4px solid #d98300;padding:.6rem .6rem .6rem 1.8rem;margin:1rem 0}
code{font-size:.85rem;overflow-wrap:anywhere}
.scroll{max-height:26rem;overflow:auto}
@media(max-width:700px){body{padding:.8rem}nav ol{columns:1}.draw svg{max-width:none}}
@media print{body{max-width:none;padding:0;font-size:10pt}nav{display:none}figure,tr,dl.facts div{break-inside:avoid}
h2,h3{break-after:avoid}.scroll{max-height:none;overflow:visible}.draw,.table{overflow:visible}}
)";

std::string ListHtml(const std::vector<Fact>& facts) {
  if (facts.empty()) return {};
  std::string html = "<dl class=\"facts\">\n";
  for (const Fact& fact : facts) {
    html += "<div><dt>" + Escaped(fact.label) + "</dt><dd>" + Escaped(fact.value) + "</dd></div>\n";
  }
  return html + "</dl>\n";
}

std::string SectionHtml(const Section& section) {
  return "<section id=\"to-" + section.id + "\">\n<h2>" + Escaped(section.title) + "</h2>\n" + section.body +
         "</section>\n";
}

std::string LedgerHtml(const std::vector<LedgerRow>& ledger) {
  std::vector<Row> rows;
  rows.reserve(ledger.size());
  for (const LedgerRow& row : ledger) {
    rows.push_back({row.what, row.count < 0 ? std::string() : std::to_string(row.count), row.why});
  }
  return TableHtml("What was read, kept and left out", {{"what"}, {"count", true}, {"why"}}, rows);
}

std::string CommandLine(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) {
    const bool plain =
        !argument.empty() && argument.find_first_of(" \t'\"\\$`*?;&|<>()") == std::string::npos;
    std::string quoted;
    for (const char c : argument) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    line += (line.empty() ? "" : " ") + (plain ? argument : "'" + quoted + "'");
  }
  return line;
}

std::string RunHtml(const RunFacts& run) {
  std::string body;
  if (!run.ledger.empty()) body += LedgerHtml(run.ledger);
  if (!run.arguments.empty())
    body += "<p>Command: <code>" + Escaped(CommandLine(run.arguments)) + "</code></p>\n";
  std::vector<Row> inputs, versions, files;
  for (const ReportInput& input : run.inputs) inputs.push_back({input.name, input.checksum});
  for (const Fact& version : run.versions) versions.push_back({version.label, version.value});
  for (const std::string& file : run.files) files.push_back({file});
  if (!inputs.empty()) body += TableHtml("Input", {{"file"}, {"SHA-256"}}, inputs);
  if (!versions.empty()) body += TableHtml("Versions", {{"what"}, {"version"}}, versions);
  if (!files.empty()) body += TableHtml("Results of the run", {{"file"}}, files);
  return body;
}

std::string LeftOut(const Figure& figure) {
  const std::string name = Escaped(figure.name);
  return "<p id=\"" + name + "\">The figure <b>" + Escaped(figure.title) +
         "</b> is left out to keep the page small; <code>--figures DIR</code> saves it as " + name +
         ".svg.</p>\n";
}

}  // namespace

std::string FixedCell(double value, int decimals) {
  return std::isfinite(value) ? host::Fixed(value, decimals) : std::string(kDash);
}

std::string SignificantCell(double value) {
  return std::isfinite(value) ? host::Significant(value) : std::string(kDash);
}

std::string TableHtml(const std::string& caption, const std::vector<Column>& columns,
                      const std::vector<Row>& rows) {
  const auto kind = [&](std::size_t c) {
    return c < columns.size() && columns[c].number ? " class=\"n\"" : "";
  };
  std::string html =
      rows.size() > 40 ? "<div class=\"table scroll\"><table>\n" : "<div class=\"table\"><table>\n";
  if (!caption.empty()) html += "<caption>" + Escaped(caption) + "</caption>\n";
  html += "<thead><tr>";
  for (std::size_t c = 0; c < columns.size(); ++c) {
    html += std::string("<th scope=\"col\"") + kind(c) + ">" + Escaped(columns[c].heading) + "</th>";
  }
  html += "</tr></thead>\n<tbody>\n";
  for (const Row& row : rows) {
    html += "<tr>";
    for (std::size_t c = 0; c < row.size(); ++c)
      html += std::string("<td") + kind(c) + ">" + Escaped(row[c]) + "</td>";
    html += "</tr>\n";
  }
  return html + "</tbody></table></div>\n";
}

std::string FigureHtml(const Figure& figure) {
  return "<figure id=\"" + Escaped(figure.name) + "\">\n<div class=\"draw\" tabindex=\"0\">" + figure.svg +
         "</div>\n<figcaption><b>" + Escaped(figure.title) + ".</b> " + Escaped(figure.caption) +
         "</figcaption>\n</figure>\n";
}

std::string FigureNamed(const std::vector<Figure>& figures, std::string_view name) {
  std::size_t before = 0;
  for (const Figure& figure : figures) {
    const bool fits = before + figure.svg.size() <= kMostFigureBytes;
    if (figure.name == name) return fits ? FigureHtml(figure) : LeftOut(figure);
    if (fits) before += figure.svg.size();
  }
  return {};
}

std::string WarningsHtml(const std::vector<std::string>& warnings) {
  if (warnings.empty()) return {};
  std::string html = "<ul class=\"warnings\">\n";
  for (const std::string& warning : warnings) html += "<li>" + Escaped(warning) + "</li>\n";
  return html + "</ul>\n";
}

std::string PageHtml(const RunFacts& run, const std::vector<Section>& sections) {
  std::vector<Section> all;
  if (!run.warnings.empty()) all.push_back({"warnings", "Warnings", WarningsHtml(run.warnings)});
  for (const Section& section : sections) {
    if (!section.body.empty()) all.push_back(section);
  }
  const std::string about = RunHtml(run);
  if (!about.empty()) all.push_back({"run", "About this run", about});
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<meta name=\"viewport\" "
      "content=\"width=device-width, initial-scale=1\">\n<title>" +
      Escaped(run.title) + "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>" + std::string(kStyle) +
      "</style>\n</head>\n<body>\n<header>\n<h1>" + Escaped(run.title) + "</h1>\n";
  if (!run.kind.empty()) html += "<p class=\"kind\">" + Escaped(run.kind) + "</p>\n";
  html += ListHtml(run.facts) + "</header>\n<nav aria-label=\"Contents\"><ol>\n";
  for (const Section& section : all) {
    html += "<li><a href=\"#to-" + section.id + "\">" + Escaped(section.title) + "</a></li>\n";
  }
  html += "</ol></nav>\n<main>\n";
  for (const Section& section : all) html += SectionHtml(section);
  return html + "</main>\n</body>\n</html>\n";
}

}  // namespace reports
