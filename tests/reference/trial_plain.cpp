#include "tests/reference/trial_plain.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "stats/distributions.h"
#include "stats/f_and_t.h"
#include "stats/frequency.h"
#include "stats/ranks.h"
#include "stats/real_math.h"
#include "stats/svd.h"
#include "tests/reference/trial_table_plain.h"

namespace reference {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Fields.
std::string A(int width, const std::string& text) {
  const auto w = static_cast<std::size_t>(width);
  return text.size() < w ? std::string(w - text.size(), ' ') + text : text.substr(0, w);
}
std::string F(int width, int decimals, float x) {
  char field[400];
  if (std::isnan(x)) return A(width, "NaN");
  if (std::isinf(x)) return A(width, x > 0 ? "Infinity" : "-Infinity");
  std::snprintf(field, sizeof field, "%.*f", decimals, static_cast<double>(x));
  const std::string text = field;
  return text.size() > static_cast<std::size_t>(width) ? std::string(static_cast<std::size_t>(width), '*')
                                                       : A(width, text);
}
std::string F16(float x) { return F(16, 4, x); }
std::string E16(float x) {  // probabilities only: 0 to 1, or nearly
  if (std::isnan(x)) return A(16, "NaN");
  char field[64];
  std::snprintf(field, sizeof field, "%.3e", std::fabs(static_cast<double>(x)));
  std::string digits = field;
  const int power = std::stoi(digits.substr(6)) + (x == 0 ? 0 : 1);
  std::snprintf(field, sizeof field, "%s0.%c%sE%c%03d", std::signbit(x) ? "-" : "", digits[0],
                digits.substr(2, 3).c_str(), power < 0 ? '-' : '+', std::abs(power));
  return A(16, field);
}

// Sources: 0 Model, 1 Total, 2 Error, 3 Block, 4 Genotype, 5 Environment, 6 GE_interaction.
struct Anova {
  float df[7] = {}, ss[7] = {}, ms[7] = {}, f[7] = {}, p[7] = {}, var[7] = {};
  float r2 = 0, lsd5 = 0, lsd1 = 0, plot = 0, mean = 0;
};
float At(const std::vector<float>& list, std::size_t place) { return place < list.size() ? list[place] : 0; }
float NotNegative(float x) { return x >= 0 ? x : 0; }

void Test(Anova& a, std::size_t sources) {
  for (std::size_t s = 0; s < sources; ++s) a.ms[s] = a.ss[s] / a.df[s];
  for (std::size_t s = 0; s < sources; ++s) a.f[s] = a.ms[s] / a.ms[2];
  for (std::size_t s = 0; s < sources; ++s) {
    if (s != 1 && s != 2 && a.df[s] > 0.5F) a.p[s] = 1 - stats::FDF(a.f[s], a.df[s], a.df[2]);
  }
  a.var[2] = NotNegative(a.ms[2]);
  a.r2 = a.ss[0] / a.ss[1] * 100;
}

void Write(std::string& out, const std::string& t, const std::string& v, const Anova& a,
           const std::vector<std::pair<const char*, std::size_t>>& rows) {
  const std::string keys = A(20, t) + A(20, v);
  out += A(20, "TraitName") + A(20, "EnvironmentName");
  for (const char* word : {"Source", "DF", "SS", "MS", "F-value", "Pr>F"}) out += A(16, word);
  out += "\n";
  if (a.df[0] > 0.5F) {
    out +=
        keys + A(16, "Model") + F16(a.df[0]) + F16(a.ss[0]) + F16(a.ms[0]) + F16(a.f[0]) + E16(a.p[0]) + "\n";
  }
  if (a.df[2] > 0.5F) out += keys + A(16, "Error") + F16(a.df[2]) + F16(a.ss[2]) + F16(a.ms[2]) + "\n";
  if (a.df[1] > 0.5F) out += keys + A(16, "Total") + F16(a.df[1]) + F16(a.ss[1]) + "\n";
  out += keys + A(16, "R-square(%)") + F16(a.r2) + "\n" + keys;
  for (const char* word : {"Source", "DF", "SS", "MS", "F-value", "Pr>F", "EstimatedVar"}) out += A(16, word);
  out += "\n";
  for (const auto& [label, s] : rows) {
    if (a.df[s] > 0.5F) {
      out += keys + A(16, label) + F16(a.df[s]) + F16(a.ss[s]) + F16(a.ms[s]) + F16(a.f[s]) + E16(a.p[s]) +
             F16(a.var[s]) + "\n";
    }
  }
  out += keys + A(16, "LSD(0.05)") + F16(a.lsd5) + "\n" + keys + A(16, "LSD(0.01)") + F16(a.lsd1) + "\n";
  out +=
      keys + A(16, "H^2_per_plot") + F16(a.plot) + "\n" + keys + A(16, "H^2_per_mean") + F16(a.mean) + "\n";
}

void OneEnvironment(const Table& table, Trait& trait, std::size_t e, std::size_t offset, std::string& out) {
  Anova a;
  float N = 0;
  const auto G = static_cast<float>(trait.G), B = static_cast<float>(trait.blockIndex[e].size());
  for (const Cell& cell : trait.cell[e]) {
    for (std::size_t j = 0; j < cell.value.size(); ++j) {
      const float gEff = cell.mean - trait.eMean[e];
      N = N + 1;
      a.ss[4] = a.ss[4] + gEff * gEff;
      const float bEff = At(trait.bMean, offset + cell.blockId[j] - 1) - trait.eMean[e];
      const float dev = cell.value[j] - trait.eMean[e];
      const float res = dev - (gEff + bEff);
      a.ss[2] = a.ss[2] + res * res;
      a.ss[3] = a.ss[3] + bEff * bEff;
    }
  }
  a.ss[0] = a.ss[4] + a.ss[3];
  a.ss[1] = a.ss[4] + a.ss[3] + a.ss[2];
  a.df[4] = G - 1;
  a.df[1] = N - 1;
  a.df[3] = B - 1;
  a.df[0] = a.df[3] + a.df[4];
  a.df[2] = a.df[1] - a.df[0];
  if (N < 0.5F || a.df[2] < 0.5F) return;
  Test(a, 5);
  a.var[4] = NotNegative((a.ms[4] - a.ms[2]) * G / N);
  a.var[3] = NotNegative((a.ms[3] - a.ms[2]) * B / N);
  a.lsd5 = std::sqrt(a.ms[2] * 2 * G / N) * stats::TIN(0.975F, a.df[2]);
  a.lsd1 = stats::TIN(0.995F, a.df[2]) * std::sqrt(a.ms[2] * 2 * G / N);
  a.plot = a.var[4] / (a.var[2] + a.var[4]);
  a.mean = a.var[4] / (a.var[2] * G / N + a.var[4]);
  trait.errorDf[e] = a.df[2];
  trait.errorMs[e] = a.ms[2];
  Write(out, trait.name, table.environments[trait.eIndex[e] - 1], a, {{"Block", 3}, {"Genotype", 4}});
}

float LogOf(float x) { return x > 0 && std::isfinite(x) ? stats::Log(x) : std::log(x); }

void Combined(Trait& trait, std::string& out) {
  Anova a;
  float N = 0;
  std::size_t offset = 0;
  const auto G = static_cast<float>(trait.G), E = static_cast<float>(trait.E);
  for (std::size_t e = 0; e < trait.E; offset += trait.blockIndex[e].size(), ++e) {
    for (std::size_t g = 0; g < trait.G; ++g) {
      const Cell& cell = trait.cell[e][g];
      for (std::size_t j = 0; j < cell.value.size(); ++j) {
        N = N + 1;
        a.ss[4] = a.ss[4] + trait.gEff[g] * trait.gEff[g];
        a.ss[5] = a.ss[5] + trait.eEff[e] * trait.eEff[e];
        a.ss[6] = a.ss[6] + cell.effect * cell.effect;
        const float bEff = At(trait.bEff, offset + cell.blockId[j] - 1);
        a.ss[3] = a.ss[3] + bEff * bEff;
        const float res =
            (cell.value[j] - trait.grand) - (trait.gEff[g] + bEff + trait.eEff[e] + cell.effect);
        a.ss[2] = a.ss[2] + res * res;
      }
    }
  }
  a.ss[0] = a.ss[4] + a.ss[3] + a.ss[5] + a.ss[6];
  a.ss[1] = a.ss[0] + a.ss[2];
  a.df[3] = static_cast<float>(trait.totalBlocks) - E;
  a.df[4] = G - 1;
  a.df[5] = E - 1;
  a.df[6] = a.df[4] * a.df[5];
  a.df[1] = N - 1;
  a.df[0] = a.df[3] + a.df[4] + a.df[5] + a.df[6];
  a.df[2] = a.df[1] - a.df[0];
  if (N < 0.5F || a.df[2] < 0.5F) return;
  Test(a, 7);
  a.var[3] = NotNegative((a.ms[3] - a.ms[2]) * static_cast<float>(trait.totalBlocks) / N);
  a.var[4] = NotNegative((a.ms[4] - a.ms[2]) * G / N);
  a.var[5] = NotNegative((a.ms[5] - a.ms[2]) * E / N);
  a.var[6] = NotNegative((a.ms[6] - a.ms[2]) * E * G / N);
  a.lsd5 = stats::TIN(0.975F, a.df[2]) * std::sqrt(a.var[2] * 2 * G / N + a.var[6] * 2 * G * E / N);
  a.lsd1 = stats::TIN(0.995F, a.df[2]) * std::sqrt(a.var[2] * 2 * G / N + a.var[6] * 2 * G * E / N);
  a.plot = a.var[4] / (a.var[4] + a.var[6] + a.var[2]);
  a.mean = a.var[4] / (a.var[6] / E + a.var[4] + a.var[2] * G / N);
  float whole = 0;
  for (const float ms : trait.errorMs) whole += 1 / ms;
  for (std::size_t g = 0; g < trait.G; ++g) {
    float sum = 0;
    for (std::size_t e = 0; e < trait.E; ++e) sum += trait.cell[e][g].mean * ((1 / trait.errorMs[e]) / whole);
    trait.blue.push_back(sum);
  }
  float D = 0, ds = 0, dl = 0, inverse = 0, k = 0;
  for (std::size_t e = 0; e < trait.E; ++e) {
    if (trait.errorDf[e] > 0.5F) {
      k += 1;
      D += trait.errorDf[e];
      ds += trait.errorDf[e] * trait.errorMs[e];
      dl += trait.errorDf[e] * LogOf(trait.errorMs[e]);
      inverse += 1 / trait.errorDf[e];
    }
  }
  const float C = (inverse - 1 / D) / (3 * (k - 1)) + 1;
  const float statistic = (LogOf(ds / D) * D - dl) / C;
  Write(out, trait.name, "CombinedANOVA", a,
        {{"Block/Env", 3}, {"Genotype", 4}, {"Environment", 5}, {"GE_interaction", 6}});
  out += A(20, trait.name) + A(20, "Homogeneity") + A(16, "BartlettTest") + F16(statistic) +
         E16(1 - stats::CHIDF(statistic, k - 1)) + "\n";
}

std::string Values(const std::vector<float>& values, int width = 12) {
  std::string text;
  for (const float value : values) text += F(width, 4, value);
  return text + "\n";
}

std::string Genotypes(const Table& table, const Trait& trait, const std::vector<float>& values) {
  std::vector<float> columns;
  const auto empty = [&columns](std::size_t from, std::size_t to) {  // columns strictly between
    for (std::size_t c = from + 1; c < to; ++c) columns.push_back(-100);
  };
  for (std::size_t g = 1; g <= trait.G; ++g) {
    if (g == 1) {
      empty(0, trait.gIndex[0]);
      columns.push_back(values[0]);
    } else if (g < trait.G) {
      columns.push_back(values[g - 1]);
      empty(trait.gIndex[g - 1], trait.gIndex[g]);
    } else {
      columns.push_back(values[g - 1]);
      empty(trait.gIndex[g - 1], table.genotypes.size() + 1);
    }
  }
  return Values(columns);
}

std::string MeansAndPredictions(const Table& table) {
  std::string out = A(20, "TraitName") + A(20, "EnvironmentName");
  for (const auto& name : table.genotypes) out += " " + A(11, name);
  out += "\n";
  for (const Trait& trait : table.traits) {
    std::vector<float> simple(trait.G, 0.0F);
    for (std::size_t e = 0; e < trait.E; ++e) {
      std::vector<float> means;
      for (std::size_t g = 0; g < trait.G; ++g) {
        means.push_back(trait.cell[e][g].mean);
        simple[g] += means.back();
      }
      out +=
          A(20, trait.name) + A(20, table.environments[trait.eIndex[e] - 1]) + Genotypes(table, trait, means);
    }
    for (float& mean : simple) mean = mean / static_cast<float>(trait.E);
    out += A(20, trait.name) + A(20, "SimpleMean") + Genotypes(table, trait, simple);
    if (!trait.blue.empty())
      out += A(20, trait.name) + A(20, "PredictionBLUE") + Genotypes(table, trait, trait.blue);
  }
  return out;
}

std::string Frequencies(const Table& table, int32_t K) {
  std::string out = A(20, "Trait") + A(20, "Environment") + A(20, "Block") + "\n";
  for (const Trait& trait : table.traits) {
    const float d = (trait.most - trait.least) / static_cast<float>(2 * K - 2);
    const auto tally = [&](const std::vector<float>& x, const std::string& second, const std::string& third) {
      std::vector<float> middle(static_cast<std::size_t>(K)), count = middle;
      stats::OWFRQ(x, K, count.data(), trait.least + d, trait.most + d, middle.data());
      const std::string keys = A(20, trait.name) + A(20, second) + A(20, third);
      out += keys + A(20, "MiddlePoint") + Values(middle) + keys + A(20, "Counts") + Values(count);
    };
    for (std::size_t e = 0; e < trait.E; ++e) {
      for (std::size_t b = 1; b <= trait.blockIndex[e].size(); ++b) {
        std::vector<float> x;
        for (const Cell& cell : trait.cell[e]) {
          for (std::size_t j = 0; j < cell.value.size(); ++j) {
            if (cell.blockId[j] == b) x.push_back(cell.value[j]);
          }
        }
        const std::size_t place = trait.blockIndex[e][b - 1];
        const Names& names = table.blocks[e];
        if (!x.empty()) {
          tally(x, table.environments[trait.eIndex[e] - 1], place <= names.size() ? names[place - 1] : "");
        }
      }
    }
    for (std::size_t e = 0; e < trait.E; ++e) {
      std::vector<float> x;
      for (const Cell& cell : trait.cell[e]) {
        if (!IsMissing(cell.mean)) x.push_back(cell.mean);
      }
      if (x.size() > 1) tally(x, table.environments[trait.eIndex[e] - 1], "PredictionBLUE");
    }
    std::vector<float> x;
    for (const float value : trait.blue) {
      if (!IsMissing(value)) x.push_back(value);
    }
    if (trait.E > 1 && x.size() > 1) tally(x, "Combined", "PredictionBLUE");
  }
  return out;
}

std::string QuantilePoints(const Table& table) {
  std::string out = A(20, "Trait") + A(20, "Environment") + "\n";
  for (const Trait& trait : table.traits) {
    for (std::size_t e = 0; e < trait.E; ++e) {
      std::vector<float> r;
      for (const Cell& cell : trait.cell[e]) {
        for (const float value : cell.value) r.push_back(value - cell.mean);
      }
      std::vector<float> q(r.size());
      stats::RANKS(r, q.data(), 0);
      const auto n = static_cast<float>(r.size());
      float m = 0, squares = 0;
      for (const float x : r) m += x;
      m = m / n;
      for (const float x : r) squares += (x - m) * (x - m);
      for (float& rank : q) rank = stats::ANORIN((rank - 0.5F) / n) * std::sqrt(squares / (n - 1)) + m;
      const std::string keys = A(20, trait.name) + A(20, table.environments[trait.eIndex[e] - 1]);
      out += keys + A(12, "Quantile") + Values(q) + keys + A(12, "Observed") + Values(r);
    }
  }
  return out;
}

float Pearson(const std::vector<float>& x, const std::vector<float>& y) {
  float m = 0, sx = 0, sy = 0, xx = 0, yy = 0, xy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (IsMissing(x[i]) || IsMissing(y[i])) continue;
    m += 1;
    sx += x[i];
    sy += y[i];
    xx += x[i] * x[i];
    yy += y[i] * y[i];
    xy += x[i] * y[i];
  }
  if (m < 1) return kNaN;
  return (xy / m - (sx / m) * (sy / m)) /
         std::sqrt((xx / m - (sx / m) * (sx / m)) * (yy / m - (sy / m) * (sy / m)));
}

