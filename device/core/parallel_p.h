// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_PARALLEL_P_H
#define DEV_PARALLEL_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "device_export.h"

#include <QtGlobal>

#include <functional>
#include <memory>
#include <utility>

namespace DEV {
namespace pimpl {

/*
 * The library's one way of working on several cores, and the only place that
 * starts threads (parallel.cpp). Work on a list is split by one rule: part p
 * of `parts` holds items [n * p / parts, n * (p + 1) / parts), so parts differ
 * by one item at most; work that must cut at a natural boundary (a line break)
 * moves each cut forward to the next one. Every routine gives the same answer
 * whatever the number of parts: the tests run them on one part and on many.
 */

/// How many parts work on @p n items is split into: one below @p threshold,
/// else tuning().parts, and never more than there are items.
DEVICE_EXPORT int partsFor(qint64 n, qint64 threshold);

/// The first item of part @p p of @p n items split into @p parts.
inline qint64 partStart(qint64 n, int p, int parts)
{
    return n * p / parts;
}

/// Runs work(p) for every part p in [0, @p parts): part 0 on this thread,
/// each other on a thread of its own (here, when none can be started), and
/// returns when all are done; no part at all when @p parts < 1. The parts
/// must not depend on each other.
DEVICE_EXPORT void runParts(int parts, const std::function<void(int)>& work);

/// Splits @p n items as partsFor(@p n, @p threshold) says and runs
/// work(from, to) on each part.
template <typename Work>
void inParts(qint64 n, qint64 threshold, Work work)
{
    const int parts = partsFor(n, threshold);
    runParts(parts, [&](int p) { work(int(partStart(n, p, parts)), int(partStart(n, p + 1, parts))); });
}

/**
 * Work started on another thread while the caller goes on, when it is worth
 * a thread; else, or when none can be started, done here when it is waited
 * for. Destroying it waits.
 */
class DEVICE_EXPORT Background
{
public:
    Background();
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Starts @p work; anything started before is waited for first.
    void start(bool worth, std::function<void()> work);
    /// Returns once the work has run, running it here if it has not started.
    void wait();

private:
    struct Thread; // started and joined in parallel.cpp only
    std::function<void()> m_work;
    std::unique_ptr<Thread> m_thread; // none: the work runs in wait()
};

/// A value made by Background work, taken once it is there.
template <typename T>
class Later
{
public:
    template <typename Work>
    void start(bool worth, Work work)
    {
        m_pending = true;
        m_task.start(worth, [this, work] { m_value = work(); });
    }

    bool pending() const { return m_pending; }

    /// The value, waiting for it; the work is then done with.
    T take()
    {
        m_task.wait();
        m_pending = false;
        return std::exchange(m_value, T());
    }

private:
    T m_value{};
    bool m_pending = false;
    Background m_task; // last: destroyed first, so the work ends before the value goes
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_PARALLEL_P_H
