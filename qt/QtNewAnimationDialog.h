#pragma once

#include <QDialog>

class QDialogButtonBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QSpinBox;
class QVBoxLayout;

namespace halvern::qt {

/// Asks for the name and the length of a new animation. The edit refuses what cannot become a name of a
/// letter or underscore and more of these or digits, but Ok does not wait for a whole one.
class QtNewAnimationDialog : public QDialog
{
    Q_OBJECT

public:
    /// An empty name, and a length of 10000 ms. Whoever makes it runs it and reads what was typed.
    explicit QtNewAnimationDialog(QWidget* parent);

    /// As it was typed; it may be empty.
    QString getAnimationName() const;

    /// In milliseconds, 0 to 150000.
    int getAnimationLength() const;

private:
    void createNameRow();
    void createLengthGroup();
    void createButtons();

    QVBoxLayout* mainLayout;
    QHBoxLayout* nameLayout;
    QLabel* nameLabel;
    QLineEdit* nameEdit;
    QGroupBox* lengthGroup;
    QVBoxLayout* groupLayout;
    QHBoxLayout* lengthLayout;
    QLabel* lengthLabel;
    QSpinBox* lengthSpinBox;
    QDialogButtonBox* buttonBox;
};

} // namespace halvern::qt
