#include "wave/PointerTag.h"

#include "controls/Look.h"
#include "settings/Language.h"

#include <algorithm>

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

void PointerTag::pointAt(int x, const QString &text, std::span<const QRect> flags)
{
    setVisible(!text.isEmpty());
    if (text.isEmpty()) {
        return;
    }
    if (text != this->text()) {
        setText(text); // which is its accessible name, too
    }
    setGeometry(placeBeside(x, flags));
    lower(); // between flags on both sides the one that is covered stays whole
}

QRect PointerTag::placeBeside(int x, std::span<const QRect> flags) const
{
    const QRect ruler = parentWidget()->rect();
    const int width = sizeHint().width();
    const QRect right(x + dp(fromColumn), ruler.height() - dp(tagHeight) - 1, width, dp(tagHeight));
    const QRect left = right.translated(-2 * dp(fromColumn) - width, 0);
    const auto isClear = [&](const QRect &place) {
        return ruler.contains(place) &&
               std::none_of(flags.begin(), flags.end(), [&](const QRect &flag) { return flag.intersects(place); });
    };
    const bool isRight = isClear(right) || (!isClear(left) && ruler.contains(right));
    return isRight ? right : left;
}
