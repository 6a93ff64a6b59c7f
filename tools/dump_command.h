// "svgimport dump": one import, every record as a line of JSON.
#pragma once

#include <CLI/CLI.hpp>

// Adds the subcommand, which stores its exit status in `status` when it is run.
void AddDumpCommand(CLI::App& app, int& status);
