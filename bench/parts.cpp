// The parts of an import, one by one.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/filter_instance.h"
#include "bench/floor.h"
#include "document/node_access.h"
#include "headless_host/headless_host.h"
#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "platform/xml_document.h"
#include "run/command_queue.h"
#include "run/entry_points.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

void ReleaseQueued() {
  while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands));
}

void FreshMachine() {
  ResetHost();
  ResetImportRun();
  PrepareOperatorMachine();
}

std::string PathData(int segments) {
  std::string data = "M10.5 20.25";
  for (int i = 0; i < segments; ++i) {
    const std::string n = std::to_string(i % 977) + '.' + std::to_string(i % 89);
    data += i % 3 == 0 ? " L" + n + "," + n : i % 3 == 1 ? " c1.5,2-3,4 " + n + ',' + n + " 5.25,6" : " h" + n;
  }
  return data;
}

std::string PathDocument(int segments) {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"100\"><path style=\"fill:#ff0000;stroke:none\" d=\"" +
         PathData(segments) + "\"/></svg>";
}

void Numbers(benchmark::State& state) {
  const std::u16string text = u"-123.456789";
  for (auto _ : state) {
    std::size_t consumed;
    benchmark::DoNotOptimize(ScanDouble(text, &consumed));
  }
}
BENCHMARK(Numbers);

void Tokeniser(benchmark::State& state) {
  FreshMachine();
  for (auto _ : state) {
    FeedOperatorText(u"12.5 -7.25 (text) [1 2 3] /name zz", kExecute);
  }
}
BENCHMARK(Tokeniser);

void PathOperators(benchmark::State& state) {
  FreshMachine();
  double x = 0.0;
  for (auto _ : state) {
    x += 1.0;
    run.path.deviceCurrent.x = x;
    FeedOperatorText(u"10.5 20.25 L 1 2 3 4 5 6 c", kExecute);
    ReleaseQueued();
  }
  state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(PathOperators);

void DocumentLoad(benchmark::State& state) {
  const std::u16string text = WideFromNarrow(PathDocument(static_cast<int>(state.range(0))));
  for (auto _ : state) {
    IXMLDOMDocument* document = CreateDomDocument();
    bool success = false;
    document->loadXML(text, &success);
    benchmark::DoNotOptimize(success);
    document->Release();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(DocumentLoad)->Range(8, 1 << 18);

void Floor(benchmark::State& state) {
  const std::string text = PathDocument(static_cast<int>(state.range(0)));
  XmlFloor floor;
  for (auto _ : state) benchmark::DoNotOptimize(floor.Parse(text));
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(Floor)->Range(8, 1 << 18);

void WholeImport(benchmark::State& state) {
  const std::string text = PathDocument(static_cast<int>(state.range(0)));
  char name[] = "/tmp/svgimport-bench-XXXXXX";
  if (mkstemp(name) < 0) std::abort();
  std::ofstream(name) << text;
  const std::u16string path = WideFromUtf8(name);
  for (auto _ : state) {
    FilterInstance filter;
    benchmark::DoNotOptimize(filter.Import(path));
  }
  std::remove(name);
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(WholeImport)->Range(8, 1 << 18);

}  // namespace

BENCHMARK_MAIN();
