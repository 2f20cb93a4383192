#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "host/importers/request.h"
#include "host/importers/table_builder.h"
#include "host/importers/text_source.h"

namespace importers {

enum class Format { Vcf, RqtlCsv, RqtlCsvr, RqtlTidy, Raw, MstMap, JoinMap, Table };

struct FormatRow {
  Format format;
  std::string_view name;   // on the command line
  std::string_view words;  // "a VCF"
};
std::span<const FormatRow> Formats();
const FormatRow* FindFormat(std::string_view name);  // in any case; null when unknown

// What the first lines of a file look like; a plain table where nothing else fits. Failure InputWrong for a
// project file.
Format DetectFormat(const std::filesystem::path& path);

// Reads a file. Failure InputWrong names the file, the line and what is wrong there; UsageWrong where a
// population or parents are needed and not given.
Import ReadFormat(Format format, const std::filesystem::path& path, const Request& request);

// One reader a format; those of whole files get their lines.
Import ReadVcf(const std::filesystem::path& path, Request request);
Import ReadRqtlCsv(const TextFile& file, Request request, bool turned);
Import ReadRqtlTidy(const TextFile& file, Request request);
Import ReadRaw(const TextFile& file, Request request);
Import ReadMstMap(const TextFile& file, Request request);
Import ReadJoinMap(const TextFile& file, Request request);
Import ReadTable(const TextFile& file, Request request);

}  // namespace importers
