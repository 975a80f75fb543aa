#include "qt/ErrorMessages.h"

namespace halvern::qt {

void ErrorMessages::add(const QString& text)
{
    if (!pending.contains(text))
        pending += text;
    if (!isVisible())
        showNext();
}

void ErrorMessages::done(int result)
{
    if (!pending.isEmpty())
        pending.removeFirst();
    QErrorMessage::done(result);
    if (!isVisible())
        showNext();
}

void ErrorMessages::showNext()
{
    while (!pending.isEmpty()) {
        showMessage(pending.first().toHtmlEscaped());
        if (isVisible())
            return;
        pending.removeFirst(); // switched off
    }
}

} // namespace halvern::qt
