// SPDX-License-Identifier: BSD-3-Clause
// devicequery: the chip database from the command line, for build scripts
// that need a part number, a device's resources or a list of candidates
// without starting the design environment.
//
// Exit status: 0 when something was printed (or --count counted more than
// zero), 1 when nothing matched, 2 for bad usage or an unreadable data file.
// Scripts branch on these, so every failure path below ends in one of them.

#include "cataloguecheck.h"
#include "chipjson.h"
#include "commandline.h"

#include <boardcatalogue.h>
#include <boardtablemodel.h>
#include <chipcolumns.h>
#include <chipcomparisonmodel.h>
#include <chipfilter.h>
#include <chipinfo.h>
#include <chipinfotablemodel.h>
#include <chiprequirements.h>
#include <devicedb.h>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegExp>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace {

enum class Format { Table, Csv, Json, Count };

/// What the command line asked for, checked and ready to run.
struct Query
{
    QString dataFile; ///< Empty for the installed catalogue (installedCatalogue()).
    std::optional<QString> id;
    std::optional<QString> partNumber;
    std::optional<QString> matchKey;
    std::optional<QString> samePackage;
    QStringList compare; ///< The part numbers to compare side by side, if any.
    DEV::ChipFilter filter;
    std::optional<DEV::ChipFilterBySearch> search;
    DEV::ChipRequirements requirements;
    bool smallest = false;
    Format format = Format::Table;
    bool header = false;
};

struct Options
{
    QCommandLineOption help = ExampleCommandLine::helpOption();
    QCommandLineOption data = ExampleCommandLine::dataOption();
    QCommandLineOption id{QStringLiteral("id"),
                          QStringLiteral("Chips with device identifier ID; an old zr9k31-NNN identifier "
                                         "is translated to its current zr9k31a-NNN one."),
                          QStringLiteral("ID")};
    QCommandLineOption pn{QStringLiteral("pn"), QStringLiteral("Chips with part number PN."),
                          QStringLiteral("PN")};
    QCommandLineOption samePackage{QStringLiteral("same-package"),
                                   QStringLiteral("Chips of PN's series in PN's package, smallest first."),
                                   QStringLiteral("PN")};
    QCommandLineOption compare{QStringLiteral("compare"),
                               QStringLiteral("Compare the chips of the part numbers that follow "
                                              "(PN [PN...]) side by side; see below.")};
    QCommandLineOption key{QStringLiteral("key"),
                           QStringLiteral("With --pn: the one chip that also has match key KEY."),
                           QStringLiteral("KEY")};
    QCommandLineOption series{QStringLiteral("series"), QStringLiteral("Only chips of series SERIES."),
                              QStringLiteral("SERIES")};
    QCommandLineOption device{QStringLiteral("device"), QStringLiteral("Only chips of device DEVICE."),
                              QStringLiteral("DEVICE")};
    QCommandLineOption version{QStringLiteral("version"),
                               QStringLiteral("Only chips of device version VERSION; \"\" selects the "
                                              "initial, unversioned device. Given as the only argument, "
                                              "prints the tool's version instead."),
                               QStringLiteral("VERSION")};
    QCommandLineOption package{QStringLiteral("package"), QStringLiteral("Only chips in package PACKAGE."),
                               QStringLiteral("PACKAGE")};
    QCommandLineOption speed{QStringLiteral("speed"), QStringLiteral("Only chips of speed grade SPEED."),
                             QStringLiteral("SPEED")};
    QCommandLineOption voltage{QStringLiteral("voltage"), QStringLiteral("Only chips of core voltage VOLTAGE."),
                               QStringLiteral("VOLTAGE")};
    QCommandLineOption search{QStringLiteral("search"),
                              QStringLiteral("Only chips where TEXT is found, as the selector's search field "
                                             "finds it."),
                              QStringLiteral("TEXT")};
    QCommandLineOption in{QStringLiteral("in"), QStringLiteral("Values searched (default: all); see below."),
                          QStringLiteral("GROUP")};
    QCommandLineOption mode{QStringLiteral("mode"),
                            QStringLiteral("How TEXT is read: anywhere (default), exact, wildcard or regexp."),
                            QStringLiteral("MODE")};
    QCommandLineOption caseSensitive{QStringLiteral("case"), QStringLiteral("Letter case counts in the search.")};
    QCommandLineOption csv{QStringLiteral("csv"),
                           QStringLiteral("Print data-file lines, usable again as a data file.")};
    QCommandLineOption header{QStringLiteral("header"), QStringLiteral("With --csv: start with a header line.")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("Print a JSON array of chip objects.")};
    QCommandLineOption count{QStringLiteral("count"), QStringLiteral("Print only the number of chips.")};
    QCommandLineOption min{QStringLiteral("min"),
                           QStringLiteral("Only chips with at least VALUE of resource COLUMN, e.g. LUT=20000 or "
                                          "BSRAM=500Kb; repeatable."),
                           QStringLiteral("COLUMN=VALUE")};
    QCommandLineOption smallest{QStringLiteral("smallest"),
                                QStringLiteral("With --min: smallest chip first, by the resources required.")};
    QCommandLineOption check{QStringLiteral("check"),
                             QStringLiteral("Check the catalogue (FILE, --data or the installed one) and list "
                                            "what is wrong in it.")};
    QCommandLineOption boards{QStringLiteral("boards"),
                              QStringLiteral("List the boards of the board catalogue (--boards-file or the bundled "
                                             "one); --search narrows them.")};
    QCommandLineOption board{QStringLiteral("board"), QStringLiteral("The chip on board ID, as --pn prints it."),
                             QStringLiteral("ID")};
    QCommandLineOption boardsFile{QStringLiteral("boards-file"),
                                  QStringLiteral("Read the boards from FILE instead of the bundled boards.csv; with "
                                                 "--check, check FILE too."),
                                  QStringLiteral("FILE")};

