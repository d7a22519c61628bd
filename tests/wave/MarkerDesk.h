#pragma once

#include "controls/Look.h"
#include "wave/CursorBody.h"
#include "wave/CursorHandle.h"
#include "wave/MainViewDesk.h"
#include "wave/TimeView.h"

#include <QMap>

#include <algorithm>
#include <array>

inline constexpr int quietY = 410; ///< in the row of a channel that never changes

/// 1,000 samples at 1 MHz, one a pixel; channel 0 changes at 100, 200, 300 and so on and is low at first.
inline WaveCapture squareWave()
{
    return capture().samples(1000).rate(1000000).pulses(0, std::vector<std::int32_t>(9, 100));
}

/// What a marker's line in the list of pairs shows.
struct Texts {
    QString value;
    QString total;
    bool operator==(const Texts &) const = default;
};

/// A main view with a ruler, joined as the main window joins them.
class MarkerDesk : public MainViewDesk {
public:
    using Changes = QVector<std::array<int, 3>>;

    explicit MarkerDesk(int model = 0, QSize size = {1190, 800}) : MainViewDesk(model, size)
    {
        QObject::connect(&view, &MainView::timeMarkBodyChanged, &ruler, &TimeView::slotMainViewMarkerChanged);
        QObject::connect(&view, &MainView::pointerMoved, &ruler, &TimeView::slotPointerMoved);
        QObject::connect(&ruler, &TimeView::timeMarkerChanged, &view, &MainView::slotTimeViewMarkerChanged);
        QObject::connect(&view, &MainView::timeMarkBodyChanged, &ruler, [this](int type, int index, int value) {
            changes.append({type, index, value});
        });
        QObject::connect(&view, &MainView::timMarkPairChanged, &ruler,
                         [this](int type, int id, const QString &value, const QString &total) {
                             if (type == 0) {
                                 made.append(id);
                             } else if (type == 4) {
                                 times[id] = {value, total};
                             }
                         });
        QObject::connect(&view, &MainView::pulseMeasureChangedbyTimeMarker, &ruler,
                         [this](int group) { recounts.append(group); });
        ruler.resize(waves->width(), dp(36));
    }

    [[nodiscard]] QVector<int> ids() const
    {
        QVector<int> all;
        for (const CursorBody *marker : items<CursorBody>()) {
            all.append(marker->id());
        }
        std::sort(all.begin(), all.end());
        return all;
    }
    [[nodiscard]] const CursorBody &marker(int id) const
    {
        const auto all = items<CursorBody>();
        const auto found = std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
        return **found;
    }
    [[nodiscard]] MarkerState state(int id) const { return marker(id).markerState(); }
    [[nodiscard]] double sample(int id) const { return marker(id).samplePos; }
    [[nodiscard]] int x(int id) const { return int(marker(id).x()); }
    [[nodiscard]] CursorHandle *flag(int id) const
    {
        const auto all = ruler.findChildren<CursorHandle *>();
        const auto found = std::find_if(all.begin(), all.end(), [id](const auto *each) { return each->id() == id; });
        return found == all.end() ? nullptr : *found;
    }
    /// Puts marker `id` (0 to 9) down at the column, by its key and a click.
    void put(int id, int column, int y = quietY)
    {
        move(column, y);
        key(keyOf(id));
        press(column, y);
        release(column, y);
    }
    [[nodiscard]] static Qt::Key keyOf(int id) { return id == 9 ? Qt::Key_0 : Qt::Key(Qt::Key_1 + id); }
    void ask(int type, int id) { view.slotTimingMarkerPairClicked(type, id); }

    TimeView ruler{&gen};
    Changes changes;
    QVector<int> recounts;  ///< pairs whose pulses were counted anew
    QVector<int> made;      ///< first ids of the pairs that the view has made
    QMap<int, Texts> times; ///< the last texts of each marker
};

inline Texts unknown()
{
    return {QStringLiteral("###"), QStringLiteral("###")};
}

inline Texts texts(const char *value, const char *total)
{
    return {QString::fromLatin1(value), QString::fromLatin1(total)};
}