std::vector<float> CellMeans(const Trait& trait, std::size_t e) {
  std::vector<float> means;
  for (const Cell& cell : trait.cell[e]) means.push_back(cell.mean);
  return means;
}

std::string Correlations(const Table& table) {
  const std::size_t V = table.environments.size(), T = table.traits.size();
  using Square = std::vector<std::vector<float>>;
  std::vector<Square> traits(V, Square(T, std::vector<float>(T, kNaN)));
  std::vector<Square> environments(T, Square(V, std::vector<float>(V, kNaN)));
  for (std::size_t t1 = 0; t1 < T; ++t1) {
    const Trait& one = table.traits[t1];
    for (auto& square : traits) square[t1][t1] = 1;
    for (std::size_t t2 = 0; t2 < t1; ++t2) {
      const Trait& two = table.traits[t2];
      for (std::size_t a = 0; a < one.E; ++a) {
        for (std::size_t b = 0; b < two.E; ++b) {
          if (one.eIndex[a] != two.eIndex[b]) continue;
          const bool inside = a < one.G && b < two.G && one.G <= two.G;
          std::vector<float> x, y;
          for (std::size_t i = 0; inside && i < one.G && one.gIndex[a] == two.gIndex[b]; ++i) {
            x.push_back(one.cell[a][i].mean);
            y.push_back(two.cell[b][i].mean);
          }
          traits[one.eIndex[a] - 1][t1][t2] = Pearson(x, y);
        }
      }
    }
    for (std::size_t a = 0; a < one.E; ++a) {
      for (std::size_t b = 0; b < one.E; ++b) {
        environments[t1][one.eIndex[a] - 1][one.eIndex[b] - 1] =
            Pearson(CellMeans(one, a), CellMeans(one, b));
      }
    }
  }
  std::string out = "Correlation between traits\n EnvID TrtID\n";
  const auto rows = [&out](const std::vector<Square>& squares) {
    for (std::size_t i = 0; i < squares.size(); ++i) {
      for (std::size_t j = 0; j < squares[i].size(); ++j) {
        const auto& row = squares[i][j];
        const auto end = row.begin() + static_cast<std::ptrdiff_t>(j) + 1;
        out += A(6, std::to_string(i + 1)) + A(6, std::to_string(j + 1)) + Values({row.begin(), end}, 10);
      }
    }
  };
  rows(traits);
  out += "Correlation between environments\n TrtID EnvID\n";
  rows(environments);
  return out;
}

