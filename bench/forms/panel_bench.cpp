// How long the panel takes to open and to show a move, on a register with 20,000 items in the warehouse.
//
//   QT_QPA_PLATFORM=offscreen bench_forms

#include <benchmark/benchmark.h>

#include <QApplication>

#include "firm_session.h"
#include "register/panel/karEWPAN.h"

namespace {

using namespace tandeko;

// About 100,000 items of one register, a fifth of them in the warehouse.
Firm& firm() {
  static Firm made({.employees = 200, .items = 100'000, .registers = 1, .seed = 1});
  return made;
}

void openPanel(benchmark::State& state) {
  Session& session = firm().session();
  for (auto _ : state) {
    karEWPAN panel(session);
    panel.resize(1200, 700);
    panel.show();
    QApplication::processEvents();
    benchmark::DoNotOptimize(
        panel.findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"))->items().rowCount());
  }
}

void refillWarehouse(benchmark::State& state) {
  karEWPAN panel(firm().session());
  panel.show();
  auto* tree = panel.findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"));
  for (auto _ : state) {
    panel.PanelFillTree(*tree, 0);
    QApplication::processEvents();
  }
  state.counters["items"] = static_cast<double>(tree->items().tree().nodes().size());
}

BENCHMARK(openPanel)->Unit(benchmark::kMillisecond);
BENCHMARK(refillWarehouse)->Unit(benchmark::kMillisecond);

}  // namespace
