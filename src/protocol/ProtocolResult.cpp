#include "protocol/ProtocolResult.h"

#include "analyzer/AnalyzerManager.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/MyScrollbar.h"
#include "controls/PopupPlace.h"
#include "measure/SectionParts.h"
#include "protocol/ResultView.h"
#include "protocol/SearchEdit.h"
#include "settings/Language.h"
#include "wave/WaveDataGen.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QShortcut>
#include <QStringListModel>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int newFramesEvery = 250; // ms

} // namespace

ProtocolResult::ProtocolResult(AnalyzerManager &manager, WaveDataGen &wave, QWidget *parent)
    : QWidget(parent), m_manager(manager), m_wave(wave)
{
    dataGen = new AnalyzerDataGen(manager, this);
    buildColumn();
    connectParts();
    m_newFrames.setInterval(newFramesEvery);
    dataGen->slotRowNumChanged(view->rowsThatFit());
}

ProtocolResult::~ProtocolResult()
{
    delete dataGen; // before what it tells
}

void ProtocolResult::buildColumn()
{
    btnExpand = makeExpandButton(::tr("Decoded Results"), this);
    QLabel *title = makeSectionTitle(::tr("Decoded Results"), this);
    btnSetting = makeIconButton(QStringLiteral(":/res/btnSetting"), ::tr("Choose the analyzers to list"), this);
    search = new SearchEdit({}, this);
    view = new ResultView(this);
    view->setAccessibleName(::tr("Decoded Results"));
    rowsModel = new QStringListModel(this);
    view->setModel(rowsModel);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnSetting));
    column->addWidget(search);
    column->addWidget(view, 1);
    column->addStretch(0); // has the room while the view is hidden
}

void ProtocolResult::connectParts()
{
    connect(btnExpand, &QPushButton::clicked, this, &ProtocolResult::staChangedSlot);
    connect(btnSetting, &QPushButton::clicked, this, &ProtocolResult::openMenuDig);
    connect(search, &QLineEdit::textChanged, this, &ProtocolResult::searchStart);
    connect(search, &SearchEdit::keyMoved, this, [this](int key) {
        if (key == Qt::Key_Down) {
            goToRows();
        }
    });
    connect(search, &QLineEdit::returnPressed, this, [this] {
        goToRows();
        if (view->currentRow() >= 0) {
            listViewClickedSlot(view->currentIndex());
        }
    });
    auto *find = new QShortcut(QKeySequence(int(Qt::CTRL) | int(Qt::Key_F)), this);
    find->setAutoRepeat(false);
    connect(find, &QShortcut::activated, this, &ProtocolResult::goToSearch);
    connect(view, &ResultView::listRowChanged, dataGen, &AnalyzerDataGen::slotRowNumChanged);
    connect(view, &ResultView::pressed, this, [this](const QModelIndex &index) { // by any button
        dataGen->markRow(dataGen->topRow() + index.row());
    });
    connect(view, &ResultView::rowChosen, this, &ProtocolResult::listViewClickedSlot);
    connect(view, &ResultView::rowDoubleClicked, this, &ProtocolResult::openSettings);
    connect(view, &ResultView::keyMoved, this, &ProtocolResult::moveByKey);
    connect(view, &ResultView::copyWanted, this, &ProtocolResult::copyRows);
    connect(view, &ResultView::menuWanted, this, &ProtocolResult::openRowMenu);
    connect(view->bar, &MyScrollbar::rangChanged, this, &ProtocolResult::slotScrollRangChanged);
    connect(view->bar, &MyScrollbar::valueChanged, this, &ProtocolResult::slotScrollValueChanged);
    connect(dataGen, &AnalyzerDataGen::listTotalChanged, this, &ProtocolResult::setListScrollParametes);
    connect(dataGen, &AnalyzerDataGen::listChanged, this, &ProtocolResult::slotResultViewUpdate);
    connect(dataGen, &AnalyzerDataGen::resetWanted, this, [this] { resetList(AnalyzerDataGen::Clicked::Keep); });
    connect(&m_manager, &AnalyzerManager::analyzerItemChanged, this, &ProtocolResult::slotAnalyzerChanged);
    connect(&m_manager, &AnalyzerManager::analyzerDecodedChanged, this, &ProtocolResult::slotWorkerEnded);
    connect(&m_newFrames, &QTimer::timeout, this, &ProtocolResult::bringNewFrames);
}

// ---- what is listed

void ProtocolResult::resetList(AnalyzerDataGen::Clicked clicked)
{
    ResultList::Query query;
    query.searchText = search->text();
    query.begSample = query.searchText.isEmpty() ? m_wave.viewStart() : 0.0;
    query.endSample = double(m_wave.sampleCount());
    dataGen->reset(query, clicked);
}

