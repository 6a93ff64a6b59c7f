// "svgimport batch": many files, each imported in a process of its own, and a line of JSON for each.
#pragma once

#include <CLI/CLI.hpp>

// Adds the subcommand, which stores its exit status in `status` when it is run.
void AddBatchCommand(CLI::App& app, int& status);
