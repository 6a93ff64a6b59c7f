// "svgimport report": what the import of documents loses or changes.
#pragma once

#include <CLI/CLI.hpp>

// Adds the subcommand, which stores its exit status in `status` when it is run.
void AddReportCommand(CLI::App& app, int& status);
