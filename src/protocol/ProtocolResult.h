#pragma once

#include "analyzer/AnalyzerDataGen.h"

#include <QStringList>
#include <QTimer>
#include <QWidget>

class AnalyzerManager;
class MyButton;
class QAction;
class QMenu;
class QModelIndex;
class QStringListModel;
class ResultView;
class SearchEdit;
class WaveDataGen;

/// The section "Decoded Results": the frames of all shown analyzers as one list in the order of time.
///
/// It holds one page of texts, which its thread makes. The list follows the wave: without a search it begins at the
/// first frame at the wave's left edge. A click on a row brings its frame to the middle of the wave; the row stays
/// marked where it comes to stand then. Main thread; one instance. Must go before the manager.
class ProtocolResult : public QWidget {
    Q_OBJECT
public:
    /// @param manager, wave  not owned
    ProtocolResult(AnalyzerManager &manager, WaveDataGen &wave, QWidget *parent = nullptr);
    ~ProtocolResult() override;

    /// A capture begins, or another device has come: there is nothing to list.
    void clear();
    /// Analyzers may have been started: as long as they run and there is room on the page, it brings what they find.
    void followWorkers();
    /// The wave has moved.
    void slotWaveMoved();

    bool expanded = true;
    MyButton *btnExpand = nullptr;
    MyButton *btnSetting = nullptr;
    SearchEdit *search = nullptr;
    ResultView *view = nullptr;
    QMenu *menu = nullptr; ///< of the analyzers; null until it was opened

signals:
    /// The settings of the analyzer of a row were asked for.
    void settingsWanted(int itemIndex);

public slots:
    void staChangedSlot();
    void openMenuDig();
    /// Shows or hides the analyzer of a menu's entry.
    void trigerMenu(QAction *action);
    void searchStart(const QString &text);
    void listViewClickedSlot(const QModelIndex &index);
    void slotScrollRangChanged();
    void slotScrollValueChanged(qlonglong value);
    void slotAnalyzerChanged();
    void slotResultViewUpdate(const QStringList &list, bool isSel, int selIndex);
    void setListScrollParametes(qlonglong index, qlonglong max, int pageNum);

private slots:
    void slotWorkerEnded();
    void openSettings();
    void moveByKey(int key);
    /// From the search to the rows, and marks one if none is.
    void goToRows();
    void goToSearch();
    void copyRows(bool allRows);
    /// What can be done with the marked row.
    void openRowMenu(const QPoint &place);
    void bringNewFrames();

private:
    void buildColumn();
    void connectParts();
    void resetList(AnalyzerDataGen::Clicked clicked);
    void fillMenu();
    void emptyRows();
    /// Its place among the analyzers, -1 of one that is gone.
    [[nodiscard]] int itemOf(const Analyzer *analyzer) const;
    [[nodiscard]] bool isAnyWorkerRunning() const;

    AnalyzerManager &m_manager;
    WaveDataGen &m_wave;
    bool skipNextScroll = false; ///< the bar is being set by the list itself
    QStringListModel *rowsModel = nullptr;
    AnalyzerDataGen *dataGen = nullptr;
    QTimer m_newFrames{this};
    const Analyzer *m_clicked = nullptr; ///< of the row that was clicked last; never looked into
};
