// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICEDB_H
#define DEV_DEVICEDB_H

#include "chipinfo.h"
#include "device_export.h"

#include <QList>
#include <QString>
#include <QVector>

#include <memory>

namespace DEV {

class ChipSearch;
struct ChipFilter;
struct ChipFilterBySearch;

namespace pimpl {
class DeviceDbPrivate;
}

/**
 * @brief Translates an old "zr9k31-NNN" device identifier into the current
 * "zr9k31a-NNN" one.
 *
 * Only the eleven identifiers that were renamed are translated; the test is
 * exact and case-sensitive over the whole string. Every other identifier,
 * current ones included, is returned unchanged.
 */
DEVICE_EXPORT QString deviceIdCompatFor9k31(const QString& id);

/**
 * @brief The read-only database of every chip in a device data file.
 *
 * The file is read once, when the database is constructed; from then on the
 * list never changes, so the const queries may run from any number of threads
 * at once. Queries walk the list in database order (device version descending)
 * and hand out copies that share their strings with the database.
 *
 * Absence is a value, never an error: single-record look-ups return a
 * default-constructed ChipInfo, list queries an empty list. Problems with the
 * data file are written to Qt's critical message channel and the database
 * carries on with every well-formed line.
 *
 * @code
 * DEV::DeviceDb* db = DEV::DeviceDb::instance();
 * const DEV::ChipInfo chip = db->findByID(QStringLiteral("zr9k31a-015"));
 * if (!chip.partNumber.isEmpty())
 *     qDebug() << chip.partNumber << chip.package;
 * @endcode
 */
class DEVICE_EXPORT DeviceDb
{
public:
    /**
     * Loads the device data file @p fileName. A missing or unreadable file
     * gives an empty database and one critical message.
     */
    explicit DeviceDb(const QString& fileName);
    ~DeviceDb();

    DeviceDb(const DeviceDb&) = delete;
    DeviceDb& operator=(const DeviceDb&) = delete;

    /**
     * The process-wide database, loaded on the first call from
     * QCoreApplication::applicationDirPath() + "/../data/device/device_info.csv".
     * Safe to call from several threads at once: the file is read once and
     * every caller gets the same object. Create the QCoreApplication first,
     * since the path depends on it (a call before that warns once, and the
     * database stays empty). The database lives until the process exits.
     */
    static DeviceDb* instance();

    /**
     * The file instance() reads: QCoreApplication::applicationDirPath() +
     * "/../data/device/device_info.csv". Create the QCoreApplication first.
     */
    static QString defaultDataFile();

    /**
     * The first chip whose device identifier is @p id. An old "zr9k31-NNN"
     * identifier is translated with deviceIdCompatFor9k31() first, and only
     * the translated identifier is looked up. Returns an empty record when
     * nothing matches.
     */
    ChipInfo findByID(const QString& id) const;

    /// Every chip with the part number @p pn, in database order.
    QList<ChipInfo> findByPN(const QString& pn) const;

    /**
     * The first chip whose part number is @p partNumber and whose match key
     * is @p matchKey, or an empty record.
     */
    ChipInfo find(const QString& partNumber, const QString& matchKey);

    /// Every chip, in database order.
    QList<ChipInfo> allChipInfo() const;

    /// How reading the data file went; see loadReport().
    struct LoadReport
    {
        /// Whether the file could be read at all.
        enum Status {
            Read, ///< The file was read (it may still have held no chip).
            NotFound, ///< There is no such file.
            Unreadable ///< The file exists but could not be opened.
        };
        Status status = Read; ///< Whether the file could be read.
        int chips = 0; ///< Chips loaded.
        int skippedLines = 0; ///< Malformed lines left out.
        int firstSkippedLine = 0; ///< Line number (counted from 1) of the first of them; 0 when none was.
    };

    /**
     * How reading the data file went, for a host that wants to tell its user
     * (the library reports the same on the critical channel, one message per
     * malformed line, and carries on with what it has).
     */
    LoadReport loadReport() const;

    /// Every chip as a DeviceArg, position by position the chips of allChipInfo().
    QList<DeviceArg> allDevice() const;

    /// The chips that match every set criterion of @p filter, in database order.
    QList<ChipInfo> filterChips(const ChipFilter& filter) const;

    /// The chips of filterChips(@p filter), each as a DeviceArg.
    QList<DeviceArg> filterDevice(const ChipFilter& filter) const;

    /**
     * The chips of @p chips that match the free-text search @p filter, in the
     * order of @p chips. The database's own list is not consulted.
     */
    QList<ChipInfo> filterChips(const ChipFilterBySearch& filter, const QList<ChipInfo>& chips) const;

    /**
     * The positions in allChipInfo() in the order in which the chip table
     * sorts its first column: part number ascending, ties in database order.
     * Computed on the first call, once for the database, and shared by every
     * later caller, every selector of the database among them.
     */
    QVector<int> partNumberOrder() const;

    /**
     * A search prepared over allChipInfo() (see ChipSearch), built on the
     * first call, once for the database, and shared by every later caller.
     */
    ChipSearch preparedSearch() const;

    /**
     * The chips of @p chip's series in @p chip's package: every device,
     * device version and speed grade, @p chip among them. Smallest first:
     * by the amount of each resource in the table's column order (IO, LUT,
     * FF ... PLL), as smallestFirst() orders with every minimum set, then by
     * part number.
     *
     * The part number identifies the chip; its series and package are taken
     * from the database's record (of several with that part number, the one
     * with @p chip's device identifier, else the first), so a record from an
     * older catalogue gets the chips of the package the catalogue lists now.
     * Empty when the part number is not in the database. Series and package
     * compare exactly (an empty package matches only chips without one), and
     * the same package name in another series does not count.
     *
     * A shared package name makes a chip a candidate for migration, not a
     * guarantee that it fits the board: the pins, banks and voltages of two
     * devices in one package may differ. Check the pin-out before moving.
     */
    QList<ChipInfo> samePackage(const ChipInfo& chip) const;

private:
    std::unique_ptr<pimpl::DeviceDbPrivate> const d;
};

} // namespace DEV

#endif // DEV_DEVICEDB_H
