// SPDX-License-Identifier: BSD-3-Clause
#include "devicedb_p.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QStringView>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringDecoder>
#else
#include <QTextCodec>
#endif
#include <QStringList>
#include <QVarLengthArray>

// Under a sanitizer the allocator is the sanitizer's, and handing glibc's
// arenas back from several loading threads at once upsets its bookkeeping.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define DEV_SANITIZER_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define DEV_SANITIZER_ALLOCATOR 1
#endif
#endif
#if defined(__GLIBC__) && !defined(DEV_SANITIZER_ALLOCATOR)
#define DEV_TRIM_AFTER_LOAD 1
#include <malloc.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstring>
#include <memory>
#include <system_error>
#include <thread>
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

// The file is read and decoded block by block, so memory stays bounded however
// large the file is, while each block is big enough to make per-call costs
// vanish. A decoded block stays below the size from which the allocator maps
// memory of its own, whose freeing would make it keep later large blocks.
constexpr qint64 BlockSize = 1 << 15;

// Whether two texts hold the same UTF-16 units. Compared in line, eight bytes
// at a time: the values are short, and a call to memcmp() would cost more.
bool sameText(QStringView a, QStringView b)
{
    if (a.size() != b.size())
        return false;
    const char* x = reinterpret_cast<const char*>(a.data());
    const char* y = reinterpret_cast<const char*>(b.data());
    size_t left = size_t(a.size()) * sizeof(QChar);
    for (; left >= 8; left -= 8, x += 8, y += 8) {
        quint64 p, q;
        std::memcpy(&p, x, 8);
        std::memcpy(&q, y, 8);
        if (p != q)
            return false;
    }
    for (; left > 0; left -= 2, x += 2, y += 2) {
        if (std::memcmp(x, y, 2) != 0)
            return false;
    }
    return true;
}

// QStringView::trimmed(), without calling it for the usual value that begins
// and ends with a visible ASCII character.
QStringView trimmed(QStringView value)
{
    const auto visible = [](QChar c) { return c.unicode() > ' ' && c.unicode() < 0x7f; };
    if (value.isEmpty() || (visible(value.front()) && visible(value.back())))
        return value;
    return value.trimmed();
}

// A hash of the text's units read eight bytes at a time; qHash() reads them
// one by one, and loading hashes nearly every value that changes.
uint hashOf(QStringView text)
{
    const char* bytes = reinterpret_cast<const char*>(text.data());
    size_t left = size_t(text.size()) * sizeof(QChar);
    quint64 h = 0x9e3779b97f4a7c15ULL ^ left;
    const auto mix = [&h](quint64 word) {
        h = (h ^ word) * 0xff51afd7ed558ccdULL;
        h ^= h >> 32;
    };
    for (; left >= 8; left -= 8, bytes += 8) {
        quint64 word;
        std::memcpy(&word, bytes, 8);
        mix(word);
    }
    if (left) {
        quint64 word = 0;
        std::memcpy(&word, bytes, left);
        mix(word);
    }
    return uint(h ^ (h >> 29));
}

/**
 * An open-addressing hash set of values, for interning while loading.
 *
 * One contiguous table rather than a node per entry: loading a large file
 * inserts hundreds of thousands of values, and a node-based table would leave
 * as many small holes in the heap once it is freed.
 */
template <typename Value>
class FlatPool
{
public:
    /**
     * The stored value that @p equal accepts among those with @p hash, or a
     * new one made by @p make.
     */
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
    // Hashes of similar texts ("1000", "1001", ...) may be nearby numbers;
    // with linear probing, whole families of such values would pile up in
    // one run of slots and every look-up would walk it. Mixing all bits
    // into the low ones (the finaliser of MurmurHash3) scatters them.
    static uint spread(uint h)
    {
        h ^= h >> 16;
        h *= 0x85ebca6bU;
        h ^= h >> 13;
        h *= 0xc2b2ae35U;
        h ^= h >> 16;
        return h;
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
            if (slot.hash == 0)
                continue;
            size_t i = slot.hash & mask;
            while (m_slots[i].hash != 0)
                i = (i + 1) & mask;
            m_slots[i].hash = slot.hash;
            m_slots[i].value = std::move(slot.value);
        }
    }

    std::vector<Slot> m_slots;
    size_t m_size = 0;
};

/// One line of the file, without its line break, and where its commas are.
struct Line
{
    QStringView text;
    const int* commas; // their positions, counted from where origin is
    int count;
    int origin;