void Biplot(const Table& table, const Trait& trait, bool gge, std::string& pca, std::string& pcp) {
  const auto G = static_cast<int32_t>(trait.G), E = static_cast<int32_t>(trait.E);
  stats::Matrix X = stats::MakeMatrix(G, E);
  const auto name = [&](std::size_t g) { return table.genotypes[trait.gIndex[g] - 1]; };
  const auto environment = [&](std::size_t e) { return table.environments[trait.eIndex[e] - 1]; };
  for (std::size_t e = 0; e < trait.E; ++e) {
    for (std::size_t g = 0; g < trait.G; ++g) {
      const float effect = trait.cell[e][g].effect;
      const float x = gge ? trait.gEff[g] + effect : effect;
      X.values[e * trait.G + g] = IsMissing(effect) ? (gge ? trait.gEff[g] : 0) : x;
    }
  }
  const auto [S, U, V] = stats::SVD(X, 2, 2);
  const std::string keys = A(20, trait.name) + A(12, gge ? "GGE" : "AMMI");
  float whole = 0;
  for (const float s : S) whole += s * s;
  for (std::size_t g = 0; g < trait.G; ++g) {
    pca += keys + A(12, "Genotype") + A(20, name(g)) +
           Values({trait.gMean[g], std::sqrt(S[0]) * U.values[g], std::sqrt(S[1]) * U.values[trait.G + g]});
  }
  for (std::size_t e = 0; e < trait.E; ++e) {
    pca += keys + A(12, "Environment") + A(20, environment(e)) +
           Values({trait.eMean[e], std::sqrt(S[0]) * V.values[e], std::sqrt(S[1]) * V.values[trait.E + e]});
  }
  pca += keys + A(12, "Score") + A(20, "Score") +
         Values({trait.grand, S[0] * S[0] / whole, S[1] * S[1] / whole});
  std::string kinds, names;
  for (const char* kind : {"Observation", "Prediction"}) {
    for (std::size_t e = 0; e < trait.E; ++e) {
      kinds += " " + A(11, kind);
      names += " " + A(11, environment(e));
    }
  }
  const std::string heading = A(20, "TraitName") + A(12, "DataUsed") + A(20, "GenotypeName");
  pcp += heading + kinds + "\n" + heading + names + "\n";
  for (std::size_t g = 0; g < trait.G; ++g) {
    std::vector<float> observed, predicted;
    for (std::size_t e = 0; e < trait.E; ++e) {
      const float base = gge ? trait.grand + trait.eEff[e] : trait.gEff[g] + trait.grand + trait.eEff[e];
      observed.push_back(X.values[e * trait.G + g] + base);
      predicted.push_back(U.values[g] * S[0] * V.values[e] +
                          U.values[trait.G + g] * S[1] * V.values[trait.E + e] + base);
    }
    observed.insert(observed.end(), predicted.begin(), predicted.end());
    pcp += keys + A(20, name(g)) + Values(observed);
  }
}

}  // namespace

