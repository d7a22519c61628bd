#pragma once

#include "analyzer/AnalyzerDesk.h"
#include "controls/MyScrollbar.h"
#include "protocol/ProtocolResult.h"
#include "protocol/ResultView.h"
#include "protocol/SearchEdit.h"
#include "wave/WaveDataGen.h"

#include <QStringListModel>

/// The section with the decoded results on a capture of 100000 samples, of which the test's decoder makes a frame for
/// each edge: "edge 100", "edge 200" and so on of channel 0.
class ResultDesk {
public:
    static constexpr int rowsOnShow = 8;

    /// @param others  plug-ins behind the test's own, library 1 and so on
    explicit ResultDesk(const QStringList &others = {}) : desk(QStringList{QStringLiteral("sound")} + others)
    {
        wave.setDataSource(&desk.capture);
        wave.setViewWidth(1000);
        wave.zoomSetRatio(1.0);
        wave.setViewStart(0.0);
        QObject::connect(&wave, &WaveDataGen::sigViewRefresh, section.get(), [this](bool decRefresh) {
            if (decRefresh) {
                section->slotWaveMoved();
            }
        });
        section->resize(240, 400);
        section->show();
        section->view->setFixedHeight(rowsOnShow * ResultView::gridHeight());
    }
    /// Decodes a channel, and waits until all its frames are listed.
    bool add(int channel = 0)
    {
        if (!desk.add(channel) || !desk.waitForWorkers()) {
            return false;
        }
        std::uint64_t all = 0;
        for (int i = 0; i < desk.manager->count(); ++i) {
            all += desk.frames(i);
        }
        return QTest::qWaitFor([this, all] { return section->search->countText() == QString::number(all); }, 20000);
    }
    [[nodiscard]] QStringList rows() const
    {
        return qobject_cast<QStringListModel *>(section->view->model())->stringList();
    }
    [[nodiscard]] QString firstRow() const { return rows().value(0); }
    [[nodiscard]] bool begins(const char *row) const
    {
        return QTest::qWaitFor(
            [this, row] { return firstRow() == QString::fromLatin1(row) && rows().size() == rowsOnShow; }, 20000);
    }
    [[nodiscard]] QPoint placeOf(int row) const
    {
        return section->view->visualRect(section->view->model()->index(row, 0)).center();
    }
    void click(int row) const
    {
        QTest::mouseClick(section->view->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(row));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers held = Qt::NoModifier) const
    {
        QTest::keyClick(section->view, key, held);
    }

    AnalyzerDesk desk;
    WaveDataGen wave;
    std::unique_ptr<ProtocolResult> section = std::make_unique<ProtocolResult>(*desk.manager, wave);
};
