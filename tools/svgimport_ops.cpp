// Runs operator text through the operator machine and prints what it queued and what it left on the operand stack.

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "run/entry_points.h"
#include "run/import_run.h"
#include "tools/json_values.h"
#include "tools/named_gradients_file.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/record_json.h"

#if defined(__SANITIZE_ADDRESS__)
// The payloads of records that an operator throws away again are given up by design: no one is left to free them.
extern "C" const char* __asan_default_options();  // NOLINT: the sanitizer's own name
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

namespace {

struct OpsOptions {
  double docHeight = 480.0;
  double unitScale = 0.035277777777777776;
  std::vector<std::string> settings;
  std::string namedGradients;
  std::string output = "-";
};

void Complain(const std::string& text) { std::fprintf(stderr, "svgimport-ops: %s\n", text.c_str()); }

// One line of the input is one piece of text; behind "> " it is only pushed. A NUL ends the text.
void FeedLine(std::string_view line) {
  constexpr std::string_view kPushOnlyMark = "> ";
  const bool pushOnly = line.starts_with(kPushOnlyMark);
  if (pushOnly) line.remove_prefix(kPushOnlyMark.size());
  const std::u16string text = headless::TextFromUtf8(line.substr(0, line.find('\0')));
  FeedOperatorText(text, pushOnly ? 1 : 0);
}

void PrintQueue(OutputFile& output) {
  RecordJson json;
  while (run.commands.count > 0) {
    const ImportCommand command = PopCommand(run.commands);
    output.WriteLine(json.Line(command));
    ReleaseCommand(command);
  }
}

void WriteOperand(JsonWriter& writer, const Operand& operand) {
  writer.StartObject();
  writer.Key("operand");
  switch (operand.kind) {
    case OperandKind::Number:
      writer.String("Number");
      writer.Key("value");
      WriteNumber(writer, operand.number);
      break;
    case OperandKind::Array:
      writer.String("Array");
      writer.Key("value");
      WriteNumbers(writer, ValuesOf(operand));
      break;
    case OperandKind::String:
    case OperandKind::Name:
    case OperandKind::LiteralName:
      writer.String(operand.kind == OperandKind::String ? "String"
                    : operand.kind == OperandKind::Name ? "Name"
                                                        : "LiteralName");
      writer.Key("value");
      WriteText(writer, TextOf(operand));
      break;
  }
  writer.EndObject();
}

void PrintOperands(OutputFile& output) {
  rapidjson::StringBuffer text;
  for (std::size_t i = 0; i < run.operands.size(); ++i) {
    text.Clear();
    JsonWriter writer(text);
    WriteOperand(writer, run.operands.FromTop(i));
    output.WriteLine({text.GetString(), text.GetSize()});
  }
}

int Run(const OpsOptions& options) {
  std::vector<NamedGradient> gradients;
  if (!options.namedGradients.empty()) {
    const std::string failure = ReadNamedGradients(options.namedGradients, gradients);
    if (!failure.empty()) {
      Complain(options.namedGradients + ": " + failure);
      return kExitUsage;
    }
  }
  OutputFile output;
  if (!output.Open(options.output)) {
    Complain(options.output + ": " + std::strerror(errno));
    return kExitUsage;
  }

  StoreSettings(options.settings);
  int status = kExitDone;
  try {
    PrepareOperatorMachine();
    run.DocHeight = options.docHeight;
    run.UnitScale = options.unitScale;
    run.namedGradients = std::move(gradients);
    std::string line;
    while (std::getline(std::cin, line)) FeedLine(line);
    PrintQueue(output);
    PrintOperands(output);
  } catch (const std::exception& error) {
    Complain(error.what());
    status = kExitError;
  }
  if (!output.Close()) {
    Complain(output.Name() + ": " + std::strerror(errno));
    if (status == kExitDone) status = kExitNotImported;
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::ios::sync_with_stdio(false);

  CLI::App app(
      "Feeds operator text from standard input to the operator machine, one line at a time, and prints the records "
      "that it "
      "queued and the operands that it left, each as a line of JSON. A line that begins with \"> \" is pushed without "
      "being "
      "executed.",
      "svgimport-ops");
  OpsOptions options;
  app.set_version_flag("-V,--version", std::string("svgimport-ops ") + SVGIMPORT_VERSION);
  AddNumberOption(app, "--doc-height", options.docHeight, "The document height, which turns y upside down")
      ->type_name("H")
      ->default_str("480");
  AddNumberOption(app, "--unit-scale", options.unitScale, "Host units (centimetres) in a unit of the text")
      ->type_name("S")
      ->default_str("0.035277777777777776");
  AddSettingsOption(app, options.settings);
  app.add_option("--named-gradients", options.namedGradients, "A JSON array that fills the table of named gradients")
      ->type_name("FILE");
  app.add_option("-o,--output", options.output, "Where the lines go; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  app.footer(
      "Exit status: 0 done, 1 output not written, 2 wrong arguments or files, 3 an error left the machine.\n\n"
      "Examples:\n"
      "  echo '0 0 M 10 10 L' | svgimport-ops\n"
      "  printf '> 10 20\\n30 40 5 5 rect\\n' | svgimport-ops --doc-height 100 --unit-scale 1");
  if (const auto status = ParseArguments(app, argc, argv)) return *status;
  return Run(options);
}
