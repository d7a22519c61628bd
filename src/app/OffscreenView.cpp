#include "app/OffscreenView.h"

#include "analyzer/AnalyzerManager.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "protocol/DecodedWave.h"
#include "wave/ItemChnSidebar.h"
#include "wave/MainView.h"
#include "wave/RowColumn.h"
#include "wave/TimeView.h"
#include "wave/WaveDataGen.h"

#include <QCoreApplication>
#include <QGridLayout>

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::seconds textPatience{10}; ///< with a decoder: what is missing by then is missing in the picture

} // namespace

OffscreenView::OffscreenView(AnalyzerManager &manager)
    : m_waves(new WaveDataGen(this)),
      m_ruler(new TimeView(m_waves, this)),
      m_rows(new MainView(m_waves, this)),
      m_decoded(std::make_unique<DecodedWave>(manager, nullptr, textPatience))
{
    setAttribute(Qt::WA_DontShowOnScreen);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->setColumnMinimumWidth(0, dp(ItemChnSidebar::columnWidth));
    grid->addWidget(m_ruler, 0, 1);
    grid->addWidget(m_rows, 1, 0, 1, 2);
    grid->setRowStretch(1, 1);
    grid->setColumnStretch(1, 1);
    connect(m_waves, &WaveDataGen::sigViewRefresh, m_rows, &MainView::refreshWave);
    m_waves->setDataSource(gDev->smpData.get());
    m_waves->setClampToData(!gDev->isAnalogModel());
    m_rows->rebuildChannels(*gDev);
    showLabels(manager);
}

OffscreenView::~OffscreenView()
{
    m_waves->setDataSource(nullptr); // its worker reads the device's capture
}

void OffscreenView::showLabels(const AnalyzerManager &manager)
{
    const QStringList usage = manager.channelUsage(-1);
    QVector<QPair<int, QString>> labels;
    for (int i = 0; i + 1 < usage.size(); i += 2) {
        labels.append({usage.at(i).toInt(), usage.at(i + 1)});
    }
    m_rows->slotAnalyzerItemChanged(labels);
}

void OffscreenView::showPart(QSize size, bool fits, double start, double end)
{
    resize(size);
    show();
    QCoreApplication::processEvents(); // the layout, and what it tells
    const auto *rows = m_rows->findChild<RowColumn *>();
    if (fits && rows != nullptr) {
        resize(size.width(), std::min(size.height(), m_ruler->height() + rows->totalHeight()));
        QCoreApplication::processEvents();
    }
    m_waves->dataReady();
    m_waves->zoomToFill(start, end);
    QCoreApplication::processEvents();
}

ViewPicture OffscreenView::picture() const
{
    return {m_ruler, m_rows};
}
