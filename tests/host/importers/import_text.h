#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/importers/formats.h"
#include "tests/host/command_runner.h"

// An import of a text, and what came of it as a text: "MAP 7 3 lines", a row a marker ("umc1 A H B", a clonal one
// with its category ahead), then what was dropped and made missing; or "refused: " and the words.
importers::Import ImportText(const Sandbox& sandbox, importers::Format format, std::string_view text,
                             const importers::Request& request, const std::string& name = "in.txt");
std::string Outcome(const Sandbox& sandbox, importers::Format format, std::string_view text,
                    const importers::Request& request, const std::string& name = "in.txt");

// --population and --parents as a user gives them.
importers::Request Asked(std::string_view population, std::vector<std::string> parents = {});

std::string Packed(std::string_view text);  // by gzip
