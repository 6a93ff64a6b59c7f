// What the import of a document loses or changes, found by looking at the document by itself: the filter is not run.
#pragma once

#include <string>
#include <vector>

#include "tools/report/losses_table.h"

struct Finding {
  const LossKind* kind;
  int line;             // in the file, from 1
  std::string element;  // its name; empty when the finding is about the file
  std::string id;       // of the element, empty when it has none
  std::string detail;   // what stands in the document
  std::string sentence;
};

struct LossReport {
  std::string failure;            // why the file could not be read; there are no findings then
  std::vector<Finding> findings;  // by their lines, then as the table has them
};

// The name of the file is in the encoding of the operating system.
LossReport ReportLosses(const std::string& file);

// One line of JSON without a line end: {"file":…,"line":…,"name":…,"severity":…,"element":…,"id":…,"detail":…,
// "sentence":…}; `element`, `id` and `detail` are left out where they are empty. `shownName` stands for the file.
std::string FindingJson(const std::string& shownName, const Finding& finding);

// The same for a whole file: {"file":…,"findings":…,"lost":…,"changed":…,"counts":{name: count}}, or
// {"file":…,"error":…} when it could not be read.
std::string SummaryJson(const std::string& shownName, const LossReport& report);
