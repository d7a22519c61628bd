#include "wave/TimeView.h"

#include "app/Globals.h"
#include "wave/WaveDataGen.h"

#include <QPainter>

RulerMark rulerMark(const TimeTick &tick, int dpi, int height)
{
    const auto scaled = [dpi](int pixels) { return pixels * dpi / 96; };
    const int scale = dpi / 96;
    const int x = tick.x * scale;
    const int lineX = x + scale / 2;
    if (tick.kind == 0) {
        return {QPoint(x - 6 * dpi / 192, scaled(16)), QLine(lineX, scaled(21), lineX, height - 2)};
    }
    return {QPoint(x - scaled(8) / 2, scaled(28)), QLine(lineX, scaled(31), lineX, height - 2)};
}

TimeView::TimeView(const WaveDataGen *waveGen, QWidget *parent) : QWidget(parent), m_waveGen(waveGen)
{
    setFixedHeight(dp(36));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void TimeView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setFont(gFontMain);
    painter.setPen(QPen(gGreys[0], uiScale()));
    painter.fillRect(0, 0, width(), height() - 1, gGreys[8]);
    painter.fillRect(0, height() - 1, width(), 1, gGreys[3]);

    m_lines.clear();
    for (const TimeTick &tick : m_waveGen->timeTicks()) {
        const RulerMark mark = rulerMark(tick, gDpi, height());
        painter.drawText(mark.text, QString::fromLatin1(tick.text));
        m_lines.append(mark.line);
    }
    painter.drawLines(m_lines);
}
