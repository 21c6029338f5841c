// SPDX-License-Identifier: BSD-3-Clause
#include "devicedb_p.h"

#include "parallel_p.h"
#include "tuning_p.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringView>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringDecoder>
#else
#include <QTextCodec>
#endif
#include <QStringList>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {
namespace pimpl {

namespace {

// Columns 0 to 9 are the ten text members; 10 onward are resource counts.
constexpr int FirstResourceColumn = 10;

// A record needs more than seven columns. Lines of eight or nine columns are
// accepted and simply lack speed and/or auxiliary.
constexpr int MinimumColumns = 8;

// A large file is read in two parts on two threads, when the encoding allows
// cutting the bytes at a line break. The first part is the smaller, as its
// thread also creates the list's rows while the second part is being read.
constexpr qint64 FirstPart = 45; // per cent

// Whether two texts hold the same UTF-16 units.
bool sameText(QStringView a, QStringView b)
{
    return a.size() == b.size()
        && (a.isEmpty() || std::memcmp(a.data(), b.data(), size_t(a.size()) * sizeof(QChar)) == 0);
}

// QStringView::trimmed(), without the call for the usual value that begins
// and ends with a visible ASCII character.
QStringView trimmed(QStringView value)
{
    const auto visible = [](QChar c) { return c.unicode() > ' ' && c.unicode() < 0x7f; };
    return value.isEmpty() || (visible(value.front()) && visible(value.back())) ? value : value.trimmed();
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

/*
 * The file's encoding, as Qt's text stream with its default settings finds
 * it: the one a byte-order mark at the start names, else, on Qt 5, the
 * locale's (QTextCodec::codecForLocale()) and, on Qt 6, which no longer has
 * a locale codec, UTF-8. cuttable() tells whether a byte 0x0A is a line
 * break wherever it stands.
 */
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
using Encoding = QStringConverter::Encoding;

Encoding encodingFor(const QByteArray& head)
{
    return QStringConverter::encodingForData(head).value_or(QStringConverter::Utf8);
}

bool cuttable(Encoding encoding)
{
    return encoding == QStringConverter::Utf8 || encoding == QStringConverter::Latin1;
}
#else
using Encoding = QTextCodec*;

Encoding encodingFor(const QByteArray& head)
{
    return QTextCodec::codecForUtfText(head, QTextCodec::codecForLocale());
}

bool cuttable(Encoding codec)
{
    return codec->mibEnum() == 106 || codec->mibEnum() == 4 || codec->mibEnum() == 3; // UTF-8, Latin-1, ASCII
}
#endif

/*
 * Decodes in the file's encoding; with keepMark, a leading U+FEFF is text
 * rather than a mark to drop. In UTF-8, what follows a block's last ASCII
 * byte, after which no sequence can be pending, waits for the next block, so
 * that the text is that of the whole file decoded at once however the bytes
 * are split: Qt 5's decoder reads an invalid sequence cut in two otherwise,
 * and Qt 6.4's drops the byte that follows a sequence cut between two calls.
 */
class Decoder
{
public:
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    Decoder(Encoding encoding, bool keepMark)
        : m_decoder(encoding, keepMark ? QStringConverter::Flag::ConvertInitialBom : QStringConverter::Flag::Default)
        , m_utf8(encoding == QStringConverter::Utf8)
    {
    }
#else
    Decoder(Encoding codec, bool keepMark)
        : m_decoder(codec->makeDecoder(keepMark ? QTextCodec::IgnoreHeader : QTextCodec::DefaultConversion))
        , m_utf8(codec->mibEnum() == 106)
    {
    }
#endif

    QString toUnicode(const char* bytes, int size)
    {
        QByteArray piece = QByteArray::fromRawData(bytes, size);
        if (!m_held.isEmpty())
            piece = std::exchange(m_held, QByteArray()) + piece;
        if (m_utf8) {
            qsizetype keep = piece.size(), lead = keep - 1;
            while (keep > 0 && uchar(piece.at(keep - 1)) >= 0x80)
                --keep;
            if (keep == 0) { // no ASCII byte: only a sequence cut at the end waits
                while (lead > 0 && lead > piece.size() - 4 && (uchar(piece.at(lead)) & 0xC0) == 0x80)
                    --lead;
                const uchar first = lead >= 0 ? uchar(piece.at(lead)) : 0;
                const qsizetype length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
                keep = piece.size() - lead < length ? lead : piece.size();
            }
            m_held = piece.mid(keep);
            piece.truncate(keep);
        }
        return decode(piece);
    }

    /// What the bytes held back at the end of the file decode to.
    QString rest() { return decode(std::exchange(m_held, QByteArray())); }

private:
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    QString decode(const QByteArray& bytes) { return m_decoder.decode(bytes); }
    QStringDecoder m_decoder;
#else
    QString decode(const QByteArray& bytes) { return m_decoder->toUnicode(bytes.constData(), int(bytes.size())); }
    std::unique_ptr<QTextDecoder> m_decoder;
#endif
    bool m_utf8 = false;
    QByteArray m_held;
};

/// One line of the file, without its line break, and where its commas are.
struct Line
{
    QStringView text;
    const int* commas; // count of them, their positions counted from where origin is
    int count, origin;

    int columns() const { return count + 1; }
    QStringView column(int c) const
    {
        const int from = c == 0 ? 0 : commas[c - 1] - origin + 1;
        const int to = c < count ? commas[c] - origin : int(text.size());
        return QStringView(text.data() + from, to - from);
    }
};

/**
 * Reads a part of the file into records.
 *
 * The bytes are decoded block by block; a carriage return is dropped from
 * the decoded text, not from the bytes, which would break UTF-16.
 *
 * Catalogue values repeat heavily (a series, a package or a voltage appears
 * on thousands of lines, a resource tuple on every line of one device), so
 * every value is stored once and shared by all records that carry it. That
 * keeps the database small and makes loading mostly comparisons.
 */
class PartReader
{
public:
    PartReader(Encoding encoding, bool keepMark)
        : m_decoder(encoding, keepMark)
        , m_empty(QLatin1String(""))
    {
    }

    size_t records() const { return m_slots.size(); }
    void reserve(size_t records)
    {
        m_records.reserve(records);
        m_slots.reserve(records);
    }

    void feed(const char* bytes, int size) { split(m_decoder.toUnicode(bytes, size)); }

    /// Feeds @p bytes from where @p file stands, or all of the rest when that
    /// is negative, and then the last line, which has no line break after it.
    /// When the text ends in a line break there is none, and none is counted.
    void read(QFile& file, qint64 bytes)
    {
        const qint64 blockSize = std::max<qint64>(1, tuning().loadBlockBytes);
        QByteArray block(int(blockSize), Qt::Uninitialized);
        qint64 got = 0;
        while (bytes != 0 && (got = file.read(block.data(), bytes > 0 ? std::min(bytes, blockSize) : blockSize)) > 0) {
            feed(block.constData(), int(got));
            bytes -= bytes > 0 ? got : 0;
        }
        split(m_decoder.rest());
        if (!m_carry.isEmpty())
            addLine({m_carry, m_carryCommas.constData(), int(m_carryCommas.size()), 0});
    }

    /**
     * Reports the malformed lines of this part and then of @p later, which
     * read the lines after this one's, and gives every record of both its
     * row of @p chips: by device version, newest first, each version's in
     * file order. Creates the rows that @p chips lacks; fillRows() fills them.
     */
    DeviceDb::LoadReport finish(PartReader& later, QList<ChipInfo>& chips)
    {
        DeviceDb::LoadReport report;
        for (const PartReader* part : {this, &later}) {
            for (const auto& line : part->m_malformed) {
                qCritical() << "incorrect device info entry" << line.second;
                if (report.skippedLines++ == 0)
                    report.firstSkippedLine = line.first + (part == this ? 0 : m_lines);
            }
        }

        // Few distinct versions exist, so this is a counting sort: rank the
        // versions, count their records, then give each record its row.
        std::vector<int> laterBucket;
        for (const QString& version : qAsConst(later.m_versions))
            laterBucket.push_back(versionBucket(version));
        for (int& slot : later.m_slots)
            slot = laterBucket[size_t(slot)];
        std::vector<int> position(size_t(m_versions.size()), 0);
        for (const PartReader* part : {this, &later}) {
            for (int slot : part->m_slots)
                ++position[size_t(slot)];
        }
        int rows = 0;
        for (const VersionKey& key : newestFirst())
            rows += std::exchange(position[size_t(key.bucket)], rows);
        for (PartReader* part : {this, &later}) {
            for (int& slot : part->m_slots)
                slot = position[size_t(slot)]++;
        }

        // Rows are created in order, so that neighbouring rows are
        // neighbours in memory, which every later walk over the list profits
        // from; loadDataFile() may have created most of them already.
        chips.reserve(rows);
        for (const ChipInfo blank; chips.size() < rows;)
            chips.append(blank);
        while (chips.size() > rows)
            chips.removeLast();
        report.chips = rows;
        return report;
    }

    /// Moves the records into their rows, swapping their strings rather
    /// than copying them, and lets go of them.
    void fillRows(QList<ChipInfo>& chips)
    {
        for (size_t i = 0; i < m_records.size(); ++i)
            chips[m_slots[i]] = std::move(m_records[i]);
        m_records = std::vector<ChipInfo>();
    }

private:
    // Finds the line breaks and commas of a decoded block in one pass, and
    // hands on every line the block completes. Lines are read where they
    // lie; only the one begun in the block before is put together.
    void split(QString text)
    {
        int marks = scan(text);
        if (marks < 0)
            marks = scan(text.remove(QLatin1Char('\r')));
        const QChar* units = text.constData();
        int start = 0, first = 0;
        for (int k = 0; k < marks; ++k) {
            const int at = m_marks[size_t(k)];
            if (units[at] != QLatin1Char('\n'))
                continue;
            if (m_carry.isEmpty()) {
                addLine({QStringView(units + start, at - start), &m_marks[size_t(first)], k - first, start});
            } else {
                carry(units, start, at, first, k);
                addLine({m_carry, m_carryCommas.constData(), int(m_carryCommas.size()), 0});
                m_carry.clear();
                m_carryCommas.clear();
            }
            start = at + 1;
            first = k + 1;
        }
        carry(units, start, int(text.size()), first, marks);
    }

    // Keeps the units from start to end, and the commas among them, for the
    // line that goes on in the next block.
    void carry(const QChar* units, int start, int end, int first, int last)
    {
        for (int k = first; k < last; ++k)
            m_carryCommas.append(m_carry.size() + m_marks[size_t(k)] - start);
        m_carry.append(units + start, end - start);
    }

    // Notes where the commas and line breaks are, eight units at a time
    // where SSE2 is at hand, and returns how many there are, or -1 when
    // there is a carriage return.
    int scan(const QString& text)
    {
        const auto* units = reinterpret_cast<const ushort*>(text.constData());
        const int size = int(text.size());
        m_marks.resize(std::max(m_marks.size(), size_t(size)));
        int* marks = m_marks.data();
        int count = 0, i = 0;
        bool sawReturn = false;
#if defined(__SSE2__)
        const __m128i comma = _mm_set1_epi16(','), lineBreak = _mm_set1_epi16('\n'), cr = _mm_set1_epi16('\r');
        __m128i returns = _mm_setzero_si128();
        for (; i + 8 <= size; i += 8) {
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
            const __m128i hit = _mm_or_si128(_mm_cmpeq_epi16(chunk, comma), _mm_cmpeq_epi16(chunk, lineBreak));
            returns = _mm_or_si128(returns, _mm_cmpeq_epi16(chunk, cr));
            for (unsigned bits = unsigned(_mm_movemask_epi8(_mm_packs_epi16(hit, hit))) & 0xff; bits; bits &= bits - 1)
                marks[count++] = i + __builtin_ctz(bits);
        }
        sawReturn = _mm_movemask_epi8(returns) != 0;
#endif
        for (; i < size; ++i) {
            sawReturn |= units[i] == '\r';
            if (units[i] == ',' || units[i] == '\n')
                marks[count++] = i;
        }
        return sawReturn ? -1 : count;
    }

    void addLine(const Line& line)
    {
        ++m_lines;
        if (line.text.isEmpty())
            return;

        const int columns = line.columns();
        if (columns < MinimumColumns) {
            m_malformed.emplace_back(m_lines, line.text.toString());
            return;
        }

        m_records.emplace_back();
        ChipInfo& info = m_records.back();
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
        m_slots.push_back(versionBucket(info.deviceVersion));
    }

    // Neighbouring lines mostly belong to one device and repeat most of
    // their values, so the value that a column had on the line before is
    // tried before the intern table.
    const QString& text(const Line& line, int c)
    {
        const QStringView value = trimmed(line.column(c));
        QString& previous = m_previous[size_t(c)];
        if (previous.isNull() || !sameText(previous, value))
            previous = intern(value, c);
        return previous;
    }

    QString intern(QStringView value, int c)
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

    // Lines of one device and package carry the same counts, so whole
    // resource lists are shared too. The list of the line before usually
    // serves, recognised by its text; others are found by that text's hash
    // and compared column by column.
    const QStringList& resources(const Line& line)
    {
        const int first = FirstResourceColumn, last = line.columns() - 1;
        const QStringView counts = line.text.mid(line.commas[first - 1] - line.origin + 1);
        if (!m_previousResources.isEmpty() && sameText(counts, m_previousCounts))
            return m_previousResources;
        const auto sameCounts = [&line, first, last](const QStringList& stored) {
            bool same = stored.size() == last - first + 1;
            for (int c = first; same && c <= last; ++c)
                same = sameText(stored.at(c - first), line.column(c));
            return same;
        };
        const auto makeList = [this, &line, first, last] {
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

    int versionBucket(const QString& version)
    {
        if (m_lastVersion < 0 || !sameText(m_versions.at(m_lastVersion), version)) {
            m_lastVersion = m_versionIds.findOrInsert(
                uint(qHash(version)), [&](int id) { return sameText(m_versions.at(id), version); },
                [&] {
                    m_versions.append(version);
                    return m_versions.size() - 1;
                });
        }
        return m_lastVersion;
    }

    // The version buckets, newest first: unit by unit, as QString::compare()
    // orders them. The first eight units, packed into two numbers, settle
    // most comparisons without reading the texts, which matters where
    // versions are many.
    struct VersionKey
    {
        std::array<quint64, 2> head;
        int bucket;
    };
    std::vector<VersionKey> newestFirst() const
    {
        std::vector<VersionKey> keys;
        for (int i = 0; i < m_versions.size(); ++i) {
            const QString& v = m_versions.at(i);
            VersionKey key{{}, i};
            for (int u = 0; u < 8; ++u)
                key.head[size_t(u / 4)] = key.head[size_t(u / 4)] << 16 | (u < v.size() ? v.at(u).unicode() : 0);
            keys.push_back(key);
        }
        std::sort(keys.begin(), keys.end(), [this](const VersionKey& a, const VersionKey& b) {
            if (a.head[0] != b.head[0] || a.head[1] != b.head[1])
                return a.head[0] != b.head[0] ? a.head[0] > b.head[0] : a.head[1] > b.head[1];
            const QString &x = m_versions.at(a.bucket), &y = m_versions.at(b.bucket);
            return std::lexicographical_compare(y.begin(), y.end(), x.begin(), x.end());
        });
        return keys;
    }

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

    Decoder m_decoder;
    std::vector<int> m_marks; // of the block being split
    QString m_carry; // the start of a line that goes on in the next block
    QVarLengthArray<int, 64> m_carryCommas;
    std::array<Sharing, TrackedColumns + 1> m_sharing;
    std::vector<ChipInfo> m_records;
    std::vector<int> m_slots; // each record's version bucket, from finish() on its row
    // Line numbers (from 1) and texts, reported by finish() so that lines
    // read on two threads come out in file order.
    std::vector<std::pair<int, QString>> m_malformed;
    int m_lines = 0;
    QString m_empty;
    std::array<QString, FirstResourceColumn> m_previous;
    QStringList m_previousResources;
    QString m_previousCounts; // their text
    FlatPool<QString> m_strings;
    FlatPool<QStringList> m_resourceLists;
    QList<QString> m_versions;
    FlatPool<int> m_versionIds;
    int m_lastVersion = -1;
};

// Runs first() and second() at once, and returns when both are done.
template <typename First, typename Second>
void together(First first, Second second)
{
    runParts(2, [&](int p) { p == 0 ? second() : first(); });
}

} // namespace

/*
 * In UTF-8 and the one-byte encodings a byte 0x0A is a line break wherever it
 * stands, so a large file is cut after a line break, and each part is read on
 * a thread of its own; the second part's decoder takes a leading U+FEFF as
 * text, as a single decoder would have. Equal values read by both parts are
 * simply stored twice.
 */
void DeviceDbPrivate::loadDataFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text | QIODevice::Unbuffered)) {
        qCritical() << "can not opend device data file: " << fileName;
        report.status = QFileInfo::exists(fileName) ? DeviceDb::LoadReport::Unreadable : DeviceDb::LoadReport::NotFound;
        return;
    }

