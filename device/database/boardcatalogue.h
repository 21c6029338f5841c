// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_BOARDCATALOGUE_H
#define DEV_BOARDCATALOGUE_H

#include "chipinfo.h"
#include "device_export.h"

#include <QStringList>

#include <memory>

namespace DEV {

class DeviceDb;

namespace pimpl {
class BoardCataloguePrivate;
}

/// One board of a BoardCatalogue: a line of the board file and the chip on it.
struct Board
{
    ///@{
    /// The file's fields, in its order; an empty id is no board.
    QString id, name, maker, revision, partNumber, description;
    ///@}
    ChipInfo chip; ///< The first chip with the part number, or an empty record when the database has none.
};

/**
 * @brief The read-only catalogue of development boards in a board file.
 *
 * The file (UTF-8, no header) holds one board a line: identifier, name, maker, revision, the chip's part
 * number and a description, separated by commas; a field in double quotes may hold commas ("" is a quote).
 * Blank lines and lines starting with # are skipped. It is read, and each board's chip looked up in the
 * database, once on construction; the const reads may run from any number of threads at once.
 *
 * A line without six fields or an identifier, or with a repeated identifier, is skipped; a board whose chip
 * the database does not know stays listed. Each is written as a warning "FILE:LINE: message" and kept in problems().
 */
class DEVICE_EXPORT BoardCatalogue
{
public:
    /// Reads @p fileName, resolving the chips through @p db (needed during construction only).
    BoardCatalogue(const QString& fileName, const DeviceDb& db);
    ~BoardCatalogue();

    /// QCoreApplication::applicationDirPath() + "/../data/device/boards.csv", beside the chip catalogue.
    static QString defaultDataFile();

    /// Every board, in file order.
    QList<Board> boards() const;

    /// The board with the identifier @p id (exact), or an empty record.
    Board find(const QString& id) const;

    /// The boards whose identifier, name, maker or part number holds @p text, letter case ignored, in file order.
    QList<Board> search(const QString& text) const;

    /// What was wrong in the file, "FILE:LINE: message" in line order; the warnings it gave.
    QStringList problems() const;

private:
    std::unique_ptr<pimpl::BoardCataloguePrivate> const d;
};

} // namespace DEV

#endif // DEV_BOARDCATALOGUE_H
