// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_REFERENCE_H
#define DEV_REFERENCE_H

// The loader, the search and the column order written the slow, obvious way: a text stream read line by line, a list
// of values per chip with a fresh pattern per value, two cell texts compared as they stand. The library's fast paths
// must give the same answers; the tests, the fuzzers and the benchmarks compare against these, on chips drawn here
// from whatever source of numbers (choose(n) answers below n) they bring.

#include "chipfilter.h"
#include "chipsearch.h"
#include "devicedb.h"

#include <QDebug>
#include <QFile>
#include <QRegExp>
#include <QRegularExpression>
#include <QTextStream>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringDecoder>
#endif

#include <algorithm>

namespace Reference {

inline QList<DEV::ChipInfo> loadDataFile(const QString& fileName, int* firstMalformedLine = nullptr)
{
    QList<DEV::ChipInfo> chips;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCritical() << "can not opend device data file: " << fileName;
        return chips;
    }
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // Qt 6.4's stream drops the byte after an incomplete UTF-8 sequence that ends one of its reads, so the reads'
    // size would decide: decode the file in one piece instead, as the stream does in every other respect.
    file.setTextModeEnabled(false); // carriage returns go after decoding, as the stream drops them
    const QByteArray bytes = file.readAll();
    QString text = QStringDecoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8))(bytes);
    text.remove(QLatin1Char('\r'));
    QTextStream in(&text, QIODevice::ReadOnly);
#else
    QTextStream in(&file);
#endif
    for (int number = 1; !in.atEnd(); ++number) {
        const QString line = in.readLine();
        const QStringList parts = line.split(QLatin1Char(','), Qt::KeepEmptyParts, Qt::CaseSensitive);
        if (line.isEmpty() || parts.size() <= 7) {
            if (!line.isEmpty())
                qCritical() << "incorrect device info entry" << line;
            if (!line.isEmpty() && firstMalformedLine && *firstMalformedLine == 0)
                *firstMalformedLine = number;
            continue;
        }
        DEV::ChipInfo info;
        QString* const members[] = {&info.deviceId, &info.partNumber, &info.series, &info.matchKey, &info.device,
                                    &info.deviceVersion, &info.package, &info.voltage, &info.speed, &info.auxiliary};
        for (int i = 0; i < 10; ++i) // a missing speed or auxiliary reads as empty, not null
            *members[i] = i < parts.size() ? parts.at(i).trimmed() : QString(QLatin1String(""));
        info.resources = parts.mid(10);
        chips.append(info);
    }
    std::stable_sort(chips.begin(), chips.end(), [](const DEV::ChipInfo& a, const DEV::ChipInfo& b) {
        return a.deviceVersion.compare(b.deviceVersion, Qt::CaseSensitive) > 0;
    });
    return chips;
}

inline QStringList searchedValues(const DEV::ChipInfo& c, int group)
{
    if (group >= 8 && group <= 16) // IO to PLL; a missing count reads as empty
        return {c.resources.value(group - 8, QString(QLatin1String("")))};
    if (group >= 1 && group <= 7)
        return {QStringList{c.series, c.partNumber, c.device, c.deviceVersion, c.package, c.speed, c.voltage}.at(group - 1)};
    return QStringList{c.series, c.partNumber, c.matchKey, c.device, c.package, c.auxiliary, c.voltage} + c.resources;
}

/// Whether a value that a search of all values reads goes beyond ASCII, where lower-casing is not all of case folding.
inline bool beyondAscii(const DEV::ChipInfo& c)
{
    return searchedValues(c, 0).join(QString()).contains(QRegularExpression(QStringLiteral("[^\\x00-\\x7f]")));
}

inline bool matchSearch(const DEV::ChipInfo& chip, const DEV::ChipFilterBySearch& filter)
{
    const Qt::CaseSensitivity cs = filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (const QString& v : searchedValues(chip, filter.group)) {
        // The table shows an empty count as 0, so "0" finds empty values.
        if (filter.pattern == QLatin1String("0") && v.isEmpty())
            return true;
        const bool match = filter.patternSyntax == 0 || filter.patternSyntax == 1
            ? QRegExp(filter.pattern, cs, filter.patternSyntax ? QRegExp::RegExp : QRegExp::WildcardUnix).exactMatch(v)
            : filter.patternSyntax == 2 ? filter.pattern.compare(v, cs) == 0 : v.indexOf(filter.pattern, 0, cs) != -1;
        if (match)
            return true;
    }
    return false;
}

