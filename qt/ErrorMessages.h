#pragma once

#include <QErrorMessage>
#include <QStringList>

namespace halvern::qt {

/// Shows plain texts one after the other, none twice at a time. The user can switch each off.
class ErrorMessages : public QErrorMessage
{
public:
    using QErrorMessage::QErrorMessage;

    void add(const QString& text);

protected:
    void done(int result) override;

private:
    void showNext();

    QStringList pending; // the first is shown
};

} // namespace halvern::qt
