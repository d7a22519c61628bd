#pragma once

#include <QString>
#include <QWidget>

class MyButton;
class QLineEdit;

/// The zoom group of the toolbar: trigger, all, out, in, and a field for a ratio in samples per pixel.
///
/// It knows no time axis: what is asked for leaves as text ("Trg", "All", "Out", "In", or what the user typed), and the
/// ratio that is in effect comes in through showRatio(). Main thread.
class SmpZoom : public QWidget {
    Q_OBJECT
public:
    explicit SmpZoom(QWidget *parent = nullptr);

    /// Shows a ratio, samples per logical pixel, without a signal; 0 or less, or no number, clears the field. What the
    /// user is just typing stays.
    void showRatio(double ratio);

signals:
    void zoomValueChanged(QString str);

public slots:
    void slotZoomTrg();
    void slotZoomAll();
    void slotZoomOut();
    void slotZoomIn();
    /// The field was finished. While it has the focus this gives the focus away, which finishes it once more; a text
    /// that is no number is told and keeps it.
    void slotZoomFixed();

protected:
    void paintEvent(QPaintEvent *event) override;
    /// Escape leaves the field with the ratio that is in effect.
    void keyPressEvent(QKeyEvent *event) override;

private:
    void takeBack();
    MyButton *addButton(const QString &icon, const QString &toolTip, void (SmpZoom::*slot)());

    MyButton *m_trigger = nullptr;
    MyButton *m_all = nullptr;
    MyButton *m_out = nullptr;
    MyButton *m_in = nullptr;
    QLineEdit *m_edit = nullptr;
    QString m_shown; ///< the ratio in effect, as the field shows it
};
