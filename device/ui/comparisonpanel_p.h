// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_COMPARISONPANEL_P_H
#define DEV_COMPARISONPANEL_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"

#include <QWidget>

class QPushButton;
class QTableView;

namespace DEV {

class ChipComparisonModel;

namespace pimpl {

/**
 * The selector's comparison panel: the compared chips side by side (a
 * ChipComparisonModel), with buttons to choose the chip of the current
 * column in the table, to remove it and to clear the comparison. A
 * double-click on a column, or Enter, chooses its chip as well.
 */
class ComparisonPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ComparisonPanel(QWidget* parent);

    ChipComparisonModel* model() const { return m_model; }

    /// Its widgets in the order Tab visits them.
    QList<QWidget*> focusOrder() const;

Q_SIGNALS:
    /// The user asked for @p chip to be chosen in the table.
    void chosen(const DEV::ChipInfo& chip);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int currentColumn() const;
    void choose(int column);
    void updateButtons();

    ChipComparisonModel* m_model;
    QTableView* m_view;
    QPushButton* m_choose;
    QPushButton* m_remove;
    QPushButton* m_clear;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_COMPARISONPANEL_P_H