    int columns() const { return count + 1; }
    QStringView column(int c) const
    {
        const int from = c == 0 ? 0 : commas[c - 1] - origin + 1;
        const int to = c < count ? commas[c] - origin : int(text.size());
        return QStringView(text.data() + from, to - from);
    }
    /// The text from column @p c on.
    QStringView from(int c) const { return text.mid(commas[c - 1] - origin + 1); }
};

/**
 * Turns lines into records.
 *
 * Catalogue values repeat heavily (a series, a package or a voltage appears
 * on thousands of lines, a resource tuple on every line of one device), so
 * every value is stored once and shared by all records that carry it. That
 * keeps the database small and makes loading mostly comparisons.
 */
class RecordBuilder
{
public:
    RecordBuilder()
        : m_empty(QLatin1String(""))
    {
    }

    size_t records() const { return m_slots.size(); }
    void reserve(size_t records)
    {
        m_records.reserve(records);
        m_slots.reserve(records);
    }

    void addLine(const Line& line)
    {
        ++m_lines;
        if (line.text.isEmpty())
            return;

        const int columns = line.columns();
        if (columns < MinimumColumns) {
            m_malformed.append(line.text.toString());
            m_malformedAt.push_back(m_lines);
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

    /**
     * Reports the malformed lines of this builder and then of @p later, which
     * read the lines after this one's, and puts the records of both in
     * @p chips by device version, newest first, each version's in file
     * order. Rows that @p chips holds already are filled, not created.
     */
    DeviceDb::LoadReport finish(RecordBuilder& later, QList<ChipInfo>& chips)
    {
        DeviceDb::LoadReport report;
        for (const RecordBuilder* part : {this, &later}) {
            for (const QString& line : part->m_malformed)
                qCritical() << "incorrect device info entry" << line;
            report.skippedLines += int(part->m_malformedAt.size());
        }
        if (!m_malformedAt.empty())
            report.firstSkippedLine = m_malformedAt.front();
        else if (!later.m_malformedAt.empty())
            report.firstSkippedLine = m_lines + later.m_malformedAt.front();

        // Few distinct versions exist, so this is a counting sort: rank the
        // versions, then give each record its slot.
        std::vector<int> laterBucket(size_t(later.m_versions.size()));
        for (int i = 0; i < later.m_versions.size(); ++i)
            laterBucket[size_t(i)] = versionBucket(later.m_versions.at(i));
        for (int& slot : later.m_slots)
            slot = laterBucket[size_t(slot)];
        const int buckets = m_versions.size();
        // Unit by unit, as QString::compare() orders them. The first eight
        // units, packed into two numbers, settle most comparisons without
        // reading the texts, which matters where versions are many.
        struct Key
        {
            std::array<quint64, 2> head;
            int bucket;
        };
        std::vector<Key> byVersion;
        byVersion.reserve(size_t(buckets));
        for (int i = 0; i < buckets; ++i) {
            const QString& v = m_versions.at(i);
            std::array<quint64, 2> head{};
            for (int u = 0; u < 8; ++u)
                head[size_t(u / 4)] = head[size_t(u / 4)] << 16 | (u < v.size() ? v.at(u).unicode() : 0);
            byVersion.push_back({head, i});
        }
        std::sort(byVersion.begin(), byVersion.end(), [this](const Key& a, const Key& b) {
            if (a.head[0] != b.head[0] || a.head[1] != b.head[1])
                return a.head[0] != b.head[0] ? a.head[0] > b.head[0] : a.head[1] > b.head[1];
            const QString &x = m_versions.at(a.bucket), &y = m_versions.at(b.bucket);
            return std::lexicographical_compare(y.begin(), y.end(), x.begin(), x.end());
        });
        std::vector<int> position(size_t(buckets), 0);
        for (const RecordBuilder* part : {this, &later}) {
            for (int slot : part->m_slots)
                ++position[size_t(slot)];
        }
        for (int i = 0, offset = 0; i < buckets; ++i)
            offset += std::exchange(position[size_t(byVersion[size_t(i)].bucket)], offset);
        for (RecordBuilder* part : {this, &later}) {
            for (int& slot : part->m_slots)
                slot = position[size_t(slot)]++;
        }

        // The list holds as many rows as there are records, created in
        // order so that neighbouring rows are neighbours in memory, which
        // every later walk over the list profits from; fillRows() fills them.
        const int rows = int(m_slots.size() + later.m_slots.size());
        chips.reserve(rows);
        const ChipInfo blank;
        while (chips.size() < rows)
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
            hashOf(value), [value](const QString& stored) { return sameText(stored, value); },
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
        const QStringView counts = line.from(FirstResourceColumn);
        if (m_hasPreviousCounts && sameText(counts, m_previousCounts))
            return m_previousResources;
        const int first = FirstResourceColumn, last = line.columns() - 1;
        const auto sameCounts = [&line, first, last](const QStringList& stored) {
            if (stored.size() != last - first + 1)
                return false;
            for (int c = first; c <= last; ++c) {
                if (!sameText(stored.at(c - first), line.column(c)))
                    return false;
            }
            return true;
        };
        const auto makeList = [this, &line, first, last] {
            QStringList list;
            list.reserve(last - first + 1);
            for (int c = first; c <= last; ++c)
                list.append(intern(line.column(c), c));
            return list;
        };
        Sharing& sharing = m_sharing[ListSharing];
        if (!sharing.worthIt) {
            m_previousResources = makeList();
        } else {
            const size_t stored = m_resourceLists.size();
            m_previousResources = m_resourceLists.findOrInsert(hashOf(counts), sameCounts, makeList);
            sharing.note(m_resourceLists.size() == stored);
        }
        m_previousCounts.setUnicode(counts.data(), int(counts.size()));
        m_hasPreviousCounts = true;
        return m_previousResources;
    }

    int versionBucket(const QString& version)
    {
        if (m_lastVersion < 0 || !sameText(m_versions.at(m_lastVersion), version)) {
            m_lastVersion = m_versionIds.findOrInsert(
                hashOf(version), [&](int id) { return sameText(m_versions.at(id), version); },
                [&] {
                    m_versions.append(version);
                    return m_versions.size() - 1;
                });
        }
        return m_lastVersion;
    }

    /*
     * Sharing pays where values repeat. A column whose values turn out
     * nearly all distinct (part numbers; every column of an unusual
     * catalogue) stops going through the tables, which it would only fill,
     * after a first stretch of look-ups tells.
     */
    struct Sharing
    {
        int lookups = 0;
        int found = 0;
        bool worthIt = true;

        void note(bool wasStored)
        {
            found += wasStored ? 1 : 0;
            if (++lookups == 4096)
                worthIt = found * 16 >= lookups;
        }
    };
    // One per column, the last for every column from there on, and one more
    // for the resource lists.
    static constexpr int TrackedColumns = 24;
    static constexpr int ListSharing = TrackedColumns;

    std::array<Sharing, TrackedColumns + 1> m_sharing;
    std::vector<ChipInfo> m_records;
    // Reported by finish(), so that lines read on two threads come out in file order.
    QStringList m_malformed;
    std::vector<int> m_malformedAt; // their line numbers, from 1
    int m_lines = 0;
    QString m_empty;
    std::array<QString, FirstResourceColumn> m_previous;
    QStringList m_previousResources;
    QString m_previousCounts; // their text
    bool m_hasPreviousCounts = false;
    FlatPool<QString> m_strings;
    FlatPool<QStringList> m_resourceLists;
    QList<QString> m_versions;
    FlatPool<int> m_versionIds;
    int m_lastVersion = -1;
    // Each record's version bucket, and from finish() on its row.
    std::vector<int> m_slots;
};

/*
 * The file's encoding, as Qt's text stream with its default settings finds
 * it: the one a byte-order mark at the start names, else, on Qt 5, the
 * locale's (QTextCodec::codecForLocale()) and, on Qt 6, which no longer has
 * a locale codec, UTF-8. Decoder decodes in it; with keepMark, a leading
 * U+FEFF is text rather than a mark to drop.
 */
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
using Encoding = QStringConverter::Encoding;

Encoding encodingFor(const char* bytes, qint64 size)
{
    const QByteArrayView head(bytes, std::min(size, BlockSize));
    return QStringConverter::encodingForData(head).value_or(QStringConverter::Utf8);
}

// Whether a byte 0x0A is a line break wherever it stands.
bool cuttable(Encoding encoding)
{
    return encoding == QStringConverter::Utf8 || encoding == QStringConverter::Latin1;
}

class Decoder
{
public:
    Decoder(Encoding encoding, bool keepMark)
        : m_decoder(encoding, keepMark ? QStringConverter::Flag::ConvertInitialBom : QStringConverter::Flag::Default)
        , m_utf8(encoding == QStringConverter::Utf8)
    {
    }

    // Qt 6.4's decoder drops the byte that follows a UTF-8 sequence cut
    // between two calls, so a sequence cut at the end waits for the next
    // block: the result is the same however the bytes are split.
    QString toUnicode(const char* bytes, int size)
    {
        QByteArray piece = m_held + QByteArray::fromRawData(bytes, size);
        m_held.clear();
        if (m_utf8) {
            qsizetype lead = piece.size();
            while (lead > 0 && lead > piece.size() - 4 && (uchar(piece.at(lead - 1)) & 0xC0) == 0x80)
                --lead;
            const uchar first = lead > 0 ? uchar(piece.at(lead - 1)) : 0;
            const qsizetype length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
            if (lead > 0 && piece.size() - (lead - 1) < length) {
                m_held = piece.mid(lead - 1);
                piece.truncate(lead - 1);
            }
        }
        return m_decoder.decode(piece);
    }

    /// What the bytes held back at the end of the file decode to.
    QString rest()
    {
        const QByteArray held = std::exchange(m_held, QByteArray());
        return m_decoder.decode(held);
    }

private:
    QStringDecoder m_decoder;
    bool m_utf8 = false;
    QByteArray m_held;
};
#else
using Encoding = QTextCodec*;

Encoding encodingFor(const char* bytes, qint64 size)
{
    const QByteArray head = QByteArray::fromRawData(bytes, int(std::min(size, BlockSize)));
    return QTextCodec::codecForUtfText(head, QTextCodec::codecForLocale());
}

bool cuttable(Encoding codec)
{
    const int mib = codec->mibEnum();
    return mib == 106 || mib == 4 || mib == 3; // UTF-8, Latin-1, ASCII
}

class Decoder
{
public:
    Decoder(Encoding codec, bool keepMark)
        : m_decoder(codec->makeDecoder(keepMark ? QTextCodec::IgnoreHeader : QTextCodec::DefaultConversion))
    {
    }

    QString toUnicode(const char* bytes, int size) { return m_decoder->toUnicode(bytes, size); }
    QString rest() { return QString(); }

private:
    std::unique_ptr<QTextDecoder> m_decoder;
};
#endif

/*
 * Decodes bytes handed over in blocks and gives the builder every complete
 * line. A carriage return is dropped from the decoded text, not from the
 * bytes, which would break UTF-16.
 */
class LineFeeder
{
public:
    LineFeeder(Encoding encoding, bool keepMark, RecordBuilder& builder)
        : m_decoder(encoding, keepMark)
        , m_builder(builder)
    {
    }

    void feed(const char* bytes, int size) { split(m_decoder.toUnicode(bytes, size)); }

    /// The last line, which has no line break after it. When the text ends
    /// in a line break there is none, and no line is counted.
    void finish()
    {
        split(m_decoder.rest());
        if (!m_carry.isEmpty())
            m_builder.addLine({m_carry, m_carryCommas.constData(), m_carryCommas.size(), 0});
    }

private:
    // Finds the line breaks and commas of a decoded block in one pass, eight
    // units at a time where SSE2 is at hand, and hands the builder every line
    // the block completes. Lines are read where they lie; only the one that
    // began in the block before is put together from both.
    void split(QString text)
    {
        int marks = scan(text);
        if (m_sawReturn) {
            text.remove(QLatin1Char('\r'));
            marks = scan(text);
        }
        const QChar* units = text.constData();
        int start = 0, first = 0;
        for (int k = 0; k < marks; ++k) {
            const int at = m_marks[size_t(k)];
            if (units[at] != QLatin1Char('\n'))
                continue;
            if (m_carry.isEmpty()) {
                m_builder.addLine({QStringView(units + start, at - start), &m_marks[size_t(first)], k - first, start});
            } else {
                carry(units, start, at, first, k);
                m_builder.addLine({m_carry, m_carryCommas.constData(), m_carryCommas.size(), 0});
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

    // Notes where the text's commas and line breaks are, and whether it
    // holds a carriage return; returns how many were noted.
    int scan(const QString& text)
    {
        const auto* units = reinterpret_cast<const ushort*>(text.constData());
        const int size = int(text.size());
        if (m_marks.size() < size_t(size))
            m_marks.resize(size_t(size));
        int* marks = m_marks.data();
        int count = 0, i = 0;
        bool sawReturn = false;
#if defined(__SSE2__)
        const __m128i comma = _mm_set1_epi16(',');
        const __m128i lineBreak = _mm_set1_epi16('\n');
        const __m128i carriageReturn = _mm_set1_epi16('\r');
        __m128i returns = _mm_setzero_si128();
        for (; i + 8 <= size; i += 8) {
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
            const __m128i hit = _mm_or_si128(_mm_cmpeq_epi16(chunk, comma), _mm_cmpeq_epi16(chunk, lineBreak));
            returns = _mm_or_si128(returns, _mm_cmpeq_epi16(chunk, carriageReturn));
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
        m_sawReturn = sawReturn;
        return count;
    }

    Decoder m_decoder;
    RecordBuilder& m_builder;
    std::vector<int> m_marks; // of the block being split
    bool m_sawReturn = false;
    QString m_carry; // the start of a line that goes on in the next block
    QVarLengthArray<int, 64> m_carryCommas;
};

// Feeds @p bytes of the file from where it stands, or all of the rest when
// that is negative, and then the end of the text.
void feedFile(QFile& file, qint64 bytes, LineFeeder& feeder)
{
    QByteArray block(int(BlockSize), Qt::Uninitialized);
    for (qint64 got = 0; bytes != 0; bytes -= bytes > 0 ? got : 0) {
        got = file.read(block.data(), bytes > 0 ? std::min(bytes, BlockSize) : BlockSize);
        if (got <= 0)
            break;
        feeder.feed(block.constData(), int(got));
    }
    feeder.finish();
}

// Files from this size on are read in two parts on two threads, when the
// encoding allows cutting the bytes at a line break. The first part is the
// smaller, since its thread also creates the list's rows while the second
// part is being read.
constexpr qint64 TwoThreadsFrom = 2 << 20;
constexpr qint64 FirstPart = 45; // per cent

// Runs first() on a thread of its own, when one can be had, and second() on
// this one, and returns when both are done.
template <typename First, typename Second>
void together(First first, Second second)
{
    std::thread thread;
    try {
        thread = std::thread(first);
    } catch (const std::system_error&) {
    }
    second();
    if (thread.joinable())
        thread.join();
    else
        first();
}

// Where the first line that ends after @p from ends, or 0. The file is left
// where it stood.
qint64 lineEndAfter(QFile& file, qint64 from)
{
    const qint64 resume = file.pos();
    qint64 end = 0;
    if (file.seek(from)) {
        for (QByteArray block; end == 0 && !(block = file.read(BlockSize)).isEmpty(); from += block.size()) {
            const int at = block.indexOf('\n');
            end = at < 0 ? 0 : from + at + 1;
        }
    }
    file.seek(resume);
    return end;
}

} // namespace

/*
 * In UTF-8 and the one-byte encodings a byte 0x0A is a line break wherever it
 * stands, so a large file is cut after the line break nearest its middle, and
 * each half is decoded and parsed on a thread of its own into a builder of
 * its own; the second half's decoder takes a leading U+FEFF as text, as the
 * single decoder would have. The records come together in file order, and
 * equal values read by both halves are simply stored twice.
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
    // every carriage return dropped from the decoded text (see LineFeeder).
    file.setTextModeEnabled(false);
    const QByteArray head = file.read(BlockSize);
    const Encoding encoding = encodingFor(head.constData(), head.size());
    RecordBuilder builder, later;
    LineFeeder first(encoding, false, builder), second(encoding, true, later);
    first.feed(head.constData(), head.size());

    // Records are many; reserving what the first block promises, and some
    // more, spares moving them all as the list grows. Reserved pages that
    // stay unused are never touched.
    const double perByte = head.isEmpty() ? 0 : double(builder.records()) / double(head.size());
    const qint64 size = file.size();
    const qint64 cut = cuttable(encoding) && size >= TwoThreadsFrom && !file.isSequential()
            && std::thread::hardware_concurrency() > 1
        ? lineEndAfter(file, size * FirstPart / 100)
        : 0;
    QFile rest(fileName);
    const bool twoParts = cut > 0 && rest.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && rest.seek(cut);
    builder.reserve(size_t(1.25 * perByte * double(twoParts ? cut : size)));
    if (!twoParts) {
        feedFile(file, -1, first);
    } else {
        later.reserve(size_t(1.25 * perByte * double(size - cut)));
        std::atomic<bool> secondRead{false};
        const auto readSecond = [&] {
            feedFile(rest, -1, second);
            secondRead = true;
        };
        together(readSecond, [&] {
            feedFile(file, cut - head.size(), first);
            // Until the second part is read, create the rows of the list
            // that the whole file promises; finish() fills them.
            const double expected = double(builder.records()) * double(size) / double(cut);
            const int rows = int(std::min(double(INT_MAX), expected));
            const ChipInfo blank;
            chips.reserve(rows);
            while (!secondRead && chips.size() < rows) {
                for (int i = 0; i < 1024; ++i)
                    chips.append(blank);
            }
        });
    }
    report = builder.finish(later, chips);
    if (twoParts)
        together([&] { later.fillRows(chips); }, [&] { builder.fillRows(chips); });
    else
        builder.fillRows(chips);
    file.close();
#if defined(DEV_TRIM_AFTER_LOAD)
    // Loading frees its temporary tables, most of them on a second thread
    // whose allocator arena would keep them; hand the pages back.
    malloc_trim(0);
#endif
}

} // namespace pimpl
} // namespace DEV
