// SPDX-License-Identifier: BSD-3-Clause
// Loading, memory and look-ups of the database, against the plain loader.

#include "catalogues.h"
#include "chipfilter.h"
#include "reference/reference.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace {

void Load_Device(benchmark::State& state)
{
    const QString path = Bench::cataloguePath(int(state.range(0)));
    for (auto _ : state) {
        auto db = std::make_unique<DEV::DeviceDb>(path);
        benchmark::DoNotOptimize(db->allChipInfo().size());
        // Freeing the database is not part of loading it.
        state.PauseTiming();
        db.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Load_Reference(benchmark::State& state)
{
    const QString path = Bench::cataloguePath(int(state.range(0)));
    for (auto _ : state) {
        QList<DEV::ChipInfo> chips = Reference::loadDataFile(path);
        benchmark::DoNotOptimize(chips.size());
        state.PauseTiming();
        chips = QList<DEV::ChipInfo>();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Resident memory the loaded database keeps, per chip.
template <typename Load>
void residentPerChip(benchmark::State& state, Load load)
{
    const QString path = Bench::cataloguePath(int(state.range(0)));
    double perChip = 0;
    for (auto _ : state) {
        malloc_trim(0);
        const long before = Bench::residentBytes();
        auto kept = load(path);
        malloc_trim(0);
        const long after = Bench::residentBytes();
        perChip = double(after - before) / double(state.range(0));
        benchmark::DoNotOptimize(kept);
    }
    state.counters["bytes_per_chip"] = perChip;
}

void Memory_Device(benchmark::State& state)
{
    residentPerChip(state, [](const QString& p) { return std::make_unique<DEV::DeviceDb>(p); });
}

void Memory_Reference(benchmark::State& state)
{
    residentPerChip(state, [](const QString& p) { return Reference::loadDataFile(p); });
}

void FindByID(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    // Near the end of the list: the worst case of a linear walk.
    const QString id = db.allChipInfo().last().deviceId;
    for (auto _ : state)
        benchmark::DoNotOptimize(db.findByID(id));
}

void FindByPN(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    const QString pn = db.allChipInfo().last().partNumber;
    for (auto _ : state)
        benchmark::DoNotOptimize(db.findByPN(pn));
}

void FilterChips_Attributes(benchmark::State& state)
{
    DEV::DeviceDb& db = Bench::database(int(state.range(0)));
    DEV::ChipFilter filter;
    filter.series = QStringLiteral("ZR9K");
    filter.package = QStringLiteral("PG256");
    for (auto _ : state)
        benchmark::DoNotOptimize(db.filterChips(filter));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(Load_Device)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Load_Reference)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Memory_Device)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Memory_Reference)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(FindByID)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindByPN)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FilterChips_Attributes)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
