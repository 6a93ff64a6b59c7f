// What the tests of the translators share: elements by hand, and what the operator machine alone makes of a program.
// All of it under the measures of ImportBody: a user unit is 0.1 host units, and y becomes 10 - y / 10.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "operators/path_end.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

class TranslatorTest : public FilterTest {
 protected:
  // A fresh run with these elements in its root, as CheckFile leaves it, the opening records taken off. Returns the
  // first element, which the run owns.
  IXMLDOMNode* Load(std::string_view elements) {
    ResetImportRun();
    EXPECT_EQ(Check(Document(elements)), 1);
    Drain();
    StartMachine(100.0, 0.1);
    return run.NodeList.At(0);
  }

  // ImportBody in a run of its own.
  Lines Fresh(std::string_view elements) {
    ResetImportRun();
    return ImportBody(elements);
  }

  // The records of a program in a run of its own. The null record behind an arc, which no host sees, is left out.
  Lines Machine(std::string_view program) {
    ResetImportRun();
    StartMachine(100.0, 0.1);
    Feed(program);
    Lines lines = Drain();
    std::erase(lines, "NULL");
    return lines;
  }

  // The same with the end of an element behind the program.
  Lines MachinePath(std::string_view program) {
    ResetImportRun();
    StartMachine(100.0, 0.1);
    Feed(program);
    EndPath();
    Lines lines = Drain();
    std::erase(lines, "NULL");
    return lines;
  }
};

// Lines, written so that a macro takes them as one argument.
template <class... Line>
Lines Records(const Line&... lines) {
  return {lines...};
}

// From `first` to the end.
inline Lines From(const Lines& lines, std::size_t first) {
  return first < lines.size() ? Lines(lines.begin() + static_cast<std::ptrdiff_t>(first), lines.end()) : Lines();
}
