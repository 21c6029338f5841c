// SPDX-License-Identifier: BSD-3-Clause
#include "devicedb_p.h"

#include "chipinfo_p.h"
#include "linescan_p.h"
#include "parallel_p.h"
#include "tuning_p.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringView>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <memory>
#include <utility>
#include <vector>

namespace DEV {
namespace pimpl {

namespace {

// Columns 0 to 9 are the ten text members; 10 onward are resource counts.
constexpr int FirstResourceColumn = 10;

// A record needs more than seven columns. Lines of eight or nine columns are
// accepted and simply lack speed and/or auxiliary.
constexpr int MinimumColumns = 8;

// QStringView::trimmed(), without the call for the usual value that begins
// and ends with a visible ASCII character.
QStringView trimmed(QStringView value)
{
    const auto visible = [](QChar c) { return c.unicode() > ' ' && c.unicode() < 0x7f; };
    return value.isEmpty() || (visible(value.front()) && visible(value.back())) ? value : value.trimmed();
}

// Reports line @p number, malformed, on the critical channel and in @p report.
void skipLine(DeviceDb::LoadReport& report, int number, const QString& text)
{
    qCritical() << "incorrect device info entry" << text;
    if (report.skippedLines++ == 0)
        report.firstSkippedLine = number;
}

/**
 * An open-addressing hash set of values, for interning while loading: one
 * contiguous table rather than a node per entry, which would leave as many
 * small holes in the heap once freed.
 */
template <typename Value>
class FlatPool
{
public:
    /// The stored value that @p equal accepts among those with @p hash, or a
    /// new one made by @p make.
    template <typename Equal, typename Make>
    const Value& findOrInsert(uint hash, Equal equal, Make make)
    {
        if ((m_size + 1) * 4 > m_slots.size() * 3)
            grow();
        hash = spread(hash) | 1; // zero marks a free slot
        const size_t mask = m_slots.size() - 1;
        for (size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot& slot = m_slots[i];
            if (slot.hash == 0) {
                slot.hash = hash;
                slot.value = make();
                ++m_size;
                return slot.value;
            }
            if (slot.hash == hash && equal(slot.value))
                return slot.value;
        }
    }

    size_t size() const { return m_size; }

private:
    // Hashes of similar texts ("1000", "1001", ...) may be nearby numbers,
    // which linear probing would pile up in one run of slots. Mixing all
    // bits into the low ones (the finaliser of MurmurHash3) scatters them.
    static uint spread(uint h)
    {
        h = (h ^ (h >> 16)) * 0x85ebca6bU;
        h = (h ^ (h >> 13)) * 0xc2b2ae35U;
        return h ^ (h >> 16);
    }

    struct Slot
    {
        uint hash = 0;
        Value value;
    };

    void grow()
    {
        std::vector<Slot> old(std::max<size_t>(64, m_slots.size() * 2));
        old.swap(m_slots);
        const size_t mask = m_slots.size() - 1;
        for (Slot& slot : old) {
            size_t i = slot.hash & mask;
            while (slot.hash != 0 && m_slots[i].hash != 0)
                i = (i + 1) & mask;
            if (slot.hash != 0)
                m_slots[i] = std::move(slot);
        }
    }

    std::vector<Slot> m_slots;
    size_t m_size = 0;
};

/// The distinct device versions of a part of the file, numbered as met.
class Versions
{
public:
    int bucket(const QString& version)
    {
        if (m_last < 0 || !sameText(m_versions.at(m_last), version)) {
            m_last = m_ids.findOrInsert(
                uint(qHash(version)), [&](int id) { return sameText(m_versions.at(id), version); },
                [&] {
                    m_versions.append(version);
                    return int(m_versions.size()) - 1;
                });
        }
        return m_last;
    }

    const QList<QString>& list() const { return m_versions; }

