// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPINFO_H
#define DEV_CHIPINFO_H

#include "device_export.h"

#include <QMetaType>
#include <QString>
#include <QStringList>

/**
 * @brief Everything the Device library offers: the chip database, its filters,
 * the chip table model and the selector widgets.
 */
namespace DEV {

/**
 * @brief One orderable chip: one part number, as read from one line of the
 * device data file.
 *
 * Every value is text, exactly as the data file spells it (trimmed, except for
 * the resource counts). A default-constructed record stands for "no chip": the
 * single-record look-ups of DeviceDb return one when nothing matches, so test
 * @c partNumber or @c deviceId for emptiness.
 *
 * The record is a plain value type; copies share their strings through Qt's
 * implicit sharing, so passing records and lists around by value is cheap.
 */
struct DEVICE_EXPORT ChipInfo
{
    QString deviceId;      ///< Device identifier, e.g. "zr9k31a-015"; key of DeviceDb::findByID.
    QString partNumber;    ///< Orderable part number; key of DeviceDb::findByPN.
    QString series;        ///< Product series.
    QString matchKey;      ///< Second key of DeviceDb::find; not shown in the chip table.
    QString device;        ///< Device (die) name.
    QString deviceVersion; ///< Device revision; empty for the initial version.
    QString package;       ///< Package.
    QString voltage;       ///< Core voltage.
    QString speed;         ///< Speed grade.
    QString auxiliary;     ///< Extra attribute; not shown in the chip table.
    /**
     * Resource counts in file order: IO, LUT, FF, ROM16, SSRAM, BSRAM,
     * User Flash, DSP, PLL, possibly more. Entries are kept untrimmed. The
     * list may be shorter than nine entries when the data file line was.
     */
    QStringList resources;
};

/**
 * @brief The chip that the user picked, as carried by the selector widgets'
 * @c selectedDeviceChanged(DEV::DeviceArg) signals.
 *
 * It holds exactly the members of ChipInfo. Two DeviceArg values are equal
 * when their @c deviceId members are equal; nothing else is compared, so two
 * records without a device identifier are equal, and so are two different
 * part numbers of one device.
 *
 * Registered with Qt's meta-type system as "DEV::DeviceArg" (the first
 * DeviceDb constructed does it), so it travels in QVariant and queued
 * connections.
 */
struct DEVICE_EXPORT DeviceArg : public ChipInfo
{
    /// An empty record: no device chosen.
    DeviceArg() = default;
    /// Takes all eleven members of @p info.
    DeviceArg(const ChipInfo& info); // NOLINT(google-explicit-constructor): converting on purpose
    /// Copies all eleven members of @p other.
    DeviceArg(const DeviceArg& other) = default;
    ~DeviceArg() = default;

    /// Assigns all eleven members of @p other.
    DeviceArg& operator=(const DeviceArg& other);

    /// True when both carry the same device identifier (case-sensitive).
    bool operator==(const DeviceArg& other) const;
    /// Negation of operator==().
    bool operator!=(const DeviceArg& other) const;

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    /// The same as the const operator==(); kept for hosts built against Device 1.0.
    bool operator==(const DeviceArg& other);
    /// The same as the const operator!=(); kept for hosts built against Device 1.0.
    bool operator!=(const DeviceArg& other);
#endif
};

} // namespace DEV

Q_DECLARE_METATYPE(DEV::DeviceArg)

#endif // DEV_CHIPINFO_H
