// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DISTINCTVALUES_P_H
#define DEV_DISTINCTVALUES_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo_p.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <functional>

namespace DEV {
namespace pimpl {

/*
 * Distinct values in order of first appearance. Catalogues hold tens of
 * thousands of chips, so membership is a hash look-up rather than a scan of
 * the list gathered so far; the result is sorted afterwards, so only the set
 * of values matters.
 */
class DistinctValues
{
public:
    void add(const QString& value)
    {
        // Chips of one device stand together and share their values:
        // comparing with the last value spares most hash look-ups.
        if (m_last >= 0 && sameText(value, m_values.at(m_last)))
            return;
        const auto seen = m_seen.constFind(value);
        m_last = seen != m_seen.constEnd() ? seen.value() : int(m_values.size());
        if (seen == m_seen.constEnd()) {
            m_seen.insert(value, m_last);
            m_values.append(value);
        }
    }

    void add(const DistinctValues& other)
    {
        for (const QString& value : other.m_values)
            add(value);
    }

    /// The values in ascending code-unit order, after "Any".
    QStringList ascending()
    {
        m_values.sort(Qt::CaseSensitive);
        return withAny();
    }

    /// The values in descending code-unit order, after "Any": the newest
    /// device version first, the initial (empty) one last.
    QStringList descending()
    {
        std::sort(m_values.begin(), m_values.end(), std::greater<QString>());
        return withAny();
    }

private:
    QStringList withAny()
    {
        m_values.prepend(QStringLiteral("Any"));
        return m_values;
    }

    QHash<QString, int> m_seen; // where in m_values
    QStringList m_values;
    int m_last = -1; // in m_values
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_DISTINCTVALUES_P_H