    /// The options that may be given once only.
    QList<QCommandLineOption> once() const
    {
        return {help,    data,   id, pn,   samePackage,   key, series, device, version, package, speed,
                voltage, search, in, mode, caseSensitive, csv, header, json,   count,   smallest, check, compare,
                boards,  board,  boardsFile};
    }

    QList<QCommandLineOption> all() const { return once() << min; }
};

const char* const kEpilog = R"(
Without a look-up (--id, --pn, --same-package) every chip of the catalogue
is a candidate. A look-up's chips must also pass the attribute filters and
the search. The attribute filters compare whole values, letter case
counting; an empty value constrains nothing, except --version "". The search
runs over what the filters leave.

Search groups (--in), by name or number: all (0), series (1), part-number (2),
device (3), device-version (4), package (5), speed (6), voltage (7), io (8),
lut (9), ff (10), rom16 (11), ssram (12), bsram (13), user-flash (14),
dsp (15), pll (16). "all" covers series, part number, match key, device,
package, auxiliary, voltage and every resource, but not the device version or
the speed grade. The text "0" also finds an empty value.

Requirements (--min), repeatable: COLUMN is a resource column as the table's
header names it, any letter case (io, lut, ff, rom16, ssram, bsram,
"user flash", dsp, pll); memory counts Kb, with an optional Kb or Mb unit
(1Mb = 1024Kb). An empty or missing count is 0. --smallest orders the chips
by the required counts in column order, then by part number.

--same-package PN lists every device, version and speed grade of PN's series
in PN's package, PN among them, smallest first: by each resource in column
order, then by part number. A shared package name makes a chip a candidate
for migration, not a promise that the pins match. Filters, search and --min
narrow the list; --smallest reorders it by the required counts.