TrialFiles AnalyseTrialPlain(const Trial& trial, int32_t numClasses) {
  Table table = MakeTable(trial);
  TrialFiles files;
  for (Trait& trait : table.traits) {
    trait.errorMs.assign(trait.E, 0.0F);
    trait.errorDf = trait.errorMs;
    std::size_t offset = 0;
    for (std::size_t e = 0; e < trait.E; offset += trait.blockIndex[e].size(), ++e) {
      OneEnvironment(table, trait, e, offset, files.text[0]);
    }
    if (trait.E > 1) Combined(trait, files.text[0]);
  }
  files.text[1] = MeansAndPredictions(table);
  files.text[2] = Frequencies(table, numClasses);
  files.text[3] = QuantilePoints(table);
  files.text[4] = Correlations(table);
  files.text[5] = A(20, "TraitName") + A(12, "DataUsed") + A(12, "GtpOrEnv") + A(20, "Name") +
                  A(12, "MeanValue") + A(12, "PCA1") + A(12, "PCA2") + "\n";
  for (const Trait& trait : table.traits) {
    for (const bool gge : {true, false}) {
      if (trait.G > 1 && trait.E > 1) Biplot(table, trait, gge, files.text[5], files.text[6]);
    }
  }
  return files;
}

}  // namespace reference
