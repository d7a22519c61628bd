#include "protocol/ProtocolSetting.h"

#include "analyzer/AnalyzerManager.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "measure/SectionParts.h"
#include "protocol/AllAnalyzers.h"
#include "protocol/ProtocolEdit.h"
#include "protocol/SupportTable.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int stepsOfARepaint = 3; ///< of the rows, a repaint of the waves

QString recentKey()
{
    return QStringLiteral("recentAnalyzers");
}

QString entryText(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&")); // a name, without a mnemonic
}

} // namespace

ProtocolSetting::ProtocolSetting(AnalyzerManager *manager_, QWidget *parent) : QWidget(parent), manager(manager_)
{
    btnExpand = makeExpandButton(::tr("Analyzers"), this);
    auto *title = makeSectionTitle(::tr("Analyzers"), this);
    btnAdd = makeIconButton(QStringLiteral(":/res/btnAddItem"), ::tr("Add an analyzer"), this);
    btnAdd->setObjectName(QStringLiteral("addAnalyzer"));
    addMenu = new QMenu(this);
    addMenu->setObjectName(QStringLiteral("addAnalyzerMenu"));
    addMenu->setAccessibleName(btnAdd->accessibleName());
    addMenu->addAction(::tr("None"));
    m_itemsWidget = new QWidget(this);
    itemsLayout = new QVBoxLayout(m_itemsWidget);
    itemsLayout->setContentsMargins(0, 0, 0, 0);
    itemsLayout->setSpacing(dp(2));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnAdd));
    column->addWidget(m_itemsWidget);
    m_decodeTimer.setInterval(ProtocolItem::progressStepMs);

    connect(btnExpand, &QPushButton::clicked, this, &ProtocolSetting::staChangedSlot);
    connect(btnAdd, &QPushButton::clicked, this, &ProtocolSetting::openMenuDig);
    connect(manager, &AnalyzerManager::analyzerItemChanged, this, &ProtocolSetting::updateItem);
    connect(manager, &AnalyzerManager::analyzerStarted, this, [this] {
        if (!m_decodeTimer.isActive()) {
            m_decodeTimer.start();
        }
    });
    connect(manager, &AnalyzerManager::analyzerDecodedChanged, this, &ProtocolSetting::slotDecodeStep);
    connect(manager, &AnalyzerManager::analyzerFailed, this, &ProtocolSetting::slotDecodeStep);
    connect(&m_decodeTimer, &QTimer::timeout, this, &ProtocolSetting::slotDecodeStep);
}

void ProtocolSetting::staChangedSlot()
{
    expanded = !expanded;
    btnAdd->setVisible(expanded);
    m_itemsWidget->setVisible(expanded);
    showExpanded(*btnExpand, expanded);
}

void ProtocolSetting::openMenuDig()
{
    addMenu->popup(popupPlace(*btnAdd));
}

void ProtocolSetting::reload()
{
    if (moreDialog != nullptr) {
        moreDialog->setNames(manager->libraryDisplayNames());
    }
    if (!recentList.isEmpty()) {
        buildMenu(); // the names tell what the model cannot decode
    }
}

void ProtocolSetting::updateItem()
{
    const QVector<ProtocolItem *> before = std::exchange(itemWidgets, {});
    for (ProtocolItem *row : before) {
        itemsLayout->removeWidget(row);
    }
    addRows();
    keepFocus(before);
    for (ProtocolItem *row : before) {
        row->hide();
        row->deleteLater();
    }
    if (itemWidgets.size() < before.size() && !recentList.isEmpty()) {
        return; // taking one away does not make another one recent
    }
    QStringList files;
    for (const ProtocolItem *row : qAsConst(itemWidgets)) {
        files.append(row->objectName());
    }
    updateRecent(RecentAnalyzers::namesOfRows(files));
}

void ProtocolSetting::keepFocus(const QVector<ProtocolItem *> &before)
{
    const auto *focused = qobject_cast<MyButton *>(window()->focusWidget());
    for (int i = 0; focused != nullptr && i < before.size(); ++i) {
        if (before.at(i)->isAncestorOf(focused)) {
            MyButton *heir = btnAdd;
            // Who has removed one by mouse sees no focus: the next key shall not remove another one.
            const bool isRemovedByMouse = itemWidgets.size() < before.size() && !focused->hasKeyFocus();
            if (!itemWidgets.isEmpty() && !isRemovedByMouse) {
                const ProtocolItem *row = itemWidgets.at(std::min(i, itemWidgets.size() - 1));
                heir = row->findChild<MyButton *>(focused->objectName());
            }
            heir->takeFocusFrom(*focused);
            return;
        }
    }
}

