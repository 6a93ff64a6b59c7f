// The result of the benchmark as tables in Markdown.
#pragma once

#include <string>
#include <vector>

using TableRow = std::vector<std::string>;

// Writes the table to standard output, its columns aligned.
void PrintTable(const TableRow& head, const std::vector<TableRow>& rows);

enum class TargetKind { kAtMost, kAtLeast };
// "at most 2.5" and "pass" or "FAIL" for the value, as the last two cells of a row.
void AddVerdict(TableRow& row, double value, TargetKind kind, double target, const char* unit = "");

// As printf writes it.
[[gnu::format(printf, 1, 2)]] std::string Formatted(const char* format, ...);