    // Read the file exactly as a text stream over a text-mode file would:
    // raw bytes, decoded in the file's encoding (see Encoding), and then
    // every carriage return dropped from the decoded text (see PartReader).
    file.setTextModeEnabled(false);
    const qint64 blockSize = std::max<qint64>(1, tuning().loadBlockBytes);
    const QByteArray head = file.read(blockSize);
    const Encoding encoding = encodingFor(head);
    PartReader first(encoding, false), second(encoding, true);
    first.feed(head.constData(), head.size());

    // The second part starts after the first line break from FirstPart on.
    const qint64 size = file.size();
    QFile rest(fileName);
    qint64 cut = 0;
    if (cuttable(encoding) && partsFor(size, tuning().loadParallelFrom) > 1 && !file.isSequential()
        && rest.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && rest.seek(size * FirstPart / 100)) {
        for (QByteArray block; cut == 0 && !(block = rest.read(blockSize)).isEmpty();) {
            const int at = block.indexOf('\n');
            cut = at < 0 ? 0 : rest.pos() - block.size() + at + 1;
        }
    }
    const bool twoParts = cut > 0 && rest.seek(cut);

    // Reserving the records the first block promises, and some more, spares
    // moving them all as they grow; reserved pages never used cost nothing.
    const double perByte = head.isEmpty() ? 0 : 1.25 * double(first.records()) / double(head.size());
    first.reserve(size_t(perByte * double(twoParts ? cut : size)));
    if (!twoParts) {
        first.read(file, -1);
    } else {
        second.reserve(size_t(perByte * double(size - cut)));
        std::atomic<bool> secondRead{false};
        const auto readSecond = [&] {
            second.read(rest, -1);
            secondRead = true;
        };
        together(readSecond, [&] {
            first.read(file, cut - head.size());
            // Until the second part is read, create the rows of the list
            // that the whole file promises; finish() fills them.
            const int rows = int(std::min(double(INT_MAX), double(first.records()) * double(size) / double(cut)));
            chips.reserve(rows);
            for (const ChipInfo blank; !secondRead && chips.size() < rows;) {
                for (int i = 0; i < 1024; ++i)
                    chips.append(blank);
            }
        });
    }
    report = first.finish(second, chips);
    if (twoParts)
        together([&] { second.fillRows(chips); }, [&] { first.fillRows(chips); });
    else
        first.fillRows(chips);
}

} // namespace pimpl
} // namespace DEV
