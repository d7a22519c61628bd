#pragma once

#include <QWidget>

#include <functional>

class AnalyzerManager;
class DecodeProgress;
class MyButton;
class QAction;
class QActionGroup;
class QLabel;
class QMenu;

/// A row of the analyzer panel: an analyzer's name and channels, its settings and its end. A thin line tells how far a
/// decode has come, a sign before the name that it ended early.
///
/// Its object name is the plug-in's file name. Made anew whenever the list changes, so its index is current. Main
/// thread.
class ProtocolItem : public QWidget {
    Q_OBJECT
public:
    /// Adds entries to the menu of the analyzer at an index.
    using MenuExtension = std::function<void(QMenu &menu, int itemIndex)>;

    /// @param manager  not owned, outlives this
    ProtocolItem(AnalyzerManager *manager, int index, MenuExtension extend, QWidget *parent = nullptr);

    /// Shows how the analyzer's decode goes. To be called each progressStepMs while one runs, and when one has ended.
    void refresh();
    static constexpr int progressStepMs = 100;

signals:
    /// The settings dialog is asked for. The row may be gone when the dialog closes.
    void editWanted(int itemIndex);

public slots:
    void slotBtnRemove();
    void slotMenuPopup();
    void slotDisplyFormat(QAction *action);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    /// Opens the settings, as in the list of results.
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void openMenu(const QPoint &place);
    void buildMenu();
    [[nodiscard]] QStringList channelTexts() const;
    void showEnd();

    AnalyzerManager *const manager;
    const int itemIndex;
    const MenuExtension m_extend;
    QLabel *m_sign;
    QLabel *m_title;
    MyButton *btnSetting;
    MyButton *btnRemove;
    DecodeProgress *m_progress;
    QMenu *popupMenu = nullptr; ///< of the last use
    QActionGroup *formatGroup = nullptr;
    int m_steps = 0; ///< refreshes of the decode that runs
};
