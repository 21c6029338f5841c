// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_EXAMPLES_CATALOGUECHECK_H
#define DEV_EXAMPLES_CATALOGUECHECK_H

#include <QStringList>

namespace CatalogueCheck {

/**
 * Reads the catalogue @p path the way the library's loader does and returns
 * one finding a line, "PATH:LINE: message", in line order: what the loader
 * would skip, and what it would load although it is probably wrong. Sets
 * @p readable to false, with no findings, when the file cannot be opened.
 */
QStringList findings(const QString& path, bool* readable);

} // namespace CatalogueCheck

#endif // DEV_EXAMPLES_CATALOGUECHECK_H
