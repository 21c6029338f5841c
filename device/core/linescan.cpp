// SPDX-License-Identifier: BSD-3-Clause
#include "linescan_p.h"

#include <algorithm>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {
namespace pimpl {

namespace {

// A decoder of @p encoding that drops a leading byte-order mark when @p atStart.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
Decoder decoderOf(Encoding encoding, bool atStart)
{
    return Decoder(encoding, atStart ? QStringConverter::Flag::Default : QStringConverter::Flag::ConvertInitialBom);
}

QString decode(Decoder& decoder, const char* bytes, qsizetype size)
{
    return decoder.decode(QByteArrayView(bytes, size));
}

bool isUtf8(Encoding encoding)
{
    return encoding == QStringConverter::Utf8;
}
#else
Decoder decoderOf(Encoding codec, bool atStart)
{
    return Decoder(codec->makeDecoder(atStart ? QTextCodec::DefaultConversion : QTextCodec::IgnoreHeader));
}

QString decode(Decoder& decoder, const char* bytes, qsizetype size)
{
    return decoder->toUnicode(bytes, int(size));
}

bool isUtf8(Encoding codec)
{
    return codec->mibEnum() == 106;
}
#endif

// How many of the UTF-8 @p bytes decode alone as they do within the whole
// text: those up to the last ASCII byte, after which no sequence is
// pending; where there is none, those up to the last sequence whose bytes
// are all there (an invalid one too). The rest waits for the next block:
// Qt's decoders read a sequence cut between two calls otherwise than a
// whole one (Qt 5 an invalid one, Qt 6.4 drops the byte after it).
qsizetype wholeSequences(const QByteArray& bytes)
{
    qsizetype end = bytes.size();
    while (end > 0 && uchar(bytes.at(end - 1)) >= 0x80)
        --end;
    if (end > 0)
        return end;
    for (end = bytes.size(); end > 0;) {
        qsizetype lead = end - 1;
        while (lead > 0 && lead > end - 4 && (uchar(bytes.at(lead)) & 0xC0) == 0x80)
            --lead;
        const uchar first = uchar(bytes.at(lead));
        const qsizetype length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
        if (end - lead >= length)
            return end;
        end = lead;
    }
    return 0;
}

// Notes where the commas and line breaks of @p text are, eight units at a
// time where SSE2 is at hand, and returns how many there are, or -1 when
// there is a carriage return.
int findMarks(const QString& text, std::vector<int>& found)
{
    const auto* units = reinterpret_cast<const ushort*>(text.constData());
    const int size = int(text.size());
    found.resize(std::max(found.size(), size_t(size)));
    int* marks = found.data();
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

} // namespace

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
Encoding encodingOf(const QByteArray& head)
{
    return QStringConverter::encodingForData(head).value_or(QStringConverter::Utf8);
}

bool cuttable(Encoding encoding)
{
    return encoding == QStringConverter::Utf8 || encoding == QStringConverter::Latin1;
}
#else
Encoding encodingOf(const QByteArray& head)
{
    return QTextCodec::codecForUtfText(head, QTextCodec::codecForLocale());
}

bool cuttable(Encoding codec)
{
    return codec->mibEnum() == 106 || codec->mibEnum() == 4 || codec->mibEnum() == 3; // UTF-8, Latin-1, ASCII
}
#endif

QVector<QStringList> plainLines(const QByteArray& bytes)
{
    Decoder decoder = decoderOf(encodingOf(bytes.left(EncodingHeadBytes)), true);
    QString text = decode(decoder, bytes.constData(), bytes.size());
    text.remove(QLatin1Char('\r'));
    QVector<QStringList> lines;
    for (const QString& line : text.split(QLatin1Char('\n')))
        lines.append(line.split(QLatin1Char(',')));
    if (lines.last() == QStringList(QString()))
        lines.removeLast();
    return lines;
}

LineScan::LineScan(Encoding encoding, bool atStart)
    : m_encoding(encoding)
    , m_decoder(decoderOf(encoding, atStart))
    , m_utf8(isUtf8(encoding))
    , m_atStart(atStart)
{
}

LineScan::~LineScan() = default;

void LineScan::feed(const char* bytes, int size)
{
    QByteArray piece = QByteArray::fromRawData(bytes, size);
    if (!m_held.isEmpty())
        piece = std::exchange(m_held, QByteArray()) + piece;
    const qsizetype whole = m_utf8 ? wholeSequences(piece) : piece.size();
    QString text = decode(m_decoder, piece.constData(), whole);
    // Qt's decoder takes a U+FEFF for a mark until it has decoded a valid
    // character, as if bytes it replaced were not there; one decoder of the
    // whole text keeps it after them. After the first bytes, no UTF-8 block
    // starts the file (each ends with a whole sequence, so nothing is lost).
    if (m_utf8 && m_atStart && whole > 0) {
        m_decoder = decoderOf(m_encoding, false);
        m_atStart = false;
    }
    m_held = QByteArray(piece.constData() + whole, piece.size() - whole); // a copy: the block's bytes go
    split(std::move(text));
}

void LineScan::finish()
{
    split(decode(m_decoder, m_held.constData(), m_held.size()));
    if (!m_carry.isEmpty())
        line({m_carry, m_carryCommas.constData(), int(m_carryCommas.size()), 0});
}

// Hands on every line the block completes, where it lies in the block; only
// the one begun in the block before is put together.
void LineScan::split(QString text)
{
    int marks = findMarks(text, m_marks);
    if (marks < 0)
        marks = findMarks(text.remove(QLatin1Char('\r')), m_marks);
    const QChar* units = text.constData();
    int start = 0, first = 0;
    for (int k = 0; k < marks; ++k) {
        const int at = m_marks[size_t(k)];
        if (units[at] != QLatin1Char('\n'))
            continue;
        if (m_carry.isEmpty()) {
            line({QStringView(units + start, at - start), &m_marks[size_t(first)], k - first, start});
        } else {
            carry(units, start, at, first, k);
            line({m_carry, m_carryCommas.constData(), int(m_carryCommas.size()), 0});
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
void LineScan::carry(const QChar* units, int start, int end, int first, int last)
{
    for (int k = first; k < last; ++k)
        m_carryCommas.append(m_carry.size() + m_marks[size_t(k)] - start);
    m_carry.append(units + start, end - start);
}

} // namespace pimpl
} // namespace DEV
