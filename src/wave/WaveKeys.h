#pragma once

#include "wave/WaveGestures.h"

#include <QObject>
#include <QPoint>

#include <functional>

class QShortcut;
class QWidget;

/// The keys of the waves: they move and zoom the time axis, and call and move the markers.
///
/// GUI thread, owned by the main view, to which the keys belong.
class WaveKeys : public QObject {
    Q_OBJECT
public:
    /// @param parts, gestures  not owned, outlive this
    WaveKeys(const WaveParts &parts, WaveGestures &gestures, QWidget *parent);

public slots:
    void slotShortCutZoomIn();
    void slotShortCutZoomOut();
    void slotShortCutMovToBeg();
    void slotShortCutMovToEnd();
    /// @param digit  0 to 9: 1 calls the first marker, 0 the last one of five pairs
    void slotShortCutTimeMarker(int digit);

signals:
    // As MainView's of the same names.
    void zoomChangedByMouse(int flag, QPoint point);
    void pictureWanted();

private:
    void buildTimeKeys();
    void buildMarkerKeys();
    /// Held down the key goes on.
    QShortcut *addKey(int key, const std::function<void()> &act);
    /// Held down it does nothing more.
    QShortcut *addSingleKey(int key, const std::function<void()> &act);
    void zoomAboutMiddle(int flag);

    const WaveParts m_parts;
    WaveGestures &m_gestures;
    QWidget *const m_owner;
};
