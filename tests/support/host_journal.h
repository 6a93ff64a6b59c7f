// What the filter asked of the host, call by call, as short lines: "GetIntTavlor(ZENTAL,Units,1,1)=1".
#pragma once

#include <cstdio>
#include <string_view>

#include "tests/support/filter_test.h"

// Writes down every call from here on, for as long as it lives.
class HostJournal {
 public:
  HostJournal();
  ~HostJournal();
  HostJournal(const HostJournal&) = delete;
  HostJournal& operator=(const HostJournal&) = delete;

  // The lines since the last call, in order.
  Lines Take();
  // For lines of the test's own between those of the host.
  std::FILE* File() const { return file_; }

 private:
  std::FILE* file_;
  long taken_ = 0;  // bytes
};

// The lines that begin with `start`, and the ones that do not.
Lines Only(const Lines& lines, std::string_view start);
Lines Without(const Lines& lines, std::string_view start);
