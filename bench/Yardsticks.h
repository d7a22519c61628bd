#pragma once

#include <QEvent>
#include <QEventLoop>
#include <QImage>
#include <QSize>
#include <QTimer>
#include <QWidget>

#include <benchmark/benchmark.h>
#include <cstring>

// What the machine can do at all, measured in the same run as what is compared with it: absolute times mean nothing on
// another machine, nor beside other work on this one.

constexpr QSize fullHd(1920, 1080);
constexpr QSize ultraHd(3840, 2160);

/// The bytes of one frame, written once.
inline void fillFrames(benchmark::State &state, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    int value = 0;
    for (auto _ : state) {
        std::memset(image.bits(), ++value, std::size_t(image.sizeInBytes()));
        benchmark::ClobberMemory();
    }
}

/// Ends a loop when a widget has been painted. Installed as its event filter.
class PaintWatcher : public QObject {
public:
    explicit PaintWatcher(QEventLoop &loop) : m_loop(loop) {}
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            QTimer::singleShot(0, &m_loop, &QEventLoop::quit);
        }
        return false;
    }

private:
    QEventLoop &m_loop;
};

/// Shows a window and returns when it has been painted.
inline void showUntilPainted(QWidget &window)
{
    window.show();
    QEventLoop loop;
    PaintWatcher watcher(loop);
    window.installEventFilter(&watcher);
    loop.exec();
}

/// An empty window of Qt, from its making to its painting, beside an application that runs.
inline void showBareWindows(benchmark::State &state)
{
    for (auto _ : state) {
        QWidget window;
        window.resize(fullHd);
        showUntilPainted(window);
    }
}
