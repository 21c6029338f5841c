// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPREQUIREMENTS_H
#define DEV_CHIPREQUIREMENTS_H

#include "chipcolumns.h"
#include "chipinfo.h"
#include "device_export.h"

#include <QList>
#include <QString>

#include <array>

namespace DEV {

/**
 * @brief The least of each resource a design needs: "at least 20000 LUTs,
 * 500 Kb of block RAM and 100 I/Os".
 *
 * One minimum per resource column of the chip table (IO, LUT, FF, ROM16,
 * SSRAM, BSRAM, User Flash, DSP, PLL), each unset by default. Memory columns
 * (ROM16, SSRAM, BSRAM, User Flash) count kilobits, the others units.
 *
 * @code
 * DEV::ChipRequirements needs;
 * needs.set(QStringLiteral("LUT=20000"));
 * needs.set(QStringLiteral("BSRAM=500Kb"));
 * const auto fits = DEV::smallestFirst(DEV::filterChips(db->allChipInfo(), needs), needs);
 * @endcode
 */
struct DEVICE_EXPORT ChipRequirements
{
    /// The minimum of a resource that is not required.
    static constexpr qint64 Unset = -1;

    /// Minimums indexed like ChipInfo::resources: 0 is IO, 8 is PLL.
    std::array<qint64, 9> minimum{{Unset, Unset, Unset, Unset, Unset, Unset, Unset, Unset, Unset}};

    /// True when no minimum is set.
    bool isEmpty() const;

    /// The minimum for table column @p column (7 to 15), or Unset.
    qint64 minimumOf(int column) const;

    /**
     * Sets the minimum for the resource column named @p column: its header
     * in any letter case, spaces optional ("LUT", "user flash", "UserFlash").
     * @p value is a whole number of at least 0; in a memory column it may
     * end in "Kb" or "Mb" (1Mb = 1024Kb), and without a unit counts
     * kilobits. An empty @p value unsets the minimum.
     *
     * Returns an empty string, or a message saying what is wrong, such as
     * "LUT: '2k' is not a whole number"; the record is then unchanged.
     */
    QString set(const QString& column, const QString& value);

    /// set() for "COLUMN=VALUE", as given to devicequery --min.
    QString set(const QString& assignment);

    /**
     * The minimums that are set, as "COLUMN=VALUE" in column order, with
     * headers as the chip table writes them and memory in Kb: what set()
     * reads back. Empty when nothing is set.
     */
    QStringList toStrings() const;
};

/**
 * The amount of the resource in table column @p column (7 to 15) that
 * @p chip offers: the count, for memory columns in kilobits ("72Kb", "72",
 * "2Mb"). An entry that is missing, empty or not such a number counts 0, as
 * it does anywhere else a count is compared; surrounding blanks are ignored.
 */
DEVICE_EXPORT qint64 resourceAmount(const ChipInfo& chip, int column);

/// True when @p info offers at least every minimum set in @p requirements.
DEVICE_EXPORT bool matchFilter(const ChipInfo& info, const ChipRequirements& requirements);

/// The chips of @p chips that meet @p requirements, in their order.
DEVICE_EXPORT QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipRequirements& requirements);

/**
 * @p chips ordered smallest first: by the amounts of the resources that
 * @p requirements sets, compared in column order (IO before LUT before FF
 * ... before PLL), then by part number; chips equal in all of these keep
 * their order. With no minimum set, by part number alone.
 */
DEVICE_EXPORT QList<ChipInfo> smallestFirst(QList<ChipInfo> chips, const ChipRequirements& requirements);

} // namespace DEV

#endif // DEV_CHIPREQUIREMENTS_H
