// SPDX-License-Identifier: BSD-3-Clause
#include "requirementsrow_p.h"

#include "chipcolumns.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace DEV {
namespace pimpl {

namespace {

// Wide enough for "999999" or "2048Kb" at common font sizes; the header text
// is the placeholder.
constexpr int FieldCharacters = 7;

} // namespace

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

void RequirementsRow::setRequirements(const ChipRequirements& requirements)
{
    for (QLineEdit* field : qAsConst(m_fields)) {
        const int column = field->property("column").toInt();
        const qint64 minimum = requirements.minimumOf(column);
        const QString unit = chipColumnKind(column) == ColumnKind::Kilobits ? QStringLiteral("Kb") : QString();
        field->setText(minimum == ChipRequirements::Unset ? QString() : QString::number(minimum) + unit);
    }
    readFields();
}

void RequirementsRow::readFields()
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

} // namespace pimpl
} // namespace DEV
