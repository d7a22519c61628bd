#pragma once

#include <QPointer>
#include <QString>
#include <QVector>
#include <QWidget>

class AChnParameterSet;
class AChnTAG;
class AChnTiggerTAG;
class AChnTriggerSet;
class DevBase;
class LabelMove;
class QLabel;

/// What stands to the left of the analog area: the settings of each analog channel and of the analog trigger, and at
/// the right edge the flags of the channels' zero levels and of the trigger level.
///
/// The places of the flags are stored at once. Place and height are the main view's. GUI thread.
class ItemAChnSidebar : public QWidget {
    Q_OBJECT
public:
    ItemAChnSidebar(int channels, QWidget *parent);

    /// Shows what `device` and the configuration have, and tells of all that the view needs.
    void refresh(DevBase &device);
    /// Takes its place at the top of the column. The flags have none before that.
    void lay(int height);
    /// True if this may be deleted. Else a box is open that one of its fields has asked for: this is hidden now, tells
    /// nothing any more, and deletes itself behind the box.
    [[nodiscard]] bool mayGo();
    /// Shows the device's trigger edges alone.
    void showTriggers();
    /// The flag of a channel that is off is not shown.
    void setChnEnabled(int channel, bool on);

    /// The vertical centre of a channel's flag, device pixels from the top; 0 for a channel that does not exist.
    [[nodiscard]] int zeroY(int channel) const;
    /// Ten times the channel's millivolts per division; 0 for a channel that does not exist.
    [[nodiscard]] int fullScaleMv(int channel) const;
    /// The controls and flags in the order of Tab.
    [[nodiscard]] QVector<QWidget *> tabStops() const;

public slots:
    /// The sender is a channel's flag, which is to move by `posY` device pixels. Beyond the sidebar it stays.
    void slotLabelChnChanged(int posY);
    /// The same of the trigger's flag, which sets the trigger's level.
    void slotLabelTrigChanged(int posY);
    /// @param type  of aTrigChange
    void slotTrigSetChanged(int type, const QString &value);
    /// @param type  of aChnChange
    void slotChnSetChanged(int type, int id, int value);

signals:
    /// Something of analog channel `id` has changed. @param type  of aChnChange
    void chnSetChangedACH(int type, int id, int value);
    /// Tab has brought the focus to `control`, which may be outside of the visible part of the column.
    void reachedByKey(QWidget *control);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildNumber();
    void buildTags(int channels);
    void buildGrid();
    void loadPlaces();
    void storePlaces();
    void placeTags();
    void placeTrigger();
    void moveTag(AChnTAG &tag, int centre);
    /// The full scale of the trigger's channel.
    [[nodiscard]] int trigFullScale() const;

    LabelMove *numberLabel;
    QVector<AChnParameterSet *> m_parameters; ///< by channel, as the flags
    QVector<AChnTAG *> m_tags;
    AChnTriggerSet *m_trigger;
    AChnTiggerTAG *m_trigTag;
    bool m_isLaid = false;
    QLabel *m_rest;             ///< takes what the panels leave of the height
    QPointer<DevBase> m_device; ///< null once it has gone
};
