// SPDX-License-Identifier: BSD-3-Clause
#include "devicedb_p.h"

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
#include <cstring>
#include <functional>
#include <iterator>
#include <system_error>
#include <thread>
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

// The file is decoded block by block, so memory stays bounded however large
// the file is, while each block is big enough to make per-call costs vanish.
// A decoded block stays below the size from which the allocator maps memory
// of its own, whose freeing would make it keep later large blocks.
constexpr qint64 BlockSize = 1 << 15;

// Whether two texts hold the same UTF-16 units.
bool sameText(QStringView a, QStringView b)
{
    // memcmp() must not see the null pointer of an empty view, even for no bytes.
    return a.size() == b.size()
        && (a.isEmpty() || std::memcmp(a.data(), b.data(), size_t(a.size()) * sizeof(QChar)) == 0);
}

// A hash of the text's units read eight bytes at a time; qHash() reads them
// one by one, and loading hashes nearly every byte of the file.
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

public:
    size_t size() const { return m_size; }
};

/**
 * Turns decoded lines into records.
 *
 * Catalogue values repeat heavily (a series, a package or a voltage appears
 * on thousands of lines, a resource tuple on every line of one device), so
 * every value is stored once and shared by all records that carry it. That
 * keeps the database small and makes loading mostly hash look-ups.
 */
class RecordBuilder
{
public:
    explicit RecordBuilder(QList<ChipInfo>& chips)
        : m_chips(chips)
    {
        m_empty = QString(QLatin1String(""));
    }

    /// The malformed lines counted by finish().
    const DeviceDb::LoadReport& report() const { return m_report; }

