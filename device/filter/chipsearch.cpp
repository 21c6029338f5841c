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

    const ChipInfo& at(int k) const { return chips.at(k); }
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
    std::vector<char> verdicts(size_t(d->chips.size()), pimpl::Undecided);
    const QByteArray needle = pimpl::foldedNeedle(filter);
    if (!needle.isEmpty())
        d->folded->find(needle, verdicts.data());
    pimpl::decideUndecided(filter, [this](int k) -> const ChipInfo& { return d->at(k); }, verdicts);
    return pimpl::rowsOf(verdicts);
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
    std::vector<char> verdicts(size_t(candidates.size()), pimpl::Undecided);
    const QByteArray needle = pimpl::foldedNeedle(filter);
    if (!needle.isEmpty())
        d->folded->findAmong(needle, candidates, verdicts.data());
    pimpl::decideUndecided(filter, [&](int i) -> const ChipInfo& { return d->at(candidates.at(i)); }, verdicts);
    return pimpl::rowsOf(verdicts, &candidates);
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
