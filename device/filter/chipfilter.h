// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPFILTER_H
#define DEV_CHIPFILTER_H

#include "chipinfo.h"
#include "device_export.h"

#include <QString>
#include <QVector>

namespace DEV {

/**
 * @brief Equality criteria on the attributes of a chip.
 *
 * Each member constrains the ChipInfo member of the same name; a chip passes
 * when it equals every criterion that is set. Comparison is exact QString
 * equality: case-sensitive, no trimming, no numeric reading ("1.0V" and
 * "1.00V" differ). A criterion whose text is "Any" is an ordinary value; a
 * caller that offers "Any" as a choice leaves the member unset instead.
 *
 * A criterion is unset when its string is empty, with one exception:
 * @c deviceVersion is unset only when it is null. An empty but non-null
 * @c deviceVersion is a real criterion that keeps the chips of the initial,
 * unversioned device, which the selector lists as a blank entry.
 *
 * @code
 * DEV::ChipFilter filter;
 * filter.series = QStringLiteral("ZR9K");
 * filter.deviceVersion = QLatin1String("");  // initial version only
 * const QList<DEV::ChipInfo> chips = db->filterChips(filter);
 * @endcode
 *
 * A default-constructed filter matches every chip.
 */
struct DEVICE_EXPORT ChipFilter
{
    QString partNumber;    ///< Part number; unset when empty.
    QString series;        ///< Series; unset when empty.
    QString matchKey;      ///< Match key; unset when empty.
    QString device;        ///< Device; unset when empty.
    QString deviceVersion; ///< Device version; unset only when null, empty selects unversioned chips.
    QString package;       ///< Package; unset when empty.
    QString auxiliary;     ///< Auxiliary attribute; unset when empty.
    QString voltage;       ///< Voltage; unset when empty.
    QString speed;         ///< Speed grade; unset when empty.
};

/**
 * @brief A free-text search over the values of a chip, as typed into the
 * selector's search field.
 *
 * @c group chooses the values searched:
 *
 * | group | values                                                          |
 * |-------|-----------------------------------------------------------------|
 * | 0     | series, partNumber, matchKey, device, package, auxiliary, voltage and every resource count |
 * | 1     | series                                                          |
 * | 2     | partNumber                                                      |
 * | 3     | device                                                          |
 * | 4     | deviceVersion                                                   |
 * | 5     | package                                                         |
 * | 6     | speed                                                           |
 * | 7     | voltage                                                         |
 * | 8..16 | resource count 0 (IO) to 8 (PLL); a missing count reads as empty |
 *
 * Any other group searches like 0; searchGroupColumn() and searchGroupName()
 * in chipcolumns.h give each group's column and menu name. Group 0 leaves out the device version,
 * the speed grade and the device identifier, and takes in the match key and
 * the auxiliary attribute although the chip table does not show them.
 *
 * @c patternSyntax chooses how @c pattern is read:
 * 0 Unix wild cards (QRegExp::WildcardUnix), 1 regular expression
 * (QRegExp::RegExp), both matching the whole value; 2 the whole value equals
 * the pattern; 3, and any other number, the pattern occurs anywhere in the
 * value. A pattern that is not a valid expression matches nothing and is not
 * reported. @c caseSensitive applies to every syntax.
 *
 * The pattern "0", exactly that one character, also matches a chip when any
 * value searched is empty, whatever the syntax and case setting: the chip
 * table shows an empty count as 0, so the user finds what they see.
 *
 * The defaults are those of a fresh search field: all values, match
 * anywhere, case-insensitive.
 */
struct DEVICE_EXPORT ChipFilterBySearch
{
    int group = 0;              ///< Values searched, 0 to 16; anything else means 0.
    int patternSyntax = 3;      ///< 0 wild cards, 1 regular expression, 2 exactly, otherwise anywhere.
    bool caseSensitive = false; ///< Whether letter case counts.
    QString pattern;            ///< The search text as typed: not trimmed, not escaped.
};

/**
 * True when @p info equals every set criterion of @p filter.
 */
DEVICE_EXPORT bool matchFilter(const ChipInfo& info, const ChipFilter& filter);

/**
 * True when one of the values of @p info chosen by @p filter's group matches
 * its pattern.
 *
 * Prepares the pattern on every call; to search many chips, use
 * DeviceDb::filterChips(const ChipFilterBySearch&, const QList<ChipInfo>&),
 * which prepares it once.
 */
DEVICE_EXPORT bool matchFilter(const ChipInfo& info, const ChipFilterBySearch& filter);

/**
 * The chips of @p chips that match every set criterion of @p filter, in their
 * order. DeviceDb::filterChips(const ChipFilter&) is this over the whole
 * database.
 */
DEVICE_EXPORT QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilter& filter);

/**
 * The chips of @p chips that match the free-text search @p filter, in their
 * order. The pattern is prepared once for the whole list, and a value that
 * many chips share is decided once.
 */
DEVICE_EXPORT QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter);

/**
 * The positions in @p chips of the chips that filterChips(const QList<ChipInfo>&,
 * const ChipFilterBySearch&) returns, in ascending order.
 *
 * Use it where the chips are already held elsewhere, for example by a model
 * of the host's own: it decides exactly the same way but copies no record,
 * which on a search that keeps tens of thousands of chips is most of the time
 * filterChips() takes.
 */
DEVICE_EXPORT QVector<int> filterRows(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter);

} // namespace DEV

#endif // DEV_CHIPFILTER_H