void ProtocolResult::slotAnalyzerChanged()
{
    resetList(AnalyzerDataGen::Clicked::Forget);
    followWorkers();
}

void ProtocolResult::slotWorkerEnded()
{
    resetList(AnalyzerDataGen::Clicked::Keep); // its last frames have come
    followWorkers();
}

void ProtocolResult::slotWaveMoved()
{
    if (search->text().isEmpty() && m_wave.sampleCount() > 0) {
        resetList(AnalyzerDataGen::Clicked::Keep);
    }
}

void ProtocolResult::followWorkers()
{
    m_newFrames.start();
}

bool ProtocolResult::isAnyWorkerRunning() const
{
    for (int i = 0; i < m_manager.count(); ++i) {
        if (m_manager.isWorkerRunning(i)) {
            return true;
        }
    }
    return false;
}

void ProtocolResult::bringNewFrames()
{
    if (!isAnyWorkerRunning()) {
        m_newFrames.stop(); // the end of each has brought its frames
    } else if (dataGen->isAtRest() && dataGen->rows().size() < dataGen->rowNum()) { // a search begins anew each time
        resetList(AnalyzerDataGen::Clicked::Keep);
    }
}

void ProtocolResult::emptyRows()
{
    rowsModel->setStringList({});
    setListScrollParametes(0, 0, view->rowsThatFit());
}

void ProtocolResult::clear()
{
    const QSignalBlocker quiet(search);
    search->clear();
    dataGen->dropPages();
    emptyRows();
}

void ProtocolResult::searchStart(const QString &)
{
    emptyRows();
    resetList(AnalyzerDataGen::Clicked::Forget);
}

// ---- the page

void ProtocolResult::slotResultViewUpdate(const QStringList &list, bool isSel, int selIndex)
{
    if (rowsModel->stringList() != list) {
        rowsModel->setStringList(list);
    }
    view->markRow(isSel ? selIndex : -1);
}

void ProtocolResult::setListScrollParametes(qlonglong index, qlonglong max, int pageNum)
{
    const qlonglong grid = ResultView::gridHeight();
    MyScrollbar &bar = *view->bar;
    skipNextScroll = true;
    bar.setRange(0, grid * std::max<qlonglong>(max - pageNum, 0));
    if (bar.value / grid != index) { // a drag stands between two rows
        bar.setValue(grid * index);
    }
    skipNextScroll = false;
    search->setCount(max);
}

void ProtocolResult::slotScrollValueChanged(qlonglong value)
{
    if (!skipNextScroll) {
        dataGen->begFrameChanged(value / ResultView::gridHeight());
    }
}

void ProtocolResult::slotScrollRangChanged()
{
    slotScrollValueChanged(view->bar->value);
}

void ProtocolResult::listViewClickedSlot(const QModelIndex &index)
{
    const ResultList::Row *frame = dataGen->frameAt(index.row());
    dataGen->markRow(dataGen->topRow() + index.row());
    m_clicked = frame != nullptr ? frame->analyzer : nullptr;
    const double first = frame != nullptr ? double(frame->first) : 0.0;
    const double last = frame != nullptr ? double(frame->last) : 0.0;
    m_wave.zoomToRange(first, last);
}

int ProtocolResult::itemOf(const Analyzer *analyzer) const
{
    for (int i = 0; i < m_manager.count(); ++i) {
        if (analyzer != nullptr && m_manager.analyzerAt(i) == analyzer) {
            return i;
        }
    }
    return -1;
}

void ProtocolResult::openSettings()
{
    const int item = itemOf(m_clicked);
    if (item >= 0) {
        emit settingsWanted(item);
    }
}

void ProtocolResult::moveByKey(int key)
{
    const qlonglong total = dataGen->totalRows();
    const qlonglong top = dataGen->topRow();
    const qlonglong page = std::max(dataGen->rowNum(), 1);
    if (total < 1) {
        return;
    }
    const bool isMarked = view->currentRow() >= 0 || dataGen->isRowMarked();
    const qlonglong now = dataGen->isRowMarked() ? top + dataGen->selectedRow() : top + view->currentRow();
    qlonglong row = isMarked ? now : top;
    switch (key) {
    case Qt::Key_Up:
        row -= isMarked ? 1 : 0;
        break;
    case Qt::Key_Down:
        row += isMarked ? 1 : 0;
        break;
    case Qt::Key_PageUp:
        row -= page;
        break;
    case Qt::Key_PageDown:
        row += page;
        break;
    case Qt::Key_Home:
        row = 0;
        break;
    default:
        row = total - 1;
    }
    row = std::clamp<qlonglong>(row, 0, total - 1);
    dataGen->markRow(row);
    view->markRow(int(std::clamp<qlonglong>(row - top, -1, page)));
    if (row < top) {
        dataGen->begFrameChanged(row);
    } else if (row >= top + page) {
        dataGen->begFrameChanged(row - page + 1);
    }
}

