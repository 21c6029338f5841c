// SPDX-License-Identifier: BSD-3-Clause
#include "chipsearch.h"

#include "devicedb.h"
#include "devicedb_p.h"
#include "foldedindex_p.h"
#include "search_p.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <mutex>

namespace DEV {

namespace pimpl {

class ChipSearchPrivate
{
public:
    QList<ChipInfo> chips;
    std::shared_ptr<const FoldedChips> folded; // shared by copies
};

} // namespace pimpl

ChipSearch::ChipSearch()
    : ChipSearch(QList<ChipInfo>())
{
}

ChipSearch::ChipSearch(const QList<ChipInfo>& chips)
    : d(new pimpl::ChipSearchPrivate{chips, std::make_shared<const pimpl::FoldedChips>(chips)})
{
}

ChipSearch::ChipSearch(const ChipSearch& other)
    : d(new pimpl::ChipSearchPrivate(*other.d))
{
}

ChipSearch& ChipSearch::operator=(const ChipSearch& other)
{
    *d = *other.d;
    return *this;
}

ChipSearch::~ChipSearch() = default;

QList<ChipInfo> ChipSearch::chips() const
{
    return d->chips;
}

QVector<int> ChipSearch::filterRows(const ChipFilterBySearch& filter) const
{
    return pimpl::searchRows(filter, int(d->chips.size()), [this](int k) -> const ChipInfo& { return d->chips.at(k); },
                             [this](const QByteArray& needle, char* verdicts) { d->folded->find(needle, verdicts); });
}

QVector<int> ChipSearch::filterRows(const ChipFilterBySearch& filter, const QVector<int>& among) const
{
    const int size = int(d->chips.size());
    const auto inside = [size](int k) { return k >= 0 && k < size; };
    const bool allInside = std::all_of(among.begin(), among.end(), inside);
    QVector<int> kept;
    if (!allInside)
        std::copy_if(among.begin(), among.end(), std::back_inserter(kept), inside);
    const QVector<int>& candidates = allInside ? among : kept;
    // Every position, as while the first keys of a word match everything:
    // the same as searching them all.
    if (candidates.size() == size
        && std::adjacent_find(candidates.begin(), candidates.end(), std::greater_equal<int>()) == candidates.end())
        return filterRows(filter);
    QVector<int> rows = pimpl::searchRows(
        filter, int(candidates.size()), [&](int i) -> const ChipInfo& { return d->chips.at(candidates.at(i)); },
        [&](const QByteArray& needle, char* verdicts) { d->folded->findAmong(needle, candidates, verdicts); });
    for (int& row : rows)
        row = candidates.at(row);
    return rows;
}

QList<ChipInfo> ChipSearch::filterChips(const ChipFilterBySearch& filter) const
{
    return pimpl::chipsAt(d->chips, filterRows(filter));
}

// A query of the database, defined with the other searches.
ChipSearch DeviceDb::preparedSearch() const
{
    std::call_once(d->searchPrepared, [this] { d->search = std::make_shared<const ChipSearch>(d->chips); });
    return *d->search;
}

} // namespace DEV
