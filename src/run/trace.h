// The filter's only diagnostic: with the setting debug at 1, every record that is handed out is written to a log in
// readable form. A log that cannot be opened or written costs only the log.
#pragma once

#include <cstdint>
#include <string_view>

struct ImportCommand;

struct TraceLog {
  int TestLog = -1;
  int ParseLog = -1;
  int DiscioLog = -1;
  int TraceHandle = -1;           // DiscioLog; all lines go here
  std::uint32_t TraceFailed = 0;  // once a write has failed nothing more is written
};

// Opens the three logs, which are emptied; their folder is not created.
void OpenDebugLogs();
void CloseDebugLogs();

// Writes the text unless the trace has failed.
void TraceText(std::string_view text);
void TraceNumber(double value);

// The lines of one record.
void TraceCommand(const ImportCommand& record);
