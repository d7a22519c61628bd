#pragma once

#include "analyzer/ListWorker.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

class AnalyzerManager;
class ResultsGate;

/// The thread of the results list: makes the one page of text that is seen, of however many frames.
///
/// The object lives on the main thread, and so does all that it tells: a page is handed over whole under a lock, the
/// newest one only, and is taken on the main thread before it is told. The thread itself is ListWorker's. It holds a
/// ResultsPass while it works, and no pointer into results that may have been replaced since: the manager says so
/// before, by slotModifyPrepare(), and who then finds that it lacks something asks for a reset by resetWanted(). A
/// thread that was held fast in a plug-in, and lost its pass, is left behind; the next request has another one made.
class AnalyzerDataGen : public QObject {
    Q_OBJECT
public:
    /// Who is listed, asked on the main thread at each reset.
    using Sources = std::function<std::vector<ResultSource>()>;

    /// Starts the thread. @param gate  of the results; outlives this
    AnalyzerDataGen(ResultsGate &gate, Sources sources, QObject *parent = nullptr);
    /// The same for the analyzers of a manager that are shown in the list.
    explicit AnalyzerDataGen(AnalyzerManager &manager, QObject *parent = nullptr);
    /// Ends the thread, whatever it does, and waits for it: within one frame. One that is held fast in a plug-in is
    /// left behind.
    ~AnalyzerDataGen() override;

    // ---- main thread -----------------------------------------------------------------------------------------------

    /// What happens to the row that was clicked when the list starts anew.
    enum class Clicked {
        Forget, ///< it is no longer marked
        Keep    ///< it stays marked where its frame is on the page
    };
    /// Starts the list anew. A request to scroll that is still waiting is dropped.
    void reset(const ResultList::Query &query, Clicked clicked = Clicked::Forget);
    /// Nothing that was made before the next reset is told any more.
    void dropPages();
    /// Marks a row of the list; it need not be on the page.
    void markRow(qint64 listRow);
    /// The marked row, counted from the page's first one and so perhaps outside of it; -1 until one was clicked.
    [[nodiscard]] qint64 selectedRow() const;
    /// A row of the list that is shown is marked.
    [[nodiscard]] bool isRowMarked() const { return m_mark && m_mark->resetNumber == m_shown.resetNumber; }

    [[nodiscard]] const QStringList &rows() const { return m_shown.rows; } ///< of the page that was told last
    [[nodiscard]] qint64 topRow() const { return m_shown.topRow; }
    [[nodiscard]] qint64 totalRows() const { return m_shown.totalRows; }
    [[nodiscard]] int rowNum() const { return m_rowNum; }
    /// The last reset has been answered: all of its frames have been looked at. True too when nothing is to be told.
    [[nodiscard]] bool isAtRest() const
    {
        return m_lastReset <= m_droppedReset || (m_shown.isWhole && m_shown.resetNumber == m_lastReset);
    }
    /// The frame of a row of that page; null outside of it.
    [[nodiscard]] const ResultList::Row *frameAt(qint64 pageRow) const;

public slots:
    /// Results are about to be replaced: those that are at hand now are not looked at again.
    void slotModifyPrepare();
    /// The page begins at row `index`. One behind totalRows() is passed over.
    void begFrameChanged(qlonglong index);
    /// So many rows fit in the view: the page is made anew from the same first row.
    void slotRowNumChanged(int rowNum);

    /// Readers were left behind: if the thread is one of them the list is asked for anew.
    void slotReadersLost();

signals:
    /// @param selectedListRow  see selectedRow()
    void listChanged(QStringList list, bool isSelected, int selectedListRow);
    /// @param index  number of the page's first row  @param max  rows as far as known  @param pageNum  rows that fit
    void listTotalChanged(qlonglong index, qlonglong max, int pageNum);
    /// Results were replaced while the list still needed them: it asks for a reset.
    void resetWanted();

private:
    /// The row that was clicked.
    struct Mark {
        qint64 listRow = 0;
        std::uint64_t resetNumber = 0; ///< the list that `listRow` counts in; 0 while its row is unknown
        std::optional<ResultList::Row> frame;
    };

    void startWorker();
    void takePage();
    void findMark();
    /// Asks the thread; another one when it was left behind.
    void request(const std::function<void(ListWorker::Requests &)> &write);

    ResultsGate &m_gate;
    const Sources m_sources;
    ListWorker::Page m_shown;
    std::optional<Mark> m_mark;
    bool isSelected = false; ///< a row was clicked
    int m_rowNum = 0;
    std::uint64_t m_lastReset = 0;
    std::uint64_t m_droppedReset = 0;     ///< pages of this one and those before are not told
    std::shared_ptr<ListWorker> m_worker; ///< the thread's too
    std::thread m_thread;
};
