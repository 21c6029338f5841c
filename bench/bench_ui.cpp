// SPDX-License-Identifier: BSD-3-Clause
// The chip table model's sorts and the selector widget: construction, a
// series change and one keystroke in the search field, end to end.

#include "catalogues.h"
#include "chipcolumns.h"
#include "chipinfotablemodel.h"
#include "deviceselector.h"
#include "qtroute.h"
#include "searchlineedit.h"

#include <benchmark/benchmark.h>

#include <QComboBox>
#include <QTableView>
#include <QCoreApplication>
#include <QTest>

#include <algorithm>

namespace {

const int SortColumns[] = {0, 7, 12}; // text, whole number, Kb size

// The column order a plain implementation gets by comparing freshly built
// cell texts in every comparison.
bool plainLess(const DEV::ChipInfoTableModel& model, const DEV::ChipInfo& a, const DEV::ChipInfo& b, int column)
{
    const QString l = model.columnOfChipInfo(a, column);
    const QString r = model.columnOfChipInfo(b, column);
    const DEV::ColumnKind kind = DEV::chipColumnKind(column);
    if (kind == DEV::ColumnKind::Text)
        return l.compare(r, Qt::CaseSensitive) < 0;
    if (kind == DEV::ColumnKind::Kilobits) {
        QString x = l, y = r;
        x.remove(QLatin1String("Kb"), Qt::CaseSensitive);
        y.remove(QLatin1String("Kb"), Qt::CaseSensitive);
        return x.toInt(nullptr, 10) < y.toInt(nullptr, 10);
    }
    return l.toInt(nullptr, 10) < r.toInt(nullptr, 10);
}

void Sort_Device(benchmark::State& state)
{
    const int column = SortColumns[state.range(0)];
    const QList<DEV::ChipInfo> all = Bench::database(int(state.range(1))).allChipInfo();
    DEV::ChipInfoTableModel model;
    for (auto _ : state) {
        model.setChipInfoList(all);
        model.sort(column, Qt::AscendingOrder);
    }
    state.SetLabel(QStringLiteral("column %1").arg(column).toStdString());
}

void Sort_Plain(benchmark::State& state)
{
    const int column = SortColumns[state.range(0)];
    const QList<DEV::ChipInfo> all = Bench::database(int(state.range(1))).allChipInfo();
    DEV::ChipInfoTableModel model;
    for (auto _ : state) {
        QList<DEV::ChipInfo> list = all;
        std::sort(list.begin(), list.end(),
                  [&](const DEV::ChipInfo& a, const DEV::ChipInfo& b) { return plainLess(model, a, b, column); });
        benchmark::DoNotOptimize(list.size());
    }
    state.SetLabel(QStringLiteral("column %1").arg(column).toStdString());
}

void Sort_QtProxy(benchmark::State& state)
{
    const int column = SortColumns[state.range(0)];
    Bench::QtRoute& route = Bench::qtRoute(int(state.range(1)));
    for (auto _ : state) {
        route.proxy.sort(column, Qt::AscendingOrder);
        state.PauseTiming();
        route.proxy.sort(-1);
        state.ResumeTiming();
    }
    state.SetLabel(QStringLiteral("column %1").arg(column).toStdString());
}

void sortArgs(benchmark::internal::Benchmark* b)
{
    for (int c = 0; c < 3; ++c) {
        for (int n : {1000, 10000, 100000})
            b->Args({c, n});
    }
}

void Selector_Construct(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    for (auto _ : state) {
        auto selector = std::make_unique<DEV::DeviceSelector>(&db);
        state.PauseTiming();
        selector.reset();
        state.ResumeTiming();
    }
}

void Selector_SeriesChange(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    DEV::DeviceSelector selector(&db);
    selector.resize(800, 400);
    selector.show();
    auto* series = selector.findChild<QComboBox*>(QStringLiteral("cbSeries"));
    int next = 1;
    for (auto _ : state) {
        series->setCurrentIndex(next);
        next = next == 1 ? 2 : 1;
    }
}

// One character typed into the search field until the table holds the new,
// sorted result. The field holds the text before the last character, with
// the table showing its result, when the key is pressed.
void Selector_Keystroke(benchmark::State& state, const char* before, char typed)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    DEV::DeviceSelector selector(&db);
    selector.resize(800, 400);
    selector.show();
    QCoreApplication::processEvents();
    auto* search = selector.findChild<DEV::SearchLineEdit*>();
    const QString prefix = QString::fromLatin1(before);
    int rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        search->setText(prefix.left(prefix.size() - 1));
        QTest::keyClick(search, prefix.back().toLatin1());
        state.ResumeTiming();
        QTest::keyClick(search, typed);
        rows = selector.findChild<QTableView*>(QStringLiteral("tableView"))->model()->rowCount();
    }
    state.counters["rows"] = rows;
}

void Selector_Keystroke_Narrow(benchmark::State& state)
{
    Selector_Keystroke(state, "pg25", '6');
}

void Selector_Keystroke_Everything(benchmark::State& state)
{
    Selector_Keystroke(state, "z", 'r');
}

// The same keystrokes the way a host without this library would handle them:
// a new fixed-string filter on the proxy, which keeps its rows sorted by part
// number.
void QtRoute_Keystroke(benchmark::State& state, const char* before, char typed)
{
    Bench::QtRoute& route = Bench::qtRoute(int(state.range(0)));
    route.proxy.sort(0, Qt::AscendingOrder);
    const QString prefix = QString::fromLatin1(before);
    int rows = 0;
    for (auto _ : state) {
        state.PauseTiming();
        route.proxy.setFilterFixedString(prefix);
        state.ResumeTiming();
        route.proxy.setFilterFixedString(prefix + QLatin1Char(typed));
        rows = route.proxy.rowCount();
    }
    route.proxy.setFilterFixedString(QString());
    route.proxy.sort(-1);
    state.counters["rows"] = rows;
}

void QtRoute_Keystroke_Narrow(benchmark::State& state)
{
    QtRoute_Keystroke(state, "pg25", '6');
}

void QtRoute_Keystroke_Everything(benchmark::State& state)
{
    QtRoute_Keystroke(state, "z", 'r');
}

// What a host would build instead of the selector: every chip as a row of
// sixteen items behind a sorting proxy.
void QtRoute_Construct(benchmark::State& state)
{
    const QList<DEV::ChipInfo> all = Bench::database(int(state.range(0))).allChipInfo();
    for (auto _ : state) {
        auto route = std::make_unique<Bench::QtRoute>();
        for (const DEV::ChipInfo& c : all)
            route->source.appendRow(Bench::rowOf(c));
        route->proxy.setSourceModel(&route->source);
        route->proxy.sort(0, Qt::AscendingOrder);
        state.PauseTiming();
        route.reset();
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(Sort_Device)->Apply(sortArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Sort_Plain)->Apply(sortArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Sort_QtProxy)->Apply(sortArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Selector_Construct)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(Selector_SeriesChange)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(Selector_Keystroke_Narrow)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(Selector_Keystroke_Everything)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(QtRoute_Construct)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(QtRoute_Keystroke_Narrow)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(QtRoute_Keystroke_Everything)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
