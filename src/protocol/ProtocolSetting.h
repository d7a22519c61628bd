#pragma once

#include "protocol/ProtocolItem.h"
#include "protocol/RecentAnalyzers.h"

#include <QTimer>
#include <QVector>
#include <QWidget>

class AllAnalyzers;
class AnalyzerManager;
class MyButton;
class QAction;
class QMenu;
class QVBoxLayout;
class SupportTable;

/// The section "Analyzers" of the right-hand panel: a row for each analyzer of the user's list, and the menu that adds
/// one.
///
/// Lives as long as the main window. Main thread.
class ProtocolSetting : public QWidget {
    Q_OBJECT
public:
    /// @param manager  not owned, outlives this
    explicit ProtocolSetting(AnalyzerManager *manager, QWidget *parent = nullptr);

    /// What others add to the menu of each row. Before the list is loaded.
    ProtocolItem::MenuExtension extendMenu;

    /// Brings the names in line with the device of the moment.
    void reload();

signals:
    /// Some time has passed while decoders run: there may be more to show.
    void decodeAdvanced();

public slots:
    void staChangedSlot();
    void openMenuDig();
    void updateItem();
    void slotAddProtocolClicked();
    void slotMoreProtocolClicked();
    void slotDevicSupportListClicked();
    void slotEditWanted(int itemIndex);

private slots:
    void slotDecodeStep();

private:
    void buildMenu();
    QAction *addEntry(const QString &text, void (ProtocolSetting::*slot)());
    void addRows();
    /// The rows of before are about to go: one that has the keyboard's focus leaves it to the row in its place.
    void keepFocus(const QVector<ProtocolItem *> &before);
    void updateRecent(const QStringList &inUse);
    /// Opens the settings dialog for a new analyzer of a library.
    void addFrom(int library);
    [[nodiscard]] int libraryOf(const QString &fileName) const;

    AnalyzerManager *const manager;
    bool expanded = true;
    MyButton *btnExpand;
    MyButton *btnAdd;
    QMenu *addMenu;
    QWidget *m_itemsWidget;
    QVBoxLayout *itemsLayout;
    QVector<ProtocolItem *> itemWidgets;
    RecentAnalyzers recentList;
    AllAnalyzers *moreDialog = nullptr; ///< made at first use, as the next
    SupportTable *supportDialog = nullptr;
    QTimer m_decodeTimer{this}; ///< runs while a decoder does
    int m_steps = 0;
};