// Short values from small pools meet often enough to match; long ones, some of them made of several, are scanned in
// blocks, with a match near block edges. Control characters, U+0000 (written "~" here) among them, are as ordinary
// as letters. Values and patterns beyond ASCII (only when @p foreign) include letters whose
// case folding lands on ASCII (the Kelvin sign, the long s) and a surrogate pair. Now and then a null string, as in a
// default record.
template <typename Choose>
QString randomText(Choose& choose, bool pattern, bool foreign = true)
{
    static const char* const values[] = {"", "0", "00", "10", "a", "A", "ab", "AB", "aB", "x.y", "a*", "[a]", "?", "(",
                                         "ZR1N", "zr1n-9", "C6/I5", " a", "\\", "ZR9K31AQ113-MVPG256C7/I6",
                                         "zr9k31aq113-mvpg256c7/i6", "xxxxxxxAByyyyyyyZR1Nzz", "~", "ab~zr1n", "\t\x01",
                                         "zr1n\x7f", "\xE2\x84\xAA", "\xC5\xBF",
                                         "\xC3\x9F", "a\u00C4b", "\xF0\x9D\x90\x80k", "xxxxxxxxxxxxxxx\xE2\x84\xAA"};
    static const char* const patterns[] = {"0", "00", "", "*", "?", "a*", "A*", "*b", "[ab]*", "[!a]*", "[a-c]?", "a.c",
                                           ".*", "^a", "(a|b)", "(", "[", "a{2}", "\\d+", "A", "ab", "zr1n", "*-9",
                                           "\\", ")", "?*", "b$", "k", "S", "ss", "pg256c7", "MVPG256", "i6", "Q113-m",
                                           "/I5-A", "~", "b~z", "\x01", "\t", "\x7f", "\xC3\xA4",
                                           "\xE2\x84\xAA"};
    const int ascii = pattern ? int(std::size(patterns)) - 2 : int(std::size(values)) - 6;
    if (choose(12) == 0)
        return QString();
    const int which = choose(foreign ? int(pattern ? std::size(patterns) : std::size(values)) : ascii);
    const QString text = QString::fromUtf8(pattern ? patterns[which] : values[which]).replace(QLatin1Char('~'), QChar());
    return choose(pattern ? 3 : 6) == 0 ? text + randomText(choose, pattern, foreign) : text;
}

/// A search as typed into the selector's field (every column, anywhere, any case) half of the time; else any search,
/// with group and syntax one beyond each end.
template <typename Choose>
DEV::ChipFilterBySearch randomSearch(Choose& choose)
{
    if (choose(2))
        return DEV::ChipFilterBySearch{0, 3, false, randomText(choose, true)};
    const int group = choose(19) - 1, syntax = choose(6) - 1, caseSensitive = choose(2);
    return DEV::ChipFilterBySearch{group, syntax, caseSensitive == 1, randomText(choose, true)};
}

