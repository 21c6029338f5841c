// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_REQUIREMENTSROW_P_H
#define DEV_REQUIREMENTSROW_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chiprequirements.h"

#include <QWidget>

class QLineEdit;

namespace DEV {
namespace pimpl {

/**
 * The selector's row of resource minimums: one field per resource column,
 * each empty (no minimum) or holding a count, for memory a size in Kb or
 * Mb. A field that holds something else is marked and its message shown as
 * its tool tip; it sets no minimum until it is put right.
 */
class RequirementsRow : public QWidget
{
    Q_OBJECT

public:
    explicit RequirementsRow(QWidget* parent = nullptr);

    /// The minimums of the fields that read as one.
    ChipRequirements requirements() const { return m_requirements; }

    /// Fills the fields with @p requirements, a set minimum as "20000" or "500Kb", the others empty.
    void setRequirements(const ChipRequirements& requirements);

    /// The fields in column order, for the tab order.
    const QList<QLineEdit*>& fields() const { return m_fields; }

Q_SIGNALS:
    /// The minimums changed as the user typed or setRequirements() filled the fields.
    void changed();

private:
    void readFields();

    QList<QLineEdit*> m_fields;
    ChipRequirements m_requirements;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_REQUIREMENTSROW_P_H
