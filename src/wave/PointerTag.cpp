#include "wave/PointerTag.h"

#include "controls/Look.h"
#include "settings/Language.h"

namespace {

constexpr int fromColumn = 10; ///< pixels at 96 dpi: clears a flag at the same column
constexpr int tagHeight = 15;  ///< pixels at 96 dpi

} // namespace

PointerTag::PointerTag(QWidget *ruler) : QLabel(ruler)
{
    setFont(gFontSmall);
    setStyleSheet(QStringLiteral("QLabel{background-color:%1;color:%2;border:%3px solid %4;padding:0 %5px;}")
                      .arg(gGreys[7].name(), gGreys[0].name())
                      .arg(uiScale())
                      .arg(gGreys[4].name())
                      .arg(dp(3)));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleDescription(::tr("Time and sample at the pointer"));
    hide();
}

void PointerTag::pointAt(int x, const QString &text)
{
    setVisible(!text.isEmpty());
    if (text.isEmpty()) {
        return;
    }
    if (text != this->text()) {
        setText(text); // which is its accessible name, too
    }
    const int width = sizeHint().width();
    const int ruler = parentWidget()->width();
    const bool fits = x + dp(fromColumn) + width <= ruler;
    const int left = fits ? x + dp(fromColumn) : x - dp(fromColumn) - width;
    setGeometry(left, parentWidget()->height() - dp(tagHeight) - 1, width, dp(tagHeight));
    lower();
}