// Chips as catalogues have them: mostly ASCII, and neighbours often of one device, whose values (series, match key,
// device, package, auxiliary, counts) they share as the same strings or as equal ones made apart, or all but one of
// them. Beyond ASCII are the values of one chip in @p foreignEvery, by default of one in three or of one in forty:
// more or fewer than a prepared search decides one by one before it gives up on its folded text.
template <typename Choose>
QList<DEV::ChipInfo> randomChips(Choose& choose, int count, int foreignEvery = 0)
{
    if (foreignEvery <= 0)
        foreignEvery = choose(3) == 0 ? 3 : 40;
    QList<DEV::ChipInfo> chips;
    for (int i = 0; i < count; ++i) {
        const bool foreign = choose(foreignEvery) == 0;
        DEV::ChipInfo c;
        c.deviceId = QStringLiteral("chip-%1").arg(i);
        for (QString* m : {&c.partNumber, &c.deviceVersion, &c.voltage, &c.speed})
            *m = randomText(choose, false, foreign);
        static QString DEV::ChipInfo::* const shared[] = {&DEV::ChipInfo::series, &DEV::ChipInfo::matchKey,
            &DEV::ChipInfo::device, &DEV::ChipInfo::package, &DEV::ChipInfo::auxiliary};
        const int kin = i > 0 ? choose(4) : 3; // the same strings as the chip before, equal ones, all but one, new ones
        if (kin < 3) {
            const auto copy = [kin](const QString& s) { return kin == 0 ? s : QString(s.constData(), s.size()); };
            for (QString DEV::ChipInfo::*m : shared)
                c.*m = copy(chips.last().*m);
            for (const QString& count : chips.last().resources)
                c.resources << copy(count);
            const int other = kin == 2 ? choose(7) : -1;
            if (other >= 0 && other < 5)
                c.*shared[other] = randomText(choose, false, foreign);
            else if (other == 5 || (other == 6 && c.resources.isEmpty()))
                c.resources << randomText(choose, false, foreign);
            else if (other == 6)
                c.resources[choose(int(c.resources.size()))] = randomText(choose, false, foreign);
        } else {
            for (QString DEV::ChipInfo::*m : shared)
                c.*m = randomText(choose, false, foreign);
            for (int k = choose(12); k > 0; --k) // short lists as well as longer ones
                c.resources << randomText(choose, false, foreign);
        }
        chips << c;
    }
    return chips;
}

/// The positions in @p chips of the chips that the reference finds with @p f.
inline QVector<int> found(const QList<DEV::ChipInfo>& chips, const DEV::ChipFilterBySearch& f)
{
    QVector<int> rows;
    for (int k = 0; k < chips.size(); ++k) {
        if (matchSearch(chips.at(k), f))
            rows << k;
    }
    return rows;
}

/// Empty when the library answers as the reference found @p expected, for every chip one by one (when @p oneByOne)
/// and by every way it searches a list: the ordinary search (value by value on short lists, folded on longer ones),
/// @p prepared, a search prepared over @p chips, on all of them, among random ascending positions (some of them outside
/// the list; few or many, which it answers differently) and among the hits of the search before, as while the user
/// types on. Otherwise the first difference.
template <typename Choose>
QString disagreement(const QList<DEV::ChipInfo>& chips, const DEV::ChipFilterBySearch& f, Choose& choose,
                     const QVector<int>& expected, const DEV::ChipSearch& prepared, bool oneByOne = true)
{
    const QString search = QStringLiteral("group %1, syntax %2, case %3, pattern \"%4\": ")
                               .arg(f.group).arg(f.patternSyntax).arg(f.caseSensitive).arg(f.pattern);
    const auto hit = [&expected](int k) { return std::binary_search(expected.begin(), expected.end(), k); };
    for (int k = 0; oneByOne && k < chips.size(); ++k) {
        if (DEV::matchFilter(chips.at(k), f) != hit(k))
            return search + QStringLiteral("matchFilter differs on chip %1").arg(k);
    }
    QStringList ids, wantedIds;
    for (const DEV::ChipInfo& chip : DEV::filterChips(chips, f))
        ids << chip.deviceId;
    for (int k : expected)
        wantedIds << chips.at(k).deviceId;
    const char* const differs = DEV::filterRows(chips, f) != expected ? "filterRows"
        : ids != wantedIds                                        ? "filterChips"
        : prepared.filterRows(f) != expected                      ? "ChipSearch"
                                                                  : nullptr;
    if (differs)
        return search + QLatin1String(differs) + QStringLiteral(" differs");
    QVector<int> among, wanted;
    const int share = choose(4); // of three chips: none, one, two or all three
    if (choose(2))
        among << -1;
    for (int k = 0; k < chips.size(); ++k) {
        if (choose(3) < share) {
            among << k;
            if (hit(k))
                wanted << k;
        }
    }
    if (choose(2))
        among << int(chips.size()) << int(chips.size()) + 7;
    if (prepared.filterRows(f, among) != wanted)
        return search + QStringLiteral("ChipSearch among %1 positions differs").arg(among.size());
    // Typed on: with the pattern found anywhere, no chip the shorter pattern missed may turn up.
    DEV::ChipFilterBySearch more = f;
    more.pattern += randomText(choose, true);
    const bool anywhere = f.patternSyntax < 0 || f.patternSyntax > 2;
    wanted.clear();
    for (int k : found(chips, more)) {
        if (hit(k) || anywhere)
            wanted << k;
    }
    return prepared.filterRows(more, expected) == wanted
        ? QString()
        : search + QStringLiteral("ChipSearch among the hits differs for \"%1\"").arg(more.pattern);
}

