#pragma once

#include <QColor>
#include <QVector>
#include <QWidget>

class LabelMove;
class MyButton;
class QAction;
class QFrame;
class QGridLayout;
class QLineEdit;
class QMenu;

/// What stands to the left of a digital channel's row: the channel's number on its colour, its name, the button of the
/// height menu, four trigger buttons, and the name of the decoder that uses it.
///
/// The name is stored at once, in the configuration; of a trigger it tells, and knows no device. Place and height are
/// the main view's: it owns the widget and moves it. GUI thread.
class ItemChnSidebar : public QWidget {
    Q_OBJECT
public:
    static constexpr int columnWidth = 190; ///< of every sidebar, pixels at 96 dpi
    static constexpr int resetAll = 9;      ///< data of the height menu's entries beside the factors, as the one below
    static constexpr int undoReset = 10;

    ItemChnSidebar(int channel, int row, int multiplier, QWidget *parent);
    ~ItemChnSidebar() override;

    [[nodiscard]] int channel() const { return chnIndex; }
    [[nodiscard]] int row() const { return showIndex; }         ///< 0 is the topmost
    [[nodiscard]] int multiplier() const { return showMultip; } ///< 1 to 15
    void setRow(int row) { showIndex = row; }
    void setMultiplier(int multiplier) { showMultip = multiplier; }
    /// The number, by which the row is moved.
    [[nodiscard]] LabelMove *handle() const { return numberLabel; }
    /// The controls in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

    /// Shows a name; what does not fit is in the tool tip. Line ends and control characters are shown as blanks.
    void setChnName(const QString &name);
    /// Shown below the name; empty for none.
    void setAnalyzerLabel(const QString &label);
    /// Shows the trigger: 1 low level, 2 high level, 3 rising edge, 4 falling edge, any other none. Stores nothing.
    void setTrigCode(int code);
    /// Takes the height menu away, if it is open.
    void closeMenu();
    /// Offers to take the last reset back, in the height menu.
    void setUndoable(bool on) { m_undoable = on; }
    /// The stored name, empty for the default.
    [[nodiscard]] QString storedName() const;
    /// Name, row, height and trigger as of a fresh installation. Stores the name, tells of the trigger.
    void reset();

public slots:
    void slotTrigMouseClicked();
    /// The name has been edited. While the field has the focus this gives it away, which calls it once more.
    void leChnNameChangedSlot();
    /// Pops up the height menu: at the pointer, or below the button if that was pressed by key.
    void openMenuDig();
    void createMenu();

signals:
    /// The channel's trigger is to be this one from now on, see setTrigCode(); 0 for none.
    void trigChosen(int channel, int code);
    /// An edge has been chosen, after trigChosen(): the device has cleared all others.
    void trigEdgeChanged();
    /// An entry of the height menu. Its data are 1, 2, 4, 8, or 9 for the reset of all channels.
    void trigerMenu(QAction *action);
    /// Tab has brought the focus to `control`, which may be outside of the visible part of the column.
    void reachedByKey(QWidget *control);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildNumber();
    void buildName();
    void buildSetting();
    void buildAnalyzer();
    void buildTrigger();
    MyButton *addTrigger(int place);
    void buildGrid();
    [[nodiscard]] QColor chnColor() const;
    [[nodiscard]] QString defaultName() const;
    /// Pixels that a name may take without being cut.
    [[nodiscard]] static int nameRoom();
    /// What a screen reader tells of a control.
    [[nodiscard]] QString spoken(const QString &control) const;
    /// Gives each control its name, which begins with the channel's.
    void nameControls();
    void storeName();
    bool nameEvent(QEvent *event);

    const int chnIndex; ///< physical channel
    int showIndex;      ///< row position
    int showMultip;     ///< height factor
    QString m_name;     ///< the name as it is stored and shown, to tell what was edited
    LabelMove *numberLabel;
    QLineEdit *nameEdit;
    MyButton *settingBtn;
    QFrame *trigFrame;
    QLineEdit *analyzerEdit;
    QGridLayout *layout;
    QVector<MyButton *> trigBtns; ///< rising edge, high level, falling edge, low level
    QMenu *menu = nullptr;        ///< made at first use
    QAction *m_undo = nullptr;    ///< of the menu
    bool m_undoable = false;      ///< there is a reset to take back
};
