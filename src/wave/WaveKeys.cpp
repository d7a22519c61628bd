#include "wave/WaveKeys.h"

#include "wave/MarkerBoard.h"
#include "wave/RowColumn.h"
#include "wave/VoltageBoard.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"
#include "wave/ZoomFlag.h"

#include <QCursor>
#include <QKeySequence>
#include <QShortcut>

namespace {

constexpr int markersOfKeys = 10;     ///< five pairs
constexpr double beyondEnds = 1000.0; ///< samples by which Home and End pass the data, to show where it ends

} // namespace

WaveKeys::WaveKeys(const WaveParts &parts, WaveGestures &gestures, QWidget *parent)
    : QObject(parent), m_parts(parts), m_gestures(gestures), m_owner(parent)
{
    buildTimeKeys();
    buildMarkerKeys();
    addSingleKey(int(Qt::CTRL) | int(Qt::Key_C), [this] { emit pictureWanted(); });
}

void WaveKeys::buildTimeKeys()
{
    for (const int key : {Qt::Key_Up, Qt::Key_Plus, Qt::Key_Equal}) {
        addSingleKey(key, [this] { slotShortCutZoomIn(); });
    }
    for (const int key : {Qt::Key_Down, Qt::Key_Minus}) {
        addSingleKey(key, [this] { slotShortCutZoomOut(); });
    }
    addSingleKey(Qt::Key_Home, [this] { slotShortCutMovToBeg(); });
    addSingleKey(Qt::Key_End, [this] { slotShortCutMovToEnd(); });
    for (const int step : {-1, 1}) {
        addKey(step < 0 ? Qt::Key_Left : Qt::Key_Right, [this, step] { m_gestures.pan(step); });
    }
    addSingleKey(Qt::Key_Backspace, [this] { m_parts.waveGen.goBack(); }); // held down it would run through all views
}

void WaveKeys::buildMarkerKeys()
{
    for (int digit = 0; digit < markersOfKeys; ++digit) {
        addSingleKey(Qt::Key_0 + digit, [this, digit] { slotShortCutTimeMarker(digit); });
    }
    for (const int step : {-1, 1}) {
        const int sideways = step < 0 ? Qt::Key_Left : Qt::Key_Right;
        addKey(int(Qt::SHIFT) | sideways, [this, step] { m_parts.markers.moveByKey(step); });
        addKey(int(Qt::CTRL) | int(Qt::SHIFT) | sideways,
               [this, step] { m_parts.markers.moveToEdge(step, m_parts.rows.enabledChannels()); });
        addKey(int(Qt::SHIFT) | (step < 0 ? Qt::Key_Up : Qt::Key_Down),
               [this, step] { m_parts.voltages.moveByKey(step); });
    }
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        QShortcut *lays = addSingleKey(key, [this] { m_parts.voltages.layDown(); });
        lays->setEnabled(false); // at all other times Enter belongs to what has the focus
        connect(&m_parts.voltages, &VoltageBoard::followingChanged, lays, &QShortcut::setEnabled);
    }
}

QShortcut *WaveKeys::addKey(int key, const std::function<void()> &act)
{
    auto *shortcut = new QShortcut(QKeySequence(key), m_owner);
    connect(shortcut, &QShortcut::activated, this, act);
    return shortcut;
}

QShortcut *WaveKeys::addSingleKey(int key, const std::function<void()> &act)
{
    QShortcut *shortcut = addKey(key, act);
    shortcut->setAutoRepeat(false);
    return shortcut;
}

void WaveKeys::zoomAboutMiddle(int flag)
{
    if (m_gestures.canMoveTime()) {
        emit zoomChangedByMouse(flag, QPoint(m_parts.view.width() / 2, 0));
    }
}

void WaveKeys::slotShortCutZoomIn()
{
    zoomAboutMiddle(zoomFlag::in);
}

void WaveKeys::slotShortCutZoomOut()
{
    zoomAboutMiddle(zoomFlag::out);
}

void WaveKeys::slotShortCutMovToBeg()
{
    if (m_gestures.canMoveTime()) {
        m_parts.waveGen.setViewStart(-beyondEnds);
    }
}

void WaveKeys::slotShortCutMovToEnd()
{
    if (m_gestures.canMoveTime()) {
        const WaveDataGen &waves = m_parts.waveGen;
        const auto samples = double(waves.sampleCount());
        m_parts.waveGen.setViewStart(samples - waves.viewWidth() * waves.ratioSasPix() + beyondEnds);
    }
}

void WaveKeys::slotShortCutTimeMarker(int digit)
{
    const QWidget *viewport = m_parts.view.viewport();
    const QPoint pointer = viewport->mapFromGlobal(QCursor::pos());
    const bool inside = viewport->rect().contains(pointer);
    m_parts.markers.callByKey((digit + markersOfKeys - 1) % markersOfKeys,
                              inside ? pointer.x() : m_parts.view.width() / 2);
}
