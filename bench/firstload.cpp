// SPDX-License-Identifier: BSD-3-Clause
// What a user meets in one fresh process: the first DeviceDb of the process
// loaded from a catalogue (the file in the OS cache, nothing of the library
// warmed), its resident memory, each search run once (returning rows, then
// records, then through a prepared search), the same searches on a
// QSortFilterProxyModel, the selector's construction and a word typed into
// its search field key by key. Prints one JSON object; scripts/bench runs it
// several times and reports medians.
//
//   device_firstload CATALOGUE [WORD]     everything
//   device_firstload --load-only CATALOGUE  the load and its memory only

#include "qtroute.h"

#include <chipfilter.h>
#include <chipsearch.h>
#include <deviceselector.h>
#include <searchlineedit.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace {

double msSince(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// Five patterns a user types, taken from the catalogue itself so that they
// mean the same on every shape: a single letter, a series prefix, a package,
// a "Kb" value and a text found nowhere.
QStringList patternsOf(const DEV::ChipInfo& first)
{
    QString kb;
    for (const QString& r : first.resources) {
        if (r.endsWith(QLatin1String("Kb")))
            kb = r;
    }
    return {first.series.left(1).toLower(), first.series.left(3), first.package, kb, QStringLiteral("#none#")};
}

QJsonObject searches(const QList<DEV::ChipInfo>& all, const QStringList& patterns)
{
    // Rows first: the search itself, as the proxy's row mapping is, meets
    // the coldest caches; then the same searches returning copied records.
    QJsonArray rows, library, proxy;
    for (const bool copies : {false, true}) {
        for (const QString& pattern : patterns) {
            DEV::ChipFilterBySearch search;
            search.pattern = pattern;
            QElapsedTimer timer;
            timer.start();
            const int hits = copies ? DEV::filterChips(all, search).size() : DEV::filterRows(all, search).size();
            (copies ? library : rows).append(QJsonObject{{"pattern", pattern}, {"ms", msSince(timer)}, {"hits", hits}});
        }
    }
    // The same searches once more through a search prepared over the list,
    // after preparing it; what preparing costs is reported beside them.
    const qint64 before = Bench::residentBytes();
    QElapsedTimer timer;
    timer.start();
    const DEV::ChipSearch ready(all);
    const double prepareMs = msSince(timer);
    const double preparedBytesPerChip = double(Bench::residentBytes() - before) / all.size();
    QJsonArray prepared;
    for (const QString& pattern : patterns) {
        DEV::ChipFilterBySearch search;
        search.pattern = pattern;
        timer.restart();
        const int hits = ready.filterRows(search).size();
        prepared.append(QJsonObject{{"pattern", pattern}, {"ms", msSince(timer)}, {"hits", hits}});
    }
    Bench::QtRoute route;
    for (const DEV::ChipInfo& c : all)
        route.source.appendRow(Bench::rowOf(c));
    route.proxy.setSourceModel(&route.source);
    route.proxy.setFilterKeyColumn(-1);
    route.proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    for (const QString& pattern : patterns) {
        QElapsedTimer timer;
        timer.start();
        route.proxy.setFilterFixedString(pattern);
        // The proxy filters lazily; counting its rows makes it do the work.
        const int hits = route.proxy.rowCount();
        proxy.append(QJsonObject{{"pattern", pattern}, {"ms", msSince(timer)}, {"hits", hits}});
    }
    return {{"rows", rows}, {"library", library}, {"prepared", prepared}, {"prepareMs", prepareMs},
            {"preparedBytesPerChip", preparedBytesPerChip}, {"proxy", proxy}};
}

QJsonObject selector(DEV::DeviceDb& db, const QString& word)
{
    QElapsedTimer timer;
    timer.start();
    DEV::DeviceSelector selector(&db);
    const double construct = msSince(timer);
    selector.resize(800, 400);
    selector.show();
    QCoreApplication::processEvents();
    auto* search = selector.findChild<DEV::SearchLineEdit*>();
    QJsonArray keys;
    for (const QChar c : word) {
        timer.restart();
        QTest::keyClick(search, c.toLatin1());
        keys.append(msSince(timer));
    }
    return {{"constructMs", construct}, {"word", word}, {"keyMs", keys}};
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    const bool loadOnly = args.removeAll(QStringLiteral("--load-only")) > 0;
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: device_firstload [--load-only] CATALOGUE [WORD]\n");
        return 2;
    }

    const qint64 before = Bench::residentBytes();
    QElapsedTimer timer;
    timer.start();
    DEV::DeviceDb db(args.at(1));
    const double load = msSince(timer);
    const qint64 after = Bench::residentBytes();
    const QList<DEV::ChipInfo> all = db.allChipInfo();
    if (all.isEmpty()) {
        std::fprintf(stderr, "device_firstload: no chips in %s\n", qPrintable(args.at(1)));
        return 1;
    }

    QJsonObject result{{"chips", all.size()}, {"loadMs", load}, {"bytesPerChip", double(after - before) / all.size()}};
    if (!loadOnly) {
        // The device name of the first chip, typed in lower case, unless a word is given.
        const QString word = args.value(2, all.first().device.toLower());
        result.insert(QStringLiteral("search"), searches(all, patternsOf(all.first())));
        result.insert(QStringLiteral("selector"), selector(db, word));
    }
    std::fputs(QJsonDocument(result).toJson(QJsonDocument::Compact).constData(), stdout);
    std::fputs("\n", stdout);
    return 0;
}
