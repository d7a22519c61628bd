#pragma once

#include "app/ViewPicture.h"

#include <QSize>
#include <QVector>
#include <QWidget>

#include <memory>

class AnalyzerManager;
class DecodedWave;
class MainView;
class TimeView;
class WaveDataGen;

/// The view of the device's capture without a window around it: ruler, names and waves, as large as it is told to be.
///
/// It shows `gDev`, which outlives it, with the channels that the device has in use. It waits for what decoders tell,
/// ten seconds at most, since nothing is drawn again. Main thread.
class OffscreenView : public QWidget {
    Q_OBJECT
public:
    /// @param manager  what its analyzers have found is shown; not owned, outlives this
    explicit OffscreenView(AnalyzerManager &manager);
    ~OffscreenView() override;

    /// Lays the view out and shows samples `start` to `end` in all its width.
    /// @param size  device pixels
    /// @param fits  makes it lower, if its rows need less
    void showPart(QSize size, bool fits, double start, double end);
    /// What is shown. Good until the next showPart().
    [[nodiscard]] ViewPicture picture() const;

private:
    void showLabels(const AnalyzerManager &manager);

    WaveDataGen *m_waves;
    TimeView *m_ruler;
    MainView *m_rows;
    std::unique_ptr<DecodedWave> m_decoded;
};
