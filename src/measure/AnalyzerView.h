#pragma once

#include <QPointer>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <array>

class Annotations;
class ColorLump;
class DevBase;
class MeasureView;
class MeasureViewAChn;
class PulseMeasure;
class QVBoxLayout;
class VoltageMeasureView;

/// The right-hand panel: a column of collapsible sections, and the signals between them and the main view.
///
/// The main window connects the main view to this panel only; inside, the sections are connected on. A signal whose
/// name begins with "slot" is a pure relay. Main thread; one instance.
///
/// Every section has its place in the column, whether it is built or not, and a separator below it but for the last. To
/// add one of this folder: make it in buildSections() with addSection(), connect it in connectSections(), and have
/// reload() tell it of another device; those of the analyzers are made by who knows them and handed in. Its separator
/// comes and goes with it. The last place, that of the results, takes the spare height.
class AnalyzerView : public QWidget {
    Q_OBJECT
public:
    /// The places of the column, from the top.
    enum Place { AnalogMeasures, Measures, Pulses, MarkerPairs, VoltageMarkers, Analyzers, Results, PlaceCount };

    explicit AnalyzerView(const DevBase &device, QWidget *parent = nullptr);

    /// Puts a section at a place that is still free. Takes the widget over.
    void addSection(Place place, QWidget *section);

    /// Brings the panel in line with another device, or with what the device has become.
    void reload(const DevBase &device);

    MeasureViewAChn *measureViewAChn = nullptr; ///< shown for a model with analog channels, as the voltages
    MeasureView *measureView = nullptr;
    PulseMeasure *pulseMeasure = nullptr;
    Annotations *annotations = nullptr;
    VoltageMeasureView *voltageMeasureView = nullptr;

signals:
    /// `type` 0 a pair was added, 1 deleted, 2 a marker's button, 3 a pair is to be shown; `id` a marker's.
    void timingMarkerPairClicked(int type, int id);
    void slotTimMarkPairChanged(int type, int phyId, QString timeData, QString timeToal);
    void pulseMeasureChanged();
    void slotPulseMeasureChangedAll(QStringList);
    void slotPulseMeasureChangedbyTimeMarker(int, QStringList);
    void slotLogMeasureChanged(QStringList);
    void slotVoltageMarkerValueChanged(QStringList);
    void voltageChnChanged(int chnIndex);
    void voltageMarkerClicked(int index);
    void slotParameterRefreshAch();

public slots:
    void slotAddPairClicked(int id);
    void slotDelPairClicked(int id);
    void slotLablePairClicked(int id);
    void slotLocationPairClicked(int id);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void buildSections();
    void connectSections();
    /// Shows the sections that the device has, and a separator between each two of them.
    void showSections();

    std::array<QWidget *, PlaceCount> m_sections{}; ///< by place; null for one that is not built
    QPointer<const DevBase> m_device;               ///< null from its end until reload()
    QVector<ColorLump *> separators;                ///< number i stands below place i
    QVBoxLayout *column = nullptr;
    QWidget *m_spare = nullptr; ///< at the place of the results while that is free
};
