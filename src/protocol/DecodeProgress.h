#pragma once

#include <QWidget>

/// A line two units high that fills from the left: how much of a capture is decoded. It keeps its room while it is
/// empty. Main thread.
class DecodeProgress : public QWidget {
    Q_OBJECT
public:
    explicit DecodeProgress(QWidget *parent = nullptr);

    /// @param share  0 to 1; below 0 for no line
    void setShare(double share);
    [[nodiscard]] double share() const { return m_share; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_share = -1.0;
};
