// SPDX-License-Identifier: BSD-3-Clause
// Free-text search over the whole database, per pattern syntax, ordinary and
// prepared, against the plain matcher and against the route a host would
// otherwise take: a QStandardItemModel behind a QSortFilterProxyModel with a
// fixed-string, case-insensitive filter over all columns.

#include "catalogues.h"
#include "chipfilter.h"
#include "chipsearch.h"
#include "qtroute.h"
#include "reference/reference.h"

#include <benchmark/benchmark.h>

namespace {

struct Search
{
    const char* name;
    int syntax;
    bool caseSensitive;
    const char* pattern;
};

// One realistic query per syntax, over the group "All".
const Search Searches[] = {
    {"anywhere_ci", 3, false, "mg196"},
    {"exact", 2, true, "PG256"},
    {"wildcard", 0, true, "ZR5X*"},
    {"regexp", 1, true, "ZR[0-9]K.*-MV.*"},
    {"zero_rule", 3, false, "0"},
};

DEV::ChipFilterBySearch filterFor(const Search& s)
{
    DEV::ChipFilterBySearch f;
    f.group = 0;
    f.patternSyntax = s.syntax;
    f.caseSensitive = s.caseSensitive;
    f.pattern = QString::fromLatin1(s.pattern);
    return f;
}

void Search_Device(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(1)));
    const Search& s = Searches[state.range(0)];
    const DEV::ChipFilterBySearch filter = filterFor(s);
    const QList<DEV::ChipInfo> all = db.allChipInfo();
    int hits = 0;
    for (auto _ : state)
        hits = db.filterChips(filter, all).size();
    state.SetLabel(s.name);
    state.counters["hits"] = hits;
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

// The same searches through a search prepared once over the list, rows
// returned; only the first pattern is served by the prepared text, the others
// take the ordinary way.
void Search_Prepared(benchmark::State& state)
{
    const DEV::ChipSearch search(Bench::database(int(state.range(1))).allChipInfo());
    const Search& s = Searches[state.range(0)];
    const DEV::ChipFilterBySearch filter = filterFor(s);
    int hits = 0;
    for (auto _ : state)
        hits = search.filterRows(filter).size();
    state.SetLabel(s.name);
    state.counters["hits"] = hits;
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void Search_Reference(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(1)));
    const Search& s = Searches[state.range(0)];
    const DEV::ChipFilterBySearch filter = filterFor(s);
    const QList<DEV::ChipInfo> all = db.allChipInfo();
    int hits = 0;
    for (auto _ : state) {
        QList<DEV::ChipInfo> result;
        for (const DEV::ChipInfo& chip : all) {
            if (Reference::matchSearch(chip, filter))
                result.append(chip);
        }
        hits = result.size();
    }
    state.SetLabel(s.name);
    state.counters["hits"] = hits;
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void Search_QtProxy(benchmark::State& state)
{
    Bench::QtRoute& route = Bench::qtRoute(int(state.range(1)));
    const QString pattern = QString::fromLatin1(Searches[0].pattern);
    int hits = 0;
    for (auto _ : state) {
        route.proxy.setFilterFixedString(pattern);
        hits = route.proxy.rowCount();
        state.PauseTiming();
        route.proxy.setFilterFixedString(QString());
        state.ResumeTiming();
    }
    state.SetLabel(Searches[0].name);
    state.counters["hits"] = hits;
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void searchArgs(benchmark::internal::Benchmark* b)
{
    for (int s = 0; s < int(sizeof(Searches) / sizeof(Searches[0])); ++s) {
        for (int n : {1000, 10000, 100000})
            b->Args({s, n});
    }
}

} // namespace

BENCHMARK(Search_Device)->Apply(searchArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Search_Prepared)->Apply(searchArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Search_Reference)->Apply(searchArgs)->Unit(benchmark::kMillisecond);
BENCHMARK(Search_QtProxy)->Args({0, 1000})->Args({0, 10000})->Args({0, 100000})->Unit(benchmark::kMillisecond);