/// @p chips as a database loads them from a data file written to @p path: equal values then share their data, which
/// the matcher may exploit.
inline QList<DEV::ChipInfo> loadedCopy(const QList<DEV::ChipInfo>& chips, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    for (const DEV::ChipInfo& c : chips)
        file.write((QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion, c.package,
                                c.voltage, c.speed, c.auxiliary} + c.resources).join(QLatin1Char(',')).toUtf8() + '\n');
    file.close();
    return DEV::DeviceDb(path).allChipInfo();
}

/// Below, at or above zero as the cell @p a sorts before, with or after @p b in the table's @p column.
inline int compareCells(QString a, QString b, int column)
{
    if (column < 7)
        return a.compare(b, Qt::CaseSensitive);
    if (column >= 10 && column <= 13) {
        a.remove(QStringLiteral("Kb"), Qt::CaseSensitive);
        b.remove(QStringLiteral("Kb"), Qt::CaseSensitive);
    }
    const int x = a.toInt(nullptr, 10);
    const int y = b.toInt(nullptr, 10);
    return x < y ? -1 : int(x > y);
}

/// The text of @p chip in the table's @p column as it compares: a missing count is empty, which compares as 0.
inline QString cellText(const DEV::ChipInfo& c, int column)
{
    return column < 7 ? QStringList{c.partNumber, c.series, c.device, c.deviceVersion, c.package, c.speed, c.voltage}.at(column)
                      : c.resources.value(column - 7);
}

/// @p rows, positions in @p chips, as the table orders them by @p column: a stable sort, equal cells keeping their
/// order in either direction; a column outside the table leaves them as they are.
inline QVector<int> sortedRows(const QList<DEV::ChipInfo>& chips, QVector<int> rows, int column, bool ascending)
{
    if (column < 0 || column >= 16)
        return rows;
    QVector<QString> cells(chips.size());
    for (int k : rows)
        cells[k] = cellText(chips.at(k), column);
    std::stable_sort(rows.begin(), rows.end(), [&](int l, int r) {
        return compareCells(cells.at(l), cells.at(r), column) * (ascending ? 1 : -1) < 0;
    });
    return rows;
}

// Table rows full of ties and of texts that only some comparisons tell apart: texts that differ only after many equal
// units, by a trailing U+0000 or in a unit's lowest bit ("11", "10"), counts that are not plain digits, "Kb" in odd
// places, short resource lists. Every text cell starts with @p prefix; only @p wide rows have units beyond U+00FF.
template <typename Choose>
QList<DEV::ChipInfo> randomRows(Choose& choose, int count, const QString& prefix = QString(), bool wide = true)
{
    static const QStringList words = QStringList{"", "a", "A", "Z", "9", "10", "1", " ", "LX9PK88", "\xc3\xa9"}
                                     << QString(QChar(0)) << "\xef\xbf\xbf" << "\xf0\x9f\x98\x80";
    static const QStringList counts{"", "0", "-3", "+4", " 5", "x", "007", "1234567890", "2147483648", "8Kb", "Kb8", "Kb",
                                    "64KB", "2Mb", "16kb", "1Kb0Kb", "12KbKb", "0x10", "1234567890Kb", "7", "35", "-1Kb"};
    QList<DEV::ChipInfo> rows;
    for (int i = 0; i < count; ++i) {
        DEV::ChipInfo c;
        c.deviceId = QString::number(choose(count));
        for (QString* m : {&c.partNumber, &c.series, &c.device, &c.deviceVersion, &c.package, &c.speed, &c.voltage}) {
            *m = prefix;
            for (int w = choose(7); w > 0; --w)
                *m += words.at(choose(int(words.size()) - (wide ? 0 : 2)));
        }
        for (int k = choose(11); k > 0; --k)
            c.resources << counts.at(choose(counts.size())) + (choose(2) ? "Kb" : "");
        rows << c;
    }
    return rows;
}

} // namespace Reference

#endif // DEV_REFERENCE_H