--compare PN [PN...] prints the chips side by side: one line per attribute
(the table's columns, then Device ID), one column per chip, a * before each
line whose values differ. A part number given twice is compared once. It
takes only --data and one of --csv (a header line "attribute,differs,PN...",
then one line per attribute with differs 1 or 0) and --json (an array of
{"attribute", "differs", "values"} objects).

--check [FILE] reads a catalogue as the library does and prints each problem
as FILE:LINE: message; exit status 0 when clean, 1 with findings. With
--boards-file BOARDS it then checks that board file against the catalogue:
malformed lines, repeated board identifiers, chips the catalogue lacks.

--boards lists boards (identifier, name, maker, revision, chip part number
and the chip's LUT, FF, BSRAM, DSP, IO); --csv prints board-file lines,
--json objects with the chip as --json prints chips (null when unknown).
--board ID prints the chip on board ID; an unknown board is bad usage.

Output: a table by default (device identifier, then the chip table's
columns; an empty resource shows as 0), or one of --csv, --json, --count.
--csv prints the data file's columns in its order, the resources as written;
with --header its first line names the columns, which makes it unfit to be
read back as a data file. Chips come in database order, newest device version
first, except with --same-package or --smallest. Malformed lines of the data
file are summed up on standard error in one line, "N lines skipped; first at
line K".

Exit status: 0 chips printed, 1 nothing matched (--count still prints 0,
--json prints []), 2 bad usage (also an option where a value belongs, an
invalid pattern, or an unknown part number given to --same-package or
--compare) or unreadable data file.
)";

using namespace ExampleCommandLine;

// The group's name on the command line: "all", or the column's header in
// lower case with a hyphen for each space ("user-flash").
QString groupOptionName(int group)
{
    return group == 0 ? QStringLiteral("all")
                      : DEV::chipColumnHeader(DEV::searchGroupColumn(group)).toLower().replace(QLatin1Char(' '), QLatin1Char('-'));
}

std::optional<int> searchGroup(const QString& name)
{
    bool isNumber = false;
    const int number = name.toInt(&isNumber);
    if (isNumber)
        return number >= 0 && number < DEV::SearchGroupCount ? std::optional<int>(number) : std::nullopt;
    for (int group = 0; group < DEV::SearchGroupCount; ++group) {
        if (groupOptionName(group) == name.toLower())
            return group;
    }
    return std::nullopt;
}

std::optional<int> patternSyntax(const QString& mode)
{
    const QString lower = mode.toLower();
    if (lower == QLatin1String("wildcard"))
        return 0;
    if (lower == QLatin1String("regexp"))
        return 1;
    if (lower == QLatin1String("exact"))
        return 2;
    if (lower == QLatin1String("anywhere"))
        return 3;
    return std::nullopt;
}

/// True when no option but those of @p allowed is set.
bool onlyAmong(const QCommandLineParser& parser, const Options& o, const QList<QCommandLineOption>& allowed)
{
    for (const QCommandLineOption& option : o.all()) {
        const auto same = [&option](const QCommandLineOption& a) { return a.names() == option.names(); };
        if (parser.isSet(option) && std::none_of(allowed.begin(), allowed.end(), same))
            return false;
    }
    return true;
}

/// What is wrong with the options taken together, or an empty string.
QString conflict(const QCommandLineParser& parser, const Options& o)
{
    const QString common = misuse(parser, o.once(), parser.isSet(o.compare));
    if (!common.isEmpty())
        return common;
    if (parser.isSet(o.compare) && !onlyAmong(parser, o, {o.compare, o.data, o.csv, o.json}))
        return QStringLiteral("--compare takes no other option than --data, --csv and --json");
    if (parser.isSet(o.compare) && parser.positionalArguments().isEmpty())
        return QStringLiteral("--compare needs at least one part number");
    if (int(parser.isSet(o.csv)) + int(parser.isSet(o.json)) + int(parser.isSet(o.count)) > 1)
        return QStringLiteral("choose only one of --csv, --json and --count");
    if (parser.isSet(o.header) && !parser.isSet(o.csv))
        return QStringLiteral("--header needs --csv");
    if (int(parser.isSet(o.id)) + int(parser.isSet(o.pn)) + int(parser.isSet(o.samePackage)) > 1)
        return QStringLiteral("choose only one of --id, --pn and --same-package");
    if (parser.isSet(o.key) && !parser.isSet(o.pn))
        return QStringLiteral("--key needs --pn");
    if (!parser.isSet(o.search) && (parser.isSet(o.in) || parser.isSet(o.mode) || parser.isSet(o.caseSensitive)))
        return QStringLiteral("--in, --mode and --case need --search");
    if (parser.isSet(o.data) && parser.value(o.data).isEmpty())
        return QStringLiteral("--data needs a file name");
    if (parser.isSet(o.boardsFile) && !parser.isSet(o.boards) && !parser.isSet(o.board) && !parser.isSet(o.check))
        return QStringLiteral("--boards-file needs --boards, --board or --check");
    if (parser.isSet(o.smallest) && !parser.isSet(o.min))
        return QStringLiteral("--smallest needs --min");
    return QString();
}

/// The search the options ask for; on a bad group or mode sets @p error.
std::optional<DEV::ChipFilterBySearch> readSearch(const QCommandLineParser& parser, const Options& o, QString* error)
{
    DEV::ChipFilterBySearch search;
    search.pattern = parser.value(o.search);
    search.caseSensitive = parser.isSet(o.caseSensitive);
    if (parser.isSet(o.in)) {
        const std::optional<int> group = searchGroup(parser.value(o.in));
        if (!group) {
            *error = QStringLiteral("unknown search group '%1' (see --help)").arg(parser.value(o.in));
            return std::nullopt;
        }
        search.group = *group;
    }
    if (parser.isSet(o.mode)) {
        const std::optional<int> syntax = patternSyntax(parser.value(o.mode));
        if (!syntax) {
            *error = QStringLiteral("unknown search mode '%1' (anywhere, exact, wildcard or regexp)")
                         .arg(parser.value(o.mode));
            return std::nullopt;
        }
        search.patternSyntax = *syntax;
    }
    // The library would quietly find nothing with a broken pattern.
    if (search.patternSyntax == 0 || search.patternSyntax == 1) {
        const QRegExp pattern(search.pattern, Qt::CaseSensitive,
                              search.patternSyntax == 0 ? QRegExp::WildcardUnix : QRegExp::RegExp);
        if (!pattern.isValid()) {
            *error = QStringLiteral("invalid %1 '%2': %3")
                         .arg(search.patternSyntax == 0 ? QLatin1String("wild-card pattern")
                                                        : QLatin1String("regular expression"),
                              search.pattern, pattern.errorString());
            return std::nullopt;
        }
    }
    return search;
}

/// Checks the parsed options against each other; on failure sets @p error.
std::optional<Query> readQuery(const QCommandLineParser& parser, const Options& o, QString* error)
{
    *error = conflict(parser, o);
    if (!error->isEmpty())
        return std::nullopt;

    Query q;
    q.dataFile = parser.value(o.data);
    if (parser.isSet(o.id))
        q.id = parser.value(o.id);
    if (parser.isSet(o.pn))
        q.partNumber = parser.value(o.pn);
    if (parser.isSet(o.key))
        q.matchKey = parser.value(o.key);
    if (parser.isSet(o.samePackage))
        q.samePackage = parser.value(o.samePackage);
    if (parser.isSet(o.compare))
        q.compare = parser.positionalArguments();

    q.filter.series = parser.value(o.series);
    q.filter.device = parser.value(o.device);
    q.filter.package = parser.value(o.package);
    q.filter.speed = parser.value(o.speed);
    q.filter.voltage = parser.value(o.voltage);
    // The one criterion where empty is a value: a null version constrains
    // nothing, an empty one keeps the unversioned chips. Build the empty
    // string explicitly rather than trust the parser to hand out a non-null one.
    if (parser.isSet(o.version)) {
        const QString version = parser.value(o.version);
        q.filter.deviceVersion = version.isEmpty() ? QString(QLatin1String("")) : version;
    }

    if (parser.isSet(o.search)) {
        q.search = readSearch(parser, o, error);
        if (!q.search)
            return std::nullopt;
    }

    for (const QString& assignment : parser.values(o.min)) {
        *error = q.requirements.set(assignment);
        if (!error->isEmpty())
            return std::nullopt;
    }
    q.smallest = parser.isSet(o.smallest);

    if (parser.isSet(o.csv))
        q.format = Format::Csv;
    else if (parser.isSet(o.json))
        q.format = Format::Json;
    else if (parser.isSet(o.count))
        q.format = Format::Count;
    q.header = parser.isSet(o.header);
    return q;
}

QList<DEV::ChipInfo> select(DEV::DeviceDb& db, const Query& q)
{
    QList<DEV::ChipInfo> chips;
    if (q.id) {
        // findByID knows the renamed identifiers but stops at the first chip;
        // an identifier names a die in a package, so list all its part numbers.
        const QString resolved = db.findByID(*q.id).deviceId;
        if (!resolved.isEmpty()) {
            for (const DEV::ChipInfo& chip : db.allChipInfo()) {
                if (chip.deviceId == resolved)
                    chips << chip;
            }
        }
    } else if (q.partNumber && q.matchKey) {
        const DEV::ChipInfo chip = db.find(*q.partNumber, *q.matchKey);
        if (!chip.partNumber.isEmpty())
            chips << chip;
    } else if (q.partNumber) {
        chips = db.findByPN(*q.partNumber);
    } else if (q.samePackage) {
        chips = db.samePackage(db.findByPN(*q.samePackage).value(0));
    }

    if (q.id || q.partNumber || q.samePackage) {
        QList<DEV::ChipInfo> kept;
        for (const DEV::ChipInfo& chip : qAsConst(chips)) {
            if (DEV::matchFilter(chip, q.filter))
                kept << chip;
        }
        chips = kept;
    } else {
        chips = db.filterChips(q.filter);
    }

    if (q.search)
        chips = db.filterChips(*q.search, chips);
    chips = DEV::filterChips(chips, q.requirements);
    return q.smallest ? DEV::smallestFirst(chips, q.requirements) : chips;
}

/// @p rows as lines of aligned columns, two spaces apart; the last column is not padded.
QStringList alignedLines(const QList<QStringList>& rows)
{
    QVector<int> widths(rows.constFirst().size(), 0);
    for (const QStringList& row : rows) {
        for (int c = 0; c < row.size(); ++c)
            widths[c] = qMax(widths[c], row.at(c).size());
    }
    QStringList lines;
    for (const QStringList& row : rows) {
        QString line;
        for (int c = 0; c < row.size(); ++c) {
            if (c > 0)
                line += QLatin1String("  ");
            line += c + 1 < row.size() ? row.at(c).leftJustified(widths[c]) : row.at(c);
        }
        lines << line;
    }
    return lines;
}

QString tableText(const QList<DEV::ChipInfo>& chips)
{
    // Cells as the chip table shows them, an empty count as 0 included.
    const DEV::ChipInfoTableModel model;
    QList<QStringList> rows;
    QStringList header{QStringLiteral("Device ID")};
    for (int c = 0; c < DEV::ChipColumnCount; ++c)
        header << model.headerData(c, Qt::Horizontal).toString();
    rows << header;
    for (const DEV::ChipInfo& chip : chips) {
        QStringList row{chip.deviceId};
        for (int c = 0; c < DEV::ChipColumnCount; ++c)
            row << model.columnOfChipInfo(chip, c);
        rows << row;
    }
    return alignedLines(rows).join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QString csvText(const QList<DEV::ChipInfo>& chips, bool header)
{
    QString text;
    if (header) {
        text += QStringLiteral("deviceId,partNumber,series,matchKey,device,deviceVersion,package,voltage,speed,"
                               "auxiliary");
        for (int c = DEV::FirstResourceColumn; c < DEV::ChipColumnCount; ++c)
            text += QLatin1Char(',') + DEV::chipColumnHeader(c);
        text += QLatin1Char('\n');
    }
    // No quoting needed: the loader splits at every comma, so no value it
    // produced can hold one. Resources go out untrimmed and unpadded, as read.
    for (const DEV::ChipInfo& chip : chips) {
        const QStringList fields = QStringList{chip.deviceId, chip.partNumber, chip.series, chip.matchKey,
                                               chip.device,   chip.deviceVersion, chip.package, chip.voltage,
                                               chip.speed,    chip.auxiliary}
                                   + chip.resources;
        text += fields.join(QLatin1Char(',')) + QLatin1Char('\n');
    }
    return text;
}

QByteArray jsonText(const QList<DEV::ChipInfo>& chips)
{
    QJsonArray array;
    for (const DEV::ChipInfo& chip : chips) {
        array.append(ExampleCommandLine::chipToJson(chip));
    }
    return QJsonDocument(array).toJson(QJsonDocument::Indented);
}

/// Prints @p chips in the format asked for; nothing at all but for a count.
void print(const QList<DEV::ChipInfo>& chips, const Query& query)
{
    switch (query.format) {
    case Format::Count:
        printOut(QByteArray::number(chips.size()) + '\n');
        break;
    case Format::Table:
        if (!chips.isEmpty())
            printOut(tableText(chips).toLocal8Bit());
        break;
    case Format::Csv:
        // Local 8-bit, the encoding the loader reads data files in.
        if (!chips.isEmpty())
            printOut(csvText(chips, query.header).toLocal8Bit());
        break;
    case Format::Json:
        // An empty array rather than nothing, so that JSON readers get JSON.
        printOut(chips.isEmpty() ? QByteArray("[]\n") : jsonText(chips));
        break;
    }
}

/// --compare's output: the comparison model's rows, a * before those that differ.
QByteArray comparisonText(const DEV::ChipComparisonModel& model, Format format)
{
    QList<QStringList> rows;
    QJsonArray json;
    for (int r = 0; r < model.rowCount(); ++r) {
        QStringList values;
        for (int c = 0; c < model.columnCount(); ++c)
            values << model.index(r, c).data().toString();
        const QString attribute = model.headerData(r, Qt::Vertical).toString();
        const bool differs = model.rowDiffers(r);
        if (format == Format::Json) {
            json.append(QJsonObject{{QStringLiteral("attribute"), attribute},
                                    {QStringLiteral("differs"), differs},
                                    {QStringLiteral("values"), QJsonArray::fromStringList(values)}});
        } else if (format == Format::Csv) {
            rows << (QStringList{attribute, differs ? QStringLiteral("1") : QStringLiteral("0")} + values);
        } else {
            rows << (QStringList{differs ? QStringLiteral("*") : QStringLiteral(" "), attribute} + values);
        }
    }
    if (format == Format::Json)
        return QJsonDocument(json).toJson(QJsonDocument::Indented);
    QString text;
    if (format == Format::Csv) {
        QStringList header{QStringLiteral("attribute"), QStringLiteral("differs")};
        for (int c = 0; c < model.columnCount(); ++c)
            header << model.headerData(c, Qt::Horizontal).toString();
        rows.prepend(header);
        for (const QStringList& row : qAsConst(rows))
            text += row.join(QLatin1Char(',')) + QLatin1Char('\n');
    } else {
        // The marker joined by one space, not the table's two; an empty
        // last cell leaves no trailing blanks.
        for (const QString& line : alignedLines(rows)) {
            QString marked = line.at(0) + line.mid(2);
            while (marked.endsWith(QLatin1Char(' ')))
                marked.chop(1);
            text += marked + QLatin1Char('\n');
        }
    }
    return text.toLocal8Bit();
}

/// --compare: prints the chips of the part numbers side by side (of several
/// chips with one part number, the first); false, with @p error set, for an
/// unknown part number.
bool compareChips(const DEV::DeviceDb& db, const Query& q, QString* error)
{
    QList<DEV::ChipInfo> chips;
    for (const QString& pn : q.compare) {
        const QList<DEV::ChipInfo> found = db.findByPN(pn);
        if (found.isEmpty()) {
            *error = QStringLiteral("unknown part number '%1'").arg(pn);
            return false;
        }
        chips << found.constFirst();
    }
    DEV::ChipComparisonModel model;
    model.setChips(chips);
    printOut(comparisonText(model, q.format));
    return true;
}

/// What @p load returns, with the messages it gives held back: the caller reports them its own way.
template <typename Load>
auto quietly(Load load)
{
    const QtMessageHandler outer = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto result = load();
    qInstallMessageHandler(outer);
    return result;
}

/// The boards of @p path (the bundled file when empty) on @p db; null, with @p error set, when it cannot be read.
std::unique_ptr<DEV::BoardCatalogue> openBoards(const QString& path, const DEV::DeviceDb& db, QString* error,
                                               bool summarise = true)
{
    const QString file = path.isEmpty() ? installedBoards() : path;
    if (!QFileInfo(file).isFile() || !QFileInfo(file).isReadable()) {
        *error = QStringLiteral("cannot read board file: %1").arg(QDir::cleanPath(file));
        return nullptr;
    }
    // As with the data file, one line on standard error rather than a warning per problem.
    auto boards = quietly([&] { return std::make_unique<DEV::BoardCatalogue>(file, db); });
    if (summarise && !boards->problems().isEmpty())
        std::fprintf(stderr, "%s: %d problems in the board file, the first: %s\n", qPrintable(QCoreApplication::applicationName()),
                     int(boards->problems().size()), qPrintable(boards->problems().constFirst()));
    return boards;
}

/// --boards' output: the board table's cells, board-file lines, or JSON objects with their chips.
QByteArray boardsText(const QList<DEV::Board>& boards, const Query& query)
{
    if (query.format == Format::Count)
        return QByteArray::number(boards.size()) + '\n';
    if (query.format == Format::Json) {
        QJsonArray array;
        for (const DEV::Board& b : boards) {
            array.append(QJsonObject{{QStringLiteral("id"), b.id}, {QStringLiteral("name"), b.name},
                                     {QStringLiteral("maker"), b.maker}, {QStringLiteral("revision"), b.revision},
                                     {QStringLiteral("partNumber"), b.partNumber}, {QStringLiteral("description"), b.description},
                                     {QStringLiteral("chip"), b.chip.partNumber.isEmpty() ? QJsonValue() : chipToJson(b.chip)}});
        }
        return boards.isEmpty() ? QByteArray("[]\n") : QJsonDocument(array).toJson(QJsonDocument::Indented);
    }
    if (boards.isEmpty())
        return QByteArray();
    QString text = query.header && query.format == Format::Csv ? QStringLiteral("id,name,maker,revision,partNumber,description\n") : QString();
    DEV::BoardTableModel model;
    model.setBoards(boards);
    QList<QStringList> rows;
    for (int r = -1; r < model.rowCount(); ++r) {
        QStringList row;
        for (int c = 0; c < model.columnCount(); ++c)
            row << (r < 0 ? model.headerData(c, Qt::Horizontal) : model.index(r, c).data()).toString();
        rows << row;
    }
    // Quoted where a comma or a quote would split the field, as the board file allows.
    for (const DEV::Board& b : boards) {
        QStringList fields{b.id, b.name, b.maker, b.revision, b.partNumber, b.description};
        for (QString& f : fields) {
            if (f.contains(QLatin1Char(',')) || f.contains(QLatin1Char('"')))
                f = QLatin1Char('"') + f.replace(QLatin1String("\""), QLatin1String("\"\"")) + QLatin1Char('"');
        }
        text += query.format == Format::Csv ? fields.join(QLatin1Char(',')) + QLatin1Char('\n') : QString();
    }
    if (query.format == Format::Table)
        text = alignedLines(rows).join(QLatin1Char('\n')) + QLatin1Char('\n');
    return text.toUtf8();
}

/// --check: prints the catalogue's findings; 0 when there are none, 1
/// with findings, 2 when it cannot be read.
int checkCatalogue(const QCommandLineParser& parser, const Options& o)
{
    QStringList files = parser.positionalArguments();
    if (parser.isSet(o.data))
        files << parser.value(o.data);
    if (files.size() > 1)
        return usageError(QStringLiteral("--check reads one catalogue"));
    if (!onlyAmong(parser, o, {o.check, o.data, o.boardsFile}))
        return usageError(QStringLiteral("--check takes no other option than --data and --boards-file"));
    const QString path = files.isEmpty() ? installedCatalogue() : files.constFirst();
    if (path.isEmpty())
        return usageError(noCatalogue());
    bool readable = false;
    const QStringList findings = CatalogueCheck::findings(path, &readable);
    if (!readable)
        return usageError(QStringLiteral("cannot read data file: %1").arg(path));
    for (const QString& finding : findings)
        printOut((finding + QLatin1Char('\n')).toLocal8Bit());
    if (!parser.isSet(o.boardsFile))
        return findings.isEmpty() ? Found : NothingFound;
    // What the library would warn of while loading is printed as findings.
    const auto db = quietly([&] { return std::make_unique<DEV::DeviceDb>(path); });
    QString error;
    const auto boards = openBoards(parser.value(o.boardsFile), *db, &error, false);
    if (!boards)
        return usageError(error);
    for (const QString& problem : boards->problems())
        printOut((problem + QLatin1Char('\n')).toLocal8Bit());
    return findings.isEmpty() && boards->problems().isEmpty() ? Found : NothingFound;
}

/// --boards and --board: the boards, or the chip on one, in the format asked for.
int boardQuery(const QCommandLineParser& parser, const Options& o)
{
    QString error = conflict(parser, o);
    if (error.isEmpty() && parser.isSet(o.boards) && !onlyAmong(parser, o, {o.boards, o.boardsFile, o.data, o.search, o.csv, o.header, o.json, o.count}))
        error = QStringLiteral("--boards takes no other option than --boards-file, --data, --search, --csv, --header, --json and --count");
    if (error.isEmpty() && parser.isSet(o.board) && !onlyAmong(parser, o, {o.board, o.boardsFile, o.data, o.csv, o.header, o.json, o.count}))
        error = QStringLiteral("--board takes no other option than --boards-file, --data, --csv, --header, --json and --count");
    std::optional<Query> query = error.isEmpty() ? readQuery(parser, o, &error) : std::nullopt;
    std::unique_ptr<DEV::DeviceDb> own;
    DEV::DeviceDb* db = query ? openDatabase(query->dataFile, &own, &error) : nullptr;
    const auto boards = db ? openBoards(parser.value(o.boardsFile), *db, &error) : nullptr;
    if (!boards)
        return usageError(error);
    if (parser.isSet(o.boards)) {
        const QList<DEV::Board> found = boards->search(parser.value(o.search));
        printOut(boardsText(found, *query));
        return found.isEmpty() ? NothingFound : Found;
    }
    const DEV::Board board = boards->find(parser.value(o.board));
    if (board.id.isEmpty())
        return usageError(QStringLiteral("unknown board '%1'").arg(parser.value(o.board)));
    const QList<DEV::ChipInfo> chips = board.chip.partNumber.isEmpty() ? QList<DEV::ChipInfo>() : QList<DEV::ChipInfo>{board.chip};
    print(chips, *query);
    return chips.isEmpty() ? NothingFound : Found;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("devicequery"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DEVICEQUERY_VERSION));

    // --version is also the device-version filter, so only a bare --version
    // asks for the tool's own version.
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && arguments.at(1) == QLatin1String("--version")) {
        printOut(QStringLiteral("devicequery %1\n").arg(QCoreApplication::applicationVersion()).toLocal8Bit());
        return Found;
    }

    const Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Looks up chips in the device catalogue."));
    parser.addOptions(options.all());
    if (!parser.parse(arguments))
        return usageError(asFragment(parser.errorText()));
    if (parser.isSet(options.help)) {
        printOut((parser.helpText() + QLatin1String(kEpilog) + catalogueHelp()).toLocal8Bit());
        return Found;
    }

    if (parser.isSet(options.check))
        return checkCatalogue(parser, options);
    if (parser.isSet(options.boards) || parser.isSet(options.board))
        return boardQuery(parser, options);

    QString error;
    const std::optional<Query> query = readQuery(parser, options, &error);
    if (!query)
        return usageError(error);

    std::unique_ptr<DEV::DeviceDb> own;
    DEV::DeviceDb* db = openDatabase(query->dataFile, &own, &error);
    if (!db)
        return usageError(error);
    if (query->samePackage && db->findByPN(*query->samePackage).isEmpty())
        return usageError(QStringLiteral("unknown part number '%1'").arg(*query->samePackage));
    if (!query->compare.isEmpty())
        return compareChips(*db, *query, &error) ? Found : usageError(error);

    const QList<DEV::ChipInfo> chips = select(*db, *query);
    print(chips, *query);
    return chips.isEmpty() ? NothingFound : Found;
}
