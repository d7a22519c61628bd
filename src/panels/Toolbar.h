#pragma once

#include <QWidget>

class QHBoxLayout;
class SmpCtrl;
class SmpSetting;
class SmpZoom;
class VthSetting;

/// The bar at the top of the window: what a user touches for each capture.
///
/// Each group reads the model when it is built, so all of them are thrown away and built anew by reload() whenever the
/// device object is replaced; nothing here holds on to a device. Main thread.
class Toolbar : public QWidget {
    Q_OBJECT
public:
    explicit Toolbar(QWidget *parent = nullptr);

    QHBoxLayout *layout = nullptr;
    SmpSetting *smpSetting = nullptr;
    VthSetting *vthSetting = nullptr; ///< null when the model's thresholds are fixed
    SmpCtrl *smpCtrl = nullptr;
    SmpZoom *smpZoom = nullptr;

    /// Builds the groups for `gDev`, and tells the rate.
    void reload();
    /// Shows the zoom that is in effect, samples per logical pixel; see SmpZoom. Kept over a reload.
    void showRatio(double ratio);
    /// The look of an instrument that is there; see SmpCtrl.
    void showConnected(bool connected);

signals:
    void zoomValued(QString str);
    void frequViewChanged();
    /// See SmpCtrl.
    void startAsked();
    void stopAsked();

public slots:
    /// Asks for a capture, unless the user is just typing a threshold that is refused.
    void slotShortcutF5();

private:
    void clear();
    double m_ratio = 0.0; ///< samples per logical pixel, 0 for none yet
};
