#include "measure/AnalyzerView.h"

#include "controls/ColorLump.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "measure/Annotations.h"
#include "measure/MeasureView.h"
#include "measure/MeasureViewAChn.h"
#include "measure/PulseMeasure.h"
#include "measure/VoltageMeasureView.h"
#include "wave/MarkerChange.h"

#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr int separatorHeight = 2; // units
constexpr int border = 1;          // units
constexpr int margin = 3;          // units

} // namespace

AnalyzerView::AnalyzerView(const DevBase &device, QWidget *parent) : QWidget(parent), m_device(&device)
{
    column = new QVBoxLayout(this);
    column->setContentsMargins(dp(margin), dp(margin), dp(margin), dp(margin));
    column->setSpacing(dp(4));
    buildSections();
    connectSections();
}

void AnalyzerView::buildSections()
{
    measureViewAChn = new MeasureViewAChn(this);
    measureView = new MeasureView(this);
    pulseMeasure = new PulseMeasure(*m_device, this);
    annotations = new Annotations(*m_device, this);
    voltageMeasureView = new VoltageMeasureView(this);
    for (int place = 0; place + 1 < PlaceCount; ++place) {
        separators.append(new ColorLump(dp(separatorHeight), gGreys[5], 0, 0, this));
        column->addWidget(separators.constLast());
    }
    m_spare = new QWidget(this);
    column->addWidget(m_spare, 1);
    addSection(AnalogMeasures, measureViewAChn);
    addSection(Measures, measureView);
    addSection(Pulses, pulseMeasure);
    addSection(MarkerPairs, annotations);
    addSection(VoltageMarkers, voltageMeasureView);
}

void AnalyzerView::addSection(Place place, QWidget *section)
{
    m_sections[place] = section;
    if (place == Results) {
        delete m_spare;
        m_spare = nullptr;
        column->addWidget(section, 1);
    } else {
        column->insertWidget(column->indexOf(separators.at(place)), section);
    }
    showSections();
}

void AnalyzerView::connectSections()
{
    connect(annotations, &Annotations::addPairClicked, this, &AnalyzerView::slotAddPairClicked);
    connect(annotations, &Annotations::delPairClicked, this, &AnalyzerView::slotDelPairClicked);
    connect(annotations, &Annotations::markerPairClicked, this, &AnalyzerView::slotLablePairClicked);
    connect(annotations, &Annotations::locationPairClicked, this, &AnalyzerView::slotLocationPairClicked);
    connect(this, &AnalyzerView::slotTimMarkPairChanged, annotations, &Annotations::slotTimingMarkerPairChanged);
    connect(pulseMeasure, &PulseMeasure::setChanged, this, &AnalyzerView::pulseMeasureChanged);
    connect(this, &AnalyzerView::slotPulseMeasureChangedAll, pulseMeasure, &PulseMeasure::slotValueChanged);
    connect(this, &AnalyzerView::slotPulseMeasureChangedbyTimeMarker, pulseMeasure,
            &PulseMeasure::slotValueChangedbyTimeMarker);
    connect(this, &AnalyzerView::slotLogMeasureChanged, measureView, &MeasureView::slotValueChanged);
    connect(this, &AnalyzerView::slotParameterRefreshAch, measureViewAChn, &MeasureViewAChn::slotMeasureChanged);
    connect(this, &AnalyzerView::slotVoltageMarkerValueChanged, voltageMeasureView,
            &VoltageMeasureView::slotValueChanged);
    connect(voltageMeasureView, &VoltageMeasureView::markerPairClicked, this, &AnalyzerView::voltageMarkerClicked);
    connect(voltageMeasureView, &VoltageMeasureView::chnBtnClicked, this, &AnalyzerView::voltageChnChanged);
}

void AnalyzerView::showSections()
{
    const auto isShown = [this](int place) {
        const bool analogOnly = place == AnalogMeasures || place == VoltageMarkers;
        return m_sections[std::size_t(place)] != nullptr && (!analogOnly || (m_device && m_device->isAnalogModel()));
    };
    int last = PlaceCount - 1;
    while (last > 0 && !isShown(last)) {
        --last;
    }
    for (int place = 0; place < PlaceCount; ++place) {
        if (m_sections[std::size_t(place)] != nullptr) {
            m_sections[std::size_t(place)]->setVisible(isShown(place));
        }
        if (place < separators.size()) {
            separators.at(place)->setVisible(isShown(place) && place < last);
        }
    }
}

void AnalyzerView::reload(const DevBase &device)
{
    m_device = &device;
    showSections();
    measureViewAChn->reload();
    measureView->reload();
    pulseMeasure->reload(device);
    annotations->reload(device);
    voltageMeasureView->reload();
}

void AnalyzerView::slotAddPairClicked(int id)
{
    emit timingMarkerPairClicked(pairRequest::add, id);
}

void AnalyzerView::slotDelPairClicked(int id)
{
    emit timingMarkerPairClicked(pairRequest::remove, id);
}

void AnalyzerView::slotLablePairClicked(int id)
{
    emit timingMarkerPairClicked(pairRequest::marker, id);
}

void AnalyzerView::slotLocationPairClicked(int id)
{
    emit timingMarkerPairClicked(pairRequest::location, id);
}

void AnalyzerView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), gGreys[9]);
    painter.fillRect(rect().adjusted(dp(border), dp(border), -dp(border), -dp(border)), gGreys[7]);
}