    /// The buckets, newest version first: unit by unit, as QString::compare()
    /// orders them. The first eight units, packed into two numbers, settle
    /// most comparisons without reading the texts, which matters where
    /// versions are many.
    std::vector<int> newestFirst() const
    {
        struct Key
        {
            std::array<quint64, 2> head;
            int bucket;
        };
        std::vector<Key> keys;
        for (int i = 0; i < m_versions.size(); ++i) {
            const QString& v = m_versions.at(i);
            Key key{{}, i};
            for (int u = 0; u < 8; ++u)
                key.head[size_t(u / 4)] = key.head[size_t(u / 4)] << 16 | (u < v.size() ? v.at(u).unicode() : 0);
            keys.push_back(key);
        }
        std::sort(keys.begin(), keys.end(), [this](const Key& a, const Key& b) {
            if (a.head != b.head)
                return a.head > b.head;
            return m_versions.at(a.bucket).compare(m_versions.at(b.bucket), Qt::CaseSensitive) > 0;
        });
        std::vector<int> buckets;
        for (const Key& key : keys)
            buckets.push_back(key.bucket);
        return buckets;
    }

private:
    QList<QString> m_versions;
    FlatPool<int> m_ids;
    int m_last = -1;
};

/**
 * Reads a part of the file, which begins at a line, into records.
 *
 * Catalogue values repeat heavily (a series, a package or a voltage appears
 * on thousands of lines, a resource tuple on every line of one device), so
 * every value is stored once and shared by all records of the part that
 * carry it. That keeps the database small and makes loading mostly
 * comparisons.
 */
class PartReader : public LineScan
{
public:
    PartReader(Encoding encoding, bool atStart)
        : LineScan(encoding, atStart)
        , m_empty(QLatin1String(""))
    {
    }

    /// Reads the bytes from @p from to @p to of @p file a block at a time.
    void read(QFile& file, qint64 from, qint64 to);

    /// Moves the records into their rows (slots, once assignRows() has
    /// made them rows), swapping their strings rather than copying them.
    void fillRows(QList<ChipInfo>& chips)
    {
        for (size_t i = 0; i < records.size(); ++i)
            chips[slots[i]] = std::move(records[i]);
        records = std::vector<ChipInfo>();
    }

    std::vector<ChipInfo> records;
    std::vector<int> slots; // each record's version bucket, and then its row
    Versions versions;
    // Line numbers (from 1, within the part) and texts, reported once every
    // part is read so that the reports come in file order.
    std::vector<std::pair<int, QString>> malformed;
    int lines = 0;

private:
    void line(const Line& line) override;
    const QString& text(const Line& line, int c);
    QString intern(QStringView value, int c);
    const QStringList& resources(const Line& line);

    // Sharing pays where values repeat. A column whose values turn out
    // nearly all distinct (part numbers; every column of an unusual
    // catalogue) stops going through the tables, which it would only fill,
    // once its first 4,096 look-ups found less than one in sixteen.
    struct Sharing
    {
        int lookups = 0, found = 0;
        bool worthIt = true;
        void note(bool wasStored)
        {
            found += wasStored ? 1 : 0;
            worthIt = ++lookups != 4096 || found * 16 >= lookups;
        }
    };
    // One per column, the last for every column from there on, and one more
    // for the resource lists.
    static constexpr int TrackedColumns = 24;