void ProtocolResult::goToRows()
{
    if (rowsModel->rowCount() < 1) {
        return; // nothing was found, or not yet
    }
    view->setFocus(Qt::OtherFocusReason);
    if (view->currentRow() < 0) {
        moveByKey(Qt::Key_Down);
    }
}

void ProtocolResult::goToSearch()
{
    if (!expanded) {
        staChangedSlot();
    }
    search->setFocus(Qt::ShortcutFocusReason);
    search->selectAll();
}

void ProtocolResult::copyRows(bool allRows)
{
    const int row = view->currentRow();
    const QStringList rows = rowsModel->stringList();
    if (allRows && !rows.isEmpty()) {
        QApplication::clipboard()->setText(rows.join(QLatin1Char('\n')));
    } else if (!allRows && row >= 0) {
        QApplication::clipboard()->setText(rows.value(row));
    }
}

void ProtocolResult::openRowMenu(const QPoint &place)
{
    auto *rowMenu = new QMenu(this);
    rowMenu->setAttribute(Qt::WA_DeleteOnClose);
    rowMenu->setAccessibleName(::tr("Decoded Results"));
    const auto addCopy = [&](const QString &text, int key, bool allRows) {
        const QString keys = QKeySequence(key).toString(QKeySequence::NativeText);
        QAction *entry = rowMenu->addAction(text + QLatin1Char('\t') + keys);
        entry->setEnabled(allRows ? rowsModel->rowCount() > 0 : view->currentRow() >= 0);
        connect(entry, &QAction::triggered, this, [this, allRows] { copyRows(allRows); });
    };
    addCopy(::tr("Copy Row"), int(Qt::CTRL) | int(Qt::Key_C), false);
    addCopy(::tr("Copy Rows on Show"), int(Qt::CTRL) | int(Qt::SHIFT) | int(Qt::Key_C), true);
    const ResultList::Row *frame = dataGen->frameAt(view->currentRow());
    const int item = itemOf(frame != nullptr ? frame->analyzer : nullptr);
    if (item >= 0) { // tells whose row it is, too
        m_clicked = frame->analyzer;
        const QString title = m_manager.analyzerTitle(item).replace(QLatin1Char('&'), QStringLiteral("&&"));
        rowMenu->addSeparator();
        const QAction *settings = rowMenu->addAction(::tr("Settings of %1").arg(title) + QStringLiteral("..."));
        // Queued: the menu has closed before the dialog opens.
        connect(settings, &QAction::triggered, this, &ProtocolResult::openSettings, Qt::QueuedConnection);
    }
    rowMenu->popup(place);
}

// ---- the section

void ProtocolResult::staChangedSlot()
{
    expanded = !expanded;
    btnSetting->setVisible(expanded);
    search->setVisible(expanded);
    view->setVisible(expanded);
    showExpanded(*btnExpand, expanded);
}

void ProtocolResult::fillMenu()
{
    menu->clear();
    const QStringList states = m_manager.shownStateList();
    for (int i = 0; i < states.size(); ++i) {
        const QString name = states.at(i).section(QLatin1Char(','), 0, -2);
        QAction *entry = menu->addAction(trAnalyzer(name, name).replace(QLatin1Char('&'), QStringLiteral("&&")));
        entry->setCheckable(true);
        entry->setChecked(states.at(i).endsWith(QStringLiteral(",1")));
        entry->setData(i);
    }
    if (states.isEmpty()) {
        menu->addAction(::tr("None"))->setEnabled(false);
    }
}

void ProtocolResult::openMenuDig()
{
    if (menu == nullptr) {
        menu = new QMenu(this);
        connect(menu, &QMenu::triggered, this, &ProtocolResult::trigerMenu);
    }
    fillMenu();
    menu->popup(popupPlace(*btnSetting));
}

void ProtocolResult::trigerMenu(QAction *action)
{
    const int index = action->data().toInt();
    if (index < m_manager.count()) { // the list may have changed while the menu was open
        m_manager.setShown(index, !m_manager.isShown(index));
        resetList(AnalyzerDataGen::Clicked::Forget);
    }
}
