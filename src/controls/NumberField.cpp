#include "controls/NumberField.h"

#include <QAccessible>
#include <QLineEdit>
#include <QStyle>
#include <QToolTip>

#include <cmath>

namespace {

// Properties of a field: the first is asked for by style sheets, the others keep what the fault covers.
constexpr const char *faultProperty = "fault";
constexpr const char *toolTipProperty = "toolTipWithoutFault";
constexpr const char *descriptionProperty = "descriptionWithoutFault";

void setFault(QLineEdit &field, bool on)
{
    field.setProperty(faultProperty, on);
    // A sheet looks at properties only when it is applied.
    field.style()->unpolish(&field);
    field.style()->polish(&field);
    field.update();
}

} // namespace

std::optional<double> typedNumber(const QString &text)
{
    QString number = text.trimmed();
    if (number.count(QLatin1Char(',')) + number.count(QLatin1Char('.')) > 1) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double value = number.replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&isNumber);
    return isNumber && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

bool hasFault(const QLineEdit &field)
{
    return field.property(faultProperty).toBool();
}

void showFault(QLineEdit &field, const QString &why)
{
    if (!hasFault(field)) {
        field.setProperty(toolTipProperty, field.toolTip());
        field.setProperty(descriptionProperty, field.accessibleDescription());
        setFault(field, true);
        QObject::connect(&field, &QLineEdit::textEdited, &field, [&field] { clearFault(field); });
    }
    field.setToolTip(why);
    field.setAccessibleDescription(why);
    QAccessibleEvent alert(&field, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    if (field.isVisible()) {
        QToolTip::showText(field.mapToGlobal(QPoint(0, field.height())), why, &field);
    }
}

void clearFault(QLineEdit &field)
{
    if (hasFault(field)) {
        field.setToolTip(field.property(toolTipProperty).toString());
        field.setAccessibleDescription(field.property(descriptionProperty).toString());
        setFault(field, false);
    }
}
