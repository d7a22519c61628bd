#include "wave/AnalogReadings.h"

#include "analysis/AnalogParameters.h"
#include "store/SmpData.h"

#include <utility>

AnalogReadings::AnalogReadings(QObject *parent) : QObject(parent)
{
    connect(&m_measurer, &AnalogMeasurer::measured, this, &AnalogReadings::take, Qt::QueuedConnection);
}

void AnalogReadings::clear(const SmpData *source)
{
    m_measurer.cancel();
    m_texts.clear();
    for (int chn = 0; source && chn < source->aChnCount; ++chn) {
        m_texts.append(QString());
    }
}

void AnalogReadings::setProbe(int chn, int factor)
{
    if (chn < 0) {
        return;
    }
    while (m_probes.size() <= chn) {
        m_probes.append(1);
    }
    m_probes[chn] = factor;
}

void AnalogReadings::measure(const SmpData *source)
{
    AnalogMeasurer::Job job;
    {
        const SmpReadLock reading(source);
        for (int chn = 0; chn < m_texts.size(); ++chn) {
            const std::span<const std::int8_t> samples =
                reading ? analogSamples(*source, chn) : std::span<const std::int8_t>();
            job.channels.push_back({{samples.begin(), samples.end()}, probe(chn)});
        }
        job.rate = reading ? source->smpFrequ() : 0;
    }
    if (job.channels.empty()) {
        emit changed();
    } else {
        m_measurer.measure(std::move(job));
    }
}

void AnalogReadings::take()
{
    if (std::optional<QStringList> texts = m_measurer.takeTexts()) {
        m_texts = *std::move(texts);
        emit changed();
    }
}
