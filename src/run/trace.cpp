#include "run/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <initializer_list>
#include <string>

#include "host/colour.h"
#include "host/polygon.h"
#include "host/transparency.h"
#include "run/import_command.h"
#include "run/import_run.h"

namespace {

constexpr char kTestLog[] = "/tmp/svgimport/test.txt";
constexpr char kParseLog[] = "/tmp/svgimport/parse.txt";
constexpr char kDiscioLog[] = "/tmp/svgimport/discio.txt";

constexpr double kLargest = 1000000.0;  // a larger number is written as 1.0
constexpr std::uint32_t kNone = 0xFFFFFFFF;

int OpenLog(const char* name) { return open(name, O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600); }

void TraceNumbers(std::initializer_list<double> values) {
  bool first = true;
  for (double value : values) {
    if (!first) TraceText(" ");
    TraceNumber(value);
    first = false;
  }
  TraceText("\r\n");
}

void TraceInteger(std::string_view label, std::int64_t value, std::string_view end = "\r\n") {
  TraceText(label);
  TraceText(std::to_string(value));
  TraceText(end);
}

void TraceColour(const void* object) {
  const auto* colour = static_cast<const CQXFullColor*>(object);
  if (!colour) return;
  if (colour->IsInvisibleColor()) TraceText("     Invisable\r\n");
  if (colour->IsProcessColor() || colour->IsSpotColor()) TraceText("     Process\r\n");
  if (colour->IsSpotFoil()) TraceText("     Spot\r\n");
  double cyan = 0.0, magenta = 0.0, yellow = 0.0, black = 0.0;
  colour->GetCMYKcolor(&cyan, &magenta, &yellow, &black);
  TraceNumbers({cyan, magenta, yellow, black});
}

// The number is the level of a uniform transparency, 0 for any other; the "c" behind it is a letter.
void TraceTransparency(const void* object) {
  const auto* transparency = static_cast<const CQXTransparency*>(object);
  const auto* uniform = dynamic_cast<const CQXUniformTransparency*>(transparency);
  TraceInteger("KEY_TSPY  ", uniform ? uniform->opacity : 0, "c\r\n");
}

}  // namespace

void OpenDebugLogs() {
  run.trace.TestLog = OpenLog(kTestLog);
  run.trace.ParseLog = OpenLog(kParseLog);
  run.trace.DiscioLog = OpenLog(kDiscioLog);
  run.trace.TraceHandle = run.trace.DiscioLog;
  run.trace.TraceFailed = 0;
}

void CloseDebugLogs() {
  for (int* log : {&run.trace.TestLog, &run.trace.ParseLog, &run.trace.DiscioLog}) {
    close(*log);
    *log = -1;
  }
  run.trace.TraceHandle = -1;
}

void TraceText(std::string_view text) {
  if (run.trace.TraceFailed) return;
  const ssize_t written = write(run.trace.TraceHandle, text.data(), text.size());
  if (written != static_cast<ssize_t>(text.size())) run.trace.TraceFailed = 1;
}

void TraceNumber(double value) {
  if (value > kLargest) value = 1.0;
  char text[400];
  const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
  TraceText({text, static_cast<std::size_t>(end - text)});
}

