#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QVector>

#include <memory>

class DevBase;
class ItemAChnSidebar;
class ItemAChnWaveLine;
class ItemAChWaveBackground;
class QGraphicsScene;
class QWidget;
class WaveDataGen;

/// The area above the digital rows in which all analog traces overlap: sidebar, grid and traces. Only a model with
/// analog channels has one.
///
/// Owned by the main view, GUI thread. Lengths are device pixels from the top of the area.
class AnalogArea : public QObject {
    Q_OBJECT
public:
    /// @param scene, waveGen, column  not owned, outlive this. The sidebar stands at the top of `column`.
    AnalogArea(QGraphicsScene &scene, const WaveDataGen &waveGen, QWidget &column, QObject *parent);
    ~AnalogArea() override;

    /// Makes or removes the area for `device`, and fills it from the device and the stored configuration. It has no
    /// place until lay().
    void rebuild(DevBase &device);
    /// @param size  of the area in the scene
    void lay(QSize size);
    [[nodiscard]] bool exists() const { return !m_sidebar.isNull(); }
    /// Height of the area; 0 without one.
    [[nodiscard]] int height() const;

    /// The row of a channel's zero level, which is the vertical centre of its flag; 0 for a channel that does not
    /// exist.
    [[nodiscard]] int zeroY(int channel) const;
    /// The millivolts that the area's height stands for, ten times the channel's volts per division; 0 for a channel
    /// that does not exist.
    [[nodiscard]] int fullScaleMv(int channel) const;

    /// Does what chnSetChangedACH() told of, but for triggers: those of the digital rows are not the area's.
    void take(int type, int id, int value);
    /// Shows the device's analog triggers.
    void showTriggers();
    /// The sidebar's controls in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

signals:
    /// See ItemAChnSidebar.
    void chnSetChangedACH(int type, int id, int value);
    void reachedByKey(QWidget *control);

private:
    void build(int channels);
    void clear();
    void switchChannel(int channel, bool on);

    QGraphicsScene &m_scene;
    const WaveDataGen &m_waveGen;
    QWidget &m_column;
    QPointer<ItemAChnSidebar> m_sidebar; ///< the column's
    std::unique_ptr<ItemAChWaveBackground> m_grid;
    std::unique_ptr<ItemAChnWaveLine> m_traces;
    QPointer<DevBase> m_device;
    int m_channels = 0;
};
