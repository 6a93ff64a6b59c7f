// One record of the command stream as one JSON object, the form in which the tools print it.
#pragma once

#include <memory>
#include <string_view>

#include "run/import_command.h"

class RecordJson {
 public:
  RecordJson();
  ~RecordJson();
  RecordJson(const RecordJson&) = delete;
  RecordJson& operator=(const RecordJson&) = delete;

  // The object without a line end. The payload is read and stays the caller's. The text is valid until the next call.
  // Generated names are shown as the host's ShownPath has them.
  std::string_view Line(const ImportCommand& command);

 private:
  struct Buffer;
  std::unique_ptr<Buffer> buffer_;
};

// "KEY_LINE"; "KEY_NULL" for 0, "KEY_UNKNOWN" for a key that is none of the stream's.
std::string_view CommandName(std::uint32_t key);