void ProtocolSetting::addRows()
{
    QWidget *before = btnAdd;
    for (int i = 0; i < manager->count(); ++i) {
        auto *row = new ProtocolItem(manager, i, extendMenu, m_itemsWidget);
        connect(row, &ProtocolItem::editWanted, this, &ProtocolSetting::slotEditWanted);
        itemsLayout->addWidget(row);
        row->show();
        itemWidgets.append(row);
        for (QWidget *button : row->findChildren<MyButton *>(QString(), Qt::FindDirectChildrenOnly)) {
            setTabOrder(before, button);
            before = button;
        }
    }
}

void ProtocolSetting::updateRecent(const QStringList &inUse)
{
    const QString stored = recentList.isEmpty() ? globalGet(recentKey()) : QString();
    recentList.update(stored, inUse, [this](const QString &file) { return manager->libraryDisplayName(file); });
    globalSet(recentKey(), recentList.text());
    buildMenu();
}

void ProtocolSetting::buildMenu()
{
    addMenu->clear();
    if (manager->foundLibraries().isEmpty()) {
        addMenu->addAction(::tr("None"));
    }
    const QStringList &files = recentList.files();
    for (int i = files.size() - 1; i >= 0; --i) {
        addEntry(entryText(manager->libraryDisplayName(files.at(i))), &ProtocolSetting::slotAddProtocolClicked)
            ->setData(libraryOf(files.at(i)));
    }
    addMenu->addSeparator();
    addEntry(::tr("More Analyzers") + QStringLiteral("..."), &ProtocolSetting::slotMoreProtocolClicked);
    addMenu->addSeparator();
    addEntry(::tr("Device Supported List") + QStringLiteral("..."), &ProtocolSetting::slotDevicSupportListClicked);
}

QAction *ProtocolSetting::addEntry(const QString &text, void (ProtocolSetting::*slot)())
{
    QAction *entry = addMenu->addAction(text);
    // Queued: the menu has closed and given the focus back before a dialog takes it, and may be built anew meanwhile.
    connect(entry, &QAction::triggered, this, slot, Qt::QueuedConnection);
    return entry;
}

int ProtocolSetting::libraryOf(const QString &fileName) const
{
    const QVector<AnalyzerLib> &libraries = manager->foundLibraries();
    for (int i = 0; i < libraries.size(); ++i) {
        if (libraries.at(i).fileName == fileName) {
            return i;
        }
    }
    return -1;
}

void ProtocolSetting::slotAddProtocolClicked()
{
    if (const auto *entry = qobject_cast<QAction *>(sender())) {
        addFrom(entry->data().toInt());
    }
}

void ProtocolSetting::slotMoreProtocolClicked()
{
    if (moreDialog == nullptr) {
        moreDialog = new AllAnalyzers(this);
        connect(moreDialog, &AllAnalyzers::supportWanted, this, &ProtocolSetting::slotDevicSupportListClicked);
    }
    moreDialog->setNames(manager->libraryDisplayNames());
    addFrom(moreDialog->choose());
}

void ProtocolSetting::slotDevicSupportListClicked()
{
    if (supportDialog == nullptr) {
        supportDialog = new SupportTable(this);
    }
    supportDialog->exec();
}

void ProtocolSetting::addFrom(int library)
{
    if (library < 0 || library >= manager->foundLibraries().size()) {
        return;
    }
    ProtocolEdit dialog(false, manager, library, window());
    if (dialog.isUsable()) {
        dialog.exec();
    }
}

void ProtocolSetting::slotEditWanted(int itemIndex)
{
    if (itemIndex < 0 || itemIndex >= manager->count()) {
        return;
    }
    ProtocolEdit dialog(true, manager, itemIndex, window());
    if (dialog.isUsable()) {
        dialog.exec();
    }
}

void ProtocolSetting::slotDecodeStep()
{
    bool runs = false;
    for (int i = 0; i < itemWidgets.size() && i < manager->count(); ++i) {
        itemWidgets.at(i)->refresh();
        runs = runs || manager->isWorkerRunning(i);
    }
    if (!runs) {
        m_decodeTimer.stop();
    }
    m_steps = (m_steps + 1) % stepsOfARepaint;
    if (m_steps == 0 || !runs) {
        emit decodeAdvanced();
    }
}