    void addLine(QStringView line)
    {
        ++m_lines;
        if (line.isEmpty())
            return;

        findCommas(line);
        const int columns = m_commas.size() + 1;
        if (columns < MinimumColumns) {
            m_malformed.append(line.toString());
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
        m_versionRank.push_back(versionBucket(info.deviceVersion));
    }

    /// Takes over the records and messages of @p later, which read the lines after this one's.
    void append(RecordBuilder& later)
    {
        for (int rank : later.m_versionRank)
            m_versionRank.push_back(versionBucket(later.m_versions.at(rank)));
        m_records.reserve(m_records.size() + later.m_records.size());
        std::move(later.m_records.begin(), later.m_records.end(), std::back_inserter(m_records));
        later.m_records.clear();
        m_malformed += later.m_malformed;
        for (int line : later.m_malformedAt)
            m_malformedAt.push_back(m_lines + line);
        m_lines += later.m_lines;
    }

    /// Reports the malformed lines in file order, then appends the records to
    /// the list, ordered by device version, newest first.
    void finish()
    {
        for (const QString& line : qAsConst(m_malformed))
            qCritical() << "incorrect device info entry" << line;
        m_malformed.clear();
        m_report.skippedLines = int(m_malformedAt.size());
        m_report.firstSkippedLine = m_malformedAt.empty() ? 0 : m_malformedAt.front();

        // Few distinct versions exist, so this is a counting sort: rank the
        // versions, then give each record its slot. Records of one version
        // keep their file order.
        const int buckets = m_versions.size();
        std::vector<int> byVersion(buckets);
        for (int i = 0; i < buckets; ++i)
            byVersion[i] = i;
        std::sort(byVersion.begin(), byVersion.end(), [this](int a, int b) {
            return m_versions.at(a).compare(m_versions.at(b), Qt::CaseSensitive) > 0;
        });
        std::vector<int> count(buckets, 0);
        for (int rank : m_versionRank)
            ++count[rank];
        std::vector<int> position(buckets);
        for (int i = 0, offset = 0; i < buckets; ++i) {
            position[byVersion[i]] = offset;
            offset += count[byVersion[i]];
        }
        const int n = int(m_records.size());
        std::vector<int> order(n);
        for (int i = 0; i < n; ++i)
            order[position[m_versionRank[i]]++] = i;

        // The list holds each record in a heap node of its own. Creating the
        // nodes in their final order keeps neighbouring rows neighbours in
        // memory, which every later walk over the list profits from. Moving
        // a record in swaps its strings rather than copying them.
        m_chips.reserve(m_chips.size() + n);
        for (int i : order) {
            m_chips.append(ChipInfo());
            m_chips.last() = std::move(m_records[i]);
        }
        m_records.clear();
        m_records.shrink_to_fit();
    }

private:
    // The positions of the line's commas, eight units at a time where SSE2
    // is at hand: the scan touches every character of the file.
    void findCommas(QStringView line)
    {
        m_commas.clear();
        const auto* units = reinterpret_cast<const ushort*>(line.data());
        const qsizetype size = line.size();
        qsizetype i = 0;
#if defined(__SSE2__)
        const __m128i comma = _mm_set1_epi16(',');
        for (; i + 8 <= size; i += 8) {
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
            int hits = _mm_movemask_epi8(_mm_cmpeq_epi16(chunk, comma));
            while (hits) {
                const int bit = __builtin_ctz(unsigned(hits));
                m_commas.append(int(i + bit / 2));
                hits &= ~(3 << bit);
            }
        }
#endif
        for (; i < size; ++i) {
            if (units[i] == ',')
                m_commas.append(int(i));
        }
    }

    QStringView column(QStringView line, int c) const
    {
        const int from = c == 0 ? 0 : m_commas.at(c - 1) + 1;
        const int to = c < m_commas.size() ? m_commas.at(c) : int(line.size());
        return line.mid(from, to - from);
    }

    // Neighbouring lines mostly belong to one device and repeat most of
    // their values, so the value that a column had on the line before is
    // tried before the intern table.
    QString text(QStringView line, int c)
    {
        const QStringView value = column(line, c).trimmed();
        QString& previous = m_previous[size_t(c)];
        if (!sameText(previous, value) || previous.isNull())
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
    // resource lists are shared too. They are found by the text of the
    // line's tail, compared column by column with a stored list.
    QStringList resources(QStringView line)
    {
        const int from = m_commas.at(FirstResourceColumn - 1) + 1;
        const QStringView tail = line.mid(from);
        const auto sameCounts = [this, line](const QStringList& stored) {
            if (stored.size() != m_commas.size() - FirstResourceColumn + 1)
                return false;
            for (int c = FirstResourceColumn; c <= m_commas.size(); ++c) {
                if (!sameText(stored.at(c - FirstResourceColumn), column(line, c)))
                    return false;
            }
            return true;
        };
        const auto makeList = [this, line] {
            QStringList list;
            list.reserve(m_commas.size() - FirstResourceColumn + 1);
            for (int c = FirstResourceColumn; c <= m_commas.size(); ++c)
                list.append(intern(column(line, c), c));
            return list;
        };
        // Lines of one device identifier follow each other and repeat its
        // counts: the list of the line before usually serves.
        if (sameCounts(m_previousResources))
            return m_previousResources;
        Sharing& sharing = m_sharing[ListSharing];
        if (!sharing.worthIt) {
            m_previousResources = makeList();
        } else {
            const size_t stored = m_resourceLists.size();
            m_previousResources = m_resourceLists.findOrInsert(hashOf(tail), sameCounts, makeList);
            sharing.note(m_resourceLists.size() == stored);
        }
        return m_previousResources;
    }

    int versionBucket(const QString& version)
    {
        auto it = m_versionIds.constFind(QStringView(version));
        if (it != m_versionIds.constEnd())
            return it.value();
        const int id = m_versions.size();
        m_versions.append(version);
        m_versionIds.insert(QStringView(m_versions.last()), id);
        return id;
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

    QList<ChipInfo>& m_chips;
    std::array<Sharing, TrackedColumns + 1> m_sharing;
    std::vector<ChipInfo> m_records;
    // Reported by finish(), so that lines read on two threads come out in file order.
    QStringList m_malformed;
    std::vector<int> m_malformedAt; // their line numbers, from 1
    int m_lines = 0;
    DeviceDb::LoadReport m_report;
    QString m_empty;
    QVarLengthArray<int, 64> m_commas;
    std::array<QString, FirstResourceColumn> m_previous;
    QStringList m_previousResources;
    FlatPool<QString> m_strings;
    FlatPool<QStringList> m_resourceLists;
    QList<QString> m_versions;
    QHash<QStringView, int> m_versionIds;
    std::vector<int> m_versionRank;
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

    void feed(const char* bytes, int size)
    {
        const int decodedFrom = m_buffer.size();
        m_buffer += m_decoder.toUnicode(bytes, size);
        if (m_buffer.indexOf(QLatin1Char('\r'), decodedFrom) >= 0) {
            QChar* begin = m_buffer.data();
            QChar* end = std::remove(begin + decodedFrom, begin + m_buffer.size(), QLatin1Char('\r'));
            m_buffer.truncate(int(end - begin));
        }

        // What was left over from the last block holds no line break, so the
        // search starts with the new text: a line spanning many blocks is
        // not scanned again for every block.
        const QStringView text(m_buffer);
        qsizetype start = 0;
        for (qsizetype end = text.indexOf(QLatin1Char('\n'), decodedFrom); end >= 0;
             end = text.indexOf(QLatin1Char('\n'), start)) {
            m_builder.addLine(text.mid(start, end - start));
            start = end + 1;
        }
        m_buffer.remove(0, int(start));
    }

    /// The last line, which has no line break after it. When the text ends
    /// in a line break there is none, and no line is counted.
    void finish()
    {
        m_buffer += m_decoder.rest();
        if (!m_buffer.isEmpty())
            m_builder.addLine(m_buffer);
    }

private:
    Decoder m_decoder;
    RecordBuilder& m_builder;
    QString m_buffer;
};

void readStream(QFile& file, RecordBuilder& builder)
{
    std::unique_ptr<LineFeeder> feeder;
    for (;;) {
        const QByteArray block = file.read(BlockSize);
        if (block.isEmpty())
            break;
        if (!feeder)
            feeder = std::make_unique<LineFeeder>(encodingFor(block.constData(), block.size()), false, builder);
        feeder->feed(block.constData(), block.size());
    }
    if (feeder)
        feeder->finish();
}

void feedRange(const char* bytes, qint64 size, LineFeeder& feeder)
{
    for (qint64 at = 0; at < size; at += BlockSize)
        feeder.feed(bytes + at, int(std::min(BlockSize, size - at)));
    feeder.finish();
}

// Files from this size on are read in two halves on two threads, when the
// encoding allows cutting the bytes at a line break.
constexpr qint64 TwoThreadsFrom = 2 << 20;

/*
 * Reads a file mapped into memory. In UTF-8 and the one-byte encodings a
 * byte 0x0A is a line break wherever it stands, so a large file is cut after
 * the line break nearest its middle, and each half is decoded and parsed on
 * a thread of its own into a builder of its own; the second half's decoder
 * takes a leading U+FEFF as text, as the single decoder would have. The
 * records come together in file order, and equal values read by both
 * halves are simply stored twice.
 */
void readMapped(const char* bytes, qint64 size, RecordBuilder& builder)
{
    const Encoding encoding = encodingFor(bytes, size);
    const char* middle = nullptr;
    if (cuttable(encoding) && size >= TwoThreadsFrom && std::thread::hardware_concurrency() > 1)
        middle = static_cast<const char*>(std::memchr(bytes + size / 2, '\n', size_t(size - size / 2)));
    LineFeeder first(encoding, false, builder);
    if (!middle) {
        feedRange(bytes, size, first);
        return;
    }

    const qint64 cut = middle - bytes + 1;
    QList<ChipInfo> unused;
    RecordBuilder laterRecords(unused);
    LineFeeder second(encoding, true, laterRecords);
    std::thread worker;
    try {
        worker = std::thread(feedRange, bytes + cut, size - cut, std::ref(second));
    } catch (const std::system_error&) {
        feedRange(bytes + cut, size - cut, second);
    }
    feedRange(bytes, cut, first);
    if (worker.joinable())
        worker.join();
    builder.append(laterRecords);
}

} // namespace

void DeviceDbPrivate::loadDataFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCritical() << "can not opend device data file: " << fileName;
        report.status = QFileInfo::exists(fileName) ? DeviceDb::LoadReport::Unreadable : DeviceDb::LoadReport::NotFound;
        return;
    }

    // Read the file exactly as a text stream over a text-mode file would:
    // raw bytes, decoded in the file's encoding (see Encoding), and then
    // every carriage return dropped from the decoded text (see LineFeeder).
    file.setTextModeEnabled(false);
    RecordBuilder builder(chips);
    const qint64 size = file.size();
    const uchar* mapped = size > 0 ? file.map(0, size) : nullptr;
    if (mapped)
        readMapped(reinterpret_cast<const char*>(mapped), size, builder);
    else
        readStream(file, builder);
    builder.finish();
    report.skippedLines = builder.report().skippedLines;
    report.firstSkippedLine = builder.report().firstSkippedLine;
    report.chips = chips.size();
    file.close();
#if defined(DEV_TRIM_AFTER_LOAD)
    // Loading frees its temporary tables, most of them on a second thread
    // whose allocator arena would keep them; hand the pages back.
    malloc_trim(0);
#endif
}

} // namespace pimpl
} // namespace DEV
