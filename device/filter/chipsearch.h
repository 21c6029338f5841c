// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPSEARCH_H
#define DEV_CHIPSEARCH_H

#include "chipfilter.h"
#include "chipinfo.h"
#include "device_export.h"

#include <QList>
#include <QVector>

#include <memory>

namespace DEV {

namespace pimpl {
class ChipSearchPrivate;
}

/**
 * @brief A free-text search prepared over one list of chips, for lists that
 * are searched again and again, as while a user types.
 *
 * Preparing reads the values that a search of every column looks at (series,
 * match key, device, package, auxiliary attribute, resource counts, part
 * number and voltage) once and keeps them folded to lower case in compact
 * blocks. A search that asks for a pattern anywhere in them, in either letter
 * case, then reads those blocks instead of visiting every record and every
 * value on the heap, which on a large catalogue whose values seldom repeat is
 * many times faster.
 *
 * The answers are exactly those of filterRows() and filterChips() over the
 * same list. Searches the blocks cannot serve take that ordinary way: one
 * column, letter case counted, wild cards, expressions, exact matches, a
 * pattern with letters beyond ASCII, and the pattern "0", which also finds
 * empty counts. Chips with such letters in their values are decided the
 * ordinary way, one by one.
 *
 * Preparing costs about as long as one ordinary search that reads every
 * value, and about one byte per character of those values while the search
 * lives. The list is held as a shared copy; changing the original afterwards
 * does not change what is searched.
 *
 * @code
 * const DEV::ChipSearch search(db->allChipInfo());
 * DEV::ChipFilterBySearch filter;
 * filter.pattern = typedText; // the search field's text
 * const QVector<int> rows = search.filterRows(filter);
 * @endcode
 *
 * Repeated searches that narrow a result, as each key typed after the last
 * does, pass the previous hits to filterRows(const ChipFilterBySearch&,
 * const QVector<int>&) and look at nothing else. DeviceDb::preparedSearch()
 * is a search prepared once over the whole database.
 *
 * Copies share the prepared text. All member functions are const and may be
 * called from several threads at once.
 */
class DEVICE_EXPORT ChipSearch
{
public:
    /// A search over no chips.
    ChipSearch();
    /// Prepares a search over @p chips: a long list on several cores.
    explicit ChipSearch(const QList<ChipInfo>& chips);
    /// Shares the chips and the prepared text of @p other.
    ChipSearch(const ChipSearch& other);
    /// Shares the chips and the prepared text of @p other.
    ChipSearch& operator=(const ChipSearch& other);
    ~ChipSearch();

    /// The chips searched.
    QList<ChipInfo> chips() const;

    /// The positions in chips() of the chips that match @p filter, in ascending order.
    QVector<int> filterRows(const ChipFilterBySearch& filter) const;

    /**
     * Of the positions @p among in chips() (ascending), those whose chip
     * matches @p filter, in their order: only those chips are looked at.
     * Positions outside chips() are left out.
     */
    QVector<int> filterRows(const ChipFilterBySearch& filter, const QVector<int>& among) const;

    /// The chips that match @p filter, in their order.
    QList<ChipInfo> filterChips(const ChipFilterBySearch& filter) const;

private:
    std::unique_ptr<pimpl::ChipSearchPrivate> const d;
};

} // namespace DEV

#endif // DEV_CHIPSEARCH_H
