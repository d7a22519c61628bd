#pragma once

#include <QWidget>

class QLabel;

/// The small panel left of the time ruler: the picture of an analyzer and the model's name.
///
/// As wide as the sidebar column and as high as the ruler, so that the ruler stands exactly above the waves. Main
/// thread.
class DevSetting : public QWidget {
    Q_OBJECT
public:
    explicit DevSetting(QWidget *parent = nullptr);

    /// Shows the name of `gDev`'s model.
    void reload();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QLabel *m_picture;
    QLabel *m_name;
};
