// SPDX-License-Identifier: BSD-3-Clause
// The selector's row of resource minimums, as the host shows and fills it,
// and the boxes and the table that follow it.
#include "deviceselector.h"

#include "chipcolumns.h"
#include "chipfilter.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "ui_deviceselector.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace DEV {
namespace pimpl {

// Wide enough for "999999" or "2048Kb" at common font sizes; the header text
// is the placeholder.
constexpr int FieldCharacters = 7;

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
    void setRequirements(const ChipRequirements& requirements)
    {
        for (QLineEdit* field : qAsConst(m_fields)) {
            const int column = field->property("column").toInt();
            const qint64 minimum = requirements.minimumOf(column);
            const QString unit = chipColumnKind(column) == ColumnKind::Kilobits ? QStringLiteral("Kb") : QString();
            field->setText(minimum == ChipRequirements::Unset ? QString() : QString::number(minimum) + unit);
        }
        readFields();
    }

    /// The fields in column order, for the tab order.
    const QList<QLineEdit*>& fields() const { return m_fields; }

Q_SIGNALS:
    /// The minimums changed as the user typed or setRequirements() filled the fields.
    void changed();

private:
    void readFields()
    {
        ChipRequirements read;
        for (QLineEdit* field : qAsConst(m_fields)) {
            const int column = field->property("column").toInt();
            const QString problem = read.set(chipColumnHeader(column), field->text());
            // The first line of the tool tip says what is wrong; the field's
            // own description stays below it.
            const QString usual = field->accessibleDescription();
            field->setToolTip(problem.isEmpty() ? usual : problem + QLatin1Char('\n') + usual);
            QPalette palette = this->palette();
            if (!problem.isEmpty())
                palette.setColor(QPalette::Base, QColor(255, 220, 220));
            field->setPalette(palette);
            field->setProperty("invalid", !problem.isEmpty());
        }
        if (read.minimum == m_requirements.minimum)
            return;
        m_requirements = read;
        Q_EMIT changed();
    }

    QList<QLineEdit*> m_fields;
    ChipRequirements m_requirements;
};

RequirementsRow::RequirementsRow(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(tr("At least:"), this);
    layout->addWidget(label);
    for (int column = FirstResourceColumn; column < ChipColumnCount; ++column) {
        const QString header = chipColumnHeader(column);
        auto* field = new QLineEdit(this);
        field->setPlaceholderText(header);
        field->setClearButtonEnabled(false);
        field->setMaximumWidth(field->fontMetrics().averageCharWidth() * FieldCharacters + 12);
        field->setAccessibleName(tr("Minimum %1").arg(header));
        field->setToolTip(chipColumnKind(column) == ColumnKind::Kilobits
                              ? tr("Only chips with at least this much %1, in Kb or Mb (1Mb = 1024Kb); empty for any")
                                    .arg(header)
                              : tr("Only chips with at least this many %1; empty for any").arg(header));
        field->setAccessibleDescription(field->toolTip());
        field->setProperty("column", column);
        connect(field, &QLineEdit::textEdited, this, [this] { readFields(); });
        layout->addWidget(field, 1);
        m_fields.append(field);
    }
    label->setBuddy(m_fields.constFirst());
    layout->addStretch(0);
}

} // namespace pimpl

QList<ChipInfo> DeviceSelector::chipsOfCascade() const
{
    return DEV::filterChips(db->allChipInfo(), d->applied);
}

void DeviceSelector::setUpRequirements()
{
    d->requirementsRow = new pimpl::RequirementsRow(this);
    d->requirementsRow->hide();
    // On screen the row lies between the search row and the table.
    ui->verticalLayout->insertWidget(1, d->requirementsRow);
    connect(d->requirementsRow, &pimpl::RequirementsRow::changed, this, [this] { applyRequirements(); });
    QWidget* previous = d->searchOptions;
    for (QWidget* field : d->requirementsRow->fields()) {
        setTabOrder(previous, field);
        previous = field;
    }
    setTabOrder(previous, ui->tableView);
}

void DeviceSelector::setRequirementsVisible(bool visible)
{
    d->requirementsRow->setVisible(visible);
    applyRequirements();
}

bool DeviceSelector::requirementsVisible() const
{
    return !d->requirementsRow->isHidden();
}

void DeviceSelector::setRequirements(const ChipRequirements& requirements)
{
    d->requirementsRow->setRequirements(requirements);
    applyRequirements();
}

ChipRequirements DeviceSelector::requirements() const
{
    return d->applied;
}

void DeviceSelector::applyRequirements()
{
    const ChipRequirements wanted = requirementsVisible() ? d->requirementsRow->requirements() : ChipRequirements();
    if (wanted.minimum == d->applied.minimum)
        return;
    d->applied = wanted;
    d->baseValid = false;

    // The boxes list what the minimums leave. Each keeps its choice while
    // that is still listed and else falls back to "Any", so that clearing
    // the minimums brings back the view from before.
    QComboBox* const boxes[] = {ui->cbSeries, ui->cbDevice, ui->cbDeviceVersion, ui->cbPackage, ui->cbCondition};
    QStringList chosen;
    for (QComboBox* box : boxes)
        chosen << box->currentText();
    {
        const QSignalBlocker quiet(ui->cbSeries);
        pimpl::refill(ui->cbSeries, seriesOfCascade());
        ui->cbSeries->setCurrentIndex(std::max(0, ui->cbSeries->findText(chosen.at(0))));
    }
    onSeriesChanged();
    for (int i = 1; i < 5; ++i)
        boxes[i]->setCurrentIndex(std::max(0, boxes[i]->findText(chosen.at(i))));
}

} // namespace DEV

#include "selectorrequirements.moc"
