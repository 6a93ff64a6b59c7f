#include "bench/table.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace {

void PrintRow(const TableRow& row, const std::vector<std::size_t>& widths) {
  for (std::size_t i = 0; i < row.size(); ++i) std::printf("| %-*s ", static_cast<int>(widths[i]), row[i].c_str());
  std::printf("|\n");
}

}  // namespace

void PrintTable(const TableRow& head, const std::vector<TableRow>& rows) {
  std::vector<std::size_t> widths;
  for (const std::string& cell : head) widths.push_back(cell.size());
  for (const TableRow& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  PrintRow(head, widths);
  TableRow rule;
  for (const std::size_t width : widths) rule.emplace_back(width, '-');
  PrintRow(rule, widths);
  for (const TableRow& row : rows) PrintRow(row, widths);
}

void AddVerdict(TableRow& row, double value, TargetKind kind, double target, const char* unit) {
  const bool most = kind == TargetKind::kAtMost;
  row.push_back(Formatted("at %s %g%s", most ? "most" : "least", target, unit));
  row.push_back((most ? value <= target : value >= target) ? "pass" : "FAIL");
}

std::string Formatted(const char* format, ...) {
  char buffer[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  return buffer;
}
