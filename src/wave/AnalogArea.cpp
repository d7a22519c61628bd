#include "wave/AnalogArea.h"

#include "device/DevBase.h"
#include "wave/AChnParameterSet.h"
#include "wave/ItemAChWaveBackground.h"
#include "wave/ItemAChnSidebar.h"
#include "wave/ItemAChnWaveLine.h"

#include <QGraphicsScene>
#include <QtDebug>

AnalogArea::AnalogArea(QGraphicsScene &scene, const WaveDataGen &waveGen, QWidget &column, QObject *parent)
    : QObject(parent), m_scene(scene), m_waveGen(waveGen), m_column(column)
{}

AnalogArea::~AnalogArea()
{
    clear();
}

void AnalogArea::rebuild(DevBase &device)
{
    m_device = &device;
    const int channels = device.aChnEnable.size();
    if (channels != m_channels) {
        clear();
        if (channels > 0) {
            build(channels);
        }
    }
    if (m_sidebar) {
        m_traces->setDevice(device);
        m_sidebar->refresh(device);
    }
}

void AnalogArea::build(int channels)
{
    m_channels = channels;
    m_grid = std::make_unique<ItemAChWaveBackground>(&m_waveGen);
    m_traces = std::make_unique<ItemAChnWaveLine>(channels, &m_waveGen);
    m_scene.addItem(m_grid.get());
    m_scene.addItem(m_traces.get());
    m_sidebar = new ItemAChnSidebar(channels, &m_column);
    connect(m_sidebar, &ItemAChnSidebar::chnSetChangedACH, this, &AnalogArea::chnSetChangedACH);
    connect(m_sidebar, &ItemAChnSidebar::reachedByKey, this, &AnalogArea::reachedByKey);
    m_sidebar->show();
}

void AnalogArea::clear()
{
    if (m_sidebar && m_sidebar->mayGo()) {
        delete m_sidebar;
    }
    m_sidebar.clear();
    m_traces.reset();
    m_grid.reset();
    m_channels = 0;
}

void AnalogArea::lay(QSize size)
{
    if (m_sidebar) {
        m_grid->setSize(size);
        m_traces->setSize(size);
        m_sidebar->lay(size.height());
    }
}

int AnalogArea::height() const
{
    return m_sidebar ? m_sidebar->height() : 0;
}

int AnalogArea::zeroY(int channel) const
{
    return m_sidebar ? m_sidebar->zeroY(channel) : 0;
}

int AnalogArea::fullScaleMv(int channel) const
{
    return m_sidebar ? m_sidebar->fullScaleMv(channel) : 0;
}

void AnalogArea::take(int type, int id, int value)
{
    if (!m_sidebar) {
        return;
    }
    switch (type) {
    case aChnChange::enabled:
        switchChannel(id, value != 0);
        break;
    case aChnChange::look:
        m_traces->update();
        break;
    case aChnChange::fullScale:
        m_traces->setFullScale(id, value);
        break;
    case aChnChange::zeroLevel:
        m_traces->setZeroY(id, value);
        break;
    case aChnChange::probe: // of which the traces take no notice
        qDebug("???? > --- AChnProbe, update Y1Y2 information and VoltageDiv");
        break;
    default:
        break;
    }
}

void AnalogArea::switchChannel(int channel, bool on)
{
    QVector<bool> enabled = m_device ? m_device->aChnEnable : QVector<bool>();
    if (channel >= 0 && channel < enabled.size() && enabled[channel] != on) {
        enabled[channel] = on;
        m_device->setAChnEnable(enabled);
    }
    m_sidebar->setChnEnabled(channel, on);
    m_traces->setChnEnabled(channel, on);
}

void AnalogArea::showTriggers()
{
    if (m_sidebar) {
        m_sidebar->showTriggers();
    }
}

QVector<QWidget *> AnalogArea::tabStops() const
{
    return m_sidebar ? m_sidebar->tabStops() : QVector<QWidget *>();
}