    std::array<Sharing, TrackedColumns + 1> m_sharing;
    QString m_empty;
    std::array<QString, FirstResourceColumn> m_previous;
    QStringList m_previousResources;
    QString m_previousCounts; // their text
    FlatPool<QString> m_strings;
    FlatPool<QStringList> m_resourceLists;
};

void PartReader::read(QFile& file, qint64 from, qint64 to)
{
    const qint64 blockSize = std::clamp<qint64>(tuning().loadBlockBytes, 1, std::max<qint64>(1, to - from));
    QByteArray block(int(std::min<qint64>(blockSize, INT_MAX)), Qt::Uninitialized);
    qint64 got = 0;
    for (qint64 at = from; at < to && (at > from || file.seek(from))
         && (got = file.read(block.data(), std::min<qint64>(to - at, block.size()))) > 0;
         at += got) {
        feed(block.constData(), int(got));
        // Reserving the records the first block promises, and some more,
        // spares moving them all as they grow; pages never used cost nothing.
        if (at == from) {
            records.reserve(size_t(1.25 * double(records.size()) * double(to - from) / double(got)));
            slots.reserve(records.capacity());
        }
    }
    finish();
}

void PartReader::line(const Line& line)
{
    ++lines;
    if (line.text.isEmpty())
        return;
    const int columns = line.columns();
    if (columns < MinimumColumns) {
        malformed.emplace_back(lines, line.text.toString());
        return;
    }
    records.emplace_back();
    ChipInfo& info = records.back();
    info.deviceId = text(line, 0);
    info.partNumber = text(line, 1);
    info.series = text(line, 2);
    info.matchKey = text(line, 3);
    info.device = text(line, 4);
    info.deviceVersion = text(line, 5);
    info.package = text(line, 6);
    info.voltage = text(line, 7);
    info.speed = columns > 8 ? text(line, 8) : m_empty;
    info.auxiliary = columns > 9 ? text(line, 9) : m_empty;
    if (columns > FirstResourceColumn)
        info.resources = resources(line);
    slots.push_back(versions.bucket(info.deviceVersion));
}

// Neighbouring lines mostly belong to one device and repeat most of their
// values, so the value that a column had on the line before is tried before
// the intern table.
const QString& PartReader::text(const Line& line, int c)
{
    const QStringView value = trimmed(line.column(c));
    QString& previous = m_previous[size_t(c)];
    if (previous.isNull() || !sameText(previous, value))
        previous = intern(value, c);
    return previous;
}

QString PartReader::intern(QStringView value, int c)
{
    if (value.isEmpty())
        return m_empty;
    Sharing& sharing = m_sharing[size_t(std::min(c, TrackedColumns - 1))];
    if (!sharing.worthIt)
        return value.toString();
    const size_t stored = m_strings.size();
    QString s = m_strings.findOrInsert(
        uint(qHash(value)), [value](const QString& stored) { return sameText(stored, value); },
        [value] { return value.toString(); });
    sharing.note(m_strings.size() == stored);
    return s;
}

// Lines of one device and package carry the same counts, so whole resource
// lists are shared too. The list of the line before usually serves,
// recognised by its text; others are found by that text's hash and compared
// column by column.
const QStringList& PartReader::resources(const Line& line)
{
    const int first = FirstResourceColumn, last = line.columns() - 1;
    const QStringView counts = line.text.mid(line.commas[first - 1] - line.origin + 1);
    if (!m_previousResources.isEmpty() && sameText(counts, m_previousCounts))
        return m_previousResources;
    const auto sameCounts = [&line, last](const QStringList& stored) {
        bool same = stored.size() == last - first + 1;
        for (int c = first; same && c <= last; ++c)
            same = sameText(stored.at(c - first), line.column(c));
        return same;
    };
    const auto makeList = [this, &line, last] {
        QStringList list;
        list.reserve(last - first + 1);
        for (int c = first; c <= last; ++c)
            list.append(intern(line.column(c), c));
        return list;
    };
    Sharing& sharing = m_sharing.back();
    if (!sharing.worthIt) {
        m_previousResources = makeList();
    } else {
        const size_t stored = m_resourceLists.size();
        m_previousResources = m_resourceLists.findOrInsert(uint(qHash(counts)), sameCounts, makeList);
        sharing.note(m_resourceLists.size() == stored);
    }
    m_previousCounts.setUnicode(counts.data(), int(counts.size()));
    return m_previousResources;
}

using Parts = std::vector<std::unique_ptr<PartReader>>;

// Where each of @p parts parts of @p file begins, and its end: the split of
// parallel_p.h over the file with the work of creating the rows
// (Tuning::loadRowsWork) before its start, each cut moved forward to just
// after the next line break.
std::vector<qint64> cutsOf(QFile& file, int parts)
{
    const qint64 size = file.size(), rows = size * std::clamp(tuning().loadRowsWork, 0, 100) / 100;
    const qint64 blockSize = std::clamp<qint64>(tuning().loadBlockBytes, 1, INT_MAX);
    std::vector<qint64> cuts{0};
    for (int p = 1; p < parts; ++p) {
        const qint64 from = partStart(size + rows, p, parts) - rows;
        qint64 cut = from <= 0 ? 0 : size;
        QByteArray block;
        for (file.seek(std::max<qint64>(0, from - 1)); cut == size && !(block = file.read(blockSize)).isEmpty();) {
            if (block.contains('\n'))
                cut = file.pos() - block.size() + block.indexOf('\n') + 1;
        }
        cuts.push_back(std::max(cut, cuts.back()));
    }
    cuts.push_back(size);
    return cuts;
}

// Reports the malformed lines of @p parts in file order.
DeviceDb::LoadReport malformedLines(const Parts& parts)
{
    DeviceDb::LoadReport report;
    int before = 0;
    for (const auto& part : parts) {
        for (const auto& line : part->malformed)
            skipLine(report, before + line.first, line.second);
        before += part->lines;
    }
    return report;
}

// Gives every record of @p parts its row: by device version, newest first,
// each version's in file order, and returns the number of rows. Few distinct
// versions exist, so this is a counting sort: rank the versions, count their
// records, then give each record its row.
int assignRows(const Parts& parts)
{
    Versions& all = parts.front()->versions;
    for (size_t p = 1; p < parts.size(); ++p) {
        std::vector<int> bucket;
        for (const QString& version : parts[p]->versions.list())
            bucket.push_back(all.bucket(version));
        for (int& slot : parts[p]->slots)
            slot = bucket[size_t(slot)];
    }
    std::vector<int> position(size_t(all.list().size()), 0);
    for (const auto& part : parts) {
        for (int slot : part->slots)
            ++position[size_t(slot)];
    }
    int rows = 0;
    for (int bucket : all.newestFirst())
        rows += std::exchange(position[size_t(bucket)], rows);
    for (const auto& part : parts) {
        for (int& slot : part->slots)
            slot = position[size_t(slot)]++;
    }
    return rows;
}

// Makes @p chips hold @p rows rows, blank ones at the end. Rows are created
// in order, so that neighbouring rows are neighbours in memory, which every
// later walk over the list profits from.
void makeRows(QList<ChipInfo>& chips, int rows, const std::atomic<int>* until = nullptr)
{
    chips.reserve(rows);
    for (const ChipInfo blank; chips.size() < rows && (!until || *until > 0);) {
        for (int i = 0; i < 1024 && chips.size() < rows; ++i)
            chips.append(blank);
    }
    while (chips.size() > rows)
        chips.removeLast();
}

/*
 * In UTF-8 and the one-byte encodings a byte 0x0A is a line break wherever
 * it stands, so a large file is cut after line breaks, and each part is read
 * on a thread of its own; the decoder of a later part takes a leading U+FEFF
 * as text, as a single decoder would have. Equal values read by two parts
 * are simply stored twice.
 */
DeviceDb::LoadReport readInParts(QFile& file, Encoding encoding, QList<ChipInfo>& chips)
{
    int parts = partsFor(file.size(), tuning().loadParallelFrom);
    std::vector<std::unique_ptr<QFile>> others; // each part reads through a file of its own
    for (int p = 1; p < parts; ++p) {
        others.push_back(std::make_unique<QFile>(file.fileName()));
        if (!others.back()->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            parts = 1;
    }
    const std::vector<qint64> cuts = cutsOf(file, parts);
    Parts readers;
    for (int p = 0; p < parts; ++p)
        readers.push_back(std::make_unique<PartReader>(encoding, cuts[size_t(p)] == 0));
    std::atomic<int> reading{parts - 1};
    runParts(parts, [&](int p) {
        readers[size_t(p)]->read(p == 0 ? file : *others[size_t(p) - 1], cuts[size_t(p)], cuts[size_t(p) + 1]);
        if (p > 0) {
            --reading;
        } else if (parts > 1) { // until the others are read, create the rows the whole file promises
            const double perByte = double(readers[0]->records.size()) / double(std::max<qint64>(1, cuts[1]));
            makeRows(chips, int(std::min(double(INT_MAX), perByte * double(cuts.back()))), &reading);
        }
    });
    DeviceDb::LoadReport report = malformedLines(readers);
    report.chips = assignRows(readers);
    makeRows(chips, report.chips);
    runParts(parts, [&](int p) { readers[size_t(p)]->fillRows(chips); });
    return report;
}

} // namespace

DeviceDb::LoadReport readPlainly(const QByteArray& bytes, QList<ChipInfo>& chips)
{
    DeviceDb::LoadReport report;
    const QVector<QStringList> lines = plainLines(bytes);
    for (int number = 1; number <= lines.size(); ++number) {
        const QStringList& columns = lines.at(number - 1);
        if (columns.size() < MinimumColumns) {
            if (columns.size() > 1 || !columns.first().isEmpty())
                skipLine(report, number, columns.join(QLatin1Char(',')));
            continue;
        }
        ChipInfo chip;
        QString* const members[] = {&chip.deviceId, &chip.partNumber,    &chip.series,  &chip.matchKey, &chip.device,
                                    &chip.deviceVersion, &chip.package, &chip.voltage, &chip.speed, &chip.auxiliary};
        for (int c = 0; c < FirstResourceColumn; ++c)
            *members[c] = columns.value(c, QLatin1String("")).trimmed();
        chip.resources = columns.mid(FirstResourceColumn);
        chips.append(chip);
    }
    std::stable_sort(chips.begin(), chips.end(), [](const ChipInfo& a, const ChipInfo& b) {
        return a.deviceVersion.compare(b.deviceVersion, Qt::CaseSensitive) > 0;
    });
    report.chips = int(chips.size());
    return report;
}

void DeviceDbPrivate::loadDataFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text | QIODevice::Unbuffered)) {
        qCritical() << "can not opend device data file: " << fileName;
        report.status = QFileInfo::exists(fileName) ? DeviceDb::LoadReport::Unreadable : DeviceDb::LoadReport::NotFound;
        return;
    }
    // Carriage returns go after decoding (see linescan_p.h), so the bytes are read as they are.
    file.setTextModeEnabled(false);
    const QByteArray head = file.read(EncodingHeadBytes);
    const Encoding encoding = encodingOf(head);
    if (cuttable(encoding) && !file.isSequential())
        report = readInParts(file, encoding, chips);
    else
        report = readPlainly(head + file.readAll(), chips);
}

} // namespace pimpl
} // namespace DEV
