#include "wave/PulsePointer.h"

#include "analysis/PulseTimes.h"
#include "controls/Look.h"
#include "wave/ItemWaveArrow.h"
#include "wave/PulseHover.h"
#include "wave/WaveDataGen.h"

#include <QGraphicsScene>

PulsePointer::PulsePointer(QGraphicsScene &scene, const WaveDataGen &waveGen, QObject *parent)
    : QObject(parent),
      m_waveGen(waveGen),
      m_arrow(new ItemWaveArrow),
      m_freqUnits{QStringLiteral("Hz"), QStringLiteral("KHz"), QStringLiteral("MHz"), QStringLiteral("GHz")},
      m_timeUnits{QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
                  QStringLiteral("s")}
{
    scene.addItem(m_arrow);
    m_arrow->hide();
}

void PulsePointer::pointAt(int chn, const QRect &row, int x)
{
    SmpEdgeInfo info{};
    std::int64_t rate = 0;
    if (!pulseUnder(chn, x, info, rate)) {
        hide();
        return;
    }
    emit logMeasureChanged(pulseTexts(pulseTimes(info, rate), m_timeUnits, m_freqUnits));
    const Shown now{chn, info.nextEdge, m_waveGen.viewStart(), m_waveGen.ratioSasPix()};
    if (!(m_shown == now)) {
        m_shown = now;
        placeArrow(row, info);
    }
}

bool PulsePointer::pulseUnder(int chn, int x, SmpEdgeInfo &info, std::int64_t &rate) const
{
    const SmpData *capture = m_waveGen.source();
    const SmpReadLock lock(capture);
    if (!lock || chn < 0 || capture->smpFrequ() < 1) {
        return false;
    }
    const WaveWindow window{m_waveGen.viewStart(), m_waveGen.ratioSasPix(), m_waveGen.viewWidth()};
    const std::int64_t sample = sampleUnder(x / uiScale(), window);
    rate = capture->smpFrequ();
    return window.ratio > 0.0 && sample >= 0 && sample < capture->smpCount() &&
           capture->edgeNeighbours(chn, sample, info) == 0;
}

void PulsePointer::placeArrow(const QRect &row, const SmpEdgeInfo &info)
{
    const int s = uiScale();
    m_arrow->setPos(0, row.top() + 2 * s);
    m_arrow->setSize({row.width(), row.height() - 4 * s});
    m_arrow->setSpans(arrowSpans(info, {m_waveGen.viewStart(), m_waveGen.ratioSasPix(), row.width() / s}));
    m_arrow->show();
}

void PulsePointer::hide()
{
    m_arrow->hide();
    forget();
    emit logMeasureChanged(noPulseTexts());
}

void PulsePointer::forget()
{
    m_shown = {};
}
