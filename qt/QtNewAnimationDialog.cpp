#include "qt/QtNewAnimationDialog.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegExpValidator>
#include <QSpinBox>
#include <QVBoxLayout>

namespace halvern::qt {

namespace {

constexpr int Spacing = 6;
constexpr int Margin = 11;

} // namespace

QtNewAnimationDialog::QtNewAnimationDialog(QWidget* parent) : QDialog(parent)
{
    resize(242, 211);
    mainLayout = new QVBoxLayout(this);
    mainLayout->setSpacing(Spacing);
    mainLayout->setContentsMargins(Margin, Margin, Margin, Margin);
    createNameRow();
    createLengthGroup();
    createButtons();
}

QString QtNewAnimationDialog::getAnimationName() const
{
    return nameEdit->text();
}

int QtNewAnimationDialog::getAnimationLength() const
{
    return lengthSpinBox->value();
}

void QtNewAnimationDialog::createNameRow()
{
    nameLayout = new QHBoxLayout;
    nameLayout->setSpacing(Spacing);
    nameLabel = new QLabel("Animation Name:", this);
    nameEdit = new QLineEdit(this);
    nameEdit->setValidator(new QRegExpValidator(QRegExp("[_a-zA-Z][_a-zA-Z0-9]+"), nameEdit));
    nameLayout->addWidget(nameLabel);
    nameLayout->addWidget(nameEdit);
    mainLayout->addLayout(nameLayout);
}

void QtNewAnimationDialog::createLengthGroup()
{
    lengthGroup = new QGroupBox(this);
    groupLayout = new QVBoxLayout(lengthGroup);
    groupLayout->setSpacing(Spacing);
    groupLayout->setContentsMargins(Margin, Margin, Margin, Margin);
    lengthLayout = new QHBoxLayout;
    lengthLayout->setSpacing(Spacing);
    lengthLabel = new QLabel("Animation Length(ms):", lengthGroup);
    lengthSpinBox = new QSpinBox(lengthGroup);
    lengthSpinBox->setRange(0, 150000);
    lengthSpinBox->setValue(10000);
    lengthLayout->addWidget(lengthLabel);
    lengthLayout->addWidget(lengthSpinBox);
    groupLayout->addLayout(lengthLayout);
    mainLayout->addWidget(lengthGroup);
}

void QtNewAnimationDialog::createButtons()
{
    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    mainLayout->addWidget(buttonBox);
    connect(buttonBox, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttonBox, SIGNAL(rejected()), this, SLOT(reject()));
}

} // namespace halvern::qt
