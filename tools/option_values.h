// Options that more than one tool takes.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

// Exit statuses of the tools.
inline constexpr int kExitDone = 0;
inline constexpr int kExitNotImported = 1;  // the filter refused the document, or the output could not be written
inline constexpr int kExitUsage = 2;        // wrong arguments, or a library or file that they name cannot be opened
inline constexpr int kExitError = 3;     // an error left an entry point, or the import was ended by a limit or a crash
inline constexpr int kExitSignal = 128;  // plus the number of the signal that is to end the tool

// Adds "--set SECTION/KEY=N", which may be repeated and is checked while the arguments are parsed. The texts go to
// `settings`, which must live until then.
void AddSettingsOption(CLI::App& app, std::vector<std::string>& settings);

// Puts checked settings into the host's store.
void StoreSettings(const std::vector<std::string>& settings);

// Adds an option for a finite number, which is read to the last bit.
CLI::Option* AddNumberOption(CLI::App& app, const std::string& name, double& number, const std::string& description);

// Parses the arguments. Nothing when the tool goes on; otherwise the status to exit with, after help, the version or
// what is wrong has been printed.
std::optional<int> ParseArguments(CLI::App& app, int argc, char** argv);
