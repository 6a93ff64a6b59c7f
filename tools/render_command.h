// "svgimport render": one import, drawn as a picture.
#pragma once

#include <CLI/CLI.hpp>

// Adds the subcommand, which stores its exit status in `status` when it is run.
void AddRenderCommand(CLI::App& app, int& status);
