#pragma once

#include "wave/PulseRequests.h"

#include <QList>
#include <QPointer>
#include <QWidget>

class DevBase;
class MyButton;
class PickMenu;
class QAction;
class QGridLayout;
class QLabel;
class TimingMarkerTip;

/// The section "Pulse Measurements": rows that each count one thing on one channel over one time range.
///
/// A row is one entry of each of the six lists below. Its choice is kept in the object names of its buttons: type (0
/// rising edges, 1 falling edges, 2 positive pulses, 3 negative pulses), channel, and time (0 the whole capture, 1 to 5
/// the pairs A to E). The main view does the counting: it asks for the requests through `gPulseRequests`, which is this
/// object while it lives, and answers through the value slots. Rows are not stored. Main thread; one instance.
class PulseMeasure : public QWidget, public PulseRequests {
    Q_OBJECT
public:
    explicit PulseMeasure(const DevBase &device, QWidget *parent = nullptr);
    ~PulseMeasure() override;

    /// Another device: no value is known any more, and the channel menu follows. The rows stay.
    void reload(const DevBase &device);

    /// Requests of channels that are not enabled and of pairs that are not shown are left out.
    [[nodiscard]] QStringList allRequests() const override;
    [[nodiscard]] QStringList requestsOfPair(int pairIndex) const override;

    /// What a row's type, channel or time button stands for.
    [[nodiscard]] static int choiceOf(const MyButton &button);

    bool expanded = true;
    MyButton *btnExpand = nullptr;
    MyButton *btnAdd = nullptr;
    QWidget *rowsWidget = nullptr;
    QGridLayout *grid = nullptr;
    QList<MyButton *> typeButtons;
    QList<MyButton *> chnButtons;
    QList<MyButton *> timeButtons;
    QList<QLabel *> colonLabels;
    QList<TimingMarkerTip *> valueLabels;
    QList<MyButton *> removeButtons; ///< the object name is the row's number
    PickMenu *typeMenu = nullptr;
    PickMenu *chnMenu = nullptr;
    PickMenu *timeMenu = nullptr;
    int menuRow = -1; ///< the row that the open menu belongs to

signals:
    /// Rows ask for something else than before.
    void setChanged();

public slots:
    /// Shows the results in all rows: each is a request and the four counts, by type. A row without a result reads
    /// "###".
    void slotValueChanged(QStringList pulseList);
    /// The same for the rows of one pair. `index`: 0 to 4.
    void slotValueChangedbyTimeMarker(int index, QStringList pulseList);
    void slotDeployClicked();
    /// Adds a row of the type and the enabled channel that have the fewest rows, over the whole capture.
    void slotBtnAddClicked();

    // Of a row: each takes the row of the button that sends.
    void slotBtnRemoveClicked();
    void slotBtTypeClicked();
    void slotBtChnClicked();
    void slotBtTimeClicked();

    // The entry's data is the choice for row `menuRow`; nothing when that row is gone.
    void slotMenuTypeClicked(QAction *act);
    void slotMenuChnClicked(QAction *act);
    void slotMenuTimeClicked(QAction *act);

private:
    void buildMenus();
    /// Again when it is opened: with another model the entries would cost more than all else here.
    void fillChnMenu();
    void appendRow(int type, int chn);
    [[nodiscard]] QList<QWidget *> widgetsOf(int row) const;
    void placeRow(int row);
    /// Gives the row's controls names with its number, from 1.
    void nameRow(int row);
    static void setType(MyButton &button, int type);
    static void setChannel(MyButton &button, int chn);
    static void setTime(MyButton &button, int time);
    [[nodiscard]] int leastUsedType() const;
    [[nodiscard]] int leastUsedChannel() const;
    void dropMenu(PickMenu &menu, const QList<MyButton *> &buttons);
    void takeChoice(const QList<MyButton *> &buttons, int choice, void (*set)(MyButton &, int));
    [[nodiscard]] QStringList requestsOf(int onlyTime) const;
    void showResults(const QStringList &results, int onlyTime);

    QPointer<const DevBase> m_device; ///< null from its end until reload()
};
