#pragma once

#include "wave/WaveDataGen.h"

#include <QCoreApplication>
#include <QThread>

#include <vector>

/// A generator with a source and a width, and a main window that notes and acknowledges each frame.
struct WaveViewer {
    explicit WaveViewer(const SmpData *data, int width = 1000)
    {
        QObject::connect(
            &gen, &WaveDataGen::sigViewRefresh, &gen,
            [this](bool decRefresh) {
                onMainThread = onMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
                refreshes.push_back(decRefresh);
                ratios.push_back(gen.ratioSasPix());
                if (acknowledging) {
                    gen.setFrameAck();
                }
            },
            Qt::DirectConnection);
        gen.setDataSource(data);
        gen.setViewWidth(width);
    }

    std::vector<bool> refreshes; ///< the flag of each sigViewRefresh
    std::vector<double> ratios;  ///< samples per pixel at each
    bool onMainThread = true;    ///< all of them were emitted there
    bool acknowledging = true;
    WaveDataGen gen; // last: its worker ends before what it reports to
};
