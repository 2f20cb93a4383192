#include "import_text.h"

#include <zlib.h>

#include "host/exit_code.h"
#include "host/population_catalogue.h"

importers::Import ImportText(const Sandbox& sandbox, importers::Format format, std::string_view text,
                             const importers::Request& request, const std::string& name) {
  return importers::ReadFormat(format, sandbox.Write(name, text), request);
}

std::string Outcome(const Sandbox& sandbox, importers::Format format, std::string_view text,
                    const importers::Request& request, const std::string& name) {
  try {
    const auto [table, ledger] = ImportText(sandbox, format, text, request, name);
    std::string out = std::string(ModuleOf(table.kind)) + ' ' + std::to_string(table.populationType) + ' ' +
                      std::to_string(table.lines) + " lines";
    for (std::size_t m = 0; m < table.markers.size(); ++m) {
      out += '\n' + (table.categories.empty() ? "" : table.categories[m] + ' ') + table.markers[m];
      for (const uint8_t cell : table.Row(m)) out += ' ' + std::string(CodesOf(table.kind)[cell]);
      if (table.anchors[m] > 0) out += " in " + std::to_string(table.anchors[m]);
    }
    for (std::size_t k = 0; k < importers::kDrops; ++k) {
      if (ledger.dropped[k] == 0) continue;
      out += "\ndropped " + std::to_string(ledger.dropped[k]) + ": " +
             std::string(WordsOf(static_cast<importers::Drop>(k)));
    }
    for (std::size_t k = 0; k < importers::kBlanks; ++k) {
      if (ledger.blanked[k] == 0) continue;
      out += "\nmissing " + std::to_string(ledger.blanked[k]) + ": " +
             std::string(WordsOf(static_cast<importers::Blank>(k)));
    }
    return out;
  } catch (const host::Failure& failure) {
    std::string words = failure.message;
    const std::string folder = sandbox.folder.string() + '/';
    for (std::size_t at = words.find(folder); at != std::string::npos; at = words.find(folder)) {
      words.erase(at, folder.size());
    }
    return "refused: " + words;
  }
}

importers::Request Asked(std::string_view population, std::vector<std::string> parents) {
  importers::Request request;
  if (const host::CatalogueRow* row = host::FindInCatalogue(population)) {
    request.kind = row->kind;
    request.population = row->id;
  }
  request.parents = std::move(parents);
  return request;
}

std::string Packed(std::string_view text) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);  // 16: gzip's frame
  std::string packed(text.size() + 1000, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}
