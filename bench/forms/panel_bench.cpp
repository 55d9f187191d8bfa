// How long the panel takes to open and to show a move, on a register with 20,000 items in the warehouse.
//
//   QT_QPA_PLATFORM=offscreen bench_forms

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>

#include "firm.h"
#include "platform/text.h"
#include "register/panel/karEWPAN.h"
#include "structure/create.h"

namespace {

using namespace tandeko;

// A firm of 200 employees with one register of about 100,000 items, a fifth of them in the warehouse.
class Firm {
 public:
  Firm() : session_(Platform{registry_, messages_, shell_, mail_, clock_, *windows_}) {
    const QString file = folder_.filePath(QStringLiteral("firma.mdb"));
    structure::createDatabase(file.toStdString());
    {
      jet::Workspace workspace;
      const auto database = workspace.openDatabase(file.toStdString());
      fillFirm(workspace, *database, {.employees = 200, .items = 100'000, .registers = 1, .seed = 1});
    }
    session_.BaseConnect(file, {});
    session_.setCurrentRegister(1);
  }
  Session& session() { return session_; }

 private:
  QTemporaryDir folder_;
  MemoryRegistry registry_;
  ScreenMessages messages_;
  SystemShell shell_;
  SystemMail mail_;
  SystemClock clock_;
  std::unique_ptr<WindowSearch> windows_ = systemWindowSearch();
  Session session_;
};

Firm& firm() {
  static Firm made;
  return made;
}

void openPanel(benchmark::State& state) {
  Session& session = firm().session();
  for (auto _ : state) {
    karEWPAN panel(session);
    panel.resize(1200, 700);
    panel.show();
    QApplication::processEvents();
    benchmark::DoNotOptimize(panel.findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"))->items().rowCount());
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

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
