// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_TUNING_P_H
#define DEV_TUNING_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "device_export.h"

#include <QtGlobal>

namespace DEV {
namespace pimpl {

/**
 * Every number that decides how the library does its work, and never what the
 * work's answer is: how long work must be before it is split across cores and
 * into how many parts, how large the loader's blocks are, when a search folds
 * text. Each fast routine gives its plain twin's answer at every setting; the
 * tests run them at the extremes (one part and many uneven ones, thresholds at
 * zero and at their largest, blocks of a few bytes) and compare.
 *
 * The defaults were measured on catalogues of 100,000 and 1,000,000 chips on
 * a two-core machine (bench/). Tests change the values between calls only: a
 * call reads them as it starts and the work it starts sees what it saw.
 */
struct Tuning
{
    /// Parts that long work is split into, one per core at most (see
    /// parallel_p.h); 1 keeps all work on the calling thread. Two cores are
    /// the machine every figure was taken on; more parts than cores only add
    /// thread starts.
    int parts = 2;

    /// Searches of fewer chips stay on the calling thread: starting a thread
    /// costs tens of microseconds, which a scan of a few thousand chips does
    /// not win back.
    int searchParallelFrom = 16384;

    /// Sorts of fewer rows stay on one thread: keying and sorting a part and
    /// merging the parts only pays once the sort takes milliseconds.
    int sortParallelFrom = 32768;

    /// From this many keys a radix pass of the sort takes sixteen bits
    /// instead of eight: long lists share most leading units, so few digits
    /// occur and the scattered writes stay in cache.
    int sortWideDigitsFrom = 16384;

    /// Files of fewer bytes are read on one thread. A part is cut after a
    /// line break, so parts are as long as their lines allow.
    qint64 loadParallelFrom = qint64(2) << 20;

    /// The work of creating the database's rows, in per cent (0 to 100) of
    /// the work of reading the file. The first part's thread does it while
    /// the others are still reading, so the file is cut as if it began with
    /// that much more to read: of two parts the first reads 45 %. Besides
    /// the load itself, the next long walk over the rows (the table's first
    /// order) came out a third faster than after even parts, measured on a
    /// million chips.
    int loadRowsWork = 10;

    /// The bytes read and decoded at a time: memory stays bounded however
    /// large the file is, while per-call costs vanish. A decoded block stays
    /// below the size from which the allocator maps memory of its own, whose
    /// freeing would make it keep later large blocks.
    qint64 loadBlockBytes = qint64(1) << 15;

    /// A one-shot search of fewer chips decides value by value: folding a
    /// chip's texts first would not pay.
    int foldFrom = 64;

    /// Chips folded at a time (foldedindex_p.h): a window's text, some 50
    /// bytes a chip, is still in the core's own cache when it is scanned. A
    /// search prepared once keeps its windows, each a few arrays that a scan
    /// reads one after the other: long windows keep that to a few long reads.
    int foldWindow = 8192;

    /// Catalogues this long are worth a thread for the selector's own first
    /// work (the boxes' values, the table's first order, the prepared search).
    int selectorParallelFrom = 65536;
};

/// The tuning in effect. Tests may change it between calls.
DEVICE_EXPORT Tuning& tuning();

} // namespace pimpl
} // namespace DEV

#endif // DEV_TUNING_P_H
