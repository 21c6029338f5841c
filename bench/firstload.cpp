// SPDX-License-Identifier: BSD-3-Clause
// What a user meets in one fresh process: the first DeviceDb of the process
// loaded from a catalogue (the file in the OS cache, nothing of the library
// warmed) and the resident memory it adds, five searches each run once over
// every chip, the selector's construction with the memory it adds, the time
// until it has also been shown and painted once, and typing into its search
// field: a whole part number typed into the empty field key by key and
// taken back, then a four-letter part-number prefix key by key and
// Backspace until the field is empty, three rounds (after a window of the
// host's own, as in any application). Prints one JSON object; scripts/bench-firstload runs it
// several times and reports medians.
//
//   device_firstload CATALOGUE [WORD]       everything
//   device_firstload --load-only CATALOGUE  the load and its memory only

#include "catalogues.h"

#include <chipfilter.h>
#include <deviceselector.h>
#include <searchlineedit.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

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

// Each pattern once through filterChips(), which decides and copies the
// matching records, as a host calling the library meets it.
QJsonArray searches(const QList<DEV::ChipInfo>& all, const QStringList& patterns)
{
    QJsonArray result;
    for (const QString& pattern : patterns) {
        DEV::ChipFilterBySearch search;
        search.pattern = pattern;
        QElapsedTimer timer;
        timer.start();
        const int hits = DEV::filterChips(all, search).size();
        result.append(QJsonObject{{"pattern", pattern}, {"ms", msSince(timer)}, {"hits", hits}});
    }
    return result;
}

QJsonObject selector(DEV::DeviceDb& db, const QString& word, const QString& partNumber, int chips)
{
    // A host shows a window of its own before it offers a selector, and
    // with it Qt sets up its fonts (about 7 ms, a fontconfig scan): that is
    // Qt's first widget, not the selector's, so it is paid before timing.
    QWidget host;
    host.ensurePolished();
    const qint64 before = Bench::residentBytes();
    QElapsedTimer timer;
    timer.start();
    DEV::DeviceSelector selector(&db);
    const double construct = msSince(timer);
    selector.resize(800, 400);
    selector.show();
    QCoreApplication::processEvents();
    const double shown = msSince(timer);
    const double bytesPerChip = double(Bench::residentBytes() - before) / chips;
    auto* search = selector.findChild<DEV::SearchLineEdit*>();
    QJsonArray keys;
    const auto press = [&](auto key) {
        timer.restart();
        QTest::keyClick(search, key);
        keys.append(msSince(timer));
    };
    // First a whole part number typed into the empty field and taken back:
    // the first key matches nearly every chip and each one after narrows.
    QJsonArray typed, erased;
    for (const QChar c : partNumber) {
        press(c.toLatin1());
        typed.append(keys.last());
    }
    for (int i = 0; i < partNumber.size(); ++i) {
        press(Qt::Key_Backspace);
        erased.append(keys.last());
    }
    keys = QJsonArray();
    for (int round = 0; round < 3; ++round) {
        for (const QChar c : word)
            press(c.toLatin1());
        for (int i = 0; i < word.size(); ++i)
            press(Qt::Key_Backspace);
    }
    return {{"constructMs", construct}, {"shownMs", shown}, {"bytesPerChip", bytesPerChip}, {"word", word}, {"keyMs", keys},
            {"narrowing", QJsonObject{{"partNumber", partNumber}, {"typedMs", typed}, {"backspaceMs", erased}}}};
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
        // The selector first, as a user meets it; the host's searches after.
        const QString word = args.value(2, all.first().partNumber.left(4).toLower());
        const QString partNumber = all.at(all.size() / 2).partNumber.toLower();
        result.insert(QStringLiteral("selector"), selector(db, word, partNumber, all.size()));
        result.insert(QStringLiteral("search"), searches(all, patternsOf(all.first())));
    }
    std::fputs(QJsonDocument(result).toJson(QJsonDocument::Compact).constData(), stdout);
    std::fputs("\n", stdout);
    return 0;
}