// The counters are those of the end of the translation, since a record is traced as it leaves the queue.
void TraceCommand(const ImportCommand& record) {
  const auto value = static_cast<std::uint32_t>(record.value);
  switch (record.key) {
    case KEY_BEZI: {
      const auto& b = *static_cast<const BezierRecord*>(record.data);
      TraceText("KEY_BEZI\r\n");
      TraceNumbers({b.x0, b.y0, b.x1, b.y1, b.x2, b.y2, b.x3, b.y3});
      break;
    }
    case KEY_CLIP:
      TraceText("KEY_CLIP\r\n");
      TraceText(value ? "    Clip Path = 1\r\n" : "    Clip Path = 0\r\n");
      break;
    case KEY_CNST:
      TraceText("KEY_CNST\r\n");
      break;
    case KEY_DOCP:
      TraceText("KEY_DOCP\r\n");
      TraceText(value ? "    Clip Allow = 1\r\n" : "    Clip Allow = 0\r\n");
      break;
    case KEY_ECGR:
      TraceInteger("KEY_ECGR-----------count=", run.graphics.saveDepth);
      break;
    case KEY_EGRP:
      TraceInteger("KEY_EGRP  -----------count=", run.clip.groupDepth);
      break;
    case KEY_ELLI:
      TraceText("KEY_ELLI\r\n");
      break;
    case KEY_ENDF:
      TraceText("KEY_ENDF\r\n");
      break;
    case KEY_ENDP:
      TraceInteger("KEY_ENDP     PathCount=", run.path.compoundDepth);
      break;
    case KEY_FDEF: {
      const bool flat = static_cast<const FillDefinition*>(record.data)->fillType == kFlatFill;
      TraceText(flat ? "KEY_FDEF  FT_LAYER_COLOR \r\n" : "KEY_FDEF  FT_FULL  GRADIENT \r\n");
      break;
    }
    case KEY_FILL:
      TraceText("KEY_FILL\r\n");
      TraceText(value < kNone ? "FILL is solid\r\n" : "FILL is INVISABLE\r\n");
      break;
    case KEY_GNRC:
      TraceText("KEY_GNRC\r\n");
      break;
    case KEY_LINE: {
      const auto& line = *static_cast<const LineRecord*>(record.data);
      TraceText("KEY_LINE ");
      TraceNumbers({line.x0, line.y0, line.x1, line.y1});
      break;
    }
    case KEY_LIOT:
      TraceText("KEY_LIOT overprint stroke R command \r\n");
      break;
    case KEY_LNST:
      TraceText("KEY_LNST\r\n");
      break;
    case KEY_LYOT:
      TraceText("KEY_LYOT  AI overprint fill O cammand \r\n");
      break;
    case KEY_MLIM:
      TraceText("KEY_MLIM\r\n");
      break;
    case KEY_NFIL:
      TraceText("KEY_NFIL\r\n");
      TraceColour(record.data);
      break;
    case KEY_NOTL:
      TraceText("KEY_NOTL\r\n");
      TraceColour(record.data);
      break;
    case KEY_OUTL:
      TraceText("KEY_OUTL\r\n");
      if (value == kNone) TraceText("OUTLINE is INVISABLE\r\n");
      break;
    case KEY_PAGN:
      TraceInteger("KEY_PAGN===", record.value);
      break;
    case KEY_PARA:
      TraceText("KEY_PARA\r\n");
      break;
    case KEY_PATH:
      TraceInteger("KEY_PATH     PathCount=", run.path.compoundDepth);
      break;
    case KEY_PLYR:
      TraceText("KEY_PLYR\r\n");
      TraceInteger("", static_cast<const POLYGON*>(record.data)->get_sides(), " Sides\r\n");
      break;
    case KEY_SCGR:
      TraceInteger("KEY_SCGR-----------count=", run.graphics.saveDepth);
      break;
    case KEY_SGRP:
      TraceInteger("KEY_SGRP  -----------count=", run.clip.groupDepth);
      break;
    case KEY_QXON:
      TraceText("KEY_QXON\r\n");
      break;
    case KEY_SPFL:
      TraceText("KEY_SPFL\r\n");
      break;
    case KEY_THST:
      TraceText(value == 1   ? "KEY_THST thickness NONE\r\n"
                : value == 2 ? "KEY_THST thickness HAIR\r\n"
                : value == 3 ? "KEY_THST thickness THICK\r\n"
                             : "KEY_THST thickness ERROR\r\n");
      break;
    case KEY_TSPY:
      TraceTransparency(record.data);
      break;
    case KEY_WIDT:
      TraceText("KEY_WIDT   is   ");
      TraceNumbers({*static_cast<const double*>(record.data)});
      break;
    default:  // KEY_WRUL, KEY_PFDF and KEY_PFOL print nothing
      break;
  }
}
