// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_LINESCAN_P_H
#define DEV_LINESCAN_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "device_export.h"

#include <QByteArray>
#include <QStringList>
#include <QStringView>
#include <QVarLengthArray>
#include <QVector>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringDecoder>
#else
#include <QTextCodec>
#endif

#include <memory>
#include <vector>

namespace DEV {
namespace pimpl {

/*
 * A text file of comma-separated lines, read as Qt's text stream reads a
 * file opened in text mode: decoded in the file's encoding, every carriage
 * return dropped from the text (not from the bytes, which would break
 * UTF-16), split at every line break and every comma. plainLines() is the
 * definition; LineScan gives the same lines a block of bytes at a time.
 *
 * The encoding is the one a byte-order mark at the start names, else, on
 * Qt 5, the locale's (QTextCodec::codecForLocale()) and, on Qt 6, which no
 * longer has a locale codec, UTF-8.
 */
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
using Encoding = QStringConverter::Encoding;
using Decoder = QStringDecoder;
#else
using Encoding = QTextCodec*;
using Decoder = std::unique_ptr<QTextDecoder>;
#endif

/// The bytes at the start of a file that name its encoding: the longest byte-order mark.
constexpr int EncodingHeadBytes = 4;

/// The encoding of a file that begins with @p head (its first EncodingHeadBytes bytes, or the whole of a shorter file).
DEVICE_EXPORT Encoding encodingOf(const QByteArray& head);

/// Whether a byte 0x0A is a line break wherever it stands in @p encoding (UTF-8, Latin-1, ASCII), so that the bytes
/// may be cut after one and the parts decoded apart.
DEVICE_EXPORT bool cuttable(Encoding encoding);

/// The lines of the file @p bytes, each split at its commas, as LineScan hands them on. The text after the last line
/// break is a line when it is not empty.
DEVICE_EXPORT QVector<QStringList> plainLines(const QByteArray& bytes);

/// One line of the text, without its line break, and where its commas are.
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
 * Hands on the lines of bytes fed a block at a time, in bounded memory: each
 * block is decoded as part of the whole text, its commas and line breaks are
 * found in one pass, and each line is handed on where it lies in the block.
 */
class LineScan
{
public:
    /// @p atStart: the bytes start the file, so that a leading byte-order mark is a mark and dropped; a part of the
    /// file that starts at a later line keeps a U+FEFF there as text, as one decoder of the whole file would.
    LineScan(Encoding encoding, bool atStart);
    virtual ~LineScan();

    void feed(const char* bytes, int size);
    /// Hands on the last line, which no line break ends; there is none when the text ends in a line break.
    void finish();

protected:
    /// Called for every line in order, empty ones too.
    virtual void line(const Line& line) = 0;

private:
    void split(QString text);
    void carry(const QChar* units, int start, int end, int first, int last);

    Encoding m_encoding;
    Decoder m_decoder;
    bool m_utf8;
    bool m_atStart; // no byte decoded yet
    QByteArray m_held; // bytes that wait for the next block
    std::vector<int> m_marks; // of the block being split
    QString m_carry; // the start of a line that goes on in the next block
    QVarLengthArray<int, 64> m_carryCommas;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_LINESCAN_P_H
